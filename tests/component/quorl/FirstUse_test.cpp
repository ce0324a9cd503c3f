#include "quorl/Quorl.h"

#include "LoggedDevice.h"
#include "OwnProcess.h"
#include "RedisClient.h"
#include "StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace orvo
{

namespace
{

constexpr int kCallers = 8;

/// Each caller has something to tell in the log at once.
void callInSeveralThreadsAtOnce()
{
    std::atomic<int> ready{0};
    std::vector<std::thread> callers;
    callers.reserve(kCallers);
    for (int caller = 0; caller < kCallers; ++caller)
    {
        callers.emplace_back(
            [&ready]
            {
                ++ready;
                while (ready < kCallers)
                {
                    std::this_thread::yield();
                }
                char* value = nullptr;
                EXPECT_EQ(-1, quorl_getConfig(nullptr, &value));
            });
    }
    for (std::thread& caller : callers)
    {
        caller.join();
    }
}

std::ptrdiff_t connections()
{
    const std::string clients =
        test::RedisClient("/tmp/redis-cache.sock").command({"CLIENT", "LIST"}).text;
    return std::count(clients.begin(), clients.end(), '\n');
}

} // namespace

/// A process has one first use.
TEST(QuorlFirstUse, BySeveralThreadsAtOnceSetsTheLogUpOnceAndBeforeAnyOfThemLogs)
{
    const test::LoggedDevice device;
    test::inOwnProcess(
        []
        {
            const test::StreamCapture output(STDOUT_FILENO);
            callInSeveralThreadsAtOnce();
            EXPECT_EQ("", output.text());
            EXPECT_EQ(3, connections()) << "the logger's two and this one";
        });
    EXPECT_EQ(kCallers,
              test::LogRecords().count("ERROR", "quorl_getConfig(): invalid item given "));
    EXPECT_EQ(std::size_t{kCallers}, test::LogRecords().raw().size());
}

} // namespace orvo
