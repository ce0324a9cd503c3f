#pragma once

#include <optional>
#include <string>

namespace orvo::simulator
{

/// The whole text as a decimal number of milliseconds, 0 to INT_MAX; nothing for anything else.
std::optional<int> parseMilliseconds(const std::string& text);

} // namespace orvo::simulator
