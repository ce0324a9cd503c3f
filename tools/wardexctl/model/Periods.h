#pragma once

#include "SupervisionLimits.h"

#include <algorithm>
#include <cmath>

namespace orvo::ctl
{

inline constexpr int kMsPerSecond = 1000;

/// Period of the system's machine.
inline constexpr double kTickSeconds = static_cast<double>(kSystemTickMs) / kMsPerSecond;

/// More ticks than matter to anybody. A record may be of any time, for anybody may write one.
inline constexpr double kMostTicks = 1000000;

/// So many ticks, and those of a further time; kMostTicks at most.
inline int ticksAfter(int before, double seconds, double period)
{
    return static_cast<int>(std::clamp(before + std::floor(seconds / period), 0.0, kMostTicks));
}

} // namespace orvo::ctl
