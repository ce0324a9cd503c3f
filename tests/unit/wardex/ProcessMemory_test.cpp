#include "ProcessMemory.h"

#include "CrashPattern.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include <pthread.h>

namespace orvo
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

/// Every thread of this program is made under the supervisor's bounds; the main thread stays as it
/// is.
class ThreadMemory : public testing::Test
{
protected:
    ThreadMemory()
    {
        limitHeap();
        setThreadStack(kLoggerStackBytes);
    }

    static std::size_t stackBytes()
    {
        pthread_attr_t attributes;
        std::size_t bytes = 0;
        EXPECT_EQ(0, pthread_getattr_default_np(&attributes));
        EXPECT_EQ(0, pthread_attr_getstacksize(&attributes, &bytes));
        pthread_attr_destroy(&attributes);
        return bytes;
    }

    static Logger::CrashVerdict verdictInThread(const std::string& pattern,
                                                const std::string& message)
    {
        auto verdict = Logger::CrashVerdict::Unusable;
        std::thread(
            [&]
            {
                std::string reason;
                verdict = Logger::tryCrashPattern(pattern, message, reason);
            })
            .join();
        return verdict;
    }
};

TEST_F(ThreadMemory, BoundsTheStacksOfLaterThreads)
{
    const std::size_t forLogger = stackBytes();
    setThreadStack(kThreadStackBytes);
    EXPECT_EQ(kLoggerStackBytes - kThreadStackBytes, forLogger - stackBytes());
    if (!kIsSanitized)
    {
        EXPECT_EQ(kThreadStackBytes, stackBytes());
    }
}

TEST_F(ThreadMemory, LeavesStacksAsTheyAreWhenTheSizeCannotBe)
{
    if (kIsSanitized)
    {
        GTEST_SKIP() << "a sanitizer's own data make it a size that can be";
    }
    setThreadStack(1);
    EXPECT_EQ(kLoggerStackBytes, stackBytes());
}

TEST_F(ThreadMemory, LetsAllThreadsAllocateFromTheHeap)
{
    if (kIsSanitized)
    {
        GTEST_SKIP() << "a sanitizer allocates by itself";
    }
    const std::uintptr_t first =
        reinterpret_cast<std::uintptr_t>(std::make_unique<char[]>(1).get());
    std::uintptr_t second = 0;
    std::thread(
        [&second]
        { second = reinterpret_cast<std::uintptr_t>(std::make_unique<char[]>(5000).get()); })
        .join();
    const std::uintptr_t distance = second > first ? second - first : first - second;
    EXPECT_GT(16U * 1024U * 1024U, distance);
}

TEST_F(ThreadMemory, HoldsACrashPatternThatCoversALongestMessage)
{
    EXPECT_EQ(Logger::CrashVerdict::Crash, verdictInThread("(a|b)*", std::string(499, 'a')));
    EXPECT_EQ(Logger::CrashVerdict::Spare, verdictInThread("(.*)(.*)b", std::string(499, 'a')));
}

TEST_F(ThreadMemory, HoldsTheWorstCrashPatternThatIsAccepted)
{
    if (kIsSanitized)
    {
        GTEST_SKIP() << "a sanitizer's stack frames are several times the device's";
    }
    const std::string message(499, 'a');
    verdictInThread(std::string(1000, '('), message);
    verdictInThread(std::string(1000, '|'), message);
    verdictInThread(std::string(1000, '^'), message);
    EXPECT_EQ(Logger::CrashVerdict::Spare,
              verdictInThread(std::string(500, '(') + std::string(500, ')'), message));
    EXPECT_EQ(Logger::CrashVerdict::Spare,
              verdictInThread("(?:" + std::string(300, '^') + "){6}", message));
}

} // namespace orvo
