#pragma once

#include <string>
#include <string_view>

namespace orvo::Logger
{

/// What a crash pattern has to say about a message.
enum class CrashVerdict
{
    Spare,   ///< the pattern does not cover the whole message
    Crash,   ///< it does
    Unusable ///< it is no pattern, or one whose evaluation could hurt the process
};

/// Tries an ECMAScript regular expression on a whole message.
///
/// The pattern comes from Redis, so it is taken for hostile: it is matched without backtracking,
/// which bounds both the stack (by the pattern's length, whatever the message's) and the time, and
/// patterns that need backtracking (back-references) or blow up are unusable. Never throws.
///
/// reason: why the pattern is unusable; otherwise left alone.
CrashVerdict tryCrashPattern(const std::string& pattern, std::string_view message,
                             std::string& reason);

} // namespace orvo::Logger
