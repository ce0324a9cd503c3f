#include "CrashPattern.h"

#include "logger/LogDefaults.h"

#include <exception>
#include <regex>

namespace orvo::Logger
{

namespace
{

/// Counts "(?=" and "(?!". An escaped parenthesis before a question mark counts too: a bound may be
/// too strict for a strange pattern, never too lax.
std::size_t lookaheadsIn(const std::string& pattern)
{
    std::size_t count = 0;
    for (std::size_t at = pattern.find("(?"); at != std::string::npos;
         at = pattern.find("(?", at + 2))
    {
        const char kind = at + 2 < pattern.size() ? pattern[at + 2] : '\0';
        count += (kind == '=' || kind == '!') ? 1 : 0;
    }
    return count;
}

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

/// Whether a number that the standard library would read, as in "{10}", "{1,10}" or "\\10", has too
/// many digits: it does not look whether they fit its word.
bool hasHugeNumber(const std::string& pattern)
{
    char context = '\0'; // what stands before the digits
    std::size_t digits = 0;
    for (const char byte : pattern)
    {
        if (isDigit(byte))
        {
            ++digits;
            if (digits > kCrashPatternDigits && (context == '{' || context == '\\'))
            {
                return true;
            }
            continue;
        }
        const bool isUpperBound = byte == ',' && context == '{' && digits > 0;
        context = isUpperBound ? '{' : byte;
        digits = 0;
    }
    return false;
}

} // namespace

CrashVerdict tryCrashPattern(const std::string& pattern, std::string_view message,
                             std::string& reason)
{
    if (pattern.size() > kCrashPatternCapacity)
    {
        reason = "longer than " + std::to_string(kCrashPatternCapacity) + " characters";
        return CrashVerdict::Unusable;
    }
    if (lookaheadsIn(pattern) > kCrashPatternLookaheads)
    {
        reason = "more look-aheads than " + std::to_string(kCrashPatternLookaheads);
        return CrashVerdict::Unusable;
    }
    if (hasHugeNumber(pattern))
    {
        reason = "a number of more than " + std::to_string(kCrashPatternDigits) + " digits";
        return CrashVerdict::Unusable;
    }
    try
    {
        // __polynomial is libstdc++'s matcher that does not backtrack; how many states a pattern
        // may have there is set in this library's build file.
        const std::regex regex(pattern, std::regex::ECMAScript | std::regex::nosubs |
                                            std::regex_constants::__polynomial);
        return std::regex_match(message.begin(), message.end(), regex) ? CrashVerdict::Crash
                                                                       : CrashVerdict::Spare;
    }
    catch (const std::exception& error)
    {
        reason = error.what();
        return CrashVerdict::Unusable;
    }
}

} // namespace orvo::Logger
