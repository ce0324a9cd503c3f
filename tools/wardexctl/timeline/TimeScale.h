#pragma once

#include "log/DeviceClock.h"

#include <string>
#include <vector>

namespace orvo::ctl
{

/// A mark on a time axis.
struct Tick
{
    double time{0}; ///< seconds of the monotonic clock
    std::string label;
};

/// The smallest round step, in seconds, that divides a span into at most so many parts.
double roundStep(double span, int mostParts);

/// Ticks at round wall times, oldest first: "05:38:40", "05:38" or "11-21 05:00".
std::vector<Tick> wallTicks(double begin, double end, const DeviceClock& clock, int mostParts);

/// Ticks at round ages, the present first: "now", "10 s", "5 min".
std::vector<Tick> ageTicks(double begin, double end, int mostParts);

} // namespace orvo::ctl
