#include "LogDevice.h"
#include "StreamCapture.h"

#include <hiredis/async.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include <cstdarg>
#include <cstring>
#include <unistd.h>

// A device without memory: this program's own versions of some hiredis functions refuse on demand,
// as the library's do when an allocation fails.

namespace
{

/// Prefix of the command that is refused; empty refuses none.
std::string& refusedCommand()
{
    static std::string command;
    return command;
}

/// Whether the refusal is over after the first time.
bool& refusesOnce()
{
    static bool once = false;
    return once;
}

bool& refusesConnections()
{
    static bool refuses = false;
    return refuses;
}

bool& refusesSubscriptions()
{
    static bool refuses = false;
    return refuses;
}

} // namespace

// The linker gives the logger the first of each two; the other is hiredis' own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C"
{
    int __real_redisAppendFormattedCommand(redisContext* context, const char* text, size_t length);
    redisContext* __real_redisConnectUnix(const char* path);

    int __wrap_redisAppendFormattedCommand(redisContext* context, const char* text, size_t length)
    {
        if (!refusedCommand().empty() &&
            std::string_view(text, length).find("\r\n" + refusedCommand() + "\r\n") !=
                std::string_view::npos)
        {
            if (refusesOnce())
            {
                refusedCommand().clear();
            }
            context->err = REDIS_ERR_OOM;
            std::strcpy(context->errstr, "Out of memory");
            return REDIS_ERR;
        }
        return __real_redisAppendFormattedCommand(context, text, length);
    }

    redisContext* __wrap_redisConnectUnix(const char* path)
    {
        return refusesConnections() ? nullptr : __real_redisConnectUnix(path);
    }

    int __wrap_redisAsyncCommand(redisAsyncContext* context, redisCallbackFn* callback,
                                 void* privateData, const char* format, ...)
    {
        if (refusesSubscriptions())
        {
            return REDIS_ERR;
        }
        va_list arguments;
        va_start(arguments, format);
        const int result = redisvAsyncCommand(context, callback, privateData, format, arguments);
        va_end(arguments);
        return result;
    }
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace orvo::Logger
{

class RefusedMemory : public LoggerOnDevice
{
protected:
    RefusedMemory()
    {
        refusedCommand().clear();
        refusesOnce() = false;
        refusesConnections() = false;
    }
    std::string complaintAbout(const std::string& command)
    {
        const test::StreamCapture errors(STDERR_FILENO);
        refusedCommand() = command;
        EXPECT_EQ(-1, m_logger.log(WARN, "one"));
        refusedCommand().clear();
        std::string first = errors.text();
        EXPECT_EQ(-1, m_logger.log(WARN, "two"));
        EXPECT_EQ(first + "REDIS NOT CONNECTED !n", errors.text());
        return first;
    }
    const std::string m_error = "redisPushLog: failed with err: (5:Out of memory)\n";
    const std::string m_record =
        R"(\{"T":"[0-9.]+", "P":"[0-9]+", "C":"WARN", "S":"wardex", "M":"one"\})";
};

TEST_F(RefusedMemory, ForTheAppendIsToldUnderTheNameOfAnotherCommand)
{
    EXPECT_THAT(complaintAbout("RPUSH"),
                testing::MatchesRegex("redisPushLog: LPUSH LOG:ENTRIES " + m_record +
                                      " failed!\nredisPushLog: failed with err: \\(5:Out of "
                                      "memory\\)\n"));
    EXPECT_THAT(m_records.raw(), testing::IsEmpty());
}

TEST_F(RefusedMemory, ForTheTrimIsToldWithAnotherRangeThanTheListHas)
{
    configure(R"({"source":"all","max":3})");
    EXPECT_EQ("redisPushLog: LTRIM LOG:ENTRIES 0 10000 failed!\n" + m_error,
              complaintAbout("LTRIM"));
}

TEST_F(RefusedMemory, ForThePublicationIsTold)
{
    EXPECT_THAT(complaintAbout("PUBLISH"),
                testing::MatchesRegex("redisPushLog: PUBLISH LOG:ENTRIES " + m_record +
                                      " failed!\nredisPushLog: failed with err: \\(5:Out of "
                                      "memory\\)\n"));
}

TEST_F(RefusedMemory, ForAMomentIsToldLikeThatForTheAppend)
{
    refusesOnce() = true;
    EXPECT_THAT(complaintAbout("PUBLISH"),
                testing::MatchesRegex("redisPushLog: LPUSH LOG:ENTRIES " + m_record +
                                      " failed!\nredisPushLog: failed with err: \\(5:Out of "
                                      "memory\\)\n"));
    EXPECT_THAT(m_records.raw(), testing::IsEmpty());
}

TEST_F(RefusedMemory, ForAConnectionIsAnExceptionOfTheConstructor)
{
    refusesConnections() = true;
    try
    {
        const RedisLogger logger("other", kLogSocket, kLogList, false);
        FAIL() << "constructed";
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_STREQ("DbgRedis: Redis instance not reachable", error.what());
    }
}

TEST_F(RefusedMemory, ForTheConfigurationStoreIsToldLikeAnUnreachableOne)
{
    const test::StreamCapture errors(STDERR_FILENO);
    refusesConnections() = true;
    EXPECT_EQ(0, m_logger.saveConfig("wardex", 255, -1, ""));
    EXPECT_EQ("saveConfig: Redis connection problem for connecting via /tmp/redis.sock\n",
              errors.text());
}

TEST(RefusedSubscription, IsToldAndDoesNotKeepTheLoggerFromWriting)
{
    const test::RedisServer cache(kLogSocket);
    const test::StreamCapture errors(STDERR_FILENO);
    refusesSubscriptions() = true;
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    refusesSubscriptions() = false;
    EXPECT_EQ("Error: no subscription\n", errors.text());
    EXPECT_EQ(3, logger.log(WARN, "one"));
}

} // namespace orvo::Logger
