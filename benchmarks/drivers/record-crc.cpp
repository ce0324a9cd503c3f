// The checksum of one identification record, computed as often as told.
//
//   record-crc COUNT

#include "Measure.h"
#include "identification/Crc8.h"
#include "identification/EepromLayout.h"

#include <array>
#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        bench::fail("record-crc COUNT");
    }
    std::array<std::uint8_t, orvo::kEepromRecordSize> record{};
    unsigned sum = 0;
    for (long i = bench::repetitions(argv[1]); i > 0; --i)
    {
        record[0] = static_cast<std::uint8_t>(i);
        sum += orvo::crc8(record.data(), orvo::kCrcOffset);
    }
    return sum == 1 ? EXIT_FAILURE : EXIT_SUCCESS;
}
