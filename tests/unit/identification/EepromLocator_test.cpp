#include "FakeUdev.h"
#include "identification/EepromLayout.h"
#include "identification/EepromLocator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo
{

using test::FakeUdev;
using testing::ElementsAre;
using testing::IsEmpty;

class EepromLocator : public testing::Test
{
protected:
    ~EepromLocator() override
    {
        EXPECT_EQ(0, m_udev.openHandles);
        g_i2cDeviceNameFormat = kI2cDeviceName;
    }

    std::string locate(int eepromId)
    {
        std::string syspath = kUntouched;
        const bool found = locateEeprom(eepromId, syspath);
        EXPECT_EQ(found, syspath != kUntouched);
        return syspath;
    }

    static constexpr const char* kUntouched = "untouched";
    FakeUdev m_udev;
};

TEST_F(EepromLocator, KnowsTheDeviceNameOfEachEeprom)
{
    m_udev.devices = {{"/sys/devices/i2c-2/2-0050", "at24"},
                      {"/sys/devices/i2c-2/2-0052", "at24"},
                      {"/sys/devices/i2c-2/2-0053", "at24"},
                      {"/sys/devices/i2c-2/2-0054", "at24"},
                      {"/sys/devices/i2c-2/2-0055", "at24"}};
    EXPECT_EQ("/sys/devices/i2c-2/2-0054", locate(16));
    EXPECT_EQ("/sys/devices/i2c-2/2-0052", locate(17));
    EXPECT_EQ("/sys/devices/i2c-2/2-0053", locate(18));
    EXPECT_EQ("/sys/devices/i2c-2/2-0055", locate(19));
    EXPECT_EQ("/sys/devices/i2c-2/2-0050", locate(20));
}

TEST_F(EepromLocator, DoesNotAskUdevForAnUnknownEeprom)
{
    for (const int id : {-1, 0, 15, 21, 272})
    {
        EXPECT_EQ(kUntouched, locate(id)) << id;
    }
    EXPECT_THAT(m_udev.calls, IsEmpty());
}

TEST_F(EepromLocator, ListensToTheBusWhileItLooks)
{
    m_udev.devices = {{"/sys/2-0054", "at24"}};
    EXPECT_EQ("/sys/2-0054", locate(kEepromF));
    EXPECT_THAT(m_udev.calls, ElementsAre("udev_new", "monitor udev", "monitor filter i2c",
                                          "monitor enable", "enumerate", "enumerate match i2c",
                                          "enumerate scan", "device /sys/2-0054", "device unref",
                                          "enumerate unref", "monitor unref", "udev_unref"));
}

TEST_F(EepromLocator, TakesTheFirstMatchInTheOrderOfEnumeration)
{
    m_udev.devices = {{"/sys/z/2-0054", "at24"}, {"/sys/a/2-0054", "at24"}};
    EXPECT_EQ("/sys/z/2-0054", locate(kEepromF));
}

TEST_F(EepromLocator, FindsTheNameAnywhereInThePath)
{
    m_udev.devices = {{"/sys/devices/mux-2-0054x/7-0001", "at24"}};
    EXPECT_EQ("/sys/devices/mux-2-0054x/7-0001", locate(kEepromF));
}

TEST_F(EepromLocator, PassesOverOtherDriversAndNoDriver)
{
    m_udev.devices = {{"/sys/a/2-0054", "at25"},
                      {"/sys/b/2-0054", "at240"},
                      {"/sys/c/2-0054", ""},
                      {"/sys/d/2-0054", "at24"}};
    EXPECT_EQ("/sys/d/2-0054", locate(kEepromF));
}

TEST_F(EepromLocator, PassesOverADeviceThatLeftTheBusMeanwhile)
{
    m_udev.devices = {{"/sys/a/2-0054", "at24", true}, {"/sys/b/2-0054", "at24"}};
    EXPECT_EQ("/sys/b/2-0054", locate(kEepromF));
}

TEST_F(EepromLocator, FailsWithoutAMatch)
{
    m_udev.devices = {{"/sys/i2c-2", ""}, {"/sys/i2c-2/2-0053", "at24"}};
    EXPECT_EQ(kUntouched, locate(kEepromF));
}

TEST_F(EepromLocator, FailsOnAnEmptyBus)
{
    EXPECT_EQ(kUntouched, locate(kEepromF));
}

TEST_F(EepromLocator, FailsWithoutAUdevContext)
{
    m_udev.devices = {{"/sys/2-0054", "at24"}};
    m_udev.refusesContext = true;
    EXPECT_EQ(kUntouched, locate(kEepromF));
    EXPECT_THAT(m_udev.calls, ElementsAre("udev_new"));
}

TEST_F(EepromLocator, FailsWithoutAnEnumeration)
{
    m_udev.devices = {{"/sys/2-0054", "at24"}};
    m_udev.refusesEnumeration = true;
    EXPECT_EQ(kUntouched, locate(kEepromF));
}

TEST_F(EepromLocator, FindsTheDeviceWithoutANetlinkToListenTo)
{
    m_udev.devices = {{"/sys/2-0054", "at24"}};
    m_udev.refusesMonitor = true;
    EXPECT_EQ("/sys/2-0054", locate(kEepromF));
}

TEST_F(EepromLocator, FollowsAnotherNameFormat)
{
    m_udev.devices = {{"/sys/2-0054", "at24"}, {"/sys/11-0054", "at24"}};
    g_i2cDeviceNameFormat = "11-00%d";
    EXPECT_EQ("/sys/11-0054", locate(kEepromF));
}

TEST_F(EepromLocator, RefusesANameThatDoesNotFit)
{
    const std::string longest(kI2cDeviceNameSize - 3, 'x');
    m_udev.devices = {{"/sys/" + longest + "54", "at24"}};
    const std::string fitting = longest + "%d";
    g_i2cDeviceNameFormat = fitting.c_str();
    EXPECT_EQ(m_udev.devices[0].syspath, locate(kEepromF));

    // Cut, it would be part of this path.
    const std::string tooLong = "x" + fitting;
    m_udev.devices = {{"/sys/x" + longest + "54", "at24"}};
    g_i2cDeviceNameFormat = tooLong.c_str();
    EXPECT_EQ(kUntouched, locate(kEepromF));
}

} // namespace orvo
