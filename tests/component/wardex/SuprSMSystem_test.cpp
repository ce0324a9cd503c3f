#include "SuprSMSystem.h"

#include "ProcessTables.h"
#include "SupervisedDevice.h"
#include "SuprRebootSystem.h"
#include "SuprStateSystem.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// Ticks from power-on or a package restart to the next decision when nothing comes up.
constexpr int kTicksToUnstable = 6;
constexpr int kTicksToDecision = 11;
constexpr int kRoundTicks = kTicksToUnstable + kTicksToDecision;

class UnstableDevice : public testing::Test
{
protected:
    /// Restarts the package three times, one second before it would do so for the fourth time.
    void bringToTheFourthNeed()
    {
        m_device.afterTicks(4 * kRoundTicks - 1);
        ASSERT_EQ("SuprUnstableSystem", m_device.state());
        ASSERT_EQ(3U, g_restartHistory.size());
        m_device.forgetThePast();
    }

    /// Ms from the first package restart to the tick that is due.
    static qint64 ageOfTheFirstRestartAtTheNextTick()
    {
        return g_restartHistory.front().msecsTo(QDateTime::currentDateTime()) + kTickMs;
    }

    static constexpr int kTickMs = 1000;

    // A developer's device decides in the same way, and survives its reboot.
    SupervisedDevice m_device{Mode::Developer};
};

class FieldDevice : public testing::Test
{
protected:
    SupervisedDevice m_device{Mode::Field};
};

/// A state of the test's own, which notes what is done to it and which state is current then.
class NotingState : public SuprStateSystem
{
public:
    NotingState(SuprSMSystem* machine, const SupervisionContext* context, const char* name,
                Lines* notes)
        : SuprStateSystem(machine, context), m_machine(machine), m_name(name), m_notes(notes)
    {
    }
    ~NotingState() override { m_notes->push_back(m_name + " deleted"); }
    NotingState(const NotingState&) = delete;
    NotingState& operator=(const NotingState&) = delete;

    [[nodiscard]] QString name() const override { return QString::fromStdString(m_name); }
    void entry() override { note("entry"); }
    void exit() override { note("exit"); }

private:
    void note(const std::string& event)
    {
        m_notes->push_back(m_name + " " + event + " in " + m_machine->stateName().toStdString());
    }

    SuprSMSystem* m_machine;
    std::string m_name;
    Lines* m_notes;
};

class SuprSMSystemTransition : public testing::Test
{
protected:
    /// Hands a state to the machine; true when it was taken.
    bool change(const char* name)
    {
        auto next =
            std::make_unique<NotingState>(&m_device.system(), m_device.context(), name, &m_notes);
        m_current = next.get();
        const bool isAdopted = m_device.system().transition(next.get());
        if (isAdopted)
        {
            (void)next.release();
        }
        return isAdopted;
    }

    Lines m_notes; // outlives the device and its last state
    SupervisedDevice m_device{Mode::Field};
    SuprStateSystem* m_current{nullptr};
};

class RebootingFieldDevice : public FieldDevice
{
protected:
    void SetUp() override
    {
        m_device.reportUp(kVistor);
        m_device.forgetThePast();
    }

    // Entering it would never return: it is asked without being entered.
    SuprRebootSystem m_state{&m_device.system(), m_device.context()};
};

} // namespace

TEST_F(FieldDevice, TicksOnceASecond)
{
    VirtualTime::instance().advance(kTicksToUnstable * 1000 - 1);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
    VirtualTime::instance().advance(1);
    EXPECT_EQ("SuprUnstableSystem", m_device.state());
}

// In virtual time every timer is exact, whatever it asks for.
TEST_F(RebootingFieldDevice, TicksByAnExactTimer)
{
    EXPECT_EQ(Qt::PreciseTimer, m_state.findChild<QTimer*>()->timerType());
}

TEST_F(FieldDevice, LogsItsFirstState)
{
    EXPECT_THAT(m_device.newRecords(), ElementsAre("TRACE SuprStartingSystem::entry"));
}

TEST_F(FieldDevice, RestartsThePackageEverySeventeenTicksWhileNothingComesUp)
{
    m_device.afterTicks(kRoundTicks - 1);
    EXPECT_THAT(m_device.newCommands(), IsEmpty());
    m_device.afterTicks(1);
    EXPECT_THAT(m_device.newCommands(), ElementsAre("/etc/init.d/mf-optware restart"));
    EXPECT_EQ("SuprStartingSystem", m_device.state());
    m_device.afterTicks(kRoundTicks - 1);
    EXPECT_THAT(m_device.newCommands(), IsEmpty());
    m_device.afterTicks(1);
    EXPECT_THAT(m_device.newCommands(), ElementsAre("/etc/init.d/mf-optware restart"));
}

TEST_F(FieldDevice, RemembersTheLocalTimeOfEachPackageRestart)
{
    m_device.afterTicks(2 * kRoundTicks);
    ASSERT_EQ(2U, g_restartHistory.size());
    EXPECT_EQ(QDateTime::currentDateTime(), g_restartHistory.back());
    EXPECT_EQ(kRoundTicks, g_restartHistory.front().secsTo(g_restartHistory.back()));
}

TEST_F(FieldDevice, GoesOnWhenTheRestartOfThePackageFails)
{
    m_device.scripts().install("/etc/init.d/mf-optware", 1);
    m_device.afterTicks(kRoundTicks);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
}

TEST_F(FieldDevice, KeepsItsUnstableTicksOverAStablePeriod)
{
    m_device.bringTo("SuprUnstableSystem");
    m_device.afterTicks(4);
    m_device.reportUp(kVistor);
    m_device.reportUp(kPictor);
    m_device.afterTicks(100);
    m_device.reportDown(kPictor);
    m_device.afterTicks(6);
    EXPECT_EQ("SuprUnstableSystem", m_device.state());
    m_device.afterTicks(1);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
}

TEST_F(FieldDevice, ForgetsItsUnstableTicksWithAPackageRestart)
{
    m_device.afterTicks(kRoundTicks);
    EXPECT_EQ(0U, g_unstableTicks);
}

TEST_F(FieldDevice, SpoilsStabilityWhileAStrangerStaysUp)
{
    m_device.reportUp(kWirl);
    m_device.reportUp(kVistor);
    m_device.reportUp(kPictor);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
    m_device.reportDown(kWirl);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
    m_device.reportUp(kPictor);
    EXPECT_EQ("SuprStableSystem", m_device.state());
}

TEST_F(FieldDevice, KnowsExactlyItsTwoMainServices)
{
    EXPECT_THAT(g_knownServices, ElementsAre(kPictor, kVistor));
}

TEST_F(FieldDevice, NotesInTheRegistryWhatItPublishes)
{
    m_device.reportUp(kVistor);
    EXPECT_THAT(m_device.registry().registeredServices(), ElementsAre(kVistor));
    m_device.reportUp(kPictor);
    m_device.reportDown(kVistor);
    EXPECT_THAT(m_device.registry().registeredServices(), ElementsAre(kPictor));
}

TEST_F(UnstableDevice, RebootsAtTheFourthNeedWithinTheWindow)
{
    bringToTheFourthNeed();
    m_device.afterTicks(1);
    EXPECT_EQ("SuprRebootSystem", m_device.state());
    EXPECT_THAT(m_device.newRecords(),
                Contains("EMERG Too many restarts(3) detected in last 5 minutes: rebooting whole "
                         "system ..."));
    EXPECT_EQ(3U, g_restartHistory.size());
}

TEST_F(UnstableDevice, DoesNotCountARestartThatIsExactlyFiveMinutesOld)
{
    bringToTheFourthNeed();
    VirtualClock::step(300000 - ageOfTheFirstRestartAtTheNextTick());
    m_device.afterTicks(1);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
    EXPECT_EQ(4U, g_restartHistory.size());
}

TEST_F(UnstableDevice, CountsARestartOneMillisecondYounger)
{
    bringToTheFourthNeed();
    VirtualClock::step(299999 - ageOfTheFirstRestartAtTheNextTick());
    m_device.afterTicks(1);
    EXPECT_EQ("SuprRebootSystem", m_device.state());
}

TEST_F(UnstableDevice, CountsAgainWhenItsClockIsSetBack)
{
    bringToTheFourthNeed();
    VirtualClock::step(-3600000);
    m_device.afterTicks(1);
    EXPECT_EQ("SuprRebootSystem", m_device.state());
}

TEST_F(UnstableDevice, ForgetsItsRestartsWhenItsClockIsSetForth)
{
    bringToTheFourthNeed();
    VirtualClock::step(3600000);
    m_device.afterTicks(1);
    EXPECT_EQ("SuprStartingSystem", m_device.state());
}

TEST_F(UnstableDevice, TellsHowManyRestartsThereWere)
{
    bringToTheFourthNeed();
    g_restartHistory.push_back(QDateTime::currentDateTime());
    m_device.afterTicks(1);
    EXPECT_THAT(m_device.newRecords(),
                Contains("EMERG Too many restarts(4) detected in last 5 minutes: rebooting whole "
                         "system ..."));
}

TEST_F(UnstableDevice, DecidesAtOnceWhenItIsUnstableAgainAfterASurvivedReboot)
{
    m_device.bringTo("SuprRebootSystem");
    m_device.reportUp(kVistor);
    m_device.reportUp(kPictor);
    ASSERT_EQ("SuprStableSystem", m_device.state());
    m_device.reportDown(kPictor);
    m_device.afterTicks(1);
    EXPECT_EQ("SuprRebootSystem", m_device.state());
}

TEST_F(RebootingFieldDevice, OnlyLogsAServiceThatIsUp)
{
    m_state.serviceIsUp(kPictor);
    EXPECT_THAT(m_device.newRecords(),
                ElementsAre("TRACE SuprRebootSystem::serviceIsUp com.orvo.pictor"));
    EXPECT_THAT(m_device.newSignals(), IsEmpty());
    EXPECT_THAT(g_upServices, ElementsAre(kVistor));
    EXPECT_EQ("SuprStartingSystem", m_device.state());
}

TEST_F(RebootingFieldDevice, OnlyLogsAServiceThatIsDown)
{
    m_state.serviceIsDown(kVistor);
    EXPECT_THAT(m_device.newRecords(),
                ElementsAre("TRACE SuprRebootSystem::serviceIsDown com.orvo.vistor"));
    EXPECT_THAT(m_device.newSignals(), IsEmpty());
    EXPECT_THAT(g_upServices, ElementsAre(kVistor));
}

TEST_F(SuprSMSystemTransition, IsRefusedForNoState)
{
    m_device.forgetThePast();
    EXPECT_FALSE(m_device.system().transition(nullptr));
    EXPECT_EQ("SuprStartingSystem", m_device.state());
    EXPECT_THAT(m_device.newRecords(), IsEmpty());
}

TEST_F(SuprSMSystemTransition, IsRefusedForTheCurrentState)
{
    ASSERT_TRUE(change("first"));
    m_notes.clear();
    EXPECT_FALSE(m_device.system().transition(m_current));
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(SuprSMSystemTransition, LeavesThenEntersThenDeletes)
{
    ASSERT_TRUE(change("first"));
    m_notes.clear();
    ASSERT_TRUE(change("second"));
    EXPECT_THAT(m_notes,
                ElementsAre("first exit in first", "second entry in first", "first deleted"));
    EXPECT_EQ("second", m_device.state());
}

TEST_F(SuprSMSystemTransition, TakesAnotherStateOfTheSameName)
{
    ASSERT_TRUE(change("first"));
    m_notes.clear();
    ASSERT_TRUE(change("first"));
    EXPECT_THAT(m_notes,
                ElementsAre("first exit in first", "first entry in first", "first deleted"));
}

TEST(SuprSMSystemTearDown, DeletesTheStateWithoutAnExit)
{
    Lines notes;
    {
        SupervisedDevice device(Mode::Field);
        auto state =
            std::make_unique<NotingState>(&device.system(), device.context(), "last", &notes);
        ASSERT_TRUE(device.system().transition(state.get()));
        (void)state.release();
    }
    EXPECT_THAT(notes, ElementsAre("last entry in SuprStartingSystem", "last deleted"));
}

} // namespace orvo::test
