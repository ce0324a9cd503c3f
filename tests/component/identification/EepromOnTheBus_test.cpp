#include "I2cTree.h"
#include "identification/EepromLayout.h"
#include "identification/EepromLocator.h"
#include "identification/EepromReader.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace orvo
{

namespace fs = std::filesystem;
using test::EepromImage;
using test::I2cTree;

class EepromOnTheBus : public testing::Test
{
protected:
    EepromOnTheBus() { m_buffer.fill(kUntouched); }

    bool read(int eepromId = kEepromF)
    {
        return readEeprom(eepromId, m_buffer.data(), m_buffer.size());
    }

    [[nodiscard]] bool isInBuffer(const EepromImage::Bytes& bytes) const
    {
        return std::equal(bytes.begin(), bytes.end(), m_buffer.begin());
    }

    static std::string path(const std::string& parent, const std::string& name = "2-0054")
    {
        return "/sys/devices/" + parent + "/" + name;
    }

    static constexpr std::uint8_t kUntouched = 0xEE;
    static constexpr const char* kAdapter = I2cTree::kAdapter;
    I2cTree m_tree;
    const EepromImage m_image = EepromImage('F', "341");
    std::array<std::uint8_t, 200> m_buffer{};
};

TEST_F(EepromOnTheBus, IsReadWholeAndNoFurther)
{
    m_tree.fit("2-0054", m_image);
    EXPECT_TRUE(read());
    EXPECT_TRUE(isInBuffer(m_image.bytes()));
    EXPECT_EQ(kUntouched, m_buffer[128]);
}

TEST_F(EepromOnTheBus, IsReadIntoABufferOfJustItsSize)
{
    m_tree.fit("2-0054", m_image);
    EXPECT_FALSE(readEeprom(kEepromF, m_buffer.data(), 127));
    EXPECT_TRUE(readEeprom(kEepromF, m_buffer.data(), 128));
}

TEST_F(EepromOnTheBus, IsReadAsItIsEvenIfDamaged)
{
    m_tree.fit("2-0054", m_image.damagedAt(0, 0xFF));
    EXPECT_TRUE(read());
    EXPECT_TRUE(isInBuffer(m_image.damagedAt(0, 0xFF)));
}

TEST_F(EepromOnTheBus, MayBeLargerThanTheRecord)
{
    m_tree.fitDevice("2-0054");
    const EepromImage::Bytes bytes = m_image.bytes();
    m_tree.write("2-0054", std::string(bytes.begin(), bytes.end()) + std::string(128, 'x'));
    EXPECT_TRUE(read());
    EXPECT_TRUE(isInBuffer(bytes));
    EXPECT_EQ(kUntouched, m_buffer[128]);
}

TEST_F(EepromOnTheBus, OfOneByteTooFewIsNotRead)
{
    m_tree.fitDevice("2-0054");
    m_tree.write("2-0054", std::string(127, 'x'));
    EXPECT_FALSE(read());
    m_tree.write("2-0054", std::string(128, 'x'));
    EXPECT_TRUE(read());
}

TEST_F(EepromOnTheBus, ThatIsEmptyIsNotRead)
{
    m_tree.fitDevice("2-0054");
    m_tree.write("2-0054", "");
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, WithoutItsFileIsNotRead)
{
    m_tree.fitDevice("2-0054");
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, WithAFolderInPlaceOfItsFileIsNotRead)
{
    m_tree.fitDevice("2-0054");
    fs::create_directory(m_tree.eepromFile("2-0054"));
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, ThatMayNotBeOpenedIsNotRead)
{
    m_tree.fit("2-0054", m_image);
    fs::permissions(m_tree.eepromFile("2-0054"), fs::perms::none);
    // Nothing is forbidden to root; another user of the box is not needed where the test is not
    // root.
    constexpr uid_t kNobody = 65534;
    const uid_t user = geteuid();
    if (user == 0)
    {
        ASSERT_EQ(0, seteuid(kNobody));
    }
    EXPECT_FALSE(read());
    ASSERT_EQ(0, seteuid(user));
}

TEST_F(EepromOnTheBus, ThatFailsWhileItIsReadIsNotRead)
{
    m_tree.fitDevice("2-0054");
    // The first page of this process is never mapped: opening works, reading answers EIO.
    fs::create_symlink("/proc/self/mem", m_tree.eepromFile("2-0054"));
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, ThatVanishedIsNotRead)
{
    m_tree.fit("2-0054", m_image);
    ASSERT_TRUE(read());
    m_tree.vanish("2-0054");
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, NeedsTheDriverForEeproms)
{
    m_tree.fitDevice("2-0054", "at25");
    m_tree.write("2-0054", m_image.bytes());
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, NeedsADriver)
{
    m_tree.fitDevice("2-0054", "");
    m_tree.write("2-0054", m_image.bytes());
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, IsNotMistakenForItsNeighbour)
{
    m_tree.fit("2-0055", EepromImage('I', "001"));
    m_tree.fit("2-0053", EepromImage('M', "101"));
    EXPECT_FALSE(read(kEepromF));
    EXPECT_TRUE(read(kEepromM));
    EXPECT_TRUE(isInBuffer(EepromImage('M', "101").bytes()));
}

TEST_F(EepromOnTheBus, OfSeveralMatchesIsTheFirstOfTheEnumeration)
{
    // Both paths carry the name; udev enumerates by path, not by the order of fitting.
    const std::string second = "platform/soc/i2c.9/i2c-2";
    const std::string first = "platform/soc/i2c.1/mux-2-0054";
    m_tree.fitDevice("2-0054", "at24", second);
    m_tree.write("2-0054", EepromImage('F', "200").bytes(), second);
    m_tree.fitDevice("7-0010", "at24", first);
    m_tree.write("7-0010", m_image.bytes(), first);

    std::string found;
    EXPECT_TRUE(locateEeprom(kEepromF, found));
    EXPECT_EQ(path(first, "7-0010"), found);
    EXPECT_TRUE(read());
    EXPECT_TRUE(isInBuffer(m_image.bytes()));
}

TEST_F(EepromOnTheBus, IsTheFirstMatchEvenIfOnlyTheNextCanBeRead)
{
    const std::string first = "platform/soc/i2c.1/mux-2-0054";
    m_tree.fitDevice("7-0010", "at24", first);
    m_tree.fit("2-0054", m_image);
    EXPECT_FALSE(read());
}

TEST_F(EepromOnTheBus, IsFoundAmongDevicesOfOtherDrivers)
{
    m_tree.fitDevice("1-0054", "at24", "platform/soc/i2c.1/i2c-1");
    m_tree.fitDevice("2-0011", "", kAdapter);
    m_tree.fitDevice("2-0040", "ina2xx", kAdapter);
    m_tree.fit("2-0054", m_image);
    std::string found;
    EXPECT_TRUE(locateEeprom(kEepromF, found));
    EXPECT_EQ(path(kAdapter), found);
}

} // namespace orvo
