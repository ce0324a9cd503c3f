#include "EepromImage.h"
#include "identification/EepromRecord.h"

#include <gtest/gtest.h>

#include <map>

namespace orvo
{

using test::EepromImage;

namespace
{
bool isVersionAccepted(const std::string& version)
{
    return isValidEepromRecord(kEepromF, EepromImage('F', "341").version(version).bytes());
}
} // namespace

class EveryByte : public testing::TestWithParam<std::size_t>
{
};

TEST_P(EveryByte, DamagedMakesTheRecordInvalid)
{
    const EepromImage image('F', "341");
    ASSERT_TRUE(isValidEepromRecord(kEepromF, image.bytes()));
    for (unsigned bit = 0x01; bit <= 0x80; bit <<= 1U)
    {
        EXPECT_FALSE(isValidEepromRecord(
            kEepromF, image.damagedAt(GetParam(), static_cast<std::uint8_t>(bit))))
            << "flipped " << bit;
    }
}

INSTANTIATE_TEST_SUITE_P(EepromRecord, EveryByte,
                         testing::Range(std::size_t{0}, kEepromRecordSize));

TEST(EepromRecord, NeedsBothCharactersOfTheMagicEvenIfTheChecksumFits)
{
    EXPECT_FALSE(isValidEepromRecord(kEepromF, EepromImage('F', "341").byte(0, '!').bytes()));
    EXPECT_FALSE(isValidEepromRecord(kEepromF, EepromImage('F', "341").byte(1, '#').bytes()));
}

TEST(EepromRecord, MayHoldAnythingInTheSpareAndUnusedBytes)
{
    for (const std::size_t offset : {4U, 9U, 97U, 106U, 126U})
    {
        for (const std::uint8_t value : std::array<std::uint8_t, 3>{0x00, 0x20, 0xFF})
        {
            EXPECT_TRUE(
                isValidEepromRecord(kEepromF, EepromImage('F', "341").byte(offset, value).bytes()))
                << "byte " << offset;
        }
    }
}

TEST(EepromRecord, OfVersion01IsInvalid)
{
    EXPECT_FALSE(isVersionAccepted("01"));
}

TEST(EepromRecord, OfVersion02IsValid)
{
    EXPECT_TRUE(isVersionAccepted("02"));
}

TEST(EepromRecord, OfVersion03IsValid)
{
    EXPECT_TRUE(isVersionAccepted("03"));
}

TEST(EepromRecord, OfVersion04IsInvalid)
{
    EXPECT_FALSE(isVersionAccepted("04"));
}

TEST(EepromRecord, OfAnyOtherTwoDigitVersionIsInvalid)
{
    for (char tens = '0'; tens <= '9'; ++tens)
    {
        for (char units = '0'; units <= '9'; ++units)
        {
            const std::string version{tens, units};
            EXPECT_EQ(version == "02" || version == "03", isVersionAccepted(version)) << version;
        }
    }
}

TEST(EepromRecord, ReckonsTheVersionModulo256)
{
    EXPECT_FALSE(isVersionAccepted("I7"));       // 257
    EXPECT_TRUE(isVersionAccepted("I8"));        // 258
    EXPECT_TRUE(isVersionAccepted("I9"));        // 259
    EXPECT_FALSE(isVersionAccepted("I:"));       // 260
    EXPECT_FALSE(isVersionAccepted("/;"));       // -10 + 11
    EXPECT_TRUE(isVersionAccepted("/<"));        // -10 + 12
    EXPECT_TRUE(isVersionAccepted("/="));        // -10 + 13
    EXPECT_FALSE(isVersionAccepted("/>"));       // -10 + 14
    EXPECT_FALSE(isVersionAccepted("\xD7\xAB")); // 1670 + 123 = 7 * 256 + 1
    EXPECT_TRUE(isVersionAccepted("\xD7\xAC"));  // 1670 + 124 = 7 * 256 + 2
}

TEST(EepromRecord, BelongsToTheEepromOfItsLetterOnly)
{
    const std::map<char, int> letters = {{'F', 16}, {'D', 17}, {'M', 18}, {'I', 19}, {'A', 20}};
    for (const auto& [letter, ownId] : letters)
    {
        for (int id = 16; id <= 20; ++id)
        {
            EXPECT_EQ(id == ownId, isValidEepromRecord(id, EepromImage(letter, "341").bytes()))
                << letter << " at " << id;
        }
    }
}

TEST(EepromRecord, OfALowerCaseLetterIsInvalid)
{
    EXPECT_FALSE(isValidEepromRecord(kEepromF, EepromImage('f', "341").bytes()));
}

TEST(EepromRecord, OfAnUnknownEepromIsInvalid)
{
    for (const int id : {-1, 0, 15, 21, 255})
    {
        EXPECT_FALSE(isValidEepromRecord(id, EepromImage('F', "341").bytes())) << id;
    }
}

TEST(EepromRecord, GivesTheTypeCodeAsItIs)
{
    EXPECT_EQ("341", eepromTypeCode(EepromImage('F', "341").bytes()));
    EXPECT_EQ(std::string("3\0x", 3), eepromTypeCode(EepromImage('F', {'3', '\0', 'x'}).bytes()));
}

} // namespace orvo
