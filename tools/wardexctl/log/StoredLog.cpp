#include "log/StoredLog.h"

#include "log-reading/DeviceLog.h"
#include "log-reading/RedisLink.h"
#include "logger/LogDefaults.h"

#include <memory>
#include <stdexcept>

namespace orvo::ctl
{

Problem redisProblem(const std::string& socket, const std::string& cause)
{
    return {socket, "Redis does not answer (" + cause + ")",
            "Start the device's Redis server again, then the supervisor, whose logger does not "
            "connect again."};
}

std::optional<std::vector<std::string>> StoredLog::read(const RecordFilter& filter)
{
    const auto condition = filter.condition();
    if (!condition)
    {
        m_problem = {"filter", "the text is too long to be searched for", "Take a part of it."};
        return std::nullopt;
    }
    // The logger's own connection knows no time-out, so a server that hangs is found out first.
    RedisLink probe(Logger::kLogSocket);
    if (!probe.answers())
    {
        m_problem = redisProblem(Logger::kLogSocket, probe.complaint());
        return std::nullopt;
    }
    try
    {
        // The newest is not destroyed: the end of a program's last logger takes a second.
        static auto* const kKept = new std::unique_ptr<DeviceLog>;
        *kKept = std::make_unique<DeviceLog>(*condition);
        return (*kKept)->news();
    }
    catch (const std::runtime_error& error)
    {
        m_problem = redisProblem(Logger::kLogSocket, error.what());
        return std::nullopt;
    }
}

std::vector<ReadRecord> readRecords(const std::vector<std::string>& raws)
{
    std::vector<ReadRecord> records;
    records.reserve(raws.size());
    for (const std::string& raw : raws)
    {
        records.push_back(readRecord(raw));
    }
    return records;
}

} // namespace orvo::ctl
