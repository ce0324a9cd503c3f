#pragma once

#include <cstddef>
#include <cstdint>

namespace orvo::Logger
{

// --- where the device keeps its logs; every reader on the device relies on these names ---

/// Unix socket of the Redis server that holds the volatile data of the device, the log among it.
inline constexpr char kLogSocket[] = "/tmp/redis-cache.sock";
/// Unix socket of the Redis server whose content survives a reboot: the stored log configurations.
inline constexpr char kConfigSocket[] = "/tmp/redis.sock";
/// List of the log records, and channel on which each record is published.
inline constexpr char kLogList[] = "LOG:ENTRIES";
/// Hash of the stored configurations; its fields are program names and kCommonSource.
inline constexpr char kConfigHash[] = "LOG:PERM:CFG";
/// Channel on which a configuration is published for programs that run.
inline constexpr char kConfigChannel[] = "LOGGER:CFG";
/// Program name that stands for all programs of the device.
inline constexpr char kCommonSource[] = "all";

// --- start values of a logger that found no configuration ---

/// Enabled levels: WARN, ERROR, FATAL and EMERG.
inline constexpr std::uint32_t kDefaultMask = 0xF0;
/// Records that the list keeps.
inline constexpr int kDefaultMaxEntries = 10000;

// --- sizes in bytes, terminator included; readers of the list know the first two ---

/// Longest formatted message; what is longer is cut.
inline constexpr std::size_t kMessageCapacity = 500;
/// Longest record; what is longer is cut and then includes the terminator.
inline constexpr std::size_t kRecordCapacity = 500;
/// Text that announces a new configuration.
inline constexpr std::size_t kAnnouncementCapacity = 128;
/// Texts of the process-wide facade.
inline constexpr std::size_t kFacadeCapacity = 255;
/// Script that Redis runs for a filtered read.
inline constexpr std::size_t kFilterScriptCapacity = 4096;

// --- bounds on the crash pattern, which anybody with access to Redis can set ---

/// Longest pattern in bytes: a longest message with every character escaped. Bounds the stack that
/// its compilation takes.
inline constexpr std::size_t kCrashPatternCapacity = 1000;
/// Longest pattern with look-aheads, which are tried anew at each byte of a message: bounds the
/// time of that.
inline constexpr std::size_t kLookaheadPatternCapacity = 100;
/// Digits of a repetition count or of a back-reference's number.
inline constexpr std::size_t kCrashPatternDigits = 4;

// --- a Redis that does not answer ---

/// Seconds that a caller waits for each answer before the connection counts as lost. Long enough
/// for a server that is busy with a large request, and together with two pings that time out still
/// far from a usual watchdog's countdown.
inline constexpr int kAnswerPatienceSeconds = 2;

// --- configuration thread ---

/// Seconds between two looks of the configuration thread at whether it is to end.
inline constexpr int kStopCheckSeconds = 1;

static_assert(sizeof(int) == 4, "the record limits and configuration values are 32-bit");

} // namespace orvo::Logger
