#pragma once

#include <optional>

namespace orvo::ctl
{

/// By how many seconds the wall clock was set since the log's server started: forward is more than
/// 0. About 0 when nobody did; nothing when the server does not run.
std::optional<double> wallClockStep();

/// Steps below this many seconds cannot be told from the server's own start.
inline constexpr double kWallClockSlack = 20;

} // namespace orvo::ctl
