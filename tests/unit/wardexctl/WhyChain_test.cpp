#include "model/WhyChain.h"

#include "RecordStory.h"
#include "dbus-proxy/BusNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::ctl
{

using test::RecordStory;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
constexpr char kDead[] = "Service com.orvo.pictor considered dead, restarting";

std::vector<std::string> stepsOf(const WhyChain& chain)
{
    std::vector<std::string> steps;
    for (const WhyStep& step : chain.steps)
    {
        steps.push_back(step.what);
    }
    return steps;
}
} // namespace

class WhyChainTest : public testing::Test
{
protected:
    WhyChain why(const std::string& busName = "") const
    {
        return whyChain(m_story.records(), busName);
    }

    RecordStory m_story;
};

TEST_F(WhyChainTest, IsEmptyWhenNothingHappened)
{
    m_story.becomesStable();
    EXPECT_EQ("", why().title);
    EXPECT_THAT(why().steps, IsEmpty());
}

TEST_F(WhyChainTest, TellsEveryStepFromTheLastGoodStateToTheScript)
{
    m_story.becomesStable().losesPictor().says(25, "WARN", kDead);
    const WhyChain chain = why();
    EXPECT_EQ("pictor was restarted", chain.title);
    EXPECT_TRUE(chain.isTraceSeen);
    EXPECT_TRUE(chain.isWhole);
    EXPECT_THAT(stepsOf(chain),
                ElementsAre("pictor is up", "pictor is reported up", "the device is stable",
                            "pictor did not answer its ping", "pictor did not answer its ping",
                            "pictor did not answer its ping", "pictor did not answer its ping",
                            "too many pings were missed", "pictor counts as down",
                            "pictor is reported down", "the device is unstable",
                            "pictor is considered dead: its script stops and starts it"));
    EXPECT_EQ("the 4th miss in a row takes it down", chain.steps[3].rule);
    EXPECT_EQ("2 bad pings while down", chain.steps.back().rule);
    EXPECT_EQ(25.0, chain.steps.back().time);
}

TEST_F(WhyChainTest, LeavesOutTheOtherService)
{
    m_story.becomesStable().losesPictor();
    m_story.traces(24, "Ping com.orvo.vistor failed").says(25, "WARN", kDead);
    for (const std::string& step : stepsOf(why(kPictorBusName)))
    {
        EXPECT_EQ(std::string::npos, step.find("corvane")) << step;
    }
}

TEST_F(WhyChainTest, IsOfTheServiceThatWasAskedFor)
{
    m_story.becomesStable().says(20, "WARN", kDead).restartsPackage(30);
    EXPECT_EQ("the whole software package was restarted", why().title);
    EXPECT_EQ("pictor was restarted", why(kPictorBusName).title);
    EXPECT_EQ("", why("com.orvo.vistor").title);
}

TEST_F(WhyChainTest, PackageRestartBeginsBehindTheOneBefore)
{
    m_story.becomesStable().restartsPackage(20).traces(22, "SuprStartingSystem::entry");
    m_story.traces(28, "SuprUnstableSystem::entry").restartsPackage(39);
    EXPECT_THAT(stepsOf(why()), ElementsAre("the device is starting", "the device is unstable",
                                            "the whole software package is restarted"));
}

TEST_F(WhyChainTest, RebootTellsTheRestartsThatCount)
{
    m_story.starts(1).restartsPackage(90).restartsPackage(150).restartsPackage(300);
    m_story.restartsPackage(380);
    m_story.says(400, "EMERG",
                 "Too many restarts(3) detected in last 5 minutes: rebooting whole system ...");
    m_story.says(400, "EMERG", "wardex: SUPERVISOR RESTARTING SYSTEM via \\/dev\\/watchdog ...");
    const WhyChain chain = why();
    EXPECT_EQ("the device was rebooted", chain.title);
    EXPECT_THAT(stepsOf(chain), ElementsAre("the whole software package is restarted",
                                            "the whole software package is restarted",
                                            "the whole software package is restarted",
                                            "too many package restarts", "the device is rebooted"));
    EXPECT_EQ("3 within 300 s", chain.steps[3].rule);
    EXPECT_FALSE(chain.isTraceSeen);
}

TEST_F(WhyChainTest, RebootCountsWhatBecameOfServicesUntilTheDevicesNextStep)
{
    m_story.becomesStable().losesPictor();
    for (const double time : {25.0, 28.0, 31.0})
    {
        m_story.says(time, "WARN", kDead);
        m_story.traces(time + 1, "SuprUnstableSystem::serviceIsDown com.orvo.pictor");
    }
    m_story.restartsPackage(34).says(37, "WARN", kDead);
    m_story.says(40, "EMERG",
                 "Too many restarts(3) detected in last 5 minutes: rebooting whole system ...");
    const WhyChain chain = why();
    EXPECT_THAT(stepsOf(chain),
                ElementsAre("the supervisor started", "the device is starting",
                            "the device is stable", "pictor is reported down",
                            "the device is unstable",
                            "pictor is considered dead: its script stops and starts it",
                            "pictor is reported down", "the whole software package is restarted",
                            "pictor is considered dead: its script stops and starts it",
                            "too many package restarts"));
    EXPECT_EQ(3, chain.steps[5].times);
    EXPECT_EQ(25, chain.steps[5].time);
    EXPECT_EQ(3, chain.steps[6].times);
    EXPECT_EQ(1, chain.steps[8].times);
}

TEST_F(WhyChainTest, LeavesBusAndGraceOut)
{
    m_story.becomesStable().traces(20, "DBus Service com.orvo.pictor unavailable");
    m_story.traces(21, "DBus service com.orvo.pictor available");
    m_story.traces(22, "setServicePingTimeoutOneShot: restartTimer(com.orvo.pictor, 30000)");
    m_story.says(25, "WARN", kDead);
    EXPECT_THAT(stepsOf(why()),
                ElementsAre("pictor is up", "pictor is reported up", "the device is stable",
                            "pictor is considered dead: its script stops and "
                            "starts it"));
}

TEST_F(WhyChainTest, StopsAtTheStartOfThatSupervisor)
{
    m_story.becomesStable().process(8).starts(20).says(30, "WARN", kDead);
    EXPECT_THAT(stepsOf(why()), ElementsAre("the supervisor started",
                                            "pictor is considered dead: its script stops and "
                                            "starts it"));
    EXPECT_EQ("8", why().pid);
}

TEST_F(WhyChainTest, SaysThatTheLogNoLongerHasTheBeginning)
{
    m_story.traces(20, "Ping com.orvo.pictor failed").says(25, "WARN", kDead);
    EXPECT_FALSE(why().isWhole);
}

TEST_F(WhyChainTest, DeveloperIsToldThatItWasOnlyNoted)
{
    m_story.startsDeveloper(1).says(
        25, "WARN", "Service com.orvo.pictor considered dead, restarting .... (disabled)");
    EXPECT_EQ("pictor was restarted (only noted: developer mode)", why().title);
    EXPECT_EQ("pictor is considered dead, and left so", why().steps.back().what);
}

} // namespace orvo::ctl
