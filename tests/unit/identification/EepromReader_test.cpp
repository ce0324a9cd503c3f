#include "FakeUdev.h"
#include "identification/EepromCapabilities.h"
#include "identification/EepromLayout.h"
#include "identification/EepromReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace orvo
{

using test::FakeUdev;
using testing::Contains;
using testing::IsEmpty;

class BusUser : public testing::Test
{
protected:
    FakeUdev m_udev;
};

TEST_F(BusUser, DoesNotTouchTheBusForABufferThatIsTooSmall)
{
    std::array<std::uint8_t, 127> buffer{};
    EXPECT_FALSE(readEeprom(kEepromF, buffer.data(), buffer.size()));
    EXPECT_FALSE(readEeprom(kEepromF, buffer.data(), 0));
    EXPECT_THAT(m_udev.calls, IsEmpty());
}

TEST_F(BusUser, DoesNotTouchTheBusForAnUnknownEeprom)
{
    std::array<std::uint8_t, 128> buffer{};
    EXPECT_FALSE(readEeprom(15, buffer.data(), buffer.size()));
    EXPECT_FALSE(readEeprom(21, buffer.data(), buffer.size()));
    EXPECT_THAT(m_udev.calls, IsEmpty());
}

TEST_F(BusUser, TouchesTheBusForARecord)
{
    std::array<std::uint8_t, 128> buffer{};
    EXPECT_FALSE(readEeprom(kEepromF, buffer.data(), buffer.size()));
    EXPECT_THAT(m_udev.calls, Contains("enumerate scan"));
}

TEST_F(BusUser, AssumesAnUndescribedCapabilityWithoutTouchingTheBus)
{
    for (const MFCapability_t capability : {13U, 14U, 255U, 256U + 9U, 0xFFFFFFFFU})
    {
        EXPECT_TRUE(hasCapability(capability)) << capability;
    }
    EXPECT_THAT(m_udev.calls, IsEmpty());
}

TEST_F(BusUser, AsksTheBusForEveryDescribedCapability)
{
    for (MFCapability_t capability = 0; capability <= 12; ++capability)
    {
        m_udev.calls.clear();
        EXPECT_FALSE(hasCapability(capability)) << capability;
        EXPECT_THAT(m_udev.calls, Contains("enumerate scan").Times(1)) << capability;
    }
}

} // namespace orvo
