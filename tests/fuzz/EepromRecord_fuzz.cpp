// The content of an EEPROM file, as the device's kernel would hand it over: of any length and with
// anything in it. All five EEPROMs of the device hold it at once.

#include "FuzzTarget.h"

#include "Claim.h"
#include "FakeUdev.h"

#include "identification/CapabilityTables.h"
#include "identification/EepromCapabilities.h"
#include "identification/EepromReader.h"
#include "identification/EepromRecord.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace
{

using orvo::fuzz::claim;

constexpr std::size_t kRecordSize = 128;
constexpr int kFirstId = 16;
constexpr char kLetters[] = "FDMIA";
constexpr orvo::MFCapability_t kBeyondTheTables = 15;

/// The checksum bit by bit, as the maker's sheet has it.
std::uint8_t checksum(const std::uint8_t* data, std::size_t size)
{
    unsigned int rest = 0xff;
    for (std::size_t at = 0; at < size; ++at)
    {
        rest ^= data[at];
        for (int bit = 0; bit < 8; ++bit)
        {
            rest = (rest & 0x80U) != 0 ? (rest << 1U) ^ 0x97U : rest << 1U;
        }
        rest &= 0xffU;
    }
    return static_cast<std::uint8_t>(rest);
}

bool isRecordOf(char letter, const std::uint8_t* data, std::size_t size)
{
    if (size < kRecordSize || data[0] != '#' || data[1] != '!' ||
        data[5] != static_cast<std::uint8_t>(letter))
    {
        return false;
    }
    const int version = ((data[2] - '0') * 10 + (data[3] - '0')) & 0xff;
    return (version == 2 || version == 3) &&
           checksum(data, kRecordSize - 1) == data[kRecordSize - 1];
}

/// The folder of a device that is found under each of the five names.
const std::filesystem::path& device()
{
    static const std::filesystem::path kPath = std::filesystem::temp_directory_path() /
                                               ("wardex-" + std::to_string(getpid())) /
                                               "2-0054 2-0052 2-0053 2-0055 2-0050";
    return kPath;
}

bool isModuleFor(orvo::MFCapability_t capability, const std::uint8_t* data, std::size_t size)
{
    const auto element = orvo::kCapabilityElements.find(capability);
    if (element == orvo::kCapabilityElements.end())
    {
        return true;
    }
    if (!isRecordOf(kLetters[element->second.eepromId - kFirstId], data, size))
    {
        return false;
    }
    const auto& codes = element->second.typeCodes;
    const std::string code(data + 6, data + 9);
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

bool isArticleFor(orvo::MFCapability_t capability, const std::uint8_t* data, std::size_t size)
{
    const auto articles = orvo::kCapabilityArticles.find(capability);
    if (articles == orvo::kCapabilityArticles.end())
    {
        return true;
    }
    // A number with a zero byte in it is as long as a C text would be.
    const auto& numbers = articles->second;
    return isRecordOf('M', data, size) &&
           std::find(numbers.begin(), numbers.end(),
                     std::string(std::string(data + 98, data + 104).c_str())) != numbers.end();
}

void judgeRecord(const std::uint8_t* data)
{
    orvo::EepromRecord record{};
    std::copy_n(data, kRecordSize, record.begin());
    claim(orvo::eepromTypeCode(record) == std::string(data + 6, data + 9), "type code as it is");
    for (int id = kFirstId - 1; id <= kFirstId + 5; ++id)
    {
        const bool isKnown = id >= kFirstId && id < kFirstId + 5;
        claim(orvo::isValidEepromRecord(id, record) ==
                  (isKnown && isRecordOf(kLetters[id - kFirstId], data, kRecordSize)),
              "valid when header, letter and checksum are");
    }
    orvo::ArticleText text{};
    claim(orvo::extractArticleNumber(orvo::kEepromM, record, text) ==
              isRecordOf('M', data, kRecordSize),
          "an article of the main board only");
    claim(std::memcmp(text.data(), data + 98, 6) == 0 && text[6] == '\0' && text[9] == '\0',
          "the article number as it is, terminated");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    std::filesystem::create_directories(device());
    // Tidied up also after a crash, since nothing is in it but the last input.
    std::atexit([] { std::filesystem::remove_all(device().parent_path()); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static orvo::test::FakeUdev udev;
    udev.devices = {{device(), "at24"}};
    udev.calls.clear();
    std::ofstream(device() / "eeprom", std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    std::array<std::uint8_t, kRecordSize> buffer{};
    claim(orvo::readEeprom(kFirstId, buffer.data(), buffer.size()) == (size >= kRecordSize),
          "a record is 128 bytes");
    if (size >= kRecordSize)
    {
        claim(std::equal(buffer.begin(), buffer.end(), data), "read as it is stored");
        judgeRecord(data);
    }
    for (orvo::MFCapability_t capability = 0; capability <= kBeyondTheTables; ++capability)
    {
        claim(orvo::hasCapability(capability) ==
                  (isModuleFor(capability, data, size) && isArticleFor(capability, data, size)),
              "a capability is what a sound record tells");
    }
    claim(udev.openHandles == 0, "nothing of udev stays open");
    return 0;
}

/// Every other input gets the checksum that fits it: by chance hardly one would.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t capacity, unsigned int seed)
{
    const std::size_t changed = LLVMFuzzerMutate(data, size, capacity);
    if (changed >= kRecordSize && seed % 2 == 0)
    {
        data[kRecordSize - 1] = checksum(data, kRecordSize - 1);
    }
    return changed;
}
