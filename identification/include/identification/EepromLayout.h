#pragma once

#include <array>
#include <cstddef>

/// Where the identification EEPROMs sit and what their records hold: every fact of the device that
/// this room relies on.
///
/// On the device: the records are written in production; offsets and letters are the same on every
/// board revision. The tools that build EEPROM images rely on the same numbers.
namespace orvo
{

// The record. All offsets and sizes in bytes from the start of the EEPROM.
constexpr std::size_t kEepromRecordSize = 128;
constexpr std::size_t kMagicOffset = 0;
constexpr char kMagic[] = {'#', '!'};
constexpr std::size_t kVersionOffset = 2; ///< Two ASCII decimal digits, tens first.
constexpr std::size_t kVersionSize = 2;
constexpr std::size_t kRecordLetterOffset = 5;
constexpr std::size_t kTypeCodeOffset = 6; ///< ASCII, neither padded nor terminated.
constexpr std::size_t kTypeCodeSize = 3;
constexpr std::size_t kArticleNumberOffset = 98; ///< ASCII; meaningful in the 'M' record only.
constexpr std::size_t kArticleNumberSize = 6;
constexpr std::size_t kRevisionOffset = 104; ///< ASCII, of the article number before it.
constexpr std::size_t kRevisionSize = 2;
constexpr std::size_t kCrcOffset = 127; ///< CRC-8 of everything before it.

static_assert(kMagicOffset + sizeof(kMagic) == kVersionOffset);
static_assert(kVersionOffset + kVersionSize + 1 == kRecordLetterOffset, "byte 4 is spare");
static_assert(kRecordLetterOffset + 1 == kTypeCodeOffset);
static_assert(kTypeCodeOffset + kTypeCodeSize + 89 == kArticleNumberOffset);
static_assert(kArticleNumberOffset + kArticleNumberSize == kRevisionOffset);
static_assert(kRevisionOffset + kRevisionSize + 21 == kCrcOffset);
static_assert(kCrcOffset + 1 == kEepromRecordSize);

/// Article number and revision as text: each followed by its own terminator.
constexpr std::size_t kArticleTextSize = kArticleNumberSize + 1 + kRevisionSize + 1;
static_assert(kArticleTextSize == 10);

constexpr int kOldestRecordVersion = 2;
constexpr int kNewestRecordVersion = 3;

// The EEPROMs, by the module that each one describes.
constexpr int kEepromF = 16;
constexpr int kEepromD = 17;
constexpr int kEepromM = 18; ///< The main board; the only one with an article number.
constexpr int kEepromI = 19;
constexpr int kEepromA = 20;

struct EepromModule
{
    int id;
    char letter;      ///< What byte 5 of its record must say.
    int deviceNumber; ///< Its decimal digits are the kernel's hexadecimal text of the I2C address.
};

constexpr std::array<EepromModule, 5> kEepromModules = {{{kEepromF, 'F', 54},
                                                         {kEepromD, 'D', 52},
                                                         {kEepromM, 'M', 53},
                                                         {kEepromI, 'I', 55},
                                                         {kEepromA, 'A', 50}}};

/// The module with that EEPROM identifier; null for every number outside 16..20.
constexpr const EepromModule* findEepromModule(int eepromId)
{
    for (const EepromModule& module : kEepromModules)
    {
        if (module.id == eepromId)
        {
            return &module;
        }
    }
    return nullptr;
}

static_assert(findEepromModule(kEepromF - 1) == nullptr);
static_assert(findEepromModule(kEepromA + 1) == nullptr);
static_assert(findEepromModule(kEepromM)->letter == 'M');

// How the kernel and udev name them.
constexpr char kEepromSubsystem[] = "i2c";
constexpr char kEepromDriver[] = "at24";
constexpr char kEepromFile[] = "/eeprom";      ///< Below the syspath of the device.
constexpr char kUdevMonitorSource[] = "udev";  ///< Events after udevd's rules, not the kernel's.
constexpr char kI2cDeviceName[] = "2-00%d";    ///< On bus 2; filled with the device number.
constexpr std::size_t kI2cDeviceNameSize = 32; ///< Room for any name, terminator included.

} // namespace orvo
