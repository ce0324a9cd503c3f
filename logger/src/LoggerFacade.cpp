#include "logger/LoggerFacade.h"

#include "FacadeLevels.h"
#include "FallbackText.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <atomic>
#include <exception>
#include <memory>
#include <mutex>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <syslog.h>

namespace orvo::Logger
{

namespace
{

struct Facade
{
    std::atomic<int> mode{LoggerStdout};
    std::mutex instanceMutex;
    /// Shared, so that a shutdown does not pull it from under another thread's text.
    std::shared_ptr<RedisLogger> instance;
};

/// Never destroyed: a destructor at process exit may still want to tell something.
Facade& facade()
{
    static auto* immortal = new Facade;
    return *immortal;
}

std::shared_ptr<RedisLogger> currentInstance()
{
    const std::lock_guard<std::mutex> lock(facade().instanceMutex);
    return facade().instance;
}

void makeInstance()
{
    const std::lock_guard<std::mutex> lock(facade().instanceMutex);
    if (facade().instance != nullptr)
    {
        return;
    }
    try
    {
        facade().instance = std::make_shared<RedisLogger>(program_invocation_short_name, kLogSocket,
                                                          kLogList, true);
    }
    catch (const std::exception&)
    {
        // Without an instance the first text turns to syslog, and says so there.
        facade().instance = nullptr;
    }
}

int writeToSyslog(const FacadeLevel& level, const char* text)
{
    syslog(level.syslogPriority, "%s", text);
    return static_cast<int>(std::strlen(text));
}

int writeToRedis(int levelIndex, const FacadeLevel& level, const char* text)
{
    const std::shared_ptr<RedisLogger> instance = currentInstance();
    const int result = instance != nullptr ? instance->write(level.level, text, 0) : -1;
    if (result == -1)
    {
        facade().mode = LoggerSyslog;
        syslog(LOG_WARNING, "Logger failure: Switching to syslog.");
        (void)loggerPrintf(levelIndex, "%s", asFormatted(text).c_str());
    }
    return result;
}

int writeToStandardOutput(const char* text)
{
    facade().mode = LoggerStdout;
    std::printf("%s\n", text);
    return static_cast<int>(std::strlen(text));
}

} // namespace

void loggerSetMode(int mode)
{
    facade().mode = mode;
}

int loggerInit()
{
    constexpr int kAllPriorities = 0xff;
    switch (facade().mode)
    {
    case LoggerSyslog:
        // Nothing else in the process sets the mask.
        setlogmask(kAllPriorities); // NOLINT(concurrency-mt-unsafe)
        openlog(program_invocation_short_name, LOG_PID | LOG_CONS | LOG_NDELAY | LOG_PERROR,
                LOG_LOCAL1);
        break;
    case LoggerRedis:
        makeInstance();
        break;
    default:
        facade().mode = LoggerStdout;
        break;
    }
    return 0;
}

int loggerWrite(int levelIndex, const char* text)
{
    const FacadeLevel* level = facadeLevel(levelIndex);
    if (level == nullptr)
    {
        return -1;
    }
    switch (facade().mode)
    {
    case LoggerSyslog:
        return writeToSyslog(*level, text);
    case LoggerRedis:
        return writeToRedis(levelIndex, *level, text);
    default:
        return writeToStandardOutput(text);
    }
}

int loggerPrintf(int levelIndex, const char* format, ...)
{
    if (levelIndex > LoggerFatal)
    {
        return -1;
    }
    char text[kFacadeCapacity] = "";
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return loggerWrite(levelIndex, text);
}

int loggerInfo(const char* format, ...)
{
    char text[kFacadeCapacity] = "";
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return loggerWrite(LoggerInfo, text);
}

int loggerShutdown()
{
    std::shared_ptr<RedisLogger> ending;
    {
        const std::lock_guard<std::mutex> lock(facade().instanceMutex);
        ending.swap(facade().instance);
    }
    return 1;
}

} // namespace orvo::Logger
