// The transition table of the system machine, row by row: what a state does on an event, and what
// it does not.

#include "ProcessTables.h"
#include "SupervisedDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <set>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;
using Deed = std::function<void(SupervisedDevice&)>;
using Names = std::set<QString>;

struct Row
{
    const char* name;
    const char* state;
    Deed given;
    Deed event;
    const char* next;
    Lines records;
    Lines availability;
    Names upServices;
    Lines commands{};
    Mode mode{Mode::Field};
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

void nothing(SupervisedDevice& /*device*/) {}

Deed up(const char* service)
{
    return [service](SupervisedDevice& device)
    {
        device.reportUp(service);
    };
}

Deed down(const char* service)
{
    return [service](SupervisedDevice& device)
    {
        device.reportDown(service);
    };
}

Deed ticks(int count)
{
    return [count](SupervisedDevice& device)
    {
        device.afterTicks(count);
    };
}

Deed operator+(const Deed& first, const Deed& second)
{
    return [=](SupervisedDevice& device)
    {
        first(device);
        second(device);
    };
}

/// The package was restarted so many times, all just now.
Deed packageRestarts(int count)
{
    return [count](SupervisedDevice& /*device*/)
    {
        g_restartHistory.assign(static_cast<std::size_t>(count), QDateTime::currentDateTime());
    };
}

/// Spends the line that is written once in a process.
void wouldReboot(SupervisedDevice& device)
{
    device.context()->serviceAction->restartSystem(true);
}

const char kBothUp[] = "pictor=up vistor=up";
const char kNoneUp[] = "pictor=down vistor=down";
const char kOnlyPictor[] = "pictor=up vistor=down";
const char kOnlyVistor[] = "pictor=down vistor=up";

const Lines kRestartCommands{"/etc/init.d/mf-optware restart"};
const char kRestartRecord[] =
    "FATAL SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware";

class SuprSMSystemTransitions : public testing::TestWithParam<Row>
{
protected:
    SupervisedDevice m_device{GetParam().mode};
};

TEST_P(SuprSMSystemTransitions, AreAsInTheTable)
{
    const Row& row = GetParam();
    m_device.bringTo(row.state);
    row.given(m_device);
    ASSERT_EQ(row.state, m_device.state());
    m_device.forgetThePast();

    row.event(m_device);

    EXPECT_EQ(row.next, m_device.state());
    EXPECT_EQ(row.records, m_device.newRecords());
    EXPECT_EQ(row.availability, m_device.newSignals());
    EXPECT_EQ(row.upServices, g_upServices);
    EXPECT_EQ(row.commands, m_device.newCommands());
}

const Row kStartingRows[] = {
    {"StartingGoesStableWhenTheLastKnownServiceIsUp",
     "SuprStartingSystem",
     up(kVistor),
     up(kPictor),
     "SuprStableSystem",
     {"TRACE SuprStartingSystem::serviceIsUp com.orvo.pictor", "TRACE SuprStartingSystem::exit",
      "TRACE SuprStableSystem::entry"},
     {kBothUp},
     {kPictor, kVistor}},
    {"StartingStaysWhenOneKnownServiceIsUp",
     "SuprStartingSystem",
     nothing,
     up(kVistor),
     "SuprStartingSystem",
     {"TRACE SuprStartingSystem::serviceIsUp com.orvo.vistor"},
     {kOnlyVistor},
     {kVistor}},
    {"StartingStaysWhenAServiceIsUpTwice",
     "SuprStartingSystem",
     up(kVistor),
     up(kVistor),
     "SuprStartingSystem",
     {"TRACE SuprStartingSystem::serviceIsUp com.orvo.vistor"},
     {kOnlyVistor},
     {kVistor}},
    {"StartingStaysWhenAStrangerIsUpBesideTheKnownServices",
     "SuprStartingSystem",
     up(kWirl) + up(kVistor),
     up(kPictor),
     "SuprStartingSystem",
     {"TRACE SuprStartingSystem::serviceIsUp com.orvo.pictor"},
     {kBothUp},
     {kPictor, kVistor, kWirl}},
    {"StartingStaysWhenAStrangerMakesUpTheNumber",
     "SuprStartingSystem",
     up(kVistor),
     up(kWirl),
     "SuprStartingSystem",
     {"TRACE SuprStartingSystem::serviceIsUp com.orvo.wirl"},
     {kOnlyVistor},
     {kVistor, kWirl}},
    {"StartingTakesOutAServiceThatIsDown",
     "SuprStartingSystem",
     up(kPictor),
     down(kPictor),
     "SuprStartingSystem",
     {"TRACE SuprStartingSystem::serviceIsDown com.orvo.pictor"},
     {kNoneUp},
     {}},
    {"StartingPublishesAServiceThatWasNeverUp",
     "SuprStartingSystem",
     nothing,
     down(kVistor),
     "SuprStartingSystem",
     {"TRACE SuprStartingSystem::serviceIsDown com.orvo.vistor"},
     {kNoneUp},
     {}},
    {"StartingStaysForFiveTicks",
     "SuprStartingSystem",
     nothing,
     ticks(5),
     "SuprStartingSystem",
     {},
     {},
     {}},
    {"StartingGoesUnstableOnTheSixthTick",
     "SuprStartingSystem",
     ticks(5),
     ticks(1),
     "SuprUnstableSystem",
     {"TRACE SuprStartingSystem::exit", "TRACE SuprUnstableSystem::entry"},
     {},
     {}},
};

const Row kStableRows[] = {
    {"StableWarnsOfAServiceThatWasUpAlready",
     "SuprStableSystem",
     nothing,
     up(kPictor),
     "SuprStableSystem",
     {"TRACE SuprStableSystem::serviceIsUp com.orvo.pictor",
      "WARN SuprStableSystem::serviceIsUp: g_upServices == g_knownServices is suspicious when "
      "adding com.orvo.pictor"},
     {kBothUp},
     {kPictor, kVistor}},
    {"StableWarnsOfAStrangerWhenAllWereUp",
     "SuprStableSystem",
     nothing,
     up(kWirl),
     "SuprStableSystem",
     {"TRACE SuprStableSystem::serviceIsUp com.orvo.wirl",
      "WARN SuprStableSystem::serviceIsUp: g_upServices == g_knownServices is suspicious when "
      "adding com.orvo.wirl"},
     {kBothUp},
     {kPictor, kVistor, kWirl}},
    {"StableDoesNotWarnWhenAStrangerSpoiltTheUpSet",
     "SuprStableSystem",
     up(kWirl),
     up(kPictor),
     "SuprStableSystem",
     {"TRACE SuprStableSystem::serviceIsUp com.orvo.pictor"},
     {kBothUp},
     {kPictor, kVistor, kWirl}},
    {"StableGoesUnstableWhenAServiceIsDown",
     "SuprStableSystem",
     nothing,
     down(kVistor),
     "SuprUnstableSystem",
     {"TRACE SuprStableSystem::serviceIsDown com.orvo.vistor", "TRACE SuprStableSystem::exit",
      "TRACE SuprUnstableSystem::entry"},
     {kOnlyPictor},
     {kPictor}},
    {"StableGoesUnstableWhenAStrangerIsDown",
     "SuprStableSystem",
     nothing,
     down(kWirl),
     "SuprUnstableSystem",
     {"TRACE SuprStableSystem::serviceIsDown com.orvo.wirl", "TRACE SuprStableSystem::exit",
      "TRACE SuprUnstableSystem::entry"},
     {kBothUp},
     {kPictor, kVistor}},
    {"StableStaysForever",
     "SuprStableSystem",
     nothing,
     ticks(1000),
     "SuprStableSystem",
     {},
     {},
     {kPictor, kVistor}},
};

const Row kUnstableRows[] = {
    {"UnstableGoesStableWhenTheLastKnownServiceIsUp",
     "SuprUnstableSystem",
     up(kPictor),
     up(kVistor),
     "SuprStableSystem",
     {"TRACE SuprUnstableSystem::serviceIsUp com.orvo.vistor", "TRACE SuprUnstableSystem::exit",
      "TRACE SuprStableSystem::entry"},
     {kBothUp},
     {kPictor, kVistor}},
    {"UnstableStaysWhenOneKnownServiceIsUp",
     "SuprUnstableSystem",
     nothing,
     up(kPictor),
     "SuprUnstableSystem",
     {"TRACE SuprUnstableSystem::serviceIsUp com.orvo.pictor"},
     {kOnlyPictor},
     {kPictor}},
    {"UnstableStaysWhenAStrangerIsUpBesideTheKnownServices",
     "SuprUnstableSystem",
     up(kWirl) + up(kVistor),
     up(kPictor),
     "SuprUnstableSystem",
     {"TRACE SuprUnstableSystem::serviceIsUp com.orvo.pictor"},
     {kBothUp},
     {kPictor, kVistor, kWirl}},
    {"UnstableTakesOutAServiceThatIsDown",
     "SuprUnstableSystem",
     up(kPictor),
     down(kPictor),
     "SuprUnstableSystem",
     {"TRACE SuprUnstableSystem::serviceIsDown com.orvo.pictor"},
     {kNoneUp},
     {}},
    {"UnstableStaysForTenTicks",
     "SuprUnstableSystem",
     nothing,
     ticks(10),
     "SuprUnstableSystem",
     {},
     {},
     {}},
    {"UnstableRestartsThePackageOnTheEleventhTick",
     "SuprUnstableSystem",
     ticks(10),
     ticks(1),
     "SuprStartingSystem",
     {kRestartRecord, "TRACE SuprUnstableSystem::exit", "TRACE SuprStartingSystem::entry"},
     {},
     {},
     kRestartCommands},
    {"UnstableRestartsThePackageAfterTwoRecentRestarts",
     "SuprUnstableSystem",
     packageRestarts(2) + ticks(10),
     ticks(1),
     "SuprStartingSystem",
     {kRestartRecord, "TRACE SuprUnstableSystem::exit", "TRACE SuprStartingSystem::entry"},
     {},
     {},
     kRestartCommands},
    {"UnstableOnADeveloperDeviceRebootsAfterThreeRecentRestarts",
     "SuprUnstableSystem",
     Deed(wouldReboot) + packageRestarts(3) + ticks(10),
     ticks(1),
     "SuprRebootSystem",
     {"EMERG Too many restarts(3) detected in last 5 minutes: rebooting whole system ...",
      "TRACE SuprUnstableSystem::exit", "TRACE SuprRebootSystem::entry"},
     {},
     {},
     {},
     Mode::Developer},
};

const Row kRebootRows[] = {
    {"RebootOfADeveloperDeviceGoesStableWhenTheLastKnownServiceIsUp",
     "SuprRebootSystem",
     up(kVistor),
     up(kPictor),
     "SuprStableSystem",
     {"TRACE SuprRebootSystem::serviceIsUp com.orvo.pictor", "TRACE SuprRebootSystem::exit",
      "TRACE SuprStableSystem::entry"},
     {kBothUp},
     {kPictor, kVistor},
     {},
     Mode::Developer},
    {"RebootOfADeveloperDeviceStaysWhenOneKnownServiceIsUp",
     "SuprRebootSystem",
     nothing,
     up(kVistor),
     "SuprRebootSystem",
     {"TRACE SuprRebootSystem::serviceIsUp com.orvo.vistor"},
     {kOnlyVistor},
     {kVistor},
     {},
     Mode::Developer},
    {"RebootOfADeveloperDeviceOnlyLogsAServiceThatIsDown",
     "SuprRebootSystem",
     up(kVistor),
     down(kVistor),
     "SuprRebootSystem",
     {"TRACE SuprRebootSystem::serviceIsDown com.orvo.vistor"},
     {},
     {kVistor},
     {},
     Mode::Developer},
    {"RebootOfADeveloperDeviceStaysForever",
     "SuprRebootSystem",
     nothing,
     ticks(1000),
     "SuprRebootSystem",
     {},
     {},
     {},
     {},
     Mode::Developer},
};

std::string rowName(const testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Starting, SuprSMSystemTransitions, testing::ValuesIn(kStartingRows),
                         rowName);
INSTANTIATE_TEST_SUITE_P(Stable, SuprSMSystemTransitions, testing::ValuesIn(kStableRows), rowName);
INSTANTIATE_TEST_SUITE_P(Unstable, SuprSMSystemTransitions, testing::ValuesIn(kUnstableRows),
                         rowName);
INSTANTIATE_TEST_SUITE_P(Reboot, SuprSMSystemTransitions, testing::ValuesIn(kRebootRows), rowName);

} // namespace

} // namespace orvo::test
