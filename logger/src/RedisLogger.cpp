#include "logger/RedisLogger.h"

#include "ConfigThread.h"
#include "LoggerProcess.h"
#include "MessageFormat.h"
#include "RedisLoggerPimpl.h"

#include <mutex>

#include <cstdarg>

namespace orvo::Logger
{

namespace
{

using Lock = std::lock_guard<std::mutex>;

// Not inline: most calls are masked out, and they shall not pay for the room of a message.

[[gnu::noinline, gnu::format(printf, 3, 0)]] int
pushFormatted(RedisLogger::RedisLoggerPimpl& logger, std::uint32_t level, const char* format,
              va_list arguments)
{
    char message[kMessageCapacity];
    const std::size_t length = formatMessage(message, format, arguments);
    return logger.redisPushLog(level, message, length, true);
}

[[gnu::noinline, gnu::format(printf, 3, 0)]] int
pushFormattedOnce(RedisLogger::RedisLoggerPimpl& logger, std::uint32_t level, const char* format,
                  va_list arguments)
{
    char message[kMessageCapacity];
    const std::size_t length = formatMessage(message, format, arguments);
    if (!LoggerProcess::rememberText(std::string_view(message, length)))
    {
        return 0;
    }
    return logger.redisPushLog(level, message, length, true);
}

} // namespace

RedisLogger::RedisLogger(const std::string& source, const std::string& socketPath,
                         const std::string& listKey, bool loadConfig)
    : RedisLogger(std::make_unique<RedisLoggerPimpl>(source, Endpoint{"", 0, socketPath}, listKey),
                  loadConfig)
{
}

RedisLogger::RedisLogger(const std::string& source, const std::string& host, int port,
                         const std::string& listKey, bool loadConfig)
    : RedisLogger(std::make_unique<RedisLoggerPimpl>(source, Endpoint{host, port, ""}, listKey),
                  loadConfig)
{
}

RedisLogger::RedisLogger(std::unique_ptr<RedisLoggerPimpl> pimpl, bool loadConfig)
    : m_pimpl(std::move(pimpl))
{
    LoggerProcess& process = LoggerProcess::instance();
    const Lock lock(LoggerProcess::mutex());
    m_pimpl->connect();
    process.attach(m_pimpl.get(), m_pimpl->endpoint());
    if (loadConfig)
    {
        m_pimpl->loadConfig(kCommonSource);
        m_pimpl->loadConfig(m_pimpl->source());
    }
}

RedisLogger::~RedisLogger()
{
    LoggerProcess& process = LoggerProcess::instance();
    std::unique_ptr<ConfigThread> endingThread;
    {
        const Lock lock(LoggerProcess::mutex());
        endingThread = process.detach(m_pimpl.get());
    }
    // Joined without the mutex: a configuration that is being handled in the thread waits for it.
    endingThread.reset();
}

bool RedisLogger::isEnabled(std::uint32_t level) const
{
    const Lock lock(LoggerProcess::mutex());
    return m_pimpl->isEnabled(level);
}

int RedisLogger::log(std::uint32_t level, const char* format, ...)
{
    const Lock lock(LoggerProcess::mutex());
    if (!m_pimpl->isEnabled(level))
    {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int result = pushFormatted(*m_pimpl, level, format, arguments);
    va_end(arguments);
    return result;
}

int RedisLogger::logOnce(std::uint32_t level, const char* format, ...)
{
    const Lock lock(LoggerProcess::mutex());
    if (!m_pimpl->isEnabled(level))
    {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int result = pushFormattedOnce(*m_pimpl, level, format, arguments);
    va_end(arguments);
    return result;
}

int RedisLogger::write(std::uint32_t level, const char* text, std::size_t length)
{
    const Lock lock(LoggerProcess::mutex());
    return m_pimpl->redisPushLog(level, text, length, true);
}

int RedisLogger::saveConfig(const std::string& source, int mask, int maxEntries,
                            const std::string& pattern)
{
    const Lock lock(LoggerProcess::mutex());
    return m_pimpl->saveConfig(source, mask, maxEntries, pattern);
}

std::vector<std::string> RedisLogger::getLogEntries(int first, int last)
{
    const Lock lock(LoggerProcess::mutex());
    return m_pimpl->getLogEntries(first, last);
}

std::vector<std::string> RedisLogger::getLogEntriesFiltered(int first, int last,
                                                            const std::string& condition)
{
    const Lock lock(LoggerProcess::mutex());
    return m_pimpl->getLogEntriesFiltered(first, last, condition);
}

int RedisLogger::getLogEntryCount()
{
    const Lock lock(LoggerProcess::mutex());
    return m_pimpl->getLogEntryCount();
}

int RedisLogger::clearLogEntries()
{
    const Lock lock(LoggerProcess::mutex());
    return m_pimpl->clearLogEntries();
}

} // namespace orvo::Logger
