#pragma once

#include <string>
#include <vector>

namespace orvo::simulator
{

/// One line of an order file: what the service shall do at one ping.
///
/// Shape: words separated by blanks or tabs; the first says what, the rest how. A line without
///        words is the order `up`.
struct Order
{
    std::string word{"up"};
    std::vector<std::string> arguments;

    static Order parse(const std::string& line);

    /// The argument at position (from 0), or fallback when the line has fewer.
    [[nodiscard]] std::string argument(std::size_t position, const std::string& fallback) const;
};

} // namespace orvo::simulator
