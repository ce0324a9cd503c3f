#include "VirtualClock.h"

#include <atomic>

#include <sys/time.h>
#include <time.h>

namespace
{

constexpr std::int64_t kMsPerSecond = 1000;
constexpr std::int64_t kUsPerMs = 1000;
constexpr std::int64_t kNsPerUs = 1000;

std::atomic<bool> g_isVirtual{false};
std::atomic<std::int64_t> g_virtualMs{0};

} // namespace

/// Stands in for the C library's, in this program and in the libraries that it loads.
extern "C" int gettimeofday(timeval* __restrict time, void* __restrict /*zone*/) noexcept
{
    if (g_isVirtual)
    {
        const std::int64_t ms = g_virtualMs;
        time->tv_sec = static_cast<time_t>(ms / kMsPerSecond);
        time->tv_usec = static_cast<suseconds_t>(ms % kMsPerSecond * kUsPerMs);
        return 0;
    }
    timespec real{};
    const int result = clock_gettime(CLOCK_REALTIME, &real);
    time->tv_sec = real.tv_sec;
    time->tv_usec = static_cast<suseconds_t>(real.tv_nsec / kNsPerUs);
    return result;
}

namespace orvo::test
{

std::int64_t VirtualClock::now()
{
    timeval time{};
    gettimeofday(&time, nullptr);
    return std::int64_t{time.tv_sec} * kMsPerSecond + time.tv_usec / kUsPerMs;
}

void VirtualClock::set(std::int64_t ms)
{
    g_virtualMs = ms;
    g_isVirtual = true;
}

void VirtualClock::step(std::int64_t ms)
{
    set(now() + ms);
}

void VirtualClock::release()
{
    g_isVirtual = false;
}

} // namespace orvo::test
