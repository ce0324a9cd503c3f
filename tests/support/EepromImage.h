#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace orvo::test
{

/// Builds the 128 bytes of an identification record from what it should say, sealed with a checksum
/// of its own reckoning.
///
///     EepromImage('F', "341").version("03").bytes()
class EepromImage
{
public:
    using Bytes = std::array<std::uint8_t, 128>;

    EepromImage(char letter, const std::string& typeCode);

    EepromImage& version(const std::string& twoCharacters);
    EepromImage& article(const std::string& sixCharacters);
    EepromImage& revision(const std::string& twoCharacters);
    EepromImage& byte(std::size_t offset, std::uint8_t value);

    /// The record with the checksum that fits it.
    [[nodiscard]] Bytes bytes() const;
    /// The same, with that byte changed after it was sealed.
    [[nodiscard]] Bytes damagedAt(std::size_t offset, std::uint8_t flippedBits) const;

private:
    EepromImage& text(std::size_t offset, const std::string& characters);

    Bytes m_bytes;
};

} // namespace orvo::test
