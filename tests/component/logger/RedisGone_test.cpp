#include "Eventually.h"
#include "LogDevice.h"
#include "ScriptedRedis.h"
#include "StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <thread>

#include <csignal>
#include <unistd.h>

namespace orvo::Logger
{

using testing::MatchesRegex;

namespace
{
constexpr char kComplaint[] = "REDIS NOT CONNECTED !n";
}

class RedisGone : public LoggerOnDevice
{
protected:
    /// What was told on standard error but by the configuration thread, which loses its connection
    /// at a moment of its own.
    [[nodiscard]] std::string complaints() const
    {
        std::string text = m_errors.text();
        for (std::size_t at = text.find("Error: "); at != std::string::npos;
             at = text.find("Error: "))
        {
            text.erase(at, text.find('\n', at) + 1 - at);
        }
        return text;
    }

    test::StreamCapture m_errors{STDERR_FILENO};
};

TEST_F(RedisGone, IsToldByTheFirstWriteAndByEveryLaterOne)
{
    m_cache.kill();
    EXPECT_EQ(-1, m_logger.log(WARN, "one"));
    const std::string first = complaints();
    EXPECT_THAT(first, MatchesRegex("redisPushLog: failed with err: \\([0-9]+:[^\n]+\\)\n"));
    EXPECT_EQ(-1, m_logger.log(WARN, "two"));
    EXPECT_EQ(-1, m_logger.write(WARN, "three", 0));
    EXPECT_EQ(first + kComplaint + kComplaint, complaints());
}

TEST_F(RedisGone, IsForEverAlsoWhenTheServerIsBack)
{
    m_cache.kill();
    EXPECT_EQ(-1, m_logger.log(WARN, "one"));
    const std::string first = complaints();
    m_cache.restart();
    EXPECT_EQ(-1, m_logger.log(WARN, "two"));
    EXPECT_EQ(first + kComplaint, complaints());
    EXPECT_THAT(m_records.raw(), testing::IsEmpty());
}

TEST_F(RedisGone, IsNotToldByAMaskedCall)
{
    m_cache.kill();
    EXPECT_EQ(0, m_logger.log(INFO, "masked"));
    EXPECT_EQ(-1, m_logger.log(WARN, "one"));
    const std::string first = complaints();
    EXPECT_EQ(0, m_logger.log(INFO, "masked"));
    EXPECT_EQ(0, m_logger.write(INFO, "masked", 0));
    EXPECT_EQ(first, complaints());
}

TEST_F(RedisGone, EndsAWriteThatWaitsForItsAnswer)
{
    m_cache.suspend();
    int result = 0;
    std::thread writer([&] { result = m_logger.log(WARN, "one"); });
    m_cache.kill();
    writer.join();
    EXPECT_EQ(-1, result);
    EXPECT_THAT(complaints(), MatchesRegex("redisPushLog: failed with err: \\([0-9]+:[^\n]+\\)\n"));
}

TEST_F(RedisGone, IsWhatAServerCountsAsThatStandsStill)
{
    m_cache.suspend();
    EXPECT_EQ(-1, m_logger.log(WARN, "one"));
    const std::string first = complaints();
    EXPECT_THAT(first, MatchesRegex("redisPushLog: failed with err: \\(1:[^\n]+\\)\n"));
    EXPECT_EQ(-1, m_logger.log(WARN, "two"));
    EXPECT_EQ(first + kComplaint, complaints());
}

TEST_F(RedisGone, IsNotWhatAServerCountsAsThatIsLate)
{
    m_cache.suspend();
    int result = 0;
    std::thread writer([&] { result = m_logger.log(WARN, "one"); });
    m_cache.resume();
    writer.join();
    EXPECT_EQ(3, result);
    EXPECT_EQ("", complaints());
}

TEST_F(RedisGone, IsNoEndOfTheProcess)
{
    struct sigaction action = {};
    sigaction(SIGPIPE, nullptr, &action);
    EXPECT_EQ(SIG_IGN, action.sa_handler);
}

TEST_F(RedisGone, IsToldByTheConfigurationThread)
{
    ASSERT_EQ(1, m_client.publishToListeners(kConfigChannel, "{}"));
    m_cache.stop();
    EXPECT_TRUE(test::eventually(
        [this] { return m_errors.text() == "Error: Server closed the connection\n"; }))
        << m_errors.text();
}

TEST_F(RedisGone, LeavesAnotherLoggersConnectionAlone)
{
    const test::RedisServer server("/tmp/other.sock");
    RedisLogger other("other", "/tmp/other.sock", kLogList, false);
    m_cache.kill();
    EXPECT_EQ(-1, m_logger.log(WARN, "one"));
    EXPECT_EQ(3, other.log(WARN, "one"));
}

/// How far a server comes with the three commands of a record.
struct Failure
{
    std::string name;
    std::string command; ///< the one at which it fails
    std::string bytes;   ///< its last answer
    std::string error;   ///< what hiredis says then
};

void PrintTo(const Failure& failure, std::ostream* stream)
{
    *stream << failure.name;
}

class RedisFailure : public testing::TestWithParam<Failure>
{
};

TEST_P(RedisFailure, DropsTheConnection)
{
    const test::ScriptedRedis server(
        kLogSocket,
        [](const std::vector<std::string>& command) -> test::ScriptedAnswer
        {
            if (command[0] == "SUBSCRIBE")
            {
                return {};
            }
            const bool fails = command[0] == GetParam().command;
            return {fails ? GetParam().bytes : ":1\r\n", fails};
        });
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_EQ(-1, logger.log(WARN, "one"));
    const std::string told = "redisPushLog: failed with err: (" + GetParam().error + ")\n";
    EXPECT_EQ(told, errors.text());
    EXPECT_EQ(-1, logger.log(WARN, "two"));
    EXPECT_EQ(told + kComplaint, errors.text());
}

INSTANTIATE_TEST_SUITE_P(
    At, RedisFailure,
    testing::Values(Failure{"TheFirstCommand", "RPUSH", "", "3:Server closed the connection"},
                    Failure{"TheSecondCommand", "LTRIM", "", "3:Server closed the connection"},
                    Failure{"TheThirdCommand", "PUBLISH", "", "3:Server closed the connection"},
                    Failure{"HalfTheFirstAnswer", "RPUSH", ":", "3:Server closed the connection"},
                    Failure{"HalfTheSecondAnswer", "LTRIM", "+O", "3:Server closed the connection"},
                    Failure{"HalfTheThirdAnswer", "PUBLISH", ":1\r",
                            "3:Server closed the connection"},
                    Failure{"AnAnswerThatIsNone", "LTRIM", "hello\r\n",
                            "4:Protocol error, got \"h\" as reply type byte"},
                    Failure{"APushInTheWrongPlace", "LTRIM", ">2\r\n+invalidate\r\n*0\r\n",
                            "4:Protocol error, got \">\" as reply type byte"}),
    [](const testing::TestParamInfo<Failure>& failure) { return failure.param.name; });

TEST(RedisCommands, AreThreeForEachRecord)
{
    const test::ScriptedRedis server(
        kLogSocket,
        [](const std::vector<std::string>& command) {
            return test::ScriptedAnswer{command[0] == "SUBSCRIBE" ? "" : "-ERR no\r\n", false};
        });
    RedisLogger logger("wardex", kLogSocket, "LIST", false);
    EXPECT_EQ(3, logger.log(WARN, "one")) << "an error reply counts as success";
    const auto commands = server.commands();
    // The subscription comes at a moment of its own.
    std::vector<std::string> own;
    std::copy_if(commands.begin(), commands.end(), std::back_inserter(own),
                 [](const std::string& command) { return command.rfind("SUBSCRIBE", 0) != 0; });
    ASSERT_EQ(3U, own.size());
    EXPECT_THAT(own[0], MatchesRegex("RPUSH LIST \\{\"T\".*\"M\":\"one\"\\}"));
    EXPECT_EQ("LTRIM LIST -10000 -1", own[1]);
    EXPECT_EQ("PUBLISH" + own[0].substr(5), own[2]);
}

TEST(RedisCommands, TakeAMessageOfASubscriptionForAnAnswer)
{
    const test::ScriptedRedis server(
        kLogSocket,
        [](const std::vector<std::string>& command)
        {
            const std::string message = "*3\r\n$7\r\nmessage\r\n$1\r\na\r\n$1\r\nb\r\n";
            return test::ScriptedAnswer{command[0] == "LTRIM" ? message : ":1\r\n", false};
        });
    RedisLogger logger("wardex", kLogSocket, kLogList, false);
    const test::StreamCapture errors(STDERR_FILENO);
    EXPECT_EQ(3, logger.log(WARN, "one"));
    EXPECT_EQ(3, logger.log(WARN, "two"));
    EXPECT_EQ("", errors.text());
}

TEST(RedisCommands, SubscribeToTheConfigurationChannel)
{
    const test::ScriptedRedis server(kLogSocket, [](const std::vector<std::string>&)
                                     { return test::ScriptedAnswer{}; });
    const RedisLogger logger("wardex", kLogSocket, kLogList, false);
    EXPECT_TRUE(test::eventually(
        [&] { return server.commands() == std::vector<std::string>{"SUBSCRIBE LOGGER:CFG"}; }));
}

} // namespace orvo::Logger
