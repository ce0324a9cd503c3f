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
