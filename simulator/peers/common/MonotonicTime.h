#pragma once

#include <string>

namespace orvo::simulator
{

/// The monotonic clock as seconds with six decimals, as "12.345678": the time in every journal of
/// the simulated device, so that lines of different journals can be put in order.
std::string monotonicSeconds();

} // namespace orvo::simulator
