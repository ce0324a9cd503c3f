#include "identification/Crc8.h"

#include <cstdio>

namespace orvo
{

namespace
{
constexpr std::array<std::uint8_t, kCrc8TableSize> kTable = makeCrc8Table();
static_assert(kTable[0] == 0x00 && kTable[1] == 0x97 && kTable[2] == 0xB9 && kTable[3] == 0x2E);

constexpr std::size_t kEntriesPerLine = 9;
} // namespace

std::uint8_t crc8(const std::uint8_t* data, std::size_t size)
{
    std::uint8_t crc = kCrc8Start;
    for (std::size_t i = 0; i < size; ++i)
    {
        crc = kTable[static_cast<std::uint8_t>(crc ^ data[i])];
    }
    return crc;
}

void printCrc8Table()
{
    std::fputs("static uint8_t crc_tab8[SMSP_CRC_TABLE_SIZE] = {", stdout);
    for (std::size_t i = 0; i < kTable.size(); ++i)
    {
        std::printf("0x%02x, ", static_cast<unsigned>(kTable[i]));
        if ((i + 1) % kEntriesPerLine == 0)
        {
            std::fputs("\n", stdout);
        }
    }
    std::fputs("};", stdout);
}

} // namespace orvo
