#include "watchdog/Countdown.h"

#include <cstdint>

#include <sys/timerfd.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
constexpr int kMsPerSecond = 1000;
constexpr long kNsPerMs = 1000000;
} // namespace

Countdown::Countdown(int timeoutMs)
    : m_timeoutMs(timeoutMs), m_timer(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))
{
}

void Countdown::restart()
{
    itimerspec once = {};
    once.it_value.tv_sec = m_timeoutMs / kMsPerSecond;
    once.it_value.tv_nsec = m_timeoutMs % kMsPerSecond * kNsPerMs;
    timerfd_settime(m_timer.get(), 0, &once, nullptr);
    m_running = true;
}

bool Countdown::hasExpired() const
{
    std::uint64_t expirations = 0;
    return read(m_timer.get(), &expirations, sizeof expirations) == sizeof expirations;
}

} // namespace orvo::simulator
