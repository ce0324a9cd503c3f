#include "SuprSM.h"

#include "ChildProcess.h"
#include "Eventually.h"
#include "SupervisedDevice.h"
#include "SuprDown.h"
#include "SuprStarting.h"
#include "SuprUp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <memory>

#include <csignal>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kPictorIntervalMs = 1000;
constexpr char kPictorScript[] = "/opt/orvo/etc/init.d/30_pictor";

/// A process that is listed as "pictor"; its number stands in /box/pictor.pid. A shell reaps it, so
/// that it leaves the list when it ends.
class RunningPictor
{
public:
    RunningPictor()
    {
        std::filesystem::remove("/box/bin/pictor");
        std::filesystem::remove("/box/pictor.pid");
        std::filesystem::create_symlink("/usr/bin/sleep", "/box/bin/pictor");
        m_shell = std::make_unique<ChildProcess>(
            std::vector<std::string>{"sh", "-c",
                                     "trap 'kill $!; exit' TERM; /box/bin/pictor 60 & "
                                     "echo $! >/box/pid && mv /box/pid /box/pictor.pid; wait"});
        eventually([] { return std::filesystem::exists("/box/pictor.pid"); });
    }
    ~RunningPictor()
    {
        m_shell->signal(SIGTERM);
        m_shell->waitForEnd(kBoundMs);
    }
    RunningPictor(const RunningPictor&) = delete;
    RunningPictor& operator=(const RunningPictor&) = delete;

private:
    static constexpr int kBoundMs = 10000;

    std::unique_ptr<ChildProcess> m_shell;
};

class SupervisedService : public testing::Test
{
protected:
    void SetUp() override
    {
        m_device.bringTo("SuprUnstableSystem");
        m_device.supervise(kPictor);
        m_device.forgetThePast();
    }

    void goUp()
    {
        pictor().answer("up");
        m_device.afterPings(kPictor, 1);
        ASSERT_EQ("SuprUp", state());
        m_device.forgetThePast();
    }

    void goDown()
    {
        pictor().answer("down");
        m_device.afterPings(kPictor, 1);
        ASSERT_EQ("SuprDown", state());
        m_device.forgetThePast();
    }

    /// A fresh state of the pictor service, made by the test.
    template <class State>
    std::unique_ptr<SuprState> makeState()
    {
        return std::make_unique<State>(m_device.context(), &m_device.machine(kPictor),
                                       &m_device.system(), kPictor);
    }

    StubService::Answers& pictor() { return m_device.service(kPictor); }
    static std::string state() { return SupervisedDevice::stateOf(kPictor); }

    /// Pings that happen while so many milliseconds pass.
    int pingsIn(int ms)
    {
        const int before = pictor().pings;
        VirtualTime::instance().advance(ms);
        return pictor().pings - before;
    }

    SupervisedDevice m_device{Mode::Field};
};

using SuprSMTransition = SupervisedService;
/// On a stable device, which does not reboot however long it takes.
class OneShotPingTimeout : public SupervisedService
{
protected:
    void SetUp() override
    {
        SupervisedService::SetUp();
        m_device.reportUp(kVistor);
        m_device.reportUp(kPictor);
        m_device.forgetThePast();
    }
};

using DeadService = SupervisedService;

} // namespace

TEST_F(SupervisedService, IsPingedAfterItsIntervalAndNotBefore)
{
    EXPECT_EQ(0, pingsIn(kPictorIntervalMs - 1));
    EXPECT_EQ(1, pingsIn(1));
}

// In virtual time every timer is exact, whatever it asks for.
TEST_F(SupervisedService, IsPingedByAnExactTimer)
{
    EXPECT_EQ(Qt::PreciseTimer,
              SupervisedDevice::activeState(kPictor).findChild<QTimer*>()->timerType());
}

TEST_F(SupervisedService, IsPingedAtItsOwnIntervalInEveryState)
{
    m_device.supervise(kVistor);
    StubService::Answers& vistor = m_device.service(kVistor);
    vistor.answer("starting");
    VirtualTime::instance().advance(2199);
    EXPECT_EQ(0, vistor.pings);
    VirtualTime::instance().advance(1);
    EXPECT_EQ(1, vistor.pings);
    VirtualTime::instance().advance(4400);
    EXPECT_EQ(3, vistor.pings);
}

TEST_F(SupervisedService, IsPingedOnEveryPassWhenItIsNotInTheServiceTable)
{
    m_device.supervise("com.orvo.unheard");
    m_device.forgetThePast();
    VirtualTime::instance().advance(0);
    EXPECT_THAT(m_device.newRecords(),
                ElementsAre("ERROR isAlive: Unknown service com.orvo.unheard"));
    EXPECT_EQ(1, pingsIn(kPictorIntervalMs));
}

TEST_F(SupervisedService, IsReportedUpOnceWhenItAnswersUpAtTheFirstTick)
{
    EXPECT_EQ(3, pingsIn(3 * kPictorIntervalMs));
    EXPECT_EQ("SuprUp", state());
    EXPECT_THAT(m_device.newRecords(),
                ElementsAre("TRACE SuprStarting::up (com.orvo.pictor)",
                            "TRACE SuprStarting::exit (com.orvo.pictor)",
                            "TRACE SuprUp::entry (com.orvo.pictor)",
                            "TRACE Ping interval of service com.orvo.pictor is 1000",
                            "TRACE SuprUnstableSystem::serviceIsUp com.orvo.pictor"));
    EXPECT_THAT(m_device.newSignals(), ElementsAre("pictor=up vistor=down"));
}

TEST_F(SupervisedService, IsNotReportedDownWhenItAnswersStarting)
{
    goUp();
    pictor().answer("starting");
    m_device.afterPings(kPictor, 1);
    EXPECT_EQ("SuprStarting", state());
    EXPECT_THAT(m_device.newSignals(), IsEmpty());
}

TEST_F(SupervisedService, IsRegisteredAgainWhenItAnswersWhileUp)
{
    goUp();
    m_device.registry().unregisterService(kPictor);
    m_device.afterPings(kPictor, 1);
    EXPECT_TRUE(m_device.registry().isRegistered(kPictor));
}

TEST_F(SupervisedService, IsNotRegisteredByAnAnswerWhileStarting)
{
    m_device.registry().unregisterService(kPictor);
    pictor().answer("starting");
    m_device.afterPings(kPictor, 1);
    EXPECT_FALSE(m_device.registry().isRegistered(kPictor));
}

TEST_F(SupervisedService, BeginsEachStateWithoutBadPings)
{
    pictor().fail();
    m_device.afterPings(kPictor, 6);
    goUp();
    pictor().fail();
    m_device.afterPings(kPictor, 3);
    EXPECT_EQ("SuprUp", state());
}

TEST(DownServiceOfAStartingDevice, IsNotPingedBeforeItsFreshStart)
{
    SupervisedDevice device(Mode::Field);
    device.supervise(kPictor);
    device.service(kPictor).answer("down");
    device.afterPings(kPictor, 1);
    ASSERT_EQ("SuprDown", SupervisedDevice::stateOf(kPictor));
    device.afterPings(kPictor, 1);
    EXPECT_EQ("SuprStarting", SupervisedDevice::stateOf(kPictor));
    EXPECT_EQ(1, device.service(kPictor).pings);
}

TEST_F(SuprSMTransition, IsRefusedForNoState)
{
    EXPECT_FALSE(m_device.machine(kPictor).transition(nullptr));
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
}

TEST_F(SuprSMTransition, IsRefusedForTheCurrentState)
{
    EXPECT_FALSE(m_device.machine(kPictor).transition(&SupervisedDevice::activeState(kPictor)));
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
    EXPECT_EQ(1, pingsIn(kPictorIntervalMs));
}

TEST_F(SuprSMTransition, LeavesAStateOfTheSameNameToItsOwner)
{
    SuprState* const before = &SupervisedDevice::activeState(kPictor);
    const auto twin = makeState<SuprStarting>();
    EXPECT_FALSE(m_device.machine(kPictor).transition(twin.get()));
    EXPECT_EQ(before, &SupervisedDevice::activeState(kPictor));
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
}

TEST_F(SuprSMTransition, AdoptsAStateOfAnotherName)
{
    auto next = makeState<SuprUp>();
    ASSERT_TRUE(m_device.machine(kPictor).transition(next.get()));
    EXPECT_EQ(next.release(), &SupervisedDevice::activeState(kPictor));
}

TEST_F(SuprSMTransition, LeavesThenEnters)
{
    pictor().answer("up");
    m_device.afterPings(kPictor, 1);
    EXPECT_THAT(m_device.newRecords(),
                ElementsAre("TRACE SuprStarting::up (com.orvo.pictor)",
                            "TRACE SuprStarting::exit (com.orvo.pictor)",
                            "TRACE SuprUp::entry (com.orvo.pictor)",
                            "TRACE Ping interval of service com.orvo.pictor is 1000",
                            "TRACE SuprUnstableSystem::serviceIsUp com.orvo.pictor"));
}

TEST_F(SuprSMTransition, StopsThePingsOfTheStateThatWasLeft)
{
    goUp();
    EXPECT_EQ(1, pingsIn(kPictorIntervalMs));
}

TEST_F(SuprSMTransition, LeavesNoActiveStateBehindAnExit)
{
    SupervisedDevice::activeState(kPictor).exit();
    EXPECT_EQ("none", SupervisedDevice::stateOf(kPictor));
    EXPECT_FALSE(SuprSM::restartTimer(kPictor, 100));
    EXPECT_EQ(0, pingsIn(5 * kPictorIntervalMs));
    EXPECT_THAT(m_device.newRecords(), ElementsAre("TRACE SuprStarting::exit (com.orvo.pictor)"));
}

TEST_F(SuprSMTransition, EndsWithoutAnExitWhenTheMachineIsTornDown)
{
    {
        const SuprSM wirl(m_device.context(), &m_device.system(), kWirl);
        m_device.forgetThePast();
    }
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
    EXPECT_EQ("none", SupervisedDevice::stateOf(kWirl));
    EXPECT_FALSE(SuprSM::restartTimer(kWirl, 100));
}

TEST_F(OneShotPingTimeout, AnswersFalseForANameWithoutAState)
{
    EXPECT_FALSE(SuprSM::restartTimer(kWirl, 100));
    EXPECT_EQ(1, pingsIn(kPictorIntervalMs));
    EXPECT_THAT(m_device.newRecords(), Contains("TRACE SuprUp::entry (com.orvo.pictor)"));
}

TEST_F(OneShotPingTimeout, StartsTheTimerAnewFromThatMoment)
{
    EXPECT_EQ(0, pingsIn(900));
    EXPECT_TRUE(SuprSM::restartTimer(kPictor, 5000));
    EXPECT_EQ(0, pingsIn(4999));
    EXPECT_EQ(1, pingsIn(1));
}

TEST_F(OneShotPingTimeout, HoldsUntilTheStateIsLeft)
{
    pictor().answer("starting");
    EXPECT_TRUE(SuprSM::restartTimer(kPictor, 300));
    EXPECT_EQ(3, pingsIn(900));
    goUp();
    EXPECT_EQ(1, pingsIn(kPictorIntervalMs));
}

TEST_F(OneShotPingTimeout, DoesNotChangeTheIntervalOfTheRegistry)
{
    EXPECT_TRUE(SuprSM::restartTimer(kPictor, 300));
    EXPECT_EQ(kPictorIntervalMs, m_device.registry().pingInterval(kPictor));
}

TEST_F(OneShotPingTimeout, OfZeroPingsOnEveryPassAndHoldsNobodyUp)
{
    m_device.supervise(kVistor);
    pictor().answer("starting");
    m_device.service(kVistor).answer("starting");
    EXPECT_TRUE(SuprSM::restartTimer(kPictor, 0));
    EXPECT_EQ(1, pingsIn(0));
    EXPECT_EQ(1, pingsIn(0));
    VirtualTime::instance().advance(2200);
    EXPECT_EQ(1, m_device.service(kVistor).pings);
}

TEST_F(OneShotPingTimeout, BelowZeroIsRefusedAndThePingsGoOn)
{
    EXPECT_FALSE(SuprSM::restartTimer(kPictor, -1));
    EXPECT_EQ(60, pingsIn(60 * kPictorIntervalMs));
}

TEST_F(OneShotPingTimeout, OfTheLongestIntervalIsTaken)
{
    EXPECT_TRUE(SuprSM::restartTimer(kPictor, std::numeric_limits<int>::max()));
    EXPECT_EQ(0, pingsIn(3600 * kPictorIntervalMs));
}

TEST_F(DeadService, IsStoppedAndThenStartedWhenItsProcessRuns)
{
    const RunningPictor process;
    m_device.scripts().install(
        kPictorScript, 0,
        "if [ $1 = stop ]; then kill $(cat /box/pictor.pid)\n"
        "while kill -0 $(cat /box/pictor.pid) 2>/dev/null; do sleep 0.01; done; fi");
    goDown();
    pictor().fail();
    m_device.afterPings(kPictor, 2);
    EXPECT_EQ("SuprStarting", state());
    EXPECT_THAT(m_device.newCommands(), ElementsAre("/opt/orvo/etc/init.d/30_pictor stop",
                                                    "/opt/orvo/etc/init.d/30_pictor restart"));
}

TEST_F(DeadService, IsNotStartedWhenItsProcessOutlivesTheStop)
{
    const RunningPictor process;
    goDown();
    pictor().fail();
    m_device.afterPings(kPictor, 2);
    EXPECT_EQ("SuprStarting", state());
    EXPECT_THAT(m_device.newCommands(), ElementsAre("/opt/orvo/etc/init.d/30_pictor stop"));
}

TEST_F(DeadService, GetsAFreshStartAlsoWhenItsScriptFails)
{
    m_device.scripts().install(kPictorScript, 1);
    goDown();
    pictor().fail();
    m_device.afterPings(kPictor, 2);
    EXPECT_EQ("SuprStarting", state());
    EXPECT_THAT(m_device.newCommands(), ElementsAre("/opt/orvo/etc/init.d/30_pictor restart"));
}

TEST_F(DeadService, IsRestartedAgainByTheNextRoundOfBadPings)
{
    goDown();
    pictor().fail();
    m_device.afterPings(kPictor, 2);
    m_device.afterPings(kPictor, 7);
    ASSERT_EQ("SuprDown", state());
    m_device.afterPings(kPictor, 2);
    EXPECT_EQ("SuprStarting", state());
    EXPECT_THAT(m_device.newCommands(), ElementsAre("/opt/orvo/etc/init.d/30_pictor restart",
                                                    "/opt/orvo/etc/init.d/30_pictor restart"));
}

} // namespace orvo::test
