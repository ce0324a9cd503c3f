#include "DaemonRun.h"

#include "BusDaemon.h"
#include "Eventually.h"
#include "I2cTree.h"
#include "LoggedDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <csignal>
#include <sched.h>

namespace orvo
{

namespace
{

using test::contentOf;
using test::DaemonRun;
using test::EepromImage;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

const std::string kUnfused =
    "WARN wardex: supervision activity starting, Bello the watchdog, is unfused ...";
const std::string kDeveloper = "WARN wardex starting in developer mode";
const std::string kZq9xx = "WARN Registerinng services for the ZQ9XX family of devices";
constexpr const char kPanicSetting[] = "/proc/sys/kernel/panic";
constexpr const char kMarker[] = "/etc/mirrorfin_develop";
constexpr const char kPersistentMarker[] = "/etc/sysdata/mirrorfin_develop";
// Six ticks after a start, which takes long below an emulator.
constexpr int kSixTicksBoundMs = 30000;

/// A camera of the ZQ9XX family before its supervisor starts; its services do not run.
class StartUp : public testing::Test
{
protected:
    void SetUp() override
    {
        std::filesystem::remove(kMarker);
        std::filesystem::remove(kPersistentMarker);
        std::ofstream(kPanicSetting) << "0\n";
        m_tree.fit("2-0053", EepromImage('M', "101"));
    }

    void makeDevelopersDevice(const char* marker = kMarker) const { std::ofstream(marker).flush(); }

    /// Waits until supervision has begun; what stands in the log then.
    std::vector<std::string> linesOnceStarted()
    {
        EXPECT_TRUE(test::eventually(
            [&]
            {
                return testing::Matches(Contains("TRACE SuprStarting::entry (com.orvo.pictor)"))(
                    m_device.lines());
            }))
            << DaemonRun::err();
        return m_device.lines();
    }

    test::LoggedDevice m_device;
    test::I2cTree m_tree;
};

bool mayBecomeRealTime()
{
    test::ChildProcess trial({"chrt", "-f", "1", "true"});
    return trial.waitForEnd(5000) && trial.exitStatus() == 0;
}

std::vector<std::string> without(const std::string& part, std::vector<std::string> lines)
{
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&](const std::string& line)
                               { return line.find(part) != std::string::npos; }),
                lines.end());
    return lines;
}

} // namespace

TEST_F(StartUp, BuildsItsObjectsInOrder)
{
    DaemonRun run;
    const std::vector<std::string> lines =
        without("sched_setscheduler", without("mlockall", linesOnceStarted()));
    ASSERT_LE(5U, lines.size());
    EXPECT_THAT(std::vector<std::string>(lines.begin(), lines.begin() + 5),
                ElementsAre(kUnfused, kZq9xx, "TRACE SuprStartingSystem::entry",
                            "TRACE SuprStarting::entry (com.orvo.vistor)",
                            "TRACE Ping interval of service com.orvo.vistor is 2200"));
    EXPECT_THAT(lines, Contains("TRACE SuprStarting::entry (com.orvo.pictor)"));
    EXPECT_EQ("", run.err());
    EXPECT_EQ("", run.out());
}

TEST_F(StartUp, IgnoresArgumentsThatAreNoOptions)
{
    DaemonRun run({"word", "/some/file"});
    (void)linesOnceStarted();
    EXPECT_TRUE(run.process().isRunning());
    EXPECT_EQ("", run.err());
}

TEST_F(StartUp, TellsDeveloperModeForTheMarker)
{
    makeDevelopersDevice();
    DaemonRun run;
    EXPECT_THAT(linesOnceStarted(), testing::AllOf(Contains(kDeveloper), Not(Contains(kUnfused))));
}

TEST_F(StartUp, TellsDeveloperModeForThePersistentMarker)
{
    makeDevelopersDevice(kPersistentMarker);
    DaemonRun run;
    EXPECT_EQ(kDeveloper, linesOnceStarted().front());
}

TEST_F(StartUp, LooksForTheMarkersOnlyOnce)
{
    makeDevelopersDevice();
    DaemonRun run;
    (void)linesOnceStarted();
    std::filesystem::remove(kMarker);
    EXPECT_TRUE(test::eventually(
        [&] {
            return testing::Matches(Contains(HasSubstr("SuprUnstableSystem::entry")))(
                m_device.lines());
        },
        kSixTicksBoundMs));
    EXPECT_FALSE(run.isWatchdogOpen());
}

TEST_F(StartUp, MakesTheSupervisorRealTimeButNotItsHelpers)
{
    if (!mayBecomeRealTime())
    {
        GTEST_SKIP() << "this machine grants no real-time scheduling";
    }
    DaemonRun run;
    (void)linesOnceStarted();
    auto policies = run.policies();
    EXPECT_EQ(std::pair(SCHED_FIFO, 1), policies[run.process().pid()]);
    policies.erase(run.process().pid());
    EXPECT_FALSE(policies.empty());
    EXPECT_THAT(policies, Each(Pair(testing::_, std::pair(SCHED_OTHER, 0))));
}

TEST_F(StartUp, SetsThePanicRebootAndOpensTheWatchdog)
{
    DaemonRun run;
    (void)linesOnceStarted();
    EXPECT_EQ("60\n", contentOf(kPanicSetting));
    EXPECT_TRUE(run.isWatchdogOpen());
}

TEST_F(StartUp, LeavesADevelopersDeviceAsItIs)
{
    makeDevelopersDevice();
    DaemonRun run;
    (void)linesOnceStarted();
    EXPECT_THAT(run.policies(), Each(Pair(testing::_, std::pair(SCHED_OTHER, 0))));
    EXPECT_EQ(0, run.lockedKb());
    EXPECT_EQ("0\n", contentOf(kPanicSetting));
    EXPECT_FALSE(run.isWatchdogOpen());
}

TEST_F(StartUp, GivesUpWithoutAFamilyBeforeItTouchesTheDevice)
{
    m_tree.vanish("2-0053");
    DaemonRun run;
    EXPECT_EQ(1, run.waitForEnd());
    EXPECT_THAT(m_device.lines(),
                ElementsAre(kUnfused, "WARN Unable to detect the device family",
                            "FATAL wardex: Unable to register Services. Giving up!"));
    EXPECT_EQ("0\n", contentOf(kPanicSetting));
    EXPECT_EQ("", run.err());
}

TEST_F(StartUp, GivesUpWithoutAFamilyInDeveloperModeToo)
{
    makeDevelopersDevice();
    m_tree.vanish("2-0053");
    DaemonRun run;
    EXPECT_EQ(1, run.waitForEnd());
    EXPECT_THAT(m_device.lines(),
                ElementsAre(kDeveloper, "WARN Unable to detect the device family",
                            "FATAL wardex: Unable to register Services. Giving up!"));
}

TEST_F(StartUp, AbortsWithTheReasonWhenTheLogCannotBeReached)
{
    m_device.cache.stop();
    DaemonRun run;
    EXPECT_EQ(128 + SIGABRT, run.waitForEnd());
    EXPECT_THAT(run.err(), HasSubstr("terminate called after throwing an instance of"));
    EXPECT_THAT(run.err(), HasSubstr("No such file or directory"));
    EXPECT_EQ("0\n", contentOf(kPanicSetting));
}

TEST_F(StartUp, SupervisesTheTwoMainServicesAlsoWhereTheFamilyHasNone)
{
    m_tree.vanish("2-0053");
    m_tree.fit("2-0054", EepromImage('F', "200"));
    makeDevelopersDevice();
    DaemonRun run;
    EXPECT_THAT(
        linesOnceStarted(),
        testing::AllOf(Contains("WARN Registerinng services for the ZM7xx family of devices"),
                       Contains("TRACE Ping interval of service com.orvo.vistor is 0"),
                       Contains("TRACE Ping interval of service com.orvo.pictor is 0")));
    EXPECT_TRUE(test::eventually(
        [&]
        {
            return testing::Matches(Contains("ERROR isAlive: Unknown service com.orvo.pictor"))(
                m_device.lines());
        }));
}

TEST_F(StartUp, IsTornDownWithoutAWordWhenTheEventLoopEnds)
{
    DaemonRun run({}, DaemonRun::OnSigterm::Quits);
    (void)linesOnceStarted();
    run.process().signal(SIGTERM);
    EXPECT_EQ(0, run.waitForEnd()) << run.err();
    EXPECT_EQ("", run.err());
    EXPECT_THAT(m_device.lines(), Not(Contains(HasSubstr("::exit"))))
        << "the machines go without leaving their states";
}

} // namespace orvo
