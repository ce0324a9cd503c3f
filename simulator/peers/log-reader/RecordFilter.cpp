#include "log-reader/RecordFilter.h"

#include "logger/LogDefaults.h"

#include <algorithm>

namespace orvo::simulator
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
    if (condition.size() > kLongestCondition)
    {
        return std::nullopt;
    }
    return condition;
}

} // namespace orvo::simulator
