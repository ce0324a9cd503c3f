#pragma once

#include "Endpoint.h"
#include "LogConfiguration.h"
#include "RecordFrame.h"
#include "RedisHandles.h"
#include "logger/RedisLogger.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::Logger
{

/// One logger: its connection, its name and its settings.
///
/// Threads: any that holds the process mutex (LoggerProcess).
class RedisLogger::RedisLoggerPimpl
{
public:
    RedisLoggerPimpl(const std::string& source, const Endpoint& endpoint,
                     const std::string& listKey);

    /// Opens the connection; throws std::runtime_error when there is nothing at its other end.
    void connect();
    [[nodiscard]] const Endpoint& endpoint() const { return m_endpoint; }
    [[nodiscard]] const std::string& source() const { return m_source; }

    [[nodiscard]] bool isEnabled(std::uint32_t level) const
    {
        return (level & m_settings.mask) != 0;
    }
    /// Writes one record, then applies the crash pattern, whatever became of the record. Length 0
    /// measures the text; without checkMask the mask is not asked. Result as of RedisLogger::log().
    int redisPushLog(std::uint32_t level, const char* text, std::size_t length, bool checkMask);

    /// 1 when the configuration was taken, 0 when not; announced by a record on demand.
    int applyConfiguration(const char* text, bool announce);
    /// Takes the configuration stored under a field of LOG:PERM:CFG; result as above.
    int loadConfig(const std::string& field);
    int saveConfig(const std::string& source, int mask, int maxEntries, const std::string& pattern);

    std::vector<std::string> getLogEntries(int first, int last);
    std::vector<std::string> getLogEntriesFiltered(int first, int last,
                                                   const std::string& condition);
    int getLogEntryCount();
    int clearLogEntries();

private:
    [[nodiscard]] bool isConnected() const;
    int pushRecord(std::uint32_t level, std::string_view message);
    void applyCrashRule(std::string_view message);
    void announceConfiguration();

    RedisConnection m_connection;
    const std::string m_source;
    const Endpoint m_endpoint;
    const int m_pid;
    const std::string m_listKey;
    LogSettings m_settings;
    RecordFrame m_frame;
    /// Known from its first use on; it is then told and not tried again.
    bool m_isPatternUnusable{false};
};

} // namespace orvo::Logger
