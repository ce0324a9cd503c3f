// The end of the road: what a device does that four package restarts did not help. Each claim is
// played in a process of its own, which the reboot or the claim ends.

#include "Eventually.h"
#include "SupervisedDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include <unistd.h>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;

constexpr int kTicksToTheFourthNeed = 68;
constexpr char kReboots[] = "/box/reboots";
constexpr int kHeld = 42;
constexpr int kNotHeld = 43;

void endProcess(bool claimHeld)
{
    _exit(claimHeld ? kHeld : kNotHeld);
}

/// The machine's last three records before the action's own line.
bool hasGoneToReboot(const Lines& records)
{
    const Lines expected{
        "EMERG Too many restarts(3) detected in last 5 minutes: rebooting whole system ...",
        "TRACE SuprUnstableSystem::exit", "TRACE SuprRebootSystem::entry"};
    return std::search(records.begin(), records.end(), expected.begin(), expected.end()) !=
           records.end();
}

bool isRebooting()
{
    std::ifstream reboots(kReboots);
    std::string line;
    return static_cast<bool>(std::getline(reboots, line));
}

void rebootTheFieldDevice()
{
    SupervisedDevice device(Mode::Field);
    std::thread witness(
        [&device]
        {
            eventually(isRebooting);
            endProcess(hasGoneToReboot(device.newRecords()));
        });
    device.afterTicks(kTicksToTheFourthNeed);
    std::fputs("the reboot has returned\n", stderr);
    endProcess(false);
}

void surviveTheRebootOfADeveloper()
{
    SupervisedDevice device(Mode::Developer);
    device.afterTicks(2 * kTicksToTheFourthNeed);
    const Lines records = device.newRecords();
    const auto lines = std::count_if(
        records.begin(), records.end(),
        [](const std::string& record)
        {
            return record.find(
                       "SUPERVISOR WOULD RESTART SYSTEM via /dev/watchdog ... but saved via "
                       "developer mode") != std::string::npos;
        });
    endProcess(lines == 1 && hasGoneToReboot(records) && device.newCommands().empty() &&
               !isRebooting());
}

class RebootingDevice : public testing::Test
{
protected:
    void SetUp() override { std::filesystem::remove(kReboots); }
};

} // namespace

TEST_F(RebootingDevice, RunsTheRebootAndNeverReturns)
{
    EXPECT_EXIT(rebootTheFieldDevice(), testing::ExitedWithCode(kHeld), "");
}

TEST_F(RebootingDevice, OnlySaysSoOnceWhenItIsADevelopers)
{
    EXPECT_EXIT(surviveTheRebootOfADeveloper(), testing::ExitedWithCode(kHeld), "");
}

} // namespace orvo::test
