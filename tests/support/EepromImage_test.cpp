#include "EepromImage.h"

#include <gtest/gtest.h>

namespace orvo::test
{

TEST(EepromImage, PutsEachPartOfTheRecordInItsPlace)
{
    const EepromImage::Bytes bytes =
        EepromImage('M', "161").version("03").article("123456").revision("AB").bytes();
    const std::string text(bytes.begin(), bytes.end());

    EXPECT_EQ("#!03", text.substr(0, 4));
    EXPECT_EQ("M161", text.substr(5, 4));
    EXPECT_EQ("123456AB", text.substr(98, 8));
}

TEST(EepromImage, IsSealedWithTheChecksumOfAReferenceRecord)
{
    EepromImage image('F', "341");
    for (std::size_t i = 9; i < 127; ++i)
    {
        image.byte(i, 0);
    }
    EXPECT_EQ(0x7D, image.byte(4, 0x20).bytes()[127]);
}

TEST(EepromImage, DamagesOneByteOnly)
{
    const EepromImage image('F', "341");
    EepromImage::Bytes expected = image.bytes();
    expected[127] ^= 0x01;
    EXPECT_EQ(expected, image.damagedAt(127, 0x01));
}

} // namespace orvo::test
