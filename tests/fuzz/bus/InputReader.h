#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvo::fuzz
{

/// Takes an input apart from its beginning; behind its end there are zero bytes, so that any input
/// is long enough.
class InputReader
{
public:
    InputReader(const std::uint8_t* data, std::size_t size)
        : m_input(reinterpret_cast<const char*>(data), size)
    {
    }
    explicit InputReader(std::string_view input) : m_input(input) {}

    /// Up to the next line end, which is taken, too.
    std::string line()
    {
        const std::size_t end = std::min(m_input.find('\n'), m_input.size());
        std::string text(m_input.substr(0, end));
        m_input.remove_prefix(std::min(end + 1, m_input.size()));
        return text;
    }

    /// Up to the next blank of this line.
    static std::string word(std::string& line)
    {
        const std::size_t end = std::min(line.find(' '), line.size());
        std::string text = line.substr(0, end);
        line.erase(0, end + 1);
        return text;
    }

    std::uint8_t byte()
    {
        if (m_input.empty())
        {
            return 0;
        }
        const auto value = static_cast<std::uint8_t>(m_input.front());
        m_input.remove_prefix(1);
        return value;
    }

    std::string bytes(std::size_t count)
    {
        std::string text(m_input.substr(0, count));
        m_input.remove_prefix(text.size());
        return text;
    }

    /// The lowest byte first.
    std::uint64_t number(std::size_t size)
    {
        std::uint64_t value = 0;
        for (std::size_t at = 0; at < size; ++at)
        {
            value |= std::uint64_t{byte()} << (8 * at);
        }
        return value;
    }

private:
    std::string_view m_input;
};

} // namespace orvo::fuzz
