#include "CrashPattern.h"

#include "logger/LogDefaults.h"

#include <exception>
#include <regex>

namespace orvo::Logger
{

namespace
{

/// Whether a look-ahead ends before anything begins in which another one could stand. "\\c" may
/// take the end for its operand.
bool isPlainLookahead(std::string_view rest)
{
    for (std::size_t at = 0; at < rest.size(); ++at)
    {
        const char byte = rest[at];
        if (byte == '(' || byte == ')' || byte == '[')
        {
            return byte == ')';
        }
        if (byte == '\\' && (++at == rest.size() || rest[at] == 'c'))
        {
            return false;
        }
    }
    return false;
}

/// The "(?=" and "(?!" of a pattern. An escaped parenthesis before a question mark counts too: a
/// bound may be too strict for a strange pattern, never too lax.
struct Lookaheads
{
    std::size_t count{0};
    std::size_t plain{0};
};

Lookaheads lookaheadsOf(std::string_view pattern)
{
    Lookaheads found;
    for (std::size_t at = pattern.find("(?"); at != std::string_view::npos;
         at = pattern.find("(?", at + 2))
    {
        const char kind = at + 2 < pattern.size() ? pattern[at + 2] : '\0';
        if (kind == '=' || kind == '!')
        {
            ++found.count;
            found.plain += isPlainLookahead(pattern.substr(at + 3)) ? 1U : 0U;
        }
    }
    return found;
}

/// Why look-aheads could take too long; nullptr when they cannot. Each one is tried again at every
/// byte of the message, through all its states.
const char* objectionToLookaheads(std::string_view pattern)
{
    const Lookaheads lookaheads = lookaheadsOf(pattern);
    if (lookaheads.count > 1 && lookaheads.plain < lookaheads.count)
    {
        return "several look-aheads, one with a group or a set in it";
    }
    if (lookaheads.count > 0 &&
        (pattern.size() > kLookaheadPatternCapacity || pattern.find('{') != std::string_view::npos))
    {
        return "a look-ahead in a pattern that is long or has a count";
    }
    return nullptr;
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
    if (const char* const objection = objectionToLookaheads(pattern))
    {
        reason = objection;
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
