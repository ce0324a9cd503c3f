#pragma once

#include "identification/EepromLayout.h"

#include <array>
#include <cstdint>
#include <string>

/// What an identification record says, once its bytes are in memory.
///
/// Threads: any; nothing here touches the device.
/// Errors:  answers only, nothing is logged.
namespace orvo
{

using EepromRecord = std::array<std::uint8_t, kEepromRecordSize>;

/// Article number and revision, each zero-terminated, one after the other.
using ArticleText = std::array<char, kArticleTextSize>;

/// Whether the record is sound and belongs to that EEPROM: header, version 02 or 03, record letter
/// and checksum. False for an unknown EEPROM.
[[nodiscard]] bool isValidEepromRecord(int eepromId, const EepromRecord& record);

/// The three characters of the module's type code, as they are; the record need not be valid.
[[nodiscard]] std::string eepromTypeCode(const EepromRecord& record);

/// Copies article number and revision of the main board ('M') and answers whether the record they
/// come from is valid.
///
/// Errors: a damaged record still fills the text, so that the bench can see what it said; for any
///         other EEPROM the text stays untouched.
[[nodiscard]] bool extractArticleNumber(int eepromId, const EepromRecord& record,
                                        ArticleText& text);

} // namespace orvo
