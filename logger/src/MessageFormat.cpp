#include "MessageFormat.h"

#include "BoundedText.h"

#include <algorithm>

#include <cstdio>
#include <cstring>

namespace orvo::Logger
{

namespace
{

/// Takes the arguments of a format up to its end; false when it has a conversion other than "%s"
/// and "%d", or a text that is not there.
[[gnu::format(printf, 2, 0)]] bool formatPlain(BoundedText& text, const char* format,
                                               va_list arguments)
{
    while (const char* const percent = std::strchr(format, '%'))
    {
        text.append(std::string_view(format, static_cast<std::size_t>(percent - format)));
        const char conversion = percent[1];
        if (conversion == 's')
        {
            const char* const argument = va_arg(arguments, const char*);
            if (argument == nullptr)
            {
                return false;
            }
            text.append(std::string_view(argument));
        }
        else if (conversion == 'd')
        {
            text.append(Decimal(va_arg(arguments, int)));
        }
        else
        {
            return false;
        }
        format = percent + 2;
    }
    text.append(std::string_view(format));
    return true;
}

} // namespace

std::size_t formatMessage(char (&message)[kMessageCapacity], const char* format, va_list arguments)
{
    BoundedText text(message, sizeof message);
    va_list plainArguments;
    va_copy(plainArguments, arguments);
    const bool isPlain = formatPlain(text, format, plainArguments);
    va_end(plainArguments);
    if (isPlain)
    {
        return text.finish();
    }
    message[0] = '\0';
    const int length = std::vsnprintf(message, sizeof message, format, arguments);
    return std::min(static_cast<std::size_t>(std::max(length, 0)), sizeof message - 1);
}

} // namespace orvo::Logger
