#include "Eventually.h"
#include "LogDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace orvo::Logger
{

namespace
{

constexpr int kThreads = 4;
constexpr int kRounds = 1000;
constexpr std::size_t kRecords = 4000;
static_assert(kRecords / kRounds == kThreads);

/// Runs a deed kRounds times in each of kThreads threads.
template <typename Deed>
void inAllThreads(Deed deed)
{
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [thread, &deed]
            {
                for (int round = 0; round < kRounds; ++round)
                {
                    deed(thread, round);
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

} // namespace

class LoggerThreads : public LoggerOnDevice
{
};

TEST_F(LoggerThreads, WriteWholeRecordsWhileConfigurationsArriveAndLoggersComeAndGo)
{
    RedisLogger other("other", kLogSocket, kLogList, false);
    // Every configuration is announced; the announcements must not push the threads' records out.
    ASSERT_NO_FATAL_FAILURE(configure(R"({"source":"all","mask":255,"max":1000000})"));
    std::atomic<bool> isOver{false};
    std::thread operating(
        [&]
        {
            test::RedisClient client(kLogSocket);
            for (int round = 0; !isOver; ++round)
            {
                client.command(
                    {"PUBLISH", kConfigChannel,
                     R"({"source":"all","segvregex":")" + std::to_string(round) + "\"}"});
            }
        });
    std::thread comingAndGoing(
        [&]
        {
            while (!isOver)
            {
                // A list of its own: until it has heard of the maximum it keeps ten thousand.
                RedisLogger guest("guest", kLogSocket, "GUESTS", false);
                EXPECT_EQ(5, guest.log(ERROR, "guest"));
            }
        });
    inAllThreads(
        [&](int thread, int round)
        {
            RedisLogger& logger = thread % 2 == 0 ? m_logger : other;
            EXPECT_LT(0, logger.log(WARN, "thread %d round %d", thread, round));
        });
    isOver = true;
    operating.join();
    comingAndGoing.join();

    std::set<std::string> distinct;
    for (const test::LogRecordFields& record : m_records.all())
    {
        EXPECT_TRUE(record.isWhole) << record.raw;
        if (record.level == "WARN")
        {
            distinct.insert(record.message);
        }
    }
    EXPECT_EQ(kRecords, distinct.size());
    EXPECT_EQ(kRecords, m_records.messages("WARN").size());
}

TEST_F(LoggerThreads, WriteAOnceOnlyTextOnce)
{
    static int last = 0;
    const int repetition = ++last;
    inAllThreads(
        [&](int /*thread*/, int round)
        { EXPECT_LE(0, m_logger.logOnce(WARN, "repetition %d round %d", repetition, round)); });
    EXPECT_EQ(std::size_t{kRounds}, m_records.raw().size());
}

TEST_F(LoggerThreads, FindTheLostConnectionOneByOne)
{
    std::atomic<int> failures{0};
    std::thread accident(
        [this]
        {
            EXPECT_TRUE(test::eventually([this] { return m_records.raw().size() > 10; }));
            m_cache.kill();
        });
    inAllThreads(
        [&](int thread, int round)
        { failures += m_logger.log(WARN, "thread %d round %d", thread, round) == -1 ? 1 : 0; });
    accident.join();
    EXPECT_EQ(-1, m_logger.log(WARN, "lost"));
    EXPECT_GE(kThreads * kRounds - 10, failures.load());
}

TEST_F(LoggerThreads, MakeAndEndLoggersOfTheirOwn)
{
    constexpr int kLives = 250;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [thread]
            {
                for (int round = 0; round < kLives; ++round)
                {
                    RedisLogger own("own", kLogSocket, kLogList, false);
                    EXPECT_EQ(9, own.log(WARN, "own %d %3d", thread, round));
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(std::size_t{kThreads} * kLives, m_records.raw().size());
}

} // namespace orvo::Logger
