#pragma once

#include <map>
#include <string>

namespace orvo::simulator
{

/// The bytes as a JSON string with its quotes. Nothing is lost: control characters are escaped, and
/// a byte 0xNN that is not part of valid UTF-8 becomes the lone surrogate \udcNN, which Python's
/// json module followed by encode("utf-8", "surrogateescape") turns back into the byte.
std::string jsonText(const std::string& bytes);

/// One event as a line of JSON, beginning with its time: {"t":12.345678,"event":"name",...}.
///
/// Units: "t" is seconds of the monotonic clock at construction.
class JsonLine
{
public:
    explicit JsonLine(const std::string& event);

    JsonLine& text(const std::string& key, const std::string& value);
    JsonLine& flag(const std::string& key, bool value);
    JsonLine& texts(const std::string& key, const std::map<std::string, std::string>& values);

    /// Without a line feed.
    [[nodiscard]] std::string str() const { return m_members + "}"; }

private:
    JsonLine& member(const std::string& key, const std::string& json);

    std::string m_members;
};

} // namespace orvo::simulator
