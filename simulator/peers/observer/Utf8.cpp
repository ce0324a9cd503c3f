#include "observer/Utf8.h"

#include <array>

namespace orvo::simulator
{

namespace
{
/// One row of the table of well-formed byte sequences in the Unicode standard.
struct Sequence
{
    unsigned char firstLow;
    unsigned char firstHigh;
    unsigned char secondLow;
    unsigned char secondHigh;
    std::size_t length;
};

constexpr std::array<Sequence, 8> kSequences = {{
    {0xc2, 0xdf, 0x80, 0xbf, 2},
    {0xe0, 0xe0, 0xa0, 0xbf, 3},
    {0xe1, 0xec, 0x80, 0xbf, 3},
    {0xed, 0xed, 0x80, 0x9f, 3},
    {0xee, 0xef, 0x80, 0xbf, 3},
    {0xf0, 0xf0, 0x90, 0xbf, 4},
    {0xf1, 0xf3, 0x80, 0xbf, 4},
    {0xf4, 0xf4, 0x80, 0x8f, 4},
}};
constexpr unsigned char kLastAscii = 0x7f;
constexpr unsigned char kTailLow = 0x80;
constexpr unsigned char kTailHigh = 0xbf;

bool within(char character, unsigned char low, unsigned char high)
{
    const auto byte = static_cast<unsigned char>(character);
    return low <= byte && byte <= high;
}
} // namespace

std::size_t utf8Length(const std::string& bytes, std::size_t offset)
{
    if (offset >= bytes.size())
    {
        return 0;
    }
    if (within(bytes[offset], 0, kLastAscii))
    {
        return 1;
    }
    for (const Sequence& sequence : kSequences)
    {
        if (!within(bytes[offset], sequence.firstLow, sequence.firstHigh) ||
            bytes.size() - offset < sequence.length ||
            !within(bytes[offset + 1], sequence.secondLow, sequence.secondHigh))
        {
            continue;
        }
        bool valid = true;
        for (std::size_t tail = 2; tail < sequence.length; ++tail)
        {
            valid = valid && within(bytes[offset + tail], kTailLow, kTailHigh);
        }
        return valid ? sequence.length : 0;
    }
    return 0;
}

} // namespace orvo::simulator
