#include "EscapeTable.h"

#include <cctype>
#include <cstring>
#include <langinfo.h>

namespace orvo::Logger
{

namespace
{

constexpr std::size_t kBlock = 8;

} // namespace

void EscapeTable::followLocale()
{
    // Not thread-safe only towards setlocale, which a program calls before it has threads.
    const char* const locale = nl_langinfo(CODESET); // NOLINT(concurrency-mt-unsafe)
    if (locale != m_locale)
    {
        make();
        m_locale = locale;
    }
}

void EscapeTable::make()
{
    for (std::size_t byte = 0; byte < m_escapes.size(); ++byte)
    {
        // Also for line ends and tabs: a record never spans lines.
        m_escapes[byte] = std::isprint(static_cast<int>(byte)) == 0 ? '#' : '\0';
    }
    for (const char byte : {'"', '/', '\\'})
    {
        char& escape = m_escapes[static_cast<unsigned char>(byte)];
        escape = escape == '#' ? '#' : '\\';
    }
}

char* EscapeTable::escape(std::string_view text, char* out) const
{
    const auto escapeOf = [this](char byte)
    {
        return m_escapes[static_cast<unsigned char>(byte)];
    };
    const char* in = text.data();
    const char* const end = in + text.size();
    while (in != end)
    {
        // Most messages are long runs of bytes that are copied.
        while (static_cast<std::size_t>(end - in) >= kBlock &&
               (escapeOf(in[0]) | escapeOf(in[1]) | escapeOf(in[2]) | escapeOf(in[3]) |
                escapeOf(in[4]) | escapeOf(in[5]) | escapeOf(in[6]) | escapeOf(in[7])) == 0)
        {
            std::memcpy(out, in, kBlock);
            in += kBlock;
            out += kBlock;
        }
        const char* const blockEnd =
            static_cast<std::size_t>(end - in) < kBlock ? end : in + kBlock;
        for (; in != blockEnd; ++in)
        {
            const char escape = escapeOf(*in);
            if (escape == '\\')
            {
                *out++ = escape;
            }
            *out++ = escape == '#' ? escape : *in;
        }
    }
    return out;
}

} // namespace orvo::Logger
