#include "EepromImage.h"

#include <algorithm>

namespace orvo::test
{

namespace
{
constexpr std::size_t kLastByte = 127;

/// One bit after the other, so that a slip in the product's table shows.
std::uint8_t checksum(const EepromImage::Bytes& bytes)
{
    unsigned crc = 0xFF;
    for (std::size_t i = 0; i < kLastByte; ++i)
    {
        for (unsigned bit = 0x80; bit != 0; bit >>= 1U)
        {
            const bool differs = ((crc & 0x80U) != 0) != ((bytes[i] & bit) != 0);
            crc = ((crc << 1U) & 0xFFU) ^ (differs ? 0x97U : 0U);
        }
    }
    return static_cast<std::uint8_t>(crc);
}
} // namespace

EepromImage::EepromImage(char letter, const std::string& typeCode)
{
    for (std::size_t i = 0; i < m_bytes.size(); ++i)
    {
        // Each unused byte is another one, so that a record read from the wrong place is noticed.
        m_bytes[i] = static_cast<std::uint8_t>(i + 0x80);
    }
    text(0, "#!");
    version("02");
    text(5, std::string(1, letter));
    text(6, typeCode);
    article("AB1234");
    revision("CD");
}

EepromImage& EepromImage::version(const std::string& twoCharacters)
{
    return text(2, twoCharacters);
}

EepromImage& EepromImage::article(const std::string& sixCharacters)
{
    return text(98, sixCharacters);
}

EepromImage& EepromImage::revision(const std::string& twoCharacters)
{
    return text(104, twoCharacters);
}

EepromImage& EepromImage::byte(std::size_t offset, std::uint8_t value)
{
    m_bytes.at(offset) = value;
    return *this;
}

EepromImage::Bytes EepromImage::bytes() const
{
    Bytes sealed = m_bytes;
    sealed[kLastByte] = checksum(sealed);
    return sealed;
}

EepromImage::Bytes EepromImage::damagedAt(std::size_t offset, std::uint8_t flippedBits) const
{
    Bytes damaged = bytes();
    damaged.at(offset) ^= flippedBits;
    return damaged;
}

EepromImage& EepromImage::text(std::size_t offset, const std::string& characters)
{
    std::copy(characters.begin(), characters.end(),
              m_bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return *this;
}

} // namespace orvo::test
