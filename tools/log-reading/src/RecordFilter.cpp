#include "log-reading/RecordFilter.h"

#include "logger/LogDefaults.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>

namespace orvo
{

namespace
{

/// Left for the loop around the condition, list name and indexes.
constexpr std::size_t kScriptReserve = 600;
constexpr std::size_t kLongestCondition = Logger::kFilterScriptCapacity - kScriptReserve;

bool isPrintable(char character)
{
    return character >= ' ' && character <= '~';
}

/// How a message's text stands in the record.
std::string asRecorded(const std::string& text)
{
    std::string recorded;
    for (const char character : text)
    {
        if (character == '"' || character == '/' || character == '\\')
        {
            recorded += '\\';
        }
        recorded += isPrintable(character) ? character : '#';
    }
    return recorded;
}

bool standsForItself(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == ' ';
}

/// A Lua string literal of printable bytes. All but letters, digits and blanks go in by number,
/// with three digits, so that nothing in it can end it or be joined to what follows.
std::string luaLiteral(const std::string& text)
{
    constexpr int kThreeDigits = 1000;
    std::string literal = "'";
    for (const char character : text)
    {
        if (standsForItself(character))
        {
            literal += character;
        }
        else
        {
            const std::string digits = std::to_string(kThreeDigits + character);
            literal += "\\" + digits.substr(1);
        }
    }
    return literal + "'";
}

std::string contains(const std::string& where, const std::string& text)
{
    return "string.find(" + where + "," + luaLiteral(text) + ",1,true)";
}

std::string levelCondition(const std::string& level)
{
    const std::vector<std::string>& names = levelNames();
    std::string condition = "(" + contains("entry", R"("C":"UNKNOWN")");
    for (auto name = std::find(names.begin(), names.end(), level); name != names.end(); ++name)
    {
        condition += " or " + contains("entry", R"("C":")" + *name + "\"");
    }
    return condition + ")";
}

/// The message alone is searched; all of a record that was cut or is none.
std::string textCondition(const std::string& text)
{
    return contains(R"lua((string.match(entry,'"M":"(.*)"}$') or entry))lua", asRecorded(text));
}

/// A number is written by us and holds digits and a point only.
std::string sinceCondition(double seconds)
{
    constexpr int kDecimals = 4;
    std::ostringstream number;
    number.imbue(std::locale::classic());
    number << std::fixed << std::setprecision(kDecimals) << std::max(seconds, 0.0);
    return R"lua((tonumber(string.match(entry,'^{"T":"(%d+%.%d+)"')) or 1e18)>=)lua" + number.str();
}

} // namespace

const std::vector<std::string>& levelNames()
{
    static const std::vector<std::string> kNames{"DEBUG", "DIAG",  "TRACE", "INFO",
                                                 "WARN",  "ERROR", "FATAL", "EMERG"};
    return kNames;
}

std::optional<std::string> RecordFilter::condition() const
{
    std::string condition = level.empty() ? "" : levelCondition(level);
    if (!text.empty())
    {
        condition += (condition.empty() ? "" : " and ") + textCondition(text);
    }
    if (!source.empty())
    {
        condition += (condition.empty() ? "" : " and ") +
                     contains("entry", ", \"S\":\"" + source + "\", \"M\":\"");
    }
    if (since)
    {
        condition += (condition.empty() ? "" : " and ") + sinceCondition(*since);
    }
    if (condition.size() > kLongestCondition)
    {
        return std::nullopt;
    }
    return condition;
}

} // namespace orvo
