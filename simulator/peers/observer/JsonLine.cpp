#include "observer/JsonLine.h"

#include "common/MonotonicTime.h"
#include "observer/Utf8.h"

#include <array>
#include <cstdio>

namespace orvo::simulator
{

namespace
{
constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7f;
constexpr unsigned char kFirstBeyondAscii = 0x80;
constexpr unsigned kLoneSurrogates = 0xdc00;

std::string unicodeEscape(unsigned codeUnit)
{
    std::array<char, sizeof "\\u0000"> text{};
    std::snprintf(text.data(), text.size(), "\\u%04x", codeUnit & 0xffffU);
    return text.data();
}

std::string asciiText(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    if (byte < kFirstPrintable || byte == kDelete)
    {
        return unicodeEscape(byte);
    }
    if (character == '"' || character == '\\')
    {
        return std::string("\\") + character;
    }
    return std::string(1, character);
}
} // namespace

std::string jsonText(const std::string& bytes)
{
    std::string text = "\"";
    for (std::size_t offset = 0; offset < bytes.size();)
    {
        const auto byte = static_cast<unsigned char>(bytes[offset]);
        const std::size_t length = utf8Length(bytes, offset);
        if (byte < kFirstBeyondAscii)
        {
            text += asciiText(bytes[offset++]);
        }
        else if (length == 0)
        {
            text += unicodeEscape(kLoneSurrogates + byte);
            ++offset;
        }
        else
        {
            text.append(bytes, offset, length);
            offset += length;
        }
    }
    return text + "\"";
}

JsonLine::JsonLine(const std::string& event) : m_members("{\"t\":" + monotonicSeconds())
{
    text("event", event);
}

JsonLine& JsonLine::text(const std::string& key, const std::string& value)
{
    return member(key, jsonText(value));
}

JsonLine& JsonLine::flag(const std::string& key, bool value)
{
    return member(key, value ? "true" : "false");
}

JsonLine& JsonLine::texts(const std::string& key, const std::map<std::string, std::string>& values)
{
    std::string object;
    for (const auto& [name, value] : values)
    {
        object += (object.empty() ? "" : ",") + jsonText(name) + ":" + jsonText(value);
    }
    return member(key, "{" + object + "}");
}

JsonLine& JsonLine::member(const std::string& key, const std::string& json)
{
    m_members += "," + jsonText(key) + ":" + json;
    return *this;
}

} // namespace orvo::simulator
