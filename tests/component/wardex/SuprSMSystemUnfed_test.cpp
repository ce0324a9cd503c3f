// The system machine of a device whose hardware watchdog cannot be opened. Its program is one of
// its own, because the watchdog is opened once in a process.

#include "SupervisedDevice.h"
#include "SuprRebootSystem.h"
#include "Watchdog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

namespace orvo::test
{

namespace
{

using Mode = SupervisedDevice::Mode;
using testing::ElementsAre;
using testing::IsEmpty;

const char kDead[] = "WARN Bello is dead!!!";

class DeviceWithoutAWatchdog : public testing::Test
{
protected:
    /// The watchdog is opened for the first time while the process may open nothing.
    static void SetUpTestSuite()
    {
        rlimit usual{};
        ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &usual));
        const rlimit none{0, usual.rlim_max};
        ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
        (void)Watchdog::instance();
        ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &usual));
    }

    /// The records of so many ticks of the state.
    Lines recordsOf(const char* state, int ticks)
    {
        m_device.bringTo(state);
        m_device.forgetThePast();
        m_device.afterTicks(ticks);
        return m_device.newRecords();
    }

    SupervisedDevice m_device{Mode::Field};
};

} // namespace

TEST_F(DeviceWithoutAWatchdog, IsToldSoOnEachTickWhileStarting)
{
    EXPECT_THAT(recordsOf("SuprStartingSystem", 3), ElementsAre(kDead, kDead, kDead));
}

TEST_F(DeviceWithoutAWatchdog, IsToldSoOnEachTickWhileStable)
{
    EXPECT_THAT(recordsOf("SuprStableSystem", 2), ElementsAre(kDead, kDead));
}

TEST_F(DeviceWithoutAWatchdog, IsToldSoOnEachTickWhileUnstable)
{
    EXPECT_THAT(recordsOf("SuprUnstableSystem", 2), ElementsAre(kDead, kDead));
}

TEST_F(DeviceWithoutAWatchdog, IsToldSoOnEachTickWhileRebooting)
{
    SuprRebootSystem state(&m_device.system(), m_device.context());
    m_device.forgetThePast();
    state.ping();
    EXPECT_THAT(m_device.newRecords(), ElementsAre(kDead));
}

TEST_F(DeviceWithoutAWatchdog, IsSupervisedOn)
{
    m_device.afterTicks(5);
    m_device.forgetThePast();
    m_device.afterTicks(1);
    EXPECT_THAT(m_device.newRecords(), ElementsAre(kDead, "TRACE SuprStartingSystem::exit",
                                                   "TRACE SuprUnstableSystem::entry"));
}

TEST(DeveloperDeviceWithoutAWatchdog, IsToldNothing)
{
    SupervisedDevice device(Mode::Developer);
    device.forgetThePast();
    device.afterTicks(5);
    EXPECT_THAT(device.newRecords(), IsEmpty());
}

} // namespace orvo::test
