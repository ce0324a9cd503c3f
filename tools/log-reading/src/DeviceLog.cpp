#include "log-reading/DeviceLog.h"

#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <stdexcept>
#include <utility>

namespace orvo
{

namespace
{

constexpr char kSource[] = "record-reader";
/// Records of the first look for the place where the last one ended, and how many times more the
/// next look takes when it was not among them.
constexpr int kFirstWindow = 64;
constexpr int kWidening = 8;

std::unique_ptr<Logger::RedisLogger> connect(const char* socket)
{
    return std::make_unique<Logger::RedisLogger>(kSource, socket, Logger::kLogList, false);
}

/// The first logger of a process decides where its configuration thread listens. At the server of
/// the stored configurations nothing is published, and so no configuration for all programs makes
/// this one announce it with a record of its own.
std::unique_ptr<Logger::RedisLogger> connectAwayFromConfigurations()
{
    try
    {
        return connect(Logger::kConfigSocket);
    }
    catch (const std::runtime_error&)
    {
        return nullptr;
    }
}

} // namespace

DeviceLog::DeviceLog(std::string condition)
    : m_condition(std::move(condition)), m_deaf(connectAwayFromConfigurations()),
      m_log(connect(Logger::kLogSocket))
{
}

DeviceLog::~DeviceLog() = default;

int DeviceLog::count()
{
    const int count = m_log->getLogEntryCount();
    if (count != 0)
    {
        return count;
    }
    // An empty list and a lost connection look alike, and a lost one stays lost.
    try
    {
        m_log = connect(Logger::kLogSocket);
    }
    catch (const std::runtime_error&)
    {
        return 0;
    }
    return m_log->getLogEntryCount();
}

std::vector<std::string> DeviceLog::newest(int first)
{
    return m_condition.empty() ? m_log->getLogEntries(first, -1)
                               : m_log->getLogEntriesFiltered(first, -1, m_condition);
}

std::vector<std::string> DeviceLog::news()
{
    m_isGapped = false;
    const int kept = count();
    if (kept == 0)
    {
        m_tail.forget();
        m_lastCount = 0;
        return {};
    }
    std::vector<std::string> last = m_log->getLogEntries(-1, -1);
    if (kept == m_lastCount && last == m_lastRecord)
    {
        return {};
    }
    m_lastCount = kept;
    m_lastRecord = std::move(last);
    return since(kept);
}

std::vector<std::string> DeviceLog::since(int count)
{
    for (int window = m_tail.isEmpty() ? count : kFirstWindow; window < count; window *= kWidening)
    {
        std::vector<std::string> records = newest(-window);
        if (const auto begin = m_tail.begin(records))
        {
            m_tail.add(records, *begin);
            records.erase(records.begin(), records.begin() + static_cast<std::ptrdiff_t>(*begin));
            return records;
        }
    }
    std::vector<std::string> records = newest(0);
    const auto begin = m_tail.begin(records);
    m_isGapped = !begin && !m_tail.isEmpty() && m_condition.empty() && !records.empty();
    m_tail.add(records, begin.value_or(0));
    records.erase(records.begin(),
                  records.begin() + static_cast<std::ptrdiff_t>(begin.value_or(0)));
    return records;
}

} // namespace orvo
