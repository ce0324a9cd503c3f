#pragma once

#include "Decimal.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include <cstring>

namespace orvo::Logger
{

/// Appends texts to a buffer as long as it has room, and keeps room for a terminator.
///
/// Borrows: the buffer.
class BoundedText
{
public:
    BoundedText(char* buffer, std::size_t capacity)
        : m_buffer(buffer), m_at(buffer), m_end(buffer + capacity - 1)
    {
    }

    void append(std::string_view text)
    {
        const std::size_t length = std::min(text.size(), room());
        std::memcpy(m_at, text.data(), length);
        m_at += length;
        m_isCut = m_isCut || length < text.size();
    }
    template <std::size_t size>
    void append(const char (&text)[size])
    {
        if (room() < size - 1)
        {
            append(std::string_view(text, size - 1));
            return;
        }
        // Of a known length, which makes it a few moves.
        std::memcpy(m_at, text, size - 1);
        m_at += size - 1;
    }
    void append(const Decimal& number) { append(number.text()); }

    /// Terminates the text; answers its length without the terminator.
    std::size_t finish()
    {
        *m_at = '\0';
        return static_cast<std::size_t>(m_at - m_buffer);
    }
    /// Whether some text had no room.
    [[nodiscard]] bool isCut() const { return m_isCut; }

private:
    [[nodiscard]] std::size_t room() const { return static_cast<std::size_t>(m_end - m_at); }

    char* const m_buffer;
    char* m_at;
    char* const m_end; // where the terminator of a full text stands
    bool m_isCut{false};
};

} // namespace orvo::Logger
