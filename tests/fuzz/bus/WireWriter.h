#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvo::fuzz
{

/// Puts values into the wire form of D-Bus, lowest byte first, each at its own alignment.
class WireWriter
{
public:
    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }

    void align(std::size_t boundary)
    {
        m_bytes.resize((m_bytes.size() + boundary - 1) / boundary * boundary);
    }

    /// A number that is as wide as its alignment.
    void number(std::uint64_t value, std::size_t width)
    {
        align(width);
        m_bytes.resize(m_bytes.size() + width);
        replace(m_bytes.size() - width, value, width);
    }
    void replace(std::size_t at, std::uint64_t value, std::size_t width)
    {
        for (std::size_t byte = 0; byte < width; ++byte)
        {
            m_bytes[at + byte] = static_cast<char>(value >> (8 * byte));
        }
    }

    void text(std::string_view value)
    {
        number(value.size(), 4);
        m_bytes.append(value).push_back('\0');
    }
    void signature(std::string_view value)
    {
        number(value.size(), 1);
        m_bytes.append(value).push_back('\0');
    }
    void append(std::string_view bytes) { m_bytes.append(bytes); }

private:
    std::string m_bytes;
};

} // namespace orvo::fuzz
