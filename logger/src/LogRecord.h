#pragma once

#include "logger/LogDefaults.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <ctime>

namespace orvo::Logger
{

/// Room for the escaped form of a longest message, terminator included. A longer message needs no
/// more: its record is cut far before.
inline constexpr std::size_t kEscapedCapacity = 2 * (kMessageCapacity - 1) + 1;
using EscapedText = std::array<char, kEscapedCapacity>;
using RecordText = std::array<char, kRecordCapacity>;

/// Name of a level in the record's "C" field; "UNKNOWN" unless exactly one known bit is set.
const char* levelName(std::uint32_t level);

/// Escapes a message for the record's "M" field and terminates it; stops when the room is used up.
/// Answers the length. What isprint does not take under the locale in force becomes '#'. Caller
/// holds the process mutex.
std::size_t escapeMessage(std::string_view message, EscapedText& escaped);

/// Everything of a record but its message.
struct RecordOrigin
{
    timespec time; ///< of the monotonic clock
    int pid;
    std::uint32_t level;
    const char* source;
};

/// Formats one record; answers how many bytes of the buffer are the record: the whole buffer with
/// its terminator when the record had to be cut. Caller holds the process mutex.
std::size_t formatRecord(const RecordOrigin& origin, std::string_view message, RecordText& record);

} // namespace orvo::Logger
