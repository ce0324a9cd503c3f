#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvo::simulator
{

/// The command line of `watchdog-guard`.
struct GuardOptions
{
    std::string device;
    /// Milliseconds without a feed until the device is reset; at least 1.
    int timeoutMs{0};
    std::string journal;
    /// Program and arguments; never empty.
    std::vector<std::string> command;

    /// Nothing when the words (without the guard's own name) are no valid command line; problem
    /// then says what is wrong with it.
    static std::optional<GuardOptions> parse(const std::vector<std::string>& words,
                                             std::string& problem);
};

} // namespace orvo::simulator
