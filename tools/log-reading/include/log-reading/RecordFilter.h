#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvo
{

/// The names of the record levels, the least serious first.
const std::vector<std::string>& levelNames();

/// Which records a person wants to see. Empty members let all records through.
struct RecordFilter
{
    std::string level; ///< this level and more serious ones; one of levelNames()
    std::string text;  ///< stands in the message, as people read it: without the record's escapes
    std::string source{}; ///< name of the program, as it stands in the record
    /// Seconds of the monotonic clock, not before; what has no readable time passes.
    std::optional<double> since{};

    /// The Lua expression over `entry` for RedisLogger::getLogEntriesFiltered(); empty when all
    /// records pass, nothing when the text is so long that the script would not hold it.
    ///
    /// Whatever the text is, it reaches Redis as the content of one Lua string and is searched
    /// literally. Records of no known level pass any level: they may be the worst.
    [[nodiscard]] std::optional<std::string> condition() const;
};

} // namespace orvo
