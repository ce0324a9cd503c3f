#pragma once

#include <cstdint>
#include <string>

namespace orvo
{

/// A record of the log as a reader understands it.
///
/// Shape:   what is no record at all, because another program wrote it, keeps its text as message.
///          A record that was cut at 500 bytes lacks its end and is marked.
/// Units:   time in 0.1 ms of the monotonic clock, as the record has it.
struct ReadRecord
{
    static constexpr std::int64_t kUnitsPerSecond = 10000;

    std::string raw;       ///< as Redis has it
    bool isRecord{false};  ///< false: only raw and message are set
    bool isCut{false};     ///< the message lacks its end
    std::int64_t time{-1}; ///< -1: none
    std::string pid;
    std::string level;
    std::string source;
    std::string message; ///< without the record's escapes; bytes a terminal would obey are '#'

    [[nodiscard]] double seconds() const
    {
        return static_cast<double>(time) / static_cast<double>(kUnitsPerSecond);
    }
};

/// Takes a record apart; takes any bytes.
ReadRecord readRecord(const std::string& raw);

} // namespace orvo
