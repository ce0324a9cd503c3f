#include "Eventually.h"
#include "LogDevice.h"
#include "OwnProcess.h"
#include "ScriptedRedis.h"
#include "StreamCapture.h"
#include "UnixListener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvo::Logger
{

namespace
{

/// A thread that was joined may be listed for a moment more.
std::ptrdiff_t threadsOfThisProcess()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

/// With the first thread of a process a sanitizer starts one of its own; that one counts already.
std::ptrdiff_t threadsWithoutLogger()
{
    std::string firstThread;
    std::thread([&] { firstThread = "/proc/self/task/" + std::to_string(gettid()); }).join();
    test::eventually([&] { return !std::filesystem::exists(firstThread); });
    return threadsOfThisProcess();
}

std::unique_ptr<RedisLogger> makeLogger(const std::string& source = "wardex")
{
    return std::make_unique<RedisLogger>(source, kLogSocket, kLogList, false);
}

/// A server on the loopback that never takes a connection up; one may wait.
class TcpListener
{
public:
    TcpListener() : m_descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* address = reinterpret_cast<sockaddr*>(&m_address);
        socklen_t length = sizeof m_address;
        EXPECT_EQ(0, bind(m_descriptor, address, length));
        EXPECT_EQ(0, listen(m_descriptor, 0));
        EXPECT_EQ(0, getsockname(m_descriptor, address, &length));
    }
    ~TcpListener() { close(m_descriptor); }
    TcpListener(const TcpListener&) = delete;
    TcpListener& operator=(const TcpListener&) = delete;

    [[nodiscard]] int port() const { return ntohs(m_address.sin_port); }

private:
    int m_descriptor;
    sockaddr_in m_address{};
};

} // namespace

class ConfigurationThread : public LogDevice
{
protected:
    [[nodiscard]] long long subscribers()
    {
        return m_client.command({"PUBSUB", "NUMSUB", kConfigChannel}).elements.at(1).number;
    }

    /// How many there are more than without a logger.
    [[nodiscard]] bool hasThreads(std::ptrdiff_t count) const
    {
        return test::eventually([&] { return threadsOfThisProcess() == m_threadsBefore + count; });
    }

    const std::ptrdiff_t m_threadsBefore = threadsWithoutLogger();
};

TEST_F(ConfigurationThread, IsOneForAllLoggersOfTheProcess)
{
    const auto first = makeLogger("first");
    const auto second = makeLogger("second");
    EXPECT_TRUE(hasThreads(1));
    EXPECT_TRUE(test::eventually([this] { return subscribers() == 1; }));
}

TEST_F(ConfigurationThread, GoesOnWhenTheFirstLoggerGoes)
{
    auto first = makeLogger("first");
    const auto second = makeLogger("second");
    first.reset();
    EXPECT_TRUE(hasThreads(1));
    enableAllLevels();
    EXPECT_EQ(1U, announcements().size());
    EXPECT_EQ(3, second->log(DEBUG, "one"));
}

TEST_F(ConfigurationThread, EndsWithTheLastLoggerWithinAboutASecond)
{
    auto first = makeLogger("first");
    auto second = makeLogger("second");
    ASSERT_TRUE(test::eventually([this] { return subscribers() == 1; }));
    first.reset();
    const auto start = std::chrono::steady_clock::now();
    second.reset();
    EXPECT_GT(std::chrono::seconds(3), std::chrono::steady_clock::now() - start);
    EXPECT_TRUE(hasThreads(0));
    EXPECT_TRUE(test::eventually([this] { return subscribers() == 0; }));
}

TEST_F(ConfigurationThread, StartsAnewForALaterFirstLogger)
{
    makeLogger("first").reset();
    const auto second = makeLogger("second");
    enableAllLevels();
    EXPECT_EQ(3, second->log(DEBUG, "one"));
    EXPECT_TRUE(hasThreads(1));
}

TEST_F(ConfigurationThread, IsJoinedWithoutKeepingOthersFromLogging)
{
    auto last = makeLogger("last");
    std::thread ending([&] { last.reset(); });
    // Whether it comes before, amid or after the end of the other: it is not kept waiting for ever.
    const auto next = makeLogger("next");
    EXPECT_EQ(3, next->log(WARN, "one"));
    ending.join();
    enableAllLevels();
    EXPECT_EQ(1U, announcements().size());
    EXPECT_EQ(3, next->log(DEBUG, "two"));
}

// For up to a second both listen; the loggers must hear from one of them only.
TEST_F(ConfigurationThread, LeavesTheLoggersToItsSuccessorWhileItEnds)
{
    auto current = makeLogger();
    ASSERT_TRUE(test::eventually([this] { return subscribers() == 1; }));
    bool haveBothListened = false;
    for (int attempt = 0; attempt < 10 && !haveBothListened; ++attempt)
    {
        std::thread ending([last = std::move(current)]() mutable { last.reset(); });
        // Time for the other thread to take the lock first; if it does not, the next attempt may.
        m_client.command({"PING"});
        current = makeLogger("next");
        haveBothListened = test::eventually([this] { return subscribers() == 2; }, 200);
        if (haveBothListened)
        {
            configure(R"({"source":"all"})");
        }
        ending.join();
    }
    EXPECT_TRUE(haveBothListened);
    EXPECT_EQ(1U, announcements().size());
}

TEST_F(ConfigurationThread, EndsWhileConfigurationsPourIn)
{
    std::atomic<bool> isOver{false};
    std::thread publisher(
        [&]
        {
            test::RedisClient client(kLogSocket);
            while (!isOver)
            {
                client.command({"PUBLISH", kConfigChannel, R"({"source":"all","mask":255})"});
            }
        });
    for (int round = 0; round < 3; ++round)
    {
        auto logger = makeLogger();
        EXPECT_TRUE(test::eventually([&] { return logger->log(DEBUG, "one") == 3; }));
        logger.reset();
    }
    isOver = true;
    publisher.join();
}

TEST_F(ConfigurationThread, EndsAfterRedisWentAway)
{
    const test::StreamCapture errors(STDERR_FILENO);
    auto logger = makeLogger();
    ASSERT_TRUE(test::eventually([this] { return subscribers() == 1; }));
    m_cache.kill();
    ASSERT_TRUE(
        test::eventually([&] { return errors.text() == "Error: Server closed the connection\n"; }));
    logger.reset();
    EXPECT_EQ("Error: Server closed the connection\n", errors.text());
    EXPECT_TRUE(hasThreads(0));
}

TEST_F(ConfigurationThread, ConnectsAnewForALaterFirstLogger)
{
    auto first = makeLogger();
    ASSERT_TRUE(test::eventually([this] { return subscribers() == 1; }));
    m_cache.restart();
    first.reset();
    const auto second = makeLogger();
    EXPECT_EQ(3, second->log(WARN, "one"));
    EXPECT_EQ(1, test::RedisClient(kLogSocket).publishToListeners(kConfigChannel, "{}"));
}

// The server's queue has room for the logger's own connection only.
TEST(ConfigurationThreadWithoutConnection, DoesNotKeepTheConstructorWaiting)
{
    const test::UnixListener listener(kLogSocket, 0);
    const test::StreamCapture errors(STDERR_FILENO);
    const std::ptrdiff_t before = threadsWithoutLogger();
    auto logger = makeLogger();
    EXPECT_EQ("Error: Resource temporarily unavailable\n", errors.text());
    EXPECT_TRUE(test::eventually([&] { return threadsOfThisProcess() == before; }));
    logger.reset();
    EXPECT_EQ("Error: Resource temporarily unavailable\n", errors.text());
}

// The logger's own connection fills the server's queue, so that the thread's is still on its way
// when the server goes.
TEST(ConfigurationThreadWithoutConnection, TellsThatItsConnectionWasRefusedLater)
{
    std::optional<TcpListener> listener(std::in_place);
    const test::StreamCapture errors(STDERR_FILENO);
    auto logger =
        std::make_unique<RedisLogger>("wardex", "127.0.0.1", listener->port(), kLogList, false);
    EXPECT_EQ("", errors.text());
    listener.reset();
    EXPECT_TRUE(test::eventually([&] { return errors.text() == "Error: Connection refused\n"; }))
        << errors.text();
    logger.reset();
    EXPECT_EQ("Error: Connection refused\n", errors.text());
}

TEST(ConfigurationThreadWithoutConnection, DoesNotKeepTheLoggerFromWriting)
{
    std::optional<test::UnixListener> listener(std::in_place, "/tmp/busy.sock", 0);
    const test::StreamCapture errors(STDERR_FILENO);
    const RedisLogger first("first", "/tmp/busy.sock", kLogList, false);
    const test::RedisServer cache(kLogSocket);
    RedisLogger second("second", kLogSocket, kLogList, false);
    EXPECT_EQ(3, second.log(WARN, "one"));
    EXPECT_EQ("Error: Resource temporarily unavailable\n", errors.text());
}

/// What a server that is out of order may answer to the subscription.
struct SubscriptionAnswer
{
    std::string name;
    std::string bytes;
    bool hangsUp;
    std::string told; ///< on standard error
};

void PrintTo(const SubscriptionAnswer& answer, std::ostream* stream)
{
    *stream << answer.name;
}

class ConfigurationThreadAnswered : public testing::TestWithParam<SubscriptionAnswer>
{
};

TEST_P(ConfigurationThreadAnswered, LeavesTheLoggerAlone)
{
    const test::ScriptedRedis server(
        kLogSocket,
        [](const std::vector<std::string>& command) -> test::ScriptedAnswer
        {
            if (command[0] == "SUBSCRIBE")
            {
                return {GetParam().bytes, GetParam().hangsUp};
            }
            return {":1\r\n", false};
        });
    const test::StreamCapture errors(STDERR_FILENO);
    auto logger = makeLogger();
    EXPECT_TRUE(test::eventually([&] { return server.commands().size() == 1; }));
    EXPECT_EQ(3, logger->log(WARN, "one"));
    EXPECT_TRUE(test::eventually([&] { return errors.text() == GetParam().told; }))
        << errors.text();
    logger.reset();
    EXPECT_EQ(GetParam().told, errors.text());
}

INSTANTIATE_TEST_SUITE_P(
    By, ConfigurationThreadAnswered,
    testing::Values(SubscriptionAnswer{"Nothing", "", false, ""},
                    SubscriptionAnswer{"AnEnd", "", true, "Error: Server closed the connection\n"},
                    SubscriptionAnswer{"AnError", "-NOPERM not for you\r\n", false,
                                       "Error: NOPERM not for you\n"},
                    SubscriptionAnswer{"ANumber", ":1\r\n", false, ""},
                    SubscriptionAnswer{"HalfAConfirmation", "*3\r\n$9\r\nsubscr", true,
                                       "Error: Server closed the connection\n"},
                    SubscriptionAnswer{"WhatIsNoAnswer", "hello\r\n", false,
                                       "Error: Protocol error, got \"h\" as reply type byte\n"},
                    SubscriptionAnswer{"APush", ">2\r\n+invalidate\r\n*0\r\n", false,
                                       "Error: Protocol error, got \">\" as reply type byte\n"}),
    [](const testing::TestParamInfo<SubscriptionAnswer>& answer) { return answer.param.name; });

TEST(ConfigurationThreadWithMessage, TakesAConfigurationThatComesBeforeTheConfirmation)
{
    const std::string text = R"({"source":"all","mask":255})";
    const test::ScriptedRedis server(
        kLogSocket,
        [&](const std::vector<std::string>& command) -> test::ScriptedAnswer
        {
            if (command[0] == "SUBSCRIBE")
            {
                return {"*3\r\n$7\r\nmessage\r\n$10\r\nLOGGER:CFG\r\n$" +
                            std::to_string(text.size()) + "\r\n" + text + "\r\n",
                        false};
            }
            return {":1\r\n", false};
        });
    auto logger = makeLogger();
    EXPECT_TRUE(test::eventually([&] { return logger->log(DEBUG, "one") == 3; }));
}

// Static storage: destroyed when main has returned, with everything that it needs still there.
TEST(StaticLogger, OutlivesWhatItUses)
{
    const test::RedisServer cache(kLogSocket);
    test::inOwnProcess(
        []
        {
            static RedisLogger logger("wardex", kLogSocket, kLogList, false);
            static struct Teller
            {
                ~Teller() { logger.logOnce(WARN, "good bye"); }
            } teller;
            EXPECT_EQ(5, logger.logOnce(WARN, "hello"));
        });
    EXPECT_THAT(test::LogRecords().messages("WARN"), testing::ElementsAre("hello", "good bye"));
}

TEST(StaticLogger, MayBeLeftBehind)
{
    const test::RedisServer cache(kLogSocket);
    test::inOwnProcess(
        []
        {
            static auto* logger = new RedisLogger("wardex", kLogSocket, kLogList, false);
            EXPECT_EQ(5, logger->log(WARN, "hello"));
        });
    EXPECT_TRUE(test::LogRecords().expectOnce("WARN", "hello"));
}

} // namespace orvo::Logger
