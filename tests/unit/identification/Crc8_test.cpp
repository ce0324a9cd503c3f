#include "identification/Crc8.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <vector>

namespace orvo
{

namespace
{
std::uint8_t crcOf(const std::string& text)
{
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    return crc8(bytes.data(), bytes.size());
}
} // namespace

TEST(Crc8, StartsWith0xFF)
{
    EXPECT_EQ(0xFF, crcOf(""));
}

TEST(Crc8, AgreesWithReferenceValues)
{
    EXPECT_EQ(0x3C, crcOf(std::string(1, '\0')));
    EXPECT_EQ(0x64, crcOf("123456789"));
    EXPECT_EQ(0xAA, crcOf("#!02"));
    EXPECT_EQ(0x87, crcOf(std::string(127, '\0')));
}

TEST(Crc8, TableBeginsWithTheKnownEntries)
{
    const auto table = makeCrc8Table();
    EXPECT_EQ(0x00, table[0]);
    EXPECT_EQ(0x97, table[1]);
    EXPECT_EQ(0xB9, table[2]);
    EXPECT_EQ(0x2E, table[3]);
    EXPECT_EQ(0xAB, table[254]);
    EXPECT_EQ(0x3C, table[255]);
}

TEST(Crc8, TableIsPrintedAsSourceWithABreakAfterEveryNinthEntry)
{
    std::string expected = "static uint8_t crc_tab8[SMSP_CRC_TABLE_SIZE] = {";
    int entry = 0;
    for (const std::uint8_t value : makeCrc8Table())
    {
        std::ostringstream hex;
        hex << std::hex << (value < 0x10 ? "0" : "") << static_cast<unsigned>(value);
        expected += "0x" + hex.str() + ", ";
        ++entry;
        if (entry % 9 == 0)
        {
            expected += '\n';
        }
    }
    expected += "};";

    testing::internal::CaptureStdout();
    printCrc8Table();
    std::fflush(stdout);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(expected, printed);
    EXPECT_EQ("static uint8_t crc_tab8[SMSP_CRC_TABLE_SIZE] = {0x00, 0x97, 0xb9, 0x2e, ",
              printed.substr(0, 72));
}

} // namespace orvo
