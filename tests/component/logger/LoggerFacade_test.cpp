#include "logger/LoggerFacade.h"

#include "Eventually.h"
#include "LogRecords.h"
#include "RedisClient.h"
#include "RedisServer.h"
#include "StreamCapture.h"
#include "SyslogCapture.h"
#include "logger/LogDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <string>
#include <syslog.h>
#include <thread>
#include <unistd.h>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace orvo::Logger
{

/// The facade belongs to the process; each test leaves it as a process finds it.
class LoggerFacade : public testing::Test
{
protected:
    void TearDown() override
    {
        loggerShutdown();
        loggerSetMode(LoggerStdout);
        setlogmask(LOG_UPTO(LOG_DEBUG)); // NOLINT(concurrency-mt-unsafe)
    }
    void select(int mode)
    {
        loggerSetMode(mode);
        EXPECT_EQ(0, loggerInit());
    }
    using Message = test::SyslogCapture::Message;

    test::SyslogCapture m_syslog;
};

TEST_F(LoggerFacade, WritesToStandardOutputAtFirst)
{
    const test::StreamCapture output(STDOUT_FILENO);
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_EQ(9, loggerWrite(LoggerDebug, "100%s one"));
    EXPECT_EQ(5, loggerPrintf(LoggerFatal, "%s %d", "two", 2));
    EXPECT_EQ(5, loggerInfo("%s", "three"));
    EXPECT_EQ(4, loggerWrite(LoggerEmerg, "four"));
    EXPECT_EQ("100%s one\ntwo 2\nthree\nfour\n", output.text());
    EXPECT_EQ("", errors.text());
    EXPECT_THAT(m_syslog.messages(), IsEmpty());
}

TEST_F(LoggerFacade, TakesAnyOtherModeForStandardOutput)
{
    for (const int mode : {0, 3, 5, -1})
    {
        const test::StreamCapture output(STDOUT_FILENO);
        select(mode);
        loggerWrite(LoggerInfo, "one");
        loggerSetMode(mode);
        loggerWrite(LoggerInfo, "two");
        EXPECT_EQ("one\ntwo\n", output.text());
    }
}

TEST_F(LoggerFacade, RefusesWhatIsNoLevel)
{
    const test::StreamCapture output(STDOUT_FILENO);
    for (const int index : {-1, 7, INT_MIN, INT_MAX})
    {
        EXPECT_EQ(-1, loggerWrite(index, "one"));
        EXPECT_EQ(-1, loggerPrintf(index, "one"));
    }
    EXPECT_EQ("", output.text());
}

TEST_F(LoggerFacade, RefusesToFormatAnEmergency)
{
    const test::StreamCapture output(STDOUT_FILENO);
    EXPECT_EQ(-1, loggerPrintf(LoggerEmerg, "one"));
    EXPECT_EQ("", output.text());
}

TEST_F(LoggerFacade, FormatsAtMost254Characters)
{
    const test::StreamCapture output(STDOUT_FILENO);
    EXPECT_EQ(254, loggerPrintf(LoggerInfo, "%s", std::string(254, 'x').c_str()));
    EXPECT_EQ(254, loggerPrintf(LoggerInfo, "%s", std::string(255, 'x').c_str()));
    EXPECT_EQ(254, loggerInfo("%s", std::string(255, 'x').c_str()));
    EXPECT_EQ(300, loggerWrite(LoggerInfo, std::string(300, 'x').c_str()));
}

TEST_F(LoggerFacade, WritesToSyslogWithThePriorityOfTheLevel)
{
    const test::StreamCapture errors(STDERR_FILENO);
    select(LoggerSyslog);
    EXPECT_EQ(5, loggerWrite(LoggerDebug, "debug"));
    EXPECT_EQ(4, loggerWrite(LoggerInfo, "info"));
    EXPECT_EQ(5, loggerWrite(LoggerTrace, "trace"));
    EXPECT_EQ(4, loggerWrite(LoggerWarn, "warn"));
    EXPECT_EQ(5, loggerWrite(LoggerError, "error"));
    EXPECT_EQ(5, loggerPrintf(LoggerFatal, "fatal"));
    EXPECT_EQ(5, loggerWrite(LoggerEmerg, "emerg"));
    EXPECT_EQ(2, loggerInfo("%%n"));
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_DEBUG, "debug"}, Message{LOG_INFO, "info"},
                            Message{LOG_NOTICE, "trace"}, Message{LOG_WARNING, "warn"},
                            Message{LOG_ERR, "error"}, Message{LOG_CRIT, "fatal"},
                            Message{LOG_EMERG, "emerg"}, Message{LOG_INFO, "%n"}));
}

TEST_F(LoggerFacade, OpensSyslogWithTheProgramsNameAndProcessAndACopyOnStandardError)
{
    const test::StreamCapture errors(STDERR_FILENO);
    setlogmask(LOG_MASK(LOG_EMERG)); // NOLINT(concurrency-mt-unsafe)
    select(LoggerSyslog);
    loggerWrite(LoggerDebug, "one");
    const std::string origin =
        std::string(program_invocation_short_name) + "[" + std::to_string(getpid()) + "]";
    EXPECT_EQ(origin + ": one\n", errors.text());
    ASSERT_EQ(1U, m_syslog.messages().size());
    EXPECT_EQ(LOG_LOCAL1, m_syslog.messages()[0].facility);
    EXPECT_EQ(origin, m_syslog.messages()[0].origin);
}

TEST_F(LoggerFacade, SwitchesToSyslogWhenRedisCannotBeReached)
{
    select(LoggerRedis);
    EXPECT_THAT(m_syslog.messages(), IsEmpty());
    EXPECT_EQ(-1, loggerWrite(LoggerError, "one"));
    EXPECT_EQ(3, loggerWrite(LoggerWarn, "two"));
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_WARNING, "Logger failure: Switching to syslog."},
                            Message{LOG_ERR, "one"}, Message{LOG_WARNING, "two"}));
}

TEST_F(LoggerFacade, SwitchesToSyslogWithoutALogger)
{
    loggerSetMode(LoggerRedis);
    EXPECT_EQ(-1, loggerInfo("one"));
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_WARNING, "Logger failure: Switching to syslog."},
                            Message{LOG_INFO, "one"}));
}

TEST_F(LoggerFacade, SwitchesToASyslogThatNobodyHasOpened)
{
    // As in a process that has never opened it; closelog() alone keeps what was set.
    openlog(nullptr, 0, LOG_USER);
    closelog();
    const test::StreamCapture errors(STDERR_FILENO);
    loggerSetMode(LoggerRedis);
    EXPECT_EQ(-1, loggerInfo("one"));
    EXPECT_EQ("", errors.text());
    ASSERT_EQ(2U, m_syslog.messages().size());
    EXPECT_EQ(LOG_USER, m_syslog.messages()[1].facility);
    EXPECT_EQ(program_invocation_short_name, m_syslog.messages()[1].origin);
}

TEST_F(LoggerFacade, ReadsDoubledPercentSignsOnTheWayToSyslogAndNoOther)
{
    loggerSetMode(LoggerRedis);
    EXPECT_EQ(-1, loggerWrite(LoggerError, "100%% %s%n%d %"));
    EXPECT_EQ((Message{LOG_ERR, "100% %s%n%d %"}), m_syslog.messages().back());
}

TEST_F(LoggerFacade, CutsATextOnTheWayToSyslog)
{
    loggerSetMode(LoggerRedis);
    EXPECT_EQ(-1, loggerWrite(LoggerError, std::string(300, 'x').c_str()));
    EXPECT_EQ((Message{LOG_ERR, std::string(254, 'x')}), m_syslog.messages().back());
}

TEST_F(LoggerFacade, LosesAnEmergencyOnTheWayToSyslog)
{
    loggerSetMode(LoggerRedis);
    EXPECT_EQ(-1, loggerWrite(LoggerEmerg, "one"));
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_WARNING, "Logger failure: Switching to syslog."}));
}

TEST_F(LoggerFacade, EndsQuietlyWithoutALogger)
{
    EXPECT_EQ(1, loggerShutdown());
    EXPECT_EQ(1, loggerShutdown());
}

/// With the device's Redis servers and all levels enabled.
class LoggerFacadeOnRedis : public LoggerFacade
{
protected:
    LoggerFacadeOnRedis()
    {
        test::RedisClient(kConfigSocket)
            .command({"HSET", kConfigHash, kCommonSource, R"({"source":"all","mask":255})"});
    }

    test::RedisServer m_cache{kLogSocket};
    test::RedisServer m_store{kConfigSocket};
    test::LogRecords m_records;
};

TEST_F(LoggerFacadeOnRedis, WritesRecordsWithTheLevelOfTheIndex)
{
    select(LoggerRedis);
    EXPECT_EQ(5, loggerWrite(LoggerDebug, "debug"));
    EXPECT_EQ(4, loggerInfo("%s", "info"));
    EXPECT_EQ(5, loggerWrite(LoggerTrace, "trace"));
    EXPECT_EQ(4, loggerPrintf(LoggerWarn, "%s", "warn"));
    EXPECT_EQ(5, loggerWrite(LoggerError, "error"));
    EXPECT_EQ(5, loggerWrite(LoggerFatal, "fatal"));
    EXPECT_EQ(5, loggerWrite(LoggerEmerg, "e%d%n"));
    std::vector<std::string> lines;
    for (const auto& record : m_records.all())
    {
        EXPECT_EQ(program_invocation_short_name, record.source);
        lines.push_back(record.level + " " + record.message);
    }
    EXPECT_THAT(lines, ElementsAre("DEBUG debug", "INFO info", "TRACE trace", "WARN warn",
                                   "ERROR error", "FATAL fatal", "EMERG e%d%n"));
    EXPECT_THAT(m_syslog.messages(), IsEmpty());
}

TEST_F(LoggerFacadeOnRedis, AnswersZeroForAMaskedLevelAndStays)
{
    test::RedisClient(kConfigSocket).command({"DEL", kConfigHash});
    select(LoggerRedis);
    EXPECT_EQ(0, loggerInfo("masked"));
    EXPECT_EQ(3, loggerWrite(LoggerWarn, "one"));
    EXPECT_THAT(m_records.messages(), ElementsAre("one"));
    EXPECT_THAT(m_syslog.messages(), IsEmpty());
}

TEST_F(LoggerFacadeOnRedis, MakesOneLoggerOnly)
{
    select(LoggerRedis);
    select(LoggerRedis);
    const std::string clients = test::RedisClient(kLogSocket).command({"CLIENT", "LIST"}).text;
    EXPECT_EQ(3, std::count(clients.begin(), clients.end(), '\n'))
        << "the logger's two connections and this one: " << clients;
}

TEST_F(LoggerFacadeOnRedis, SwitchesToSyslogWhenRedisGoesAway)
{
    select(LoggerRedis);
    EXPECT_EQ(3, loggerWrite(LoggerError, "one"));
    m_cache.kill();
    EXPECT_EQ(-1, loggerWrite(LoggerError, "two"));
    EXPECT_EQ(5, loggerWrite(LoggerInfo, "three"));
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_WARNING, "Logger failure: Switching to syslog."},
                            Message{LOG_ERR, "two"}, Message{LOG_INFO, "three"}));
}

TEST_F(LoggerFacadeOnRedis, LosesNoTextOfOtherThreadsWhenItIsShutDownAndSetUp)
{
    constexpr int kThreads = 4;
    constexpr int kTexts = 100;
    select(LoggerRedis);
    std::atomic<int> written{0};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [&written]
            {
                for (int text = 0; text < kTexts; ++text)
                {
                    loggerWrite(LoggerError, "one");
                    ++written;
                }
            });
    }
    loggerShutdown();
    select(LoggerRedis);
    // A syslog that nobody reads keeps its writers waiting.
    EXPECT_TRUE(test::eventually(
        [&]
        {
            (void)m_syslog.messages();
            return written == kThreads * kTexts;
        }));
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    const auto& turned = m_syslog.messages();
    EXPECT_EQ(kThreads * kTexts,
              m_records.count("ERROR", "one") +
                  std::count(turned.begin(), turned.end(), Message{LOG_ERR, "one"}));
}

TEST_F(LoggerFacadeOnRedis, StartsAnewAfterAShutdown)
{
    select(LoggerRedis);
    EXPECT_EQ(1, loggerShutdown());
    select(LoggerRedis);
    EXPECT_EQ(3, loggerWrite(LoggerError, "one"));
    EXPECT_EQ(1, loggerShutdown());
    EXPECT_EQ(-1, loggerWrite(LoggerError, "two"));
    EXPECT_THAT(m_records.messages(), ElementsAre("one"));
}

} // namespace orvo::Logger
