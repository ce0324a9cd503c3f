#include "model/Outlook.h"

#include "RecordStory.h"
#include "dbus-proxy/BusNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::ctl
{

using test::RecordStory;
using testing::IsEmpty;

namespace
{
constexpr BusView kAnswers{true, true};
constexpr BusView kAnswersUnlisted{true, false};
constexpr BusView kSilent{false, false};
constexpr BusView kNoBus{false, false, false};
constexpr char kGraceOfAMinute[] =
    "setServicePingTimeoutOneShot: restartTimer(com.orvo.pictor, 60000)";
} // namespace

class OutlookTest : public testing::Test
{
protected:
    std::string verdict(const BusView& bus, double now) const
    {
        return verdictText(verdictOf(m_story.facts(), bus, now));
    }

    /// "SECONDS TEXT" of what comes next.
    std::vector<std::string> next(double now, const BusView& bus = kAnswers) const
    {
        std::vector<std::string> texts;
        for (const NextEvent& event : nextEvents(m_story.facts(), bus, now))
        {
            char seconds[32];
            std::snprintf(seconds, sizeof seconds, "%.1f ", event.seconds);
            texts.push_back(seconds + event.text);
        }
        return texts;
    }

    std::string strikes(double now) const
    {
        const DeviceFacts facts = m_story.facts();
        const auto found = strikesOf(facts, facts.services.at(kPictorBusName), kPictorBusName, now);
        return found ? std::to_string(found->count) + "/" + std::to_string(found->threshold)
                     : "unknown";
    }

    RecordStory m_story;
};

TEST_F(OutlookTest, TicksOfAnyTimeCanBeCounted)
{
    ServiceFacts service;
    service.state = "SuprStarting";
    EXPECT_EQ(1000000, ticksOf(service, kPictorBusName, 99999999999999.0));
    service.ticksBefore = 1000000;
    EXPECT_EQ(1000000, ticksOf(service, kPictorBusName, 5));
    service.interval = 1e-300;
    EXPECT_EQ(1000000, ticksOf(service, kPictorBusName, 5));
}

TEST_F(OutlookTest, StableDeviceIsStableAndNothingComes)
{
    m_story.becomesStable();
    EXPECT_EQ("stable", verdict(kAnswers, 30));
    EXPECT_THAT(next(30), IsEmpty());
}

TEST_F(OutlookTest, SilentSupervisorIsSilentWhateverTheRecordsSay)
{
    m_story.becomesStable();
    EXPECT_EQ("supervisor silent", verdict(kSilent, 30));
    EXPECT_THAT(next(30, kSilent),
                testing::ElementsAre("-1.0 nobody feeds the watchdog: it will reset the device"));
}

TEST_F(OutlookTest, NobodyKnowsWhatComesWithoutTheBus)
{
    m_story.becomesStable();
    EXPECT_EQ("supervisor silent", verdict(kNoBus, 30));
    EXPECT_THAT(next(30, kNoBus),
                testing::ElementsAre("-1.0 not known while the system bus cannot be reached"));
}

TEST_F(OutlookTest, StartingDeviceBecomesUnstableOnItsSixthTick)
{
    m_story.starts(8).traces(8, "SuprStartingSystem::entry");
    EXPECT_EQ("starting", verdict(kAnswersUnlisted, 10));
    EXPECT_THAT(next(10), testing::ElementsAre("4.0 the device counts as unstable"));
    EXPECT_THAT(next(20), testing::ElementsAre("0.0 the device counts as unstable"));
}

TEST_F(OutlookTest, UnstableDeviceIsRestartedOnTheEleventhTickOfAllPeriods)
{
    m_story.becomesStable().traces(20, "SuprUnstableSystem::entry");
    EXPECT_EQ("unstable", verdict(kAnswers, 21));
    EXPECT_THAT(next(21), testing::ElementsAre("10.0 the whole software package is restarted"));
    m_story.traces(24, "SuprStableSystem::entry").traces(30, "SuprUnstableSystem::entry");
    EXPECT_THAT(next(31), testing::ElementsAre("6.0 the whole software package is restarted"));
}

TEST_F(OutlookTest, UnstableDeviceRebootsAfterThreeRestartsThatThenStillCount)
{
    m_story.starts(1);
    for (const double seconds : {100.0, 120.0, 140.0})
    {
        m_story.restartsPackage(seconds);
    }
    m_story.traces(388.9, "SuprUnstableSystem::entry");
    EXPECT_THAT(next(388.9), testing::ElementsAre("11.0 the device reboots"));
    // At 400 s the first restart is 300 s old, and no longer counts.
    m_story.traces(388.95, "SuprStableSystem::entry").traces(389, "SuprUnstableSystem::entry");
    EXPECT_THAT(next(389), testing::ElementsAre("11.0 the whole software package is restarted"));
}

TEST_F(OutlookTest, DeveloperIsToldThatNothingWillBeDone)
{
    m_story.startsDeveloper(1).traces(20, "SuprUnstableSystem::entry");
    EXPECT_THAT(next(21), testing::ElementsAre("10.0 the whole software package is restarted "
                                               "(only noted: developer mode)"));
}

TEST_F(OutlookTest, DeviceOnItsWayDownIsRebooting)
{
    m_story.becomesStable().says(40, "EMERG",
                                 "wardex: SUPERVISOR RESTARTING SYSTEM via \\/dev\\/watchdog ...");
    EXPECT_EQ("rebooting", verdict(kSilent, 41));
    m_story.traces(40, "SuprRebootSystem::entry");
    EXPECT_THAT(next(41, kSilent),
                testing::ElementsAre("0.0 the device reboots, or its watchdog resets it"));
}

TEST_F(OutlookTest, RebootStateOfADeveloperIsUnstableAndStays)
{
    m_story.startsDeveloper(1).traces(40, "SuprRebootSystem::entry");
    m_story.says(40, "EMERG",
                 "Too many restarts(3) detected in last 5 minutes: rebooting whole "
                 "system ...");
    EXPECT_EQ("unstable", verdict(kAnswersUnlisted, 41));
    EXPECT_THAT(next(41), testing::ElementsAre("-1.0 nothing (developer mode): stays so until both "
                                               "services are up"));
}

TEST_F(OutlookTest, WithoutTraceTheBusTells)
{
    m_story.starts(8);
    EXPECT_EQ("stable", verdict(kAnswers, 9));
    EXPECT_EQ("starting", verdict(kAnswersUnlisted, 13.9));
    EXPECT_EQ("unstable", verdict(kAnswersUnlisted, 14));
    m_story.restartsPackage(25);
    EXPECT_EQ("starting", verdict(kAnswersUnlisted, 30.9));
    EXPECT_EQ("unstable", verdict(kAnswersUnlisted, 31));
}

TEST_F(OutlookTest, WithoutAnyRecordTheBusTells)
{
    EXPECT_EQ("stable", verdict(kAnswers, 100));
    EXPECT_EQ("unstable", verdict(kAnswersUnlisted, 100));
}

TEST_F(OutlookTest, WithoutTraceAServiceJustFoundDeadIsNotTrustedThoughItIsListed)
{
    m_story.starts(8).says(25, "WARN", "Service com.orvo.pictor considered dead, restarting");
    EXPECT_EQ("unstable", verdict(kAnswers, 42.9));
    EXPECT_FALSE(isAvailable(m_story.facts(), kPictorBusName, true, 42.9));
    EXPECT_EQ("stable", verdict(kAnswers, 43));
    EXPECT_TRUE(isAvailable(m_story.facts(), kPictorBusName, true, 43));
    EXPECT_FALSE(isAvailable(m_story.facts(), kPictorBusName, false, 43));
}

TEST_F(OutlookTest, AvailabilityIsWhatTheRecordsTellAndElseWhatIsListed)
{
    m_story.becomesStable().losesPictor();
    EXPECT_FALSE(isAvailable(m_story.facts(), kPictorBusName, true, 24));
    EXPECT_TRUE(isAvailable(m_story.facts(), "com.orvo.vistor", false, 24));
    EXPECT_TRUE(isAvailable(DeviceFacts(), kPictorBusName, true, 24));
    EXPECT_FALSE(isAvailable(DeviceFacts(), kPictorBusName, false, 24));
}

TEST_F(OutlookTest, StrikesOfAServiceThatIsUpAreItsMissesInARow)
{
    m_story.becomesStable();
    EXPECT_EQ("0/3", strikes(15));
    m_story.traces(20, "Ping com.orvo.pictor failed").traces(21, "Ping com.orvo.pictor failed");
    EXPECT_EQ("2/3", strikes(21.5));
    EXPECT_EQ("2/3", strikes(23));
    EXPECT_EQ("0/3", strikes(23.1));
    EXPECT_THAT(next(21.5), testing::ElementsAre("1.5 pictor counts as down"));
}

TEST_F(OutlookTest, StrikesOfAStartingServiceAreItsTicks)
{
    m_story.becomesStable().traces(20, "SuprStarting::entry (com.orvo.pictor)");
    EXPECT_EQ("0/6", strikes(20.9));
    EXPECT_EQ("3/6", strikes(23));
    EXPECT_EQ("6/6", strikes(29));
    EXPECT_THAT(next(23), testing::ElementsAre("4.0 pictor counts as down"));
}

TEST_F(OutlookTest, ServiceThatIsDownIsRestartedOnItsSecondBadTick)
{
    m_story.becomesStable().losesPictor();
    EXPECT_EQ("0/1", strikes(23.5));
    EXPECT_EQ("1/1", strikes(24.5));
    EXPECT_EQ("1/1", strikes(29));
    EXPECT_THAT(next(24), testing::ElementsAre("1.0 pictor is stopped and started by its script",
                                               "10.0 the whole software package is restarted"));
}

TEST_F(OutlookTest, ServiceThatIsDownInAStartingDeviceIsGivenAFreshStart)
{
    m_story.starts(8).traces(8, "SuprStartingSystem::entry");
    m_story.traces(10, "SuprDown::entry (com.orvo.pictor)");
    EXPECT_THAT(next(10), testing::ElementsAre("1.0 pictor is given a fresh start phase",
                                               "4.0 the device counts as unstable"));
}

TEST_F(OutlookTest, DeadServiceOfADeveloperStaysAndIsCountedAnew)
{
    m_story.startsDeveloper(8).traces(8, "SuprUnstableSystem::entry");
    m_story.traces(20, "SuprDown::entry (com.orvo.pictor)");
    EXPECT_EQ("1/1", strikes(21));
    EXPECT_EQ("0/1", strikes(22));
    EXPECT_EQ("1/1", strikes(23));
}

TEST_F(OutlookTest, GraceHoldsTheTicksOfAStartingServiceBack)
{
    m_story.becomesStable().traces(20, "SuprStarting::entry (com.orvo.pictor)");
    m_story.traces(23.5, kGraceOfAMinute);
    EXPECT_EQ("3/6", strikes(24));
    EXPECT_EQ("3/6", strikes(83));
    EXPECT_EQ("4/6", strikes(83.5));
    EXPECT_THAT(next(63.5), testing::ElementsAre("200.0 pictor counts as down"));
    m_story.traces(90, "SuprStarting::entry (com.orvo.pictor)");
    EXPECT_EQ("3/6", strikes(93));
}

TEST_F(OutlookTest, GraceHoldsTheNextMissOfAServiceThatIsUpBack)
{
    m_story.becomesStable().traces(20, "Ping com.orvo.pictor failed");
    m_story.traces(20.5, kGraceOfAMinute);
    EXPECT_EQ("1/3", strikes(140));
    EXPECT_THAT(next(30.5), testing::ElementsAre("170.0 pictor counts as down"));
    m_story.traces(80.5, "Ping com.orvo.pictor failed");
    EXPECT_EQ("2/3", strikes(81));
    m_story.traces(140.5, "Ping com.orvo.pictor failed");
    EXPECT_EQ("3/3", strikes(141));
}

TEST_F(OutlookTest, GraceWithoutEndLeavesNothingToCount)
{
    m_story.becomesStable().traces(20, "SuprStarting::entry (com.orvo.pictor)");
    m_story.traces(21, "setServicePingTimeoutOneShot: restartTimer(com.orvo.pictor, -1)");
    EXPECT_EQ("unknown", strikes(30));
    EXPECT_THAT(next(30), testing::IsEmpty());
}

TEST_F(OutlookTest, GraceThatWasRefusedChangesNothing)
{
    m_story.becomesStable().traces(20, "SuprStarting::entry (com.orvo.pictor)");
    m_story.says(21, "WARN",
                 "setServicePingTimeoutOneShot: restartTimer(com.orvo.pictor, 60000) failed !");
    EXPECT_EQ("3/6", strikes(23));
}

TEST_F(OutlookTest, StrikesAreUnknownWithoutAState)
{
    m_story.starts(1).says(2, "WARN", "Service com.orvo.pictor considered dead, restarting");
    EXPECT_EQ("unknown", strikes(3));
}

TEST_F(OutlookTest, BudgetIsSaidInWordsWithTheNumbersOfNow)
{
    m_story.starts(1);
    const auto text = [&](double now)
    {
        return budgetText(restartBudget(m_story.facts(), now));
    };
    EXPECT_EQ("0 of 3 package restarts in 300 s; need number 4 in that time reboots", text(50));
    m_story.restartsPackage(100).restartsPackage(120);
    EXPECT_EQ("2 of 3 package restarts in 300 s; need number 4 in that time reboots", text(130));
    m_story.restartsPackage(140);
    EXPECT_EQ("3 of 3 package restarts in 300 s; a need within 4 min 10 s reboots", text(150));
    EXPECT_EQ(3, restartBudget(m_story.facts(), 399.9).used);
    EXPECT_EQ(2, restartBudget(m_story.facts(), 400).used);
}

} // namespace orvo::ctl
