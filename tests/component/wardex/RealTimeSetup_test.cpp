#include "RealTimeSetup.h"

#include "Box.h"
#include "LoggedDevice.h"
#include "OwnProcess.h"

#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <linux/capability.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvo
{

namespace
{

using testing::Contains;
using testing::ElementsAre;

constexpr const char kPanicSetting[] = "/proc/sys/kernel/panic";

std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

void allow(int resource, rlim_t soft)
{
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(resource, &limit));
    limit.rlim_cur = soft;
    ASSERT_EQ(0, setrlimit(resource, &limit));
}

/// As for an ordinary user without any grant.
void giveUpPrivileges()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2] = {};
    ASSERT_EQ(0, syscall(SYS_capset, &header, none));
    allow(RLIMIT_RTPRIO, 0);
}

[[nodiscard]] bool mayBecomeRealTime()
{
    const sched_param parameter{1};
    const bool may = sched_setscheduler(0, SCHED_FIFO, &parameter) == 0;
    const sched_param ordinary{0};
    sched_setscheduler(0, SCHED_OTHER, &ordinary);
    return may;
}

class RealTime : public testing::Test
{
protected:
    void SetUp() override
    {
        test::requireBox();
        std::ofstream(kPanicSetting) << "0\n";
    }

    static void setUp()
    {
        Logger::RedisLogger logger("wardex", Logger::kLogSocket, Logger::kLogList, true);
        setUpRealTime(logger);
    }

    static long lockedKb()
    {
        std::ifstream status("/proc/self/status");
        long locked = 0;
        for (std::string word; status >> word;)
        {
            if (word == "VmLck:")
            {
                status >> locked;
            }
        }
        return locked;
    }

    test::LoggedDevice m_device;
};

} // namespace

TEST_F(RealTime, GivesTheCallingThreadTheLowestFirstInFirstOutPriority)
{
    if (!mayBecomeRealTime())
    {
        GTEST_SKIP() << "this machine grants no real-time scheduling";
    }
    test::inOwnProcess(
        []
        {
            setUp();
            sched_param parameter{};
            EXPECT_EQ(SCHED_FIFO, sched_getscheduler(0));
            EXPECT_EQ(0, sched_getparam(0, &parameter));
            EXPECT_EQ(1, parameter.sched_priority);
        });
    EXPECT_THAT(m_device.lines(), testing::Not(Contains(testing::HasSubstr("sched"))));
}

TEST_F(RealTime, LetsTheKernelRebootAMinuteAfterAPanic)
{
    test::inOwnProcess([] { setUp(); });
    EXPECT_EQ("60\n", contentOf(kPanicSetting));
}

TEST_F(RealTime, ReportsEachRefusalAndGoesOnToTheNextStep)
{
    test::inOwnProcess(
        []
        {
            giveUpPrivileges();
            allow(RLIMIT_MEMLOCK, 0);
            setUp();
        });
#if defined(__SANITIZE_ADDRESS__)
    // The sanitizer's own mlockall() answers 0 and locks nothing.
    EXPECT_THAT(m_device.lines(),
                ElementsAre("WARN sched_setscheduler() failed: (Operation not permitted)"));
#else
    EXPECT_THAT(m_device.lines(),
                ElementsAre("WARN sched_setscheduler() failed: (Operation not permitted)",
                            "WARN mlockall() failed: (Operation not permitted)"));
#endif
    EXPECT_EQ("60\n", contentOf(kPanicSetting));
}

#if !defined(__SANITIZE_ADDRESS__)
TEST_F(RealTime, ReportsMemoryThatIsMoreThanMayBeLocked)
{
    test::inOwnProcess(
        []
        {
            giveUpPrivileges();
            allow(RLIMIT_MEMLOCK, 4096);
            setUp();
        });
    EXPECT_THAT(m_device.lines(), Contains("WARN mlockall() failed: (Cannot allocate memory)"));
}

TEST_F(RealTime, LocksAllPagesOfTheProcessAndThoseToCome)
{
    const bool mayLock = mlockall(MCL_CURRENT | MCL_FUTURE) == 0;
    munlockall();
    if (!mayLock)
    {
        GTEST_SKIP() << "this machine lets nobody lock that much memory";
    }
    test::inOwnProcess(
        []
        {
            setUp();
            const long before = lockedKb();
            EXPECT_GT(before, 1000);
            constexpr long kMoreKb = 1024;
            (void)mmap(nullptr, kMoreKb * 1024, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS,
                       -1, 0); // the process ends here
            EXPECT_GE(lockedKb(), before + kMoreKb);
        });
    EXPECT_THAT(m_device.lines(), testing::Not(Contains(testing::HasSubstr("mlockall"))));
}
#endif

TEST_F(RealTime, LeavesTheThreadsThatExistAlreadyAlone)
{
    if (!mayBecomeRealTime())
    {
        GTEST_SKIP() << "this machine grants no real-time scheduling";
    }
    test::inOwnProcess(
        []
        {
            Logger::RedisLogger logger("wardex", Logger::kLogSocket, Logger::kLogList, true);
            setUpRealTime(logger);
            int ordinary = 0;
            for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
            {
                ordinary += sched_getscheduler(std::stoi(task.path().filename())) == SCHED_OTHER;
            }
            EXPECT_EQ(1, ordinary) << "the logger's configuration thread";
        });
}

TEST_F(RealTime, ReportsNothingWhenThePanicSettingCannotBeWritten)
{
    std::filesystem::permissions(kPanicSetting, std::filesystem::perms::none);
    test::inOwnProcess(
        []
        {
            giveUpPrivileges();
            setUp();
        });
    std::filesystem::permissions(kPanicSetting, std::filesystem::perms::owner_all);
    EXPECT_EQ("0\n", contentOf(kPanicSetting));
    for (const std::string& line : m_device.lines())
    {
        EXPECT_THAT(line, testing::AnyOf(testing::HasSubstr("sched"), testing::HasSubstr("mlock")));
    }
}

} // namespace orvo
