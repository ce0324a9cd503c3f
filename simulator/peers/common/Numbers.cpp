#include "common/Numbers.h"

#include <charconv>
#include <system_error>

namespace orvo::simulator
{

std::optional<int> parseMilliseconds(const std::string& text)
{
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value < 0)
    {
        return std::nullopt;
    }
    return value;
}

} // namespace orvo::simulator
