#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::fuzz
{

/// A D-Bus signature as its complete types; nothing when it is none, when it nests deeper than
/// this library's values do, or when it has file descriptors, which no service of the device sends.
std::optional<std::vector<std::string>> typesOf(std::string_view signature);

} // namespace orvo::fuzz
