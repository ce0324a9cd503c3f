#include "model/DeviceModel.h"

#include "RecordStory.h"
#include "dbus-proxy/BusNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::ctl
{

using test::RecordStory;
using testing::ElementsAre;
using testing::IsEmpty;

class DeviceModelTest : public testing::Test
{
protected:
    ServiceFacts pictor() const { return m_story.facts().services.at(kPictorBusName); }

    RecordStory m_story;
};

TEST_F(DeviceModelTest, KnowsNothingWithoutRecords)
{
    const DeviceFacts facts = m_story.facts();
    EXPECT_FALSE(facts.started.has_value());
    EXPECT_EQ("", facts.systemState);
    EXPECT_FALSE(facts.isTraceSeen);
    EXPECT_THAT(facts.services, IsEmpty());
}

TEST_F(DeviceModelTest, CountsUnstableTicksOfAnyTime)
{
    m_story.starts(1).traces(2, "SuprUnstableSystem::entry");
    m_story.traces(99999999999999.0, "SuprStableSystem::entry");
    EXPECT_EQ(1000000, m_story.facts().unstableTicks);
    m_story.traces(3, "SuprUnstableSystem::entry").traces(2.5, "SuprStableSystem::entry");
    EXPECT_LE(0, m_story.facts().unstableTicks);
}

TEST_F(DeviceModelTest, KnowsAStableDevice)
{
    const DeviceFacts facts = m_story.becomesStable().facts();
    EXPECT_EQ(8.0, facts.started);
    EXPECT_EQ("ZK4XX", facts.family);
    EXPECT_EQ("7", facts.pid);
    EXPECT_FALSE(facts.isDeveloper);
    EXPECT_TRUE(facts.isTraceSeen);
    EXPECT_EQ("SuprStableSystem", facts.systemState);
    EXPECT_EQ(10.0, facts.systemSince);
    for (const char* name : {kPictorBusName, kVistorBusName})
    {
        const ServiceFacts& service = facts.services.at(name);
        EXPECT_EQ("SuprUp", service.state);
        EXPECT_EQ(10.0, service.since);
        EXPECT_EQ("up", service.runLevel);
        EXPECT_EQ(true, service.isAvailable);
        EXPECT_EQ(10.0, service.availableSince);
        EXPECT_FALSE(service.lastScript.has_value());
    }
}

TEST_F(DeviceModelTest, KnowsDeveloperMode)
{
    EXPECT_TRUE(m_story.startsDeveloper(1).facts().isDeveloper);
}

TEST_F(DeviceModelTest, CountsFailedPingsInARow)
{
    m_story.becomesStable().traces(20, "Ping com.orvo.pictor failed");
    EXPECT_EQ(1, pictor().failedPings);
    m_story.traces(21, "Ping com.orvo.pictor failed");
    EXPECT_EQ(2, pictor().failedPings);
    EXPECT_EQ(21.0, pictor().lastFailure);
}

TEST_F(DeviceModelTest, CountsAnewAfterAPingThatMustHaveBeenAnswered)
{
    m_story.becomesStable().traces(20, "Ping com.orvo.pictor failed");
    m_story.traces(22, "Ping com.orvo.pictor failed");
    EXPECT_EQ(1, pictor().failedPings);
}

TEST_F(DeviceModelTest, KnowsAServiceThatDoesNotAnswer)
{
    m_story.becomesStable().losesPictor();
    EXPECT_EQ("SuprDown", pictor().state);
    EXPECT_EQ(23.0, pictor().since);
    EXPECT_EQ("none", pictor().runLevel);
    EXPECT_EQ(false, pictor().isAvailable);
    EXPECT_EQ(23.0, pictor().availableSince);
    EXPECT_EQ(0, pictor().failedPings);
    EXPECT_EQ("SuprUnstableSystem", m_story.facts().systemState);
}

TEST_F(DeviceModelTest, KnowsAReportedRunLevelThoughItsRecordHasNoName)
{
    m_story.becomesStable().traces(20, "System run level is down. Going down.");
    m_story.traces(20, "SuprUp::down (com.orvo.pictor)");
    EXPECT_EQ("down", pictor().runLevel);
    m_story.traces(30, "SuprUp::entry (com.orvo.pictor)");
    m_story.traces(31, "System run level STARTING. Going starting");
    m_story.traces(31, "SuprUp::exit (com.orvo.pictor)");
    m_story.traces(31, "SuprStarting::entry (com.orvo.pictor)");
    EXPECT_EQ("starting", pictor().runLevel);
    EXPECT_EQ("up", m_story.facts().services.at(kVistorBusName).runLevel);
}

TEST_F(DeviceModelTest, CountsTheScriptsOfADeadService)
{
    m_story.becomesStable().losesPictor();
    m_story.says(25, "WARN", "Service com.orvo.pictor considered dead, restarting");
    EXPECT_EQ(25.0, pictor().lastScript);
    m_story.says(35, "WARN", "Service com.orvo.pictor considered dead, restarting");
    EXPECT_EQ(35.0, pictor().lastScript);
    EXPECT_EQ(2, pictor().scripts);
}

TEST_F(DeviceModelTest, DeadServiceOfADeveloperIsNoScript)
{
    m_story.becomesStable();
    m_story.says(25, "WARN", "Service com.orvo.pictor considered dead, restarting .... (disabled)");
    EXPECT_EQ(0, pictor().scripts);
}

TEST_F(DeviceModelTest, AddsUpTheTicksOfUnstablePeriods)
{
    m_story.becomesStable().traces(20, "SuprUnstableSystem::entry");
    m_story.traces(24.5, "SuprStableSystem::entry").traces(30, "SuprUnstableSystem::entry");
    m_story.traces(33.2, "SuprStableSystem::entry");
    EXPECT_EQ(4 + 3, m_story.facts().unstableTicks);
}

TEST_F(DeviceModelTest, CountsAPackageRestartOnceAndTheTicksAnew)
{
    m_story.becomesStable().traces(12, "SuprUnstableSystem::entry");
    m_story.traces(16, "SuprStableSystem::entry").traces(20, "SuprUnstableSystem::entry");
    m_story.restartsPackage(31).traces(33, "SuprUnstableSystem::exit");
    m_story.traces(33, "SuprStartingSystem::entry");
    EXPECT_THAT(m_story.facts().packageRestarts, ElementsAre(31.0));
    EXPECT_EQ(0, m_story.facts().unstableTicks);
}

TEST_F(DeviceModelTest, KnowsPackageRestartsThatADeveloperIsToldOnlyOnce)
{
    m_story.startsDeveloper(1).traces(10, "SuprUnstableSystem::entry");
    m_story.says(21, "FATAL", "SUPERVISOR would restart mf-optware, but saved via developer mode");
    m_story.traces(21, "SuprStartingSystem::entry").traces(27, "SuprUnstableSystem::entry");
    m_story.traces(38, "SuprStartingSystem::entry");
    EXPECT_THAT(m_story.facts().packageRestarts, ElementsAre(21.0, 38.0));
}

TEST_F(DeviceModelTest, KnowsTheDecisionToReboot)
{
    m_story.becomesStable().says(
        50, "EMERG", "Too many restarts(3) detected in last 5 minutes: rebooting whole system ...");
    EXPECT_EQ(50.0, m_story.facts().reboot);
}

TEST_F(DeviceModelTest, RebootOfADeveloperEndsWithAStableDevice)
{
    m_story.startsDeveloper(1).says(
        50, "EMERG", "Too many restarts(3) detected in last 5 minutes: rebooting whole system ...");
    EXPECT_FALSE(m_story.traces(60, "SuprStableSystem::entry").facts().reboot.has_value());
}

TEST_F(DeviceModelTest, KnowsWhenTheWatchdogWasNotFed)
{
    EXPECT_EQ(9.0, m_story.starts(1).says(9, "WARN", "Bello is dead!!!").facts().unfed);
}

TEST_F(DeviceModelTest, NewProcessBeginsAnew)
{
    m_story.becomesStable().restartsPackage(20).process(8).starts(30);
    EXPECT_THAT(m_story.facts().packageRestarts, IsEmpty());
    EXPECT_EQ(30.0, m_story.facts().started);
    EXPECT_EQ("8", m_story.facts().pid);
    EXPECT_EQ("", m_story.facts().systemState);
}

TEST_F(DeviceModelTest, NewProcessBeginsAnewEvenWhenItsStartIsNotInTheLog)
{
    m_story.becomesStable().process(8).says(30, "WARN", "Bello is dead!!!");
    EXPECT_FALSE(m_story.facts().started.has_value());
    EXPECT_EQ("", m_story.facts().systemState);
    EXPECT_EQ(30.0, m_story.facts().unfed);
}

TEST_F(DeviceModelTest, ForgetsStatesOnceTraceIsMasked)
{
    m_story.becomesStable().losesPictor();
    m_story.says(25, "WARN", "Service com.orvo.pictor considered dead, restarting");
    m_story.restartsPackage(26);
    m_story.says(27, "INFO",
                 "Applying new log configuration: mask(0xf0), SigSegV Regexp(), max logs(10000), "
                 "instance(0x1)");
    const DeviceFacts facts = m_story.facts();
    EXPECT_EQ(0xF0U, facts.mask);
    EXPECT_EQ(27.0, facts.traceHidden);
    EXPECT_FALSE(facts.isTraceSeen);
    EXPECT_EQ("", facts.systemState);
    EXPECT_EQ("", pictor().state);
    EXPECT_FALSE(pictor().isAvailable.has_value());
    EXPECT_EQ(25.0, pictor().lastScript);
    EXPECT_THAT(facts.packageRestarts, ElementsAre(26.0));
}

TEST_F(DeviceModelTest, KeepsStatesWhenAMaskWithTraceIsSet)
{
    m_story.becomesStable().says(27, "INFO", "Applying new log configuration: mask(0x4), x");
    EXPECT_EQ("SuprStableSystem", m_story.facts().systemState);
    EXPECT_EQ(0x4U, m_story.facts().mask);
    EXPECT_FALSE(m_story.facts().traceHidden.has_value());
}

TEST_F(DeviceModelTest, RecordsOfOtherProgramsTellNothing)
{
    m_story.becomesStable().says(20, "TRACE", "SuprUnstableSystem::entry", "pictor");
    EXPECT_EQ("SuprStableSystem", m_story.facts().systemState);
}

} // namespace orvo::ctl
