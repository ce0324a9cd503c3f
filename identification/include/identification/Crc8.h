#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The checksum of the identification records: polynomial 0x97, most significant bit first, start
/// value 0xFF, result taken as it is.
///
/// Threads: any.
/// On the device: every EEPROM is sealed with it in production; it cannot be changed.
namespace orvo
{

constexpr std::uint8_t kCrc8Polynomial = 0x97;
constexpr std::uint8_t kCrc8Start = 0xFF;
constexpr std::size_t kCrc8TableSize = 256;

/// Entry i is the register after the byte i has been shifted through its eight steps.
constexpr std::array<std::uint8_t, kCrc8TableSize> makeCrc8Table()
{
    constexpr unsigned kTopBit = 0x80;
    std::array<std::uint8_t, kCrc8TableSize> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
    {
        auto shifted = static_cast<unsigned>(byte);
        for (int step = 0; step < 8; ++step)
        {
            const bool carry = (shifted & kTopBit) != 0;
            shifted = (shifted << 1U) ^ (carry ? kCrc8Polynomial : 0U);
        }
        table[byte] = static_cast<std::uint8_t>(shifted);
    }
    return table;
}

[[nodiscard]] std::uint8_t crc8(const std::uint8_t* data, std::size_t size);

/// Prints the table to standard output as C source, nine entries to a line. For comparing with
/// other firmware on the bench; the supervisor does not call it.
void printCrc8Table();

} // namespace orvo
