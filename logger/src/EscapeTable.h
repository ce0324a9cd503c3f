#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace orvo::Logger
{

/// How each byte of a message appears in a record, under the locale of the calling thread.
///
/// Threads: one at a time.
class EscapeTable
{
public:
    /// Makes the table anew when the locale has changed since the last call.
    void followLocale();

    /// Escapes all bytes of a text; there must be room for twice as many. Answers the end.
    char* escape(std::string_view text, char* out) const;

private:
    void make();

    /// 0: copied; '\\': a backslash before it; '#': a hash in its place.
    std::array<char, 256> m_escapes{};
    /// Name of the locale's character set; its address tells one locale from another.
    const char* m_locale{nullptr};
};

} // namespace orvo::Logger
