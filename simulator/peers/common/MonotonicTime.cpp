#include "common/MonotonicTime.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace orvo::simulator
{

namespace
{
constexpr long kNanosecondsPerMicrosecond = 1000;
constexpr std::size_t kTextCapacity = 48;
} // namespace

std::string monotonicSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::array<char, kTextCapacity> text{};
    std::snprintf(text.data(), text.size(), "%lld.%06ld", static_cast<long long>(now.tv_sec),
                  now.tv_nsec / kNanosecondsPerMicrosecond);
    return text.data();
}

} // namespace orvo::simulator
