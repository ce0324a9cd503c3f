// The transition table of the machine of one service, row by row: what a state does on an event,
// and what it does not.

#include "SupervisedDevice.h"

#include "ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <ostream>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;
using Deed = std::function<void(SupervisedDevice&)>;

/// Each row is about the pictor service.
struct Row
{
    const char* name;
    const char* state;
    Deed event;
    const char* next;
    Lines records;
    Lines commands{};
    Mode mode{Mode::Field};
    const char* systemState{"SuprUnstableSystem"};
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.name;
}

Deed answers(const char* runLevel, int pings = 1)
{
    return [=](SupervisedDevice& device)
    {
        device.service(kPictor).answer(runLevel);
        device.afterPings(kPictor, pings);
    };
}

Deed fails(int pings = 1)
{
    return [=](SupervisedDevice& device)
    {
        device.service(kPictor).fail();
        device.afterPings(kPictor, pings);
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

void up(SupervisedDevice& /*device*/)
{
    SupervisedDevice::activeState(kPictor).up();
}

void down(SupervisedDevice& /*device*/)
{
    SupervisedDevice::activeState(kPictor).down();
}

void appearsOnTheBus(SupervisedDevice& /*device*/)
{
    SuprSM::registered(kPictor);
}

void leavesTheRegistry(SupervisedDevice& device)
{
    device.registry().unregisterService(kPictor);
}

const Lines kFromStartingToUp{"TRACE SuprStarting::up (com.orvo.pictor)",
                              "TRACE SuprStarting::exit (com.orvo.pictor)",
                              "TRACE SuprUp::entry (com.orvo.pictor)",
                              "TRACE Ping interval of service com.orvo.pictor is 1000",
                              "TRACE SuprUnstableSystem::serviceIsUp com.orvo.pictor"};

const Lines kFromStartingToDown{"TRACE SuprStarting::down (com.orvo.pictor)",
                                "TRACE SuprStarting::exit (com.orvo.pictor)",
                                "TRACE SuprDown::entry (com.orvo.pictor)",
                                "TRACE Ping interval of service com.orvo.pictor is 1000",
                                "TRACE SuprUnstableSystem::serviceIsDown com.orvo.pictor"};

const Lines kFromUpToDown{"TRACE SuprUp::down (com.orvo.pictor)",
                          "TRACE SuprUp::exit (com.orvo.pictor)",
                          "TRACE SuprDown::entry (com.orvo.pictor)",
                          "TRACE Ping interval of service com.orvo.pictor is 1000",
                          "TRACE SuprUnstableSystem::serviceIsDown com.orvo.pictor"};

const Lines kFromDownToStarting{"TRACE SuprDown::up (com.orvo.pictor)",
                                "TRACE SuprDown::exit (com.orvo.pictor)",
                                "TRACE SuprStarting::entry (com.orvo.pictor)",
                                "TRACE Ping interval of service com.orvo.pictor is 1000"};

const Lines kRestarted{"WARN Service com.orvo.pictor considered dead, restarting",
                       "TRACE SuprDown::exit (com.orvo.pictor)",
                       "TRACE SuprStarting::entry (com.orvo.pictor)",
                       "TRACE Ping interval of service com.orvo.pictor is 1000"};

const char kPingFailed[] = "TRACE Ping com.orvo.pictor failed";
const char kRestartCommand[] = "/opt/orvo/etc/init.d/30_pictor restart";

Lines after(Lines first, const Lines& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

class SuprSMTransitions : public testing::TestWithParam<Row>
{
protected:
    /// The pictor service has just come into the state, and nothing is noted yet.
    void bringTo(const std::string& state)
    {
        m_device.supervise(kPictor);
        if (state == "SuprUp")
        {
            answers("up")(m_device);
        }
        if (state == "SuprDown")
        {
            answers("down")(m_device);
        }
        ASSERT_EQ(state, SupervisedDevice::stateOf(kPictor));
        m_device.forgetThePast();
    }

    SupervisedDevice m_device{GetParam().mode};
};

TEST_P(SuprSMTransitions, AreAsInTheTable)
{
    const Row& row = GetParam();
    m_device.bringTo(row.systemState);
    ASSERT_NO_FATAL_FAILURE(bringTo(row.state));

    row.event(m_device);

    EXPECT_EQ(row.next, SupervisedDevice::stateOf(kPictor));
    EXPECT_EQ(row.records, m_device.newRecords());
    EXPECT_EQ(row.commands, m_device.newCommands());
}

const Row kStartingRows[] = {
    {"StartingGoesUpOnLevelUp", "SuprStarting", answers("up"), "SuprUp", kFromStartingToUp},
    {"StartingGoesUpOnLevelUpAfterSixBadPings", "SuprStarting", fails(6) + answers("up"), "SuprUp",
     kFromStartingToUp},
    {"StartingGoesDownOnLevelDown", "SuprStarting", answers("down"), "SuprDown",
     kFromStartingToDown},
    {"StartingStaysForSixMissedPings", "SuprStarting", fails(6), "SuprStarting", {}},
    {"StartingGoesDownOnTheSeventhMissedPing", "SuprStarting", fails(7), "SuprDown",
     kFromStartingToDown},
    {"StartingStaysForSixLevelsStarting",
     "SuprStarting",
     answers("starting", 6),
     "SuprStarting",
     {}},
    {"StartingGoesDownOnTheSeventhLevelStarting", "SuprStarting", answers("starting", 7),
     "SuprDown", kFromStartingToDown},
    {"StartingStaysForSixUnknownLevels", "SuprStarting", answers("UP", 6), "SuprStarting", {}},
    {"StartingGoesDownOnTheSeventhUnknownLevel", "SuprStarting", answers("", 7), "SuprDown",
     kFromStartingToDown},
    {"StartingCountsAllKindsOfBadPingsTogether", "SuprStarting",
     fails(3) + answers("starting", 3) + answers("busy"), "SuprDown", kFromStartingToDown},
    {"StartingGoesUpWhenTold", "SuprStarting", up, "SuprUp", kFromStartingToUp},
    {"StartingGoesDownWhenTold", "SuprStarting", down, "SuprDown", kFromStartingToDown},
    {"StartingOnlyLogsTheBusName",
     "SuprStarting",
     appearsOnTheBus,
     "SuprStarting",
     {"TRACE SuprStarting::registered (com.orvo.pictor)"}},
};

const Row kUpRows[] = {
    {"UpStaysOnLevelUp", "SuprUp", answers("up"), "SuprUp", {}},
    {"UpStaysOnAnUnknownLevel", "SuprUp", answers("busy"), "SuprUp", {}},
    {"UpGoesDownOnLevelDown", "SuprUp", answers("down"), "SuprDown",
     after({"TRACE System run level is down. Going down."}, kFromUpToDown)},
    {"UpGoesStartingOnLevelStartingWithoutAReport",
     "SuprUp",
     answers("starting"),
     "SuprStarting",
     {"TRACE System run level STARTING. Going starting", "TRACE SuprUp::exit (com.orvo.pictor)",
      "TRACE SuprStarting::entry (com.orvo.pictor)",
      "TRACE Ping interval of service com.orvo.pictor is 1000"}},
    {"UpStaysForThreeMissedPings",
     "SuprUp",
     fails(3),
     "SuprUp",
     {kPingFailed, kPingFailed, kPingFailed}},
    {"UpGoesDownOnTheFourthMissedPing", "SuprUp", fails(4), "SuprDown",
     after({kPingFailed, kPingFailed, kPingFailed, kPingFailed,
            "TRACE Ping threshold exceeded. Going down"},
           kFromUpToDown)},
    {"UpForgetsMissedPingsOnLevelUp",
     "SuprUp",
     fails(3) + answers("up") + fails(3),
     "SuprUp",
     {kPingFailed, kPingFailed, kPingFailed, kPingFailed, kPingFailed, kPingFailed}},
    {"UpForgetsMissedPingsOnAnUnknownLevel",
     "SuprUp",
     fails(3) + answers("") + fails(3),
     "SuprUp",
     {kPingFailed, kPingFailed, kPingFailed, kPingFailed, kPingFailed, kPingFailed}},
    {"UpGoesDownOnTheFirstMissedPingOffTheBus", "SuprUp", Deed(leavesTheRegistry) + fails(),
     "SuprDown",
     after({kPingFailed, "TRACE Service com.orvo.pictor not registered anymore?! Going down."},
           kFromUpToDown)},
    {"UpGoesDownOnceOnTheFourthMissedPingOffTheBus", "SuprUp",
     fails(3) + leavesTheRegistry + fails(), "SuprDown",
     after({kPingFailed, kPingFailed, kPingFailed, kPingFailed,
            "TRACE Service com.orvo.pictor not registered anymore?! Going down."},
           kFromUpToDown)},
    {"UpOnlyLogsUp", "SuprUp", up, "SuprUp", {"TRACE SuprUp::up (com.orvo.pictor)"}},
    {"UpGoesDownWhenTold", "SuprUp", down, "SuprDown", kFromUpToDown},
    {"UpOnlyLogsTheBusName",
     "SuprUp",
     appearsOnTheBus,
     "SuprUp",
     {"TRACE SuprUp::registered (com.orvo.pictor)"}},
};

const Row kDownRows[] = {
    {"DownGoesStartingOnLevelUp", "SuprDown", answers("up"), "SuprStarting", kFromDownToStarting},
    {"DownGoesStartingOnLevelStarting", "SuprDown", answers("starting"), "SuprStarting",
     kFromDownToStarting},
    {"DownGoesStartingOnLevelUpAfterABadPing", "SuprDown", fails() + answers("up"), "SuprStarting",
     kFromDownToStarting},
    {"DownStaysForOneMissedPing", "SuprDown", fails(), "SuprDown", {}},
    {"DownStaysForOneLevelDown", "SuprDown", answers("down"), "SuprDown", {}},
    {"DownStaysForOneUnknownLevel", "SuprDown", answers("busy"), "SuprDown", {}},
    {"DownRestartsTheServiceOnTheSecondMissedPing",
     "SuprDown",
     fails(2),
     "SuprStarting",
     kRestarted,
     {kRestartCommand}},
    {"DownRestartsTheServiceOnTheSecondLevelDown",
     "SuprDown",
     answers("down", 2),
     "SuprStarting",
     kRestarted,
     {kRestartCommand}},
    {"DownRestartsTheServiceOnTheSecondUnknownLevel",
     "SuprDown",
     answers("", 2),
     "SuprStarting",
     kRestarted,
     {kRestartCommand}},
    {"DownCountsAllKindsOfBadPingsTogether",
     "SuprDown",
     fails() + answers("down"),
     "SuprStarting",
     kRestarted,
     {kRestartCommand}},
    {"DownGoesStartingWhenTold", "SuprDown", up, "SuprStarting", kFromDownToStarting},
    {"DownOnlyLogsDown", "SuprDown", down, "SuprDown", {"TRACE SuprDown::down (com.orvo.pictor)"}},
    {"DownOnlyLogsTheBusName",
     "SuprDown",
     appearsOnTheBus,
     "SuprDown",
     {"TRACE SuprDown::registered (com.orvo.pictor)"}},
};

const Row kDownInOtherSurroundingsRows[] = {
    {"DownGoesStartingWhileTheDeviceIsStarting",
     "SuprDown",
     answers("down"),
     "SuprStarting",
     kFromDownToStarting,
     {},
     Mode::Field,
     "SuprStartingSystem"},
    {"DownStaysForABadPingWhileTheDeveloperDeviceIsStarting",
     "SuprDown",
     answers("down"),
     "SuprDown",
     {},
     {},
     Mode::Developer,
     "SuprStartingSystem"},
    {"DownGoesStartingOnLevelUpOnADeveloperDevice",
     "SuprDown",
     answers("up"),
     "SuprStarting",
     kFromDownToStarting,
     {},
     Mode::Developer},
    {"DownStaysForABadPingWhileTheDeviceIsRebooting",
     "SuprDown",
     fails(),
     "SuprDown",
     {},
     {},
     Mode::Developer,
     "SuprRebootSystem"},
};

std::string rowName(const testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Starting, SuprSMTransitions, testing::ValuesIn(kStartingRows), rowName);
INSTANTIATE_TEST_SUITE_P(Up, SuprSMTransitions, testing::ValuesIn(kUpRows), rowName);
INSTANTIATE_TEST_SUITE_P(Down, SuprSMTransitions, testing::ValuesIn(kDownRows), rowName);
INSTANTIATE_TEST_SUITE_P(Surroundings, SuprSMTransitions,
                         testing::ValuesIn(kDownInOtherSurroundingsRows), rowName);

} // namespace

} // namespace orvo::test
