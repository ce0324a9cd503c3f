#include "log-reading/ReadRecord.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace orvo
{

namespace
{

constexpr std::size_t kFractionDigits = 4;
/// More digits than any time of a device has, few enough for the number.
constexpr std::size_t kMostSecondDigits = 14;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

std::string printable(std::string_view bytes)
{
    std::string text(bytes);
    std::replace_if(
        text.begin(), text.end(), [](char each) { return each < ' ' || each > '~'; }, '#');
    return text;
}

std::string unescaped(std::string_view escaped)
{
    std::string text;
    text.reserve(escaped.size());
    for (std::size_t index = 0; index < escaped.size(); ++index)
    {
        if (escaped[index] == '\\')
        {
            ++index;
        }
        // A cut record may end between a backslash and what it escapes.
        if (index < escaped.size())
        {
            text += escaped[index];
        }
    }
    return printable(text);
}

/// Takes a prefix off; false when the text begins otherwise.
bool take(std::string_view& text, std::string_view prefix)
{
    if (text.substr(0, prefix.size()) != prefix)
    {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

/// Takes everything up to an end, and the end.
std::optional<std::string_view> takeUntil(std::string_view& text, std::string_view end)
{
    const std::size_t place = text.find(end);
    if (place == std::string_view::npos)
    {
        return std::nullopt;
    }
    const std::string_view taken = text.substr(0, place);
    text.remove_prefix(place + end.size());
    return taken;
}

std::optional<std::int64_t> timeOf(std::string_view text)
{
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos || point == 0 || point > kMostSecondDigits ||
        text.size() != point + 1 + kFractionDigits)
    {
        return std::nullopt;
    }
    std::int64_t time = 0;
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        if (index == point)
        {
            continue;
        }
        if (!isDigit(text[index]))
        {
            return std::nullopt;
        }
        constexpr int kBase = 10;
        time = time * kBase + (text[index] - '0');
    }
    return time;
}

/// The message with what ends it, or without in a record that was cut.
void setMessage(ReadRecord& record, std::string_view rest)
{
    constexpr std::string_view kEnd = "\"}";
    record.isCut = rest.size() < kEnd.size() || rest.substr(rest.size() - kEnd.size()) != kEnd;
    if (!record.isCut)
    {
        rest.remove_suffix(kEnd.size());
    }
    else if (!rest.empty() && rest.back() == '\0')
    {
        rest.remove_suffix(1);
    }
    record.message = unescaped(rest);
}

bool takeApart(ReadRecord& record, std::string_view rest)
{
    if (!take(rest, "{\"T\":\""))
    {
        return false;
    }
    const auto time = takeUntil(rest, "\", \"P\":\"");
    const auto pid = takeUntil(rest, "\", \"C\":\"");
    const auto level = takeUntil(rest, "\", \"S\":\"");
    const auto source = takeUntil(rest, "\", \"M\":\"");
    const auto units = time ? timeOf(*time) : std::nullopt;
    if (!units || !pid || !level || !source)
    {
        return false;
    }
    record.time = *units;
    record.pid = printable(*pid);
    record.level = printable(*level);
    record.source = printable(*source);
    setMessage(record, rest);
    return true;
}

} // namespace

ReadRecord readRecord(const std::string& raw)
{
    ReadRecord record;
    record.raw = raw;
    record.isRecord = takeApart(record, raw);
    if (!record.isRecord)
    {
        record.message = printable(raw);
    }
    return record;
}

} // namespace orvo
