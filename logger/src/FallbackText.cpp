#include "FallbackText.h"

namespace orvo::Logger
{

std::string asFormatted(const char* text)
{
    std::string result;
    for (; *text != '\0'; ++text)
    {
        if (text[0] == '%' && text[1] == '%')
        {
            ++text;
        }
        result += *text;
    }
    return result;
}

} // namespace orvo::Logger
