#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace orvo::ctl
{

/// A duration as people write it: "1500ms", "30s", "10m", "2h", "1d", or a number of seconds.
/// Nothing for any other text, for none and for more than a 32-bit number of milliseconds holds,
/// which is the most that the bus can carry.
std::optional<std::chrono::milliseconds> durationOf(const std::string& text);

/// A duration as people read it: "0.3 s", "12 s", "3 min 05 s", "2 h 10 min", "4 d 03 h".
std::string durationText(double seconds);

} // namespace orvo::ctl
