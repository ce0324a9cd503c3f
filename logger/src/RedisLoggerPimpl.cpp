#include "RedisLoggerPimpl.h"

#include "ConfigStore.h"
#include "CrashPattern.h"
#include "LogRecord.h"
#include "LogRetrieval.h"
#include "LoggerProcess.h"
#include "RecordPipeline.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace orvo::Logger
{

RedisLogger::RedisLoggerPimpl::RedisLoggerPimpl(const std::string& source, const Endpoint& endpoint,
                                                const std::string& listKey)
    : m_source(source), m_endpoint(endpoint), m_pid(getpid()), m_listKey(listKey), m_frame(listKey)
{
}

void RedisLogger::RedisLoggerPimpl::connect()
{
    m_connection.reset(m_endpoint.port == 0
                           ? redisConnectUnix(m_endpoint.unixPath.c_str())
                           : redisConnect(m_endpoint.host.c_str(), m_endpoint.port));
    if (m_connection == nullptr)
    {
        throw std::runtime_error("DbgRedis: Redis instance not reachable");
    }
    if (m_connection->err != 0)
    {
        throw std::runtime_error(m_connection->errstr);
    }
    limitPatience(m_connection.get());
}

bool RedisLogger::RedisLoggerPimpl::isConnected() const
{
    if (m_connection == nullptr)
    {
        // No line end, and the last two characters are meant: the text is known like this.
        std::fputs("REDIS NOT CONNECTED !n", stderr);
        return false;
    }
    return m_connection->err == 0;
}

int RedisLogger::RedisLoggerPimpl::redisPushLog(std::uint32_t level, const char* text,
                                                std::size_t length, bool checkMask)
{
    const std::string_view message(text, length == 0 ? std::strlen(text) : length);
    int result = 0;
    if (!checkMask || isEnabled(level))
    {
        result = pushRecord(level, message);
    }
    applyCrashRule(message);
    return result;
}

int RedisLogger::RedisLoggerPimpl::pushRecord(std::uint32_t level, std::string_view message)
{
    if (!isConnected())
    {
        return -1;
    }
    RecordOrigin origin{{}, m_pid, level, m_source.c_str()};
    clock_gettime(CLOCK_MONOTONIC, &origin.time);
    RecordText record;
    const std::size_t length = formatRecord(origin, message, record);
    m_frame.take(record, length, m_settings.maxEntries);
    if (!writeRecord(m_connection.get(), m_frame, m_listKey, record))
    {
        m_connection.reset();
        return -1;
    }
    constexpr std::size_t kLongest = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(message.size(), kLongest));
}

void RedisLogger::RedisLoggerPimpl::applyCrashRule(std::string_view message)
{
    if (m_settings.segvRegex.empty() || m_isPatternUnusable)
    {
        return;
    }
    std::string reason;
    switch (tryCrashPattern(m_settings.segvRegex, message, reason))
    {
    case CrashVerdict::Spare:
        break;
    case CrashVerdict::Crash:
        std::fprintf(stderr, "Will raise(SIGSEGV): %.*s matches configured regex(%s)!\n",
                     static_cast<int>(message.size()), message.data(),
                     m_settings.segvRegex.c_str());
        std::fflush(stderr);
        std::raise(SIGSEGV);
        break;
    case CrashVerdict::Unusable:
        if (LoggerProcess::instance().isNewComplaint(m_settings.segvRegex))
        {
            std::fprintf(stderr, "redisPushLog: segvregex(%s) matches nothing: %s\n",
                         m_settings.segvRegex.c_str(), reason.c_str());
        }
        m_isPatternUnusable = true;
        break;
    }
}

int RedisLogger::RedisLoggerPimpl::applyConfiguration(const char* text, bool announce)
{
    const std::string formerPattern = m_settings.segvRegex;
    switch (readConfiguration(text, m_source, getpid(), m_settings))
    {
    case ConfigVerdict::NotJson:
        std::printf("Received no valid JSON config?! (%s)\n", text);
        // Under the init system standard output is a file: who sent the text must see this now, and
        // a daemon that a signal ends never writes what is still buffered.
        std::fflush(stdout);
        return 0;
    case ConfigVerdict::Ignored:
        return 0;
    case ConfigVerdict::Taken:
        break;
    }
    m_isPatternUnusable = m_isPatternUnusable && formerPattern == m_settings.segvRegex;
    if (announce)
    {
        announceConfiguration();
    }
    return 1;
}

void RedisLogger::RedisLoggerPimpl::announceConfiguration()
{
    char text[kAnnouncementCapacity];
    // The instance is told by the low half of its address where addresses have 64 bits.
    const auto instance = static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(this));
    const int length = std::snprintf(text, sizeof text,
                                     "Applying new log configuration: mask(0x%x), SigSegV "
                                     "Regexp(%s), max logs(%d), instance(0x%x)",
                                     m_settings.mask, m_settings.segvRegex.c_str(),
                                     m_settings.maxEntries, instance);
    const std::size_t stored =
        std::min(static_cast<std::size_t>(std::max(length, 0)), sizeof text - 1);
    (void)redisPushLog(INFO, text, stored, false);
}

int RedisLogger::RedisLoggerPimpl::loadConfig(const std::string& field)
{
    const std::optional<std::string> text = loadConfiguration(field);
    return text ? applyConfiguration(text->c_str(), false) : 0;
}

int RedisLogger::RedisLoggerPimpl::saveConfig(const std::string& source, int mask, int maxEntries,
                                              const std::string& pattern)
{
    const RedisConnection store = openConfigStore("saveConfig", kConfigSocket);
    if (store == nullptr)
    {
        return 0;
    }
    if (source.empty() || (mask < 0 && maxEntries < 1 && pattern.empty()))
    {
        constexpr char kNothingToSave[] = "saveConfig: No log configuration to save ?";
        (void)redisPushLog(WARN, kNothingToSave, 0, true);
        return 0;
    }
    const std::optional<std::string> answer = storeConfiguration(
        store.get(), source, configurationText(source, mask, maxEntries, pattern));
    return answer ? applyConfiguration(answer->c_str(), false) : 0;
}

std::vector<std::string> RedisLogger::RedisLoggerPimpl::getLogEntries(int first, int last)
{
    return isConnected() ? readEntries(m_connection.get(), m_listKey, first, last)
                         : std::vector<std::string>();
}

std::vector<std::string>
RedisLogger::RedisLoggerPimpl::getLogEntriesFiltered(int first, int last,
                                                     const std::string& condition)
{
    return isConnected()
               ? readFilteredEntries(m_connection.get(), m_listKey, first, last, condition)
               : std::vector<std::string>();
}

int RedisLogger::RedisLoggerPimpl::getLogEntryCount()
{
    return isConnected() ? countEntries(m_connection.get(), m_listKey) : 0;
}

int RedisLogger::RedisLoggerPimpl::clearLogEntries()
{
    return isConnected() ? clearEntries(m_connection.get(), m_listKey) : 0;
}

} // namespace orvo::Logger
