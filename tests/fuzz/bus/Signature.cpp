#include "bus/Signature.h"

namespace orvo::fuzz
{

namespace
{

constexpr std::string_view kBasicTypes = "ybnqiuxtdsog";
constexpr int kDepth = 12;
constexpr std::size_t kLongest = 255;

/// The length of the complete type that stands first; 0 when there is none.
std::size_t firstType(std::string_view text, int depth);

std::size_t structure(std::string_view text, int depth)
{
    std::size_t at = 1;
    while (at < text.size() && text[at] != ')')
    {
        const std::size_t member = firstType(text.substr(at), depth + 1);
        if (member == 0)
        {
            return 0;
        }
        at += member;
    }
    return at > 1 && at < text.size() ? at + 1 : 0;
}

/// Key and value in braces, which stand in an array only.
std::size_t dictionaryEntry(std::string_view text, int depth)
{
    if (text.size() < 4 || kBasicTypes.find(text[1]) == std::string_view::npos)
    {
        return 0;
    }
    const std::size_t value = firstType(text.substr(2), depth + 1);
    return value > 0 && 2 + value < text.size() && text[2 + value] == '}' ? value + 3 : 0;
}

std::size_t firstType(std::string_view text, int depth)
{
    if (text.empty() || depth > kDepth)
    {
        return 0;
    }
    if (text.front() == 'v' || kBasicTypes.find(text.front()) != std::string_view::npos)
    {
        return 1;
    }
    if (text.front() == '(')
    {
        return structure(text, depth);
    }
    if (text.front() != 'a')
    {
        return 0;
    }
    const std::string_view element = text.substr(1);
    const std::size_t length = !element.empty() && element.front() == '{'
                                   ? dictionaryEntry(element, depth + 1)
                                   : firstType(element, depth + 1);
    return length > 0 ? length + 1 : 0;
}

} // namespace

std::optional<std::vector<std::string>> typesOf(std::string_view signature)
{
    std::vector<std::string> types;
    if (signature.size() > kLongest)
    {
        return std::nullopt;
    }
    while (!signature.empty())
    {
        const std::size_t length = firstType(signature, 0);
        if (length == 0)
        {
            return std::nullopt;
        }
        types.emplace_back(signature.substr(0, length));
        signature.remove_prefix(length);
    }
    return types;
}

} // namespace orvo::fuzz
