#include "identification/EepromRecord.h"

#include "identification/Crc8.h"

#include <algorithm>

namespace orvo
{

namespace
{
bool hasMagic(const EepromRecord& record)
{
    return std::equal(std::begin(kMagic), std::end(kMagic), record.begin() + kMagicOffset);
}

bool hasKnownVersion(const EepromRecord& record)
{
    const int tens = record[kVersionOffset] - '0';
    const int units = record[kVersionOffset + 1] - '0';
    // One byte of the record's writer held the version, so other characters than digits wrap round.
    const auto version = static_cast<std::uint8_t>(tens * 10 + units);
    return version >= kOldestRecordVersion && version <= kNewestRecordVersion;
}
} // namespace

bool isValidEepromRecord(int eepromId, const EepromRecord& record)
{
    const EepromModule* module = findEepromModule(eepromId);
    return module != nullptr && hasMagic(record) && hasKnownVersion(record) &&
           record[kRecordLetterOffset] == static_cast<std::uint8_t>(module->letter) &&
           record[kCrcOffset] == crc8(record.data(), kCrcOffset);
}

std::string eepromTypeCode(const EepromRecord& record)
{
    const auto begin = record.begin() + kTypeCodeOffset;
    return {begin, begin + kTypeCodeSize};
}

bool extractArticleNumber(int eepromId, const EepromRecord& record, ArticleText& text)
{
    if (eepromId != kEepromM)
    {
        return false;
    }
    char* end = std::copy_n(record.begin() + kArticleNumberOffset, kArticleNumberSize, text.data());
    *end++ = '\0';
    end = std::copy_n(record.begin() + kRevisionOffset, kRevisionSize, end);
    *end = '\0';
    return isValidEepromRecord(eepromId, record);
}

} // namespace orvo
