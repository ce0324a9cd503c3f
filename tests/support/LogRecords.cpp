#include "LogRecords.h"

#include "Eventually.h"
#include "RedisClient.h"

#include <algorithm>
#include <iostream>
#include <string_view>
#include <utility>

namespace orvo::test
{

namespace
{

/// Takes `NAME":"value` with its closing quote off the front of a record; false when it is not
/// there or has no end.
bool takeField(std::string_view& rest, std::string_view opening, std::string& value)
{
    if (rest.substr(0, opening.size()) != opening)
    {
        return false;
    }
    rest.remove_prefix(opening.size());
    value.clear();
    while (!rest.empty() && rest.front() != '"')
    {
        if (rest.front() == '\\' && rest.size() > 1)
        {
            rest.remove_prefix(1);
        }
        value += rest.front();
        rest.remove_prefix(1);
    }
    if (rest.empty())
    {
        return false;
    }
    rest.remove_prefix(1);
    return true;
}

} // namespace

LogRecordFields parseLogRecord(const std::string& raw)
{
    LogRecordFields fields;
    fields.raw = raw;
    std::string_view rest(raw);
    if (!rest.empty() && rest.back() == '\0')
    {
        rest.remove_suffix(1);
    }
    fields.isWhole = takeField(rest, R"({"T":")", fields.time) &&
                     takeField(rest, R"(, "P":")", fields.pid) &&
                     takeField(rest, R"(, "C":")", fields.level) &&
                     takeField(rest, R"(, "S":")", fields.source) &&
                     takeField(rest, R"(, "M":")", fields.message) && rest == "}";
    return fields;
}

LogRecords::LogRecords(std::string socketPath, std::string listKey)
    : m_socketPath(std::move(socketPath)), m_listKey(std::move(listKey))
{
}

std::vector<std::string> LogRecords::raw() const
{
    std::vector<std::string> records;
    const RedisAnswer answer = RedisClient(m_socketPath).command({"LRANGE", m_listKey, "0", "-1"});
    for (const RedisAnswer& element : answer.elements)
    {
        records.push_back(element.text);
    }
    return records;
}

std::vector<LogRecordFields> LogRecords::all() const
{
    std::vector<LogRecordFields> records;
    for (const std::string& record : raw())
    {
        records.push_back(parseLogRecord(record));
    }
    return records;
}

std::vector<std::string> LogRecords::messages(const std::string& level) const
{
    std::vector<std::string> texts;
    for (const LogRecordFields& record : all())
    {
        if (level.empty() || record.level == level)
        {
            texts.push_back(record.message);
        }
    }
    return texts;
}

int LogRecords::count(const std::string& level, const std::string& message) const
{
    const std::vector<std::string> texts = messages(level);
    return static_cast<int>(std::count(texts.begin(), texts.end(), message));
}

bool LogRecords::expectOnce(const std::string& level, const std::string& message) const
{
    const int found = count(level, message);
    if (found == 1)
    {
        return true;
    }
    std::cerr << found << " times in the log: " << level << " " << message << "\nThe log is:\n";
    for (const std::string& record : raw())
    {
        std::cerr << "  " << record << "\n";
    }
    return false;
}

bool LogRecords::waitFor(const std::string& level, const std::string& message, int boundMs) const
{
    return eventually([&] { return count(level, message) > 0; }, boundMs);
}

void LogRecords::clear() const
{
    RedisClient(m_socketPath).command({"DEL", m_listKey});
}

} // namespace orvo::test
