#include "GuardRun.h"

#include "Eventually.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

namespace orvo::test
{

using testing::ElementsAre;
using testing::MatchesRegex;

namespace
{
constexpr int kResetStatus = 70;
constexpr int kShortMs = 150;
constexpr int kLongMs = 60000;
} // namespace

class WatchdogGuard : public testing::Test
{
protected:
    GuardRun m_run;
};

TEST_F(WatchdogGuard, EndsWithTheProgramThatNeverOpensTheDevice)
{
    m_run.startUser(kLongMs, {"exit", "5"});
    EXPECT_EQ(5, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("exit 5"));
}

TEST_F(WatchdogGuard, TellsTheSignalThatEndedTheProgram)
{
    m_run.start(kLongMs, {"sh", "-c", "kill -TERM $$"});
    EXPECT_EQ(128 + SIGTERM, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("exit 143"));
}

TEST_F(WatchdogGuard, NotesEachUseOfTheDeviceInItsOrder)
{
    m_run.startUser(kShortMs, {"open", m_run.device(), "gettimeout", "feed", "write", "x", "feed",
                               "feed", "close", "exit", "3"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("open", "gettimeout", "feed 1", "write", "feed 2",
                                             "feed 3", "close", "exit 3", "reset"));
    EXPECT_THAT(m_run.output(), ElementsAre("open 0", "gettimeout 1", "feed 0", "write 1", "feed 0",
                                            "feed 0", "close 0"));
}

TEST_F(WatchdogGuard, StampsItsLinesWithTheMonotonicClockToTheMicrosecond)
{
    timespec before{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    m_run.startUser(kShortMs, {"open", m_run.device(), "feed"});
    ASSERT_EQ(kResetStatus, m_run.status());
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &after);

    EXPECT_THAT(linesOf(m_run.path("journal")),
                ElementsAre(MatchesRegex("[0-9]+\\.[0-9]{6} open"),
                            MatchesRegex("[0-9]+\\.[0-9]{6} feed 1"),
                            MatchesRegex("[0-9]+\\.[0-9]{6} close"),
                            MatchesRegex("[0-9]+\\.[0-9]{6} exit 0"),
                            MatchesRegex("[0-9]+\\.[0-9]{6} reset")));
    const std::vector<double> times = m_run.times();
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    EXPECT_GE(times.front(), static_cast<double>(before.tv_sec));
    EXPECT_LE(times.back(), static_cast<double>(after.tv_sec) + 1);
}

TEST_F(WatchdogGuard, AppendsToTheJournalOfAnEarlierBoot)
{
    m_run.startUser(kLongMs, {"exit", "1"});
    ASSERT_EQ(1, m_run.status());
    m_run.startUser(kLongMs, {"exit", "2"});
    ASSERT_EQ(2, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("exit 1", "exit 2"));
}

struct TimeoutRow
{
    int milliseconds;
    long seconds;
};

void PrintTo(const TimeoutRow& row, std::ostream* stream)
{
    *stream << row.milliseconds << " ms";
}

class WatchdogGuardTimeout : public testing::TestWithParam<TimeoutRow>
{
};

TEST_P(WatchdogGuardTimeout, IsAnsweredInWholeSeconds)
{
    GuardRun run;
    run.startUser(GetParam().milliseconds, {"open", run.device(), "gettimeout", "wait"});
    EXPECT_EQ(GetParam().seconds, run.said("gettimeout"));
}

INSTANTIATE_TEST_SUITE_P(Rows, WatchdogGuardTimeout,
                         testing::Values(TimeoutRow{200, 1}, TimeoutRow{1999, 1},
                                         TimeoutRow{2000, 2}, TimeoutRow{60000, 60}),
                         [](const auto& row) { return std::to_string(row.param.milliseconds); });

TEST_F(WatchdogGuard, ResetsAProgramThatOpensTheDeviceAndNeverFeeds)
{
    m_run.startUser(kShortMs, {"pid", "open", m_run.device(), "wait"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("open", "reset"));
    EXPECT_FALSE(GuardRun::exists(m_run.said("pid")));
    EXPECT_GE(m_run.timeOf("reset") - m_run.timeOf("open"), kShortMs / 1000.0);
}

TEST_F(WatchdogGuard, StartsTheCountAgainAtEachFeed)
{
    constexpr int kTimeoutMs = 600;
    m_run.startUser(kTimeoutMs, {"open", m_run.device(), "feeds", "8", "100", "wait"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("open", "feed 1", "feed 2", "feed 3", "feed 4",
                                             "feed 5", "feed 6", "feed 7", "feed 8", "reset"));
    EXPECT_GE(m_run.timeOf("reset") - m_run.timeOf("feed 8"), kTimeoutMs / 1000.0);
}

TEST_F(WatchdogGuard, HearsNothingOnceItIsRemoved)
{
    m_run.startUser(5 * kShortMs, {"open", m_run.device(), "feed", "feeds", "1000", "50"});
    ASSERT_TRUE(m_run.notes("feed 1"));
    m_run.guard().signal(SIGUSR1);
    EXPECT_EQ(kResetStatus, m_run.status());
    ASSERT_TRUE(m_run.notes("removed"));
    EXPECT_EQ("removed", m_run.journal().at(m_run.journal().size() - 2));
    EXPECT_EQ("reset", m_run.journal().back());
    EXPECT_EQ("feed " + std::to_string(-ENODEV), m_run.output().back());
}

TEST_F(WatchdogGuard, TakesAWriteForAFeed)
{
    constexpr int kTimeoutMs = 400;
    m_run.startUser(kTimeoutMs,
                    {"open", m_run.device(), "feeds", "1", "200", "write", "V", "wait"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_GE(m_run.timeOf("reset") - m_run.timeOf("write"), kTimeoutMs / 1000.0);
}

TEST_F(WatchdogGuard, CountsOnAfterTheProgramWasKilled)
{
    constexpr int kTimeoutMs = 500;
    m_run.startUser(kTimeoutMs, {"pid", "open", m_run.device(), "feed", "wait"});
    ASSERT_TRUE(m_run.notes("feed 1"));
    kill(static_cast<pid_t>(m_run.said("pid")), SIGKILL);
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("open", "feed 1", "close", "exit 137", "reset"));
    EXPECT_GE(m_run.timeOf("reset") - m_run.timeOf("feed 1"), kTimeoutMs / 1000.0);
}

TEST_F(WatchdogGuard, CountsOnAfterTheMagicClose)
{
    m_run.startUser(kShortMs, {"open", m_run.device(), "write", "V", "close", "exit", "0"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("open", "write", "close", "exit 0", "reset"));
}

TEST_F(WatchdogGuard, CountsTheFeedsOfAForkedChild)
{
    m_run.startUser(kShortMs,
                    {"open", m_run.device(), "feed", "fork", "feed", "gettimeout", "exit", "4"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(),
                ElementsAre("open", "feed 1", "feed 2", "gettimeout", "close", "exit 4", "reset"));
}

TEST_F(WatchdogGuard, KillsAllThatTheProgramHasStarted)
{
    m_run.startUser(kShortMs, {"orphan", "fork", "pid", "open", m_run.device(), "wait"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_FALSE(GuardRun::exists(m_run.said("orphan")));
    EXPECT_FALSE(GuardRun::exists(m_run.said("pid")));
}

TEST_F(WatchdogGuard, LeavesNoZombieOfWhatTheProgramHasStarted)
{
    m_run.startUser(kLongMs, {"short-orphan", "wait"});
    const long orphan = m_run.said("orphan");
    ASSERT_GT(orphan, 0);
    EXPECT_TRUE(eventually([&] { return !GuardRun::exists(orphan); }));
    EXPECT_TRUE(m_run.guard().isRunning());
}

TEST_F(WatchdogGuard, KnowsTheDeviceByEveryPath)
{
    m_run.startUser(kShortMs, {"open", m_run.path("link"), "gettimeout"});
    ASSERT_EQ(0, m_run.status()) << "the link does not exist yet";
    std::filesystem::create_symlink(m_run.device(), m_run.path("link"));
    m_run.startUser(kShortMs, {"open", m_run.path("link"), "gettimeout", "feed"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(),
                ElementsAre("exit 0", "open", "gettimeout", "feed 1", "close", "exit 0", "reset"));
}

TEST_F(WatchdogGuard, LeavesOtherFilesAndOtherIoctlsToTheKernel)
{
    m_run.startUser(kLongMs, {"terminal", "open", "/dev/null", "gettimeout", "feed"});
    EXPECT_EQ(0, m_run.status());
    const std::string noTerminal = std::to_string(-ENOTTY);
    EXPECT_THAT(m_run.output(), ElementsAre("terminal 1", "size 0", "open 0",
                                            "gettimeout " + noTerminal, "feed " + noTerminal));
    EXPECT_THAT(m_run.journal(), ElementsAre("exit 0"));
}

TEST_F(WatchdogGuard, LeavesAClosedDescriptorToTheKernel)
{
    m_run.startUser(kLongMs, {"gettimeout", "feed"});
    EXPECT_EQ(0, m_run.status());
    const std::string closed = std::to_string(-EBADF);
    EXPECT_THAT(m_run.output(), ElementsAre("gettimeout " + closed, "feed " + closed));
}

TEST_F(WatchdogGuard, AnswersABadPointerAsADriverDoes)
{
    m_run.startUser(kLongMs, {"open", m_run.device(), "bad-pointer", "gettimeout", "wait"});
    EXPECT_EQ(60, m_run.said("gettimeout"));
    EXPECT_EQ(-EFAULT, m_run.said("bad-pointer"));
}

TEST_F(WatchdogGuard, LeavesTheSignalsOfTheGroupToTheProgram)
{
    m_run.start(kShortMs,
                {"sh", "-c",
                 "trap : INT HUP; trap 'exit 9' TERM; exec 3<>" + m_run.device() +
                     "; kill -INT 0; kill -HUP 0; kill -TERM 0; exit 1"},
                {"setsid"});
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.journal(), ElementsAre("open", "close", "exit 9", "reset"));
}

TEST_F(WatchdogGuard, StartsTheProgramWithTheSignalMaskItHadItself)
{
    m_run.start(kLongMs, {"grep", "-E", "^Sig(Blk|Ign|Cgt):", "/proc/self/status"});
    ASSERT_EQ(0, m_run.status());
    const std::vector<std::string> guarded = m_run.output();
    ChildProcess plain({"grep", "-E", "^Sig(Blk|Ign|Cgt):", "/proc/self/status"},
                       m_run.path("plain"));
    ASSERT_TRUE(plain.waitForEnd(10000));
    EXPECT_EQ(linesOf(m_run.path("plain")), guarded);
}

TEST_F(WatchdogGuard, TakesTheProgramAlongWhenItIsKilled)
{
    m_run.startUser(kLongMs, {"pid", "wait"});
    const long program = m_run.said("pid");
    ASSERT_GT(program, 0);
    m_run.guard().kill();
    // Its zombie belongs to somebody else now.
    const std::string commandLine = "/proc/" + std::to_string(program) + "/cmdline";
    EXPECT_TRUE(eventually([&] { return contentOf(commandLine).empty(); }));
}

TEST_F(WatchdogGuard, RunsAProgramWhoseDeviceIsMissing)
{
    ChildProcess guard({peer("watchdog-guard"), "--device", m_run.path("none"), "--timeout-ms",
                        "100", "--journal", m_run.path("journal"), "--", peer("watchdog-user"),
                        "open", m_run.path("none"), "exit", "6"},
                       m_run.path("output"));
    ASSERT_TRUE(guard.waitForEnd(10000));
    EXPECT_EQ(6, guard.exitStatus());
    EXPECT_THAT(m_run.output(),
                ElementsAre("watchdog-guard: cannot watch the device " + m_run.path("none") +
                                ": No such file or directory; create it as a plain file, or the "
                                "program runs without a watchdog",
                            "open " + std::to_string(-ENOENT)));
}

TEST_F(WatchdogGuard, NeedsNoCapabilities)
{
    // An ordinary user has none to give up, and need not.
    std::vector<std::string> prefix;
    if (geteuid() == 0)
    {
        prefix = {"setpriv", "--bounding-set=-all", "--inh-caps=-all"};
    }
    m_run.startUser(kShortMs, {"open", m_run.device(), "gettimeout", "feed"}, prefix);
    EXPECT_EQ(kResetStatus, m_run.status());
    EXPECT_THAT(m_run.output(), ElementsAre("open 0", "gettimeout 1", "feed 0"));
}

TEST_F(WatchdogGuard, SaysWhenTheProgramIsMissing)
{
    m_run.start(kLongMs, {"no-such-program"});
    EXPECT_EQ(127, m_run.status());
    EXPECT_THAT(m_run.output(),
                ElementsAre("watchdog-guard: cannot run no-such-program: No such file or "
                            "directory; give the path of an executable file"));
}

TEST_F(WatchdogGuard, SaysWhenTheProgramCannotBeExecuted)
{
    m_run.start(kLongMs, {"/etc/passwd"});
    EXPECT_EQ(126, m_run.status());
    EXPECT_THAT(m_run.output(), ElementsAre("watchdog-guard: cannot run /etc/passwd: Permission "
                                            "denied; give the path of an executable file"));
}

} // namespace orvo::test
