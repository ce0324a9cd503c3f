#include "log/LevelMask.h"

#include "log-reading/RecordFilter.h"
#include "logger/LogDefaults.h"

#include <cctype>
#include <sstream>
#include <vector>

namespace orvo::ctl
{

namespace
{

constexpr std::uint32_t kAllLevels = 0xFF;

std::vector<std::string> wordsOf(const std::string& text)
{
    std::vector<std::string> words;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream, word, ',');)
    {
        for (char& each : word)
        {
            each = static_cast<char>(std::toupper(static_cast<unsigned char>(each)));
        }
        words.push_back(word);
    }
    return words;
}

/// One word without its sign.
std::optional<std::uint32_t> bitsOf(std::string word)
{
    if (word == "ALL")
    {
        return kAllLevels;
    }
    if (word == "NONE")
    {
        return 0;
    }
    if (word == "DEFAULT")
    {
        return Logger::kDefaultMask;
    }
    const bool withMoreSerious = !word.empty() && word.back() == '+';
    if (withMoreSerious)
    {
        word.pop_back();
    }
    const auto& names = levelNames();
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        if (names[index] == word)
        {
            const std::uint32_t bit = 1U << index;
            return withMoreSerious ? kAllLevels & ~(bit - 1) : bit;
        }
    }
    return std::nullopt;
}

} // namespace

std::string maskText(std::uint32_t mask)
{
    std::string text;
    const auto& names = levelNames();
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        if ((mask & (1U << index)) != 0)
        {
            text += (text.empty() ? "" : ",") + names[index];
        }
    }
    return text.empty() ? "none" : text;
}

std::optional<std::uint32_t> maskOf(const std::string& text, std::uint32_t present,
                                    std::string& complaint)
{
    const std::vector<std::string> words = wordsOf(text);
    const auto isSigned = [](const std::string& word)
    {
        return !word.empty() && (word.front() == '+' || word.front() == '-');
    };
    const bool changes = !words.empty() && isSigned(words.front());
    // A mask of -1 also has bits that are no levels, and no 31-bit number would hold it.
    std::uint32_t mask = changes ? present & kAllLevels : 0;
    complaint = words.empty() ? "no level was given" : "";
    for (const std::string& word : words)
    {
        const auto bits = bitsOf(isSigned(word) ? word.substr(1) : word);
        if (!bits || isSigned(word) != changes)
        {
            complaint = "'" + word + "' is no level here";
            break;
        }
        mask = word.front() == '-' ? mask & ~*bits : mask | *bits;
    }
    return complaint.empty() ? std::optional(mask) : std::nullopt;
}

bool isRemoval(const std::string& word)
{
    const std::vector<std::string> words = wordsOf(word);
    return !words.empty() && !words.front().empty() && words.front().front() == '-' &&
           bitsOf(words.front().substr(1)).has_value();
}

} // namespace orvo::ctl
