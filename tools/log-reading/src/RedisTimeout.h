#pragma once

#include <sys/time.h>

namespace orvo
{

/// A time-out as hiredis takes it.
inline timeval redisTimeout(int milliseconds)
{
    constexpr int kMsPerSecond = 1000;
    constexpr suseconds_t kUsPerMs = 1000;
    timeval timeout{};
    timeout.tv_sec = milliseconds / kMsPerSecond;
    timeout.tv_usec = milliseconds % kMsPerSecond * kUsPerMs;
    return timeout;
}

} // namespace orvo
