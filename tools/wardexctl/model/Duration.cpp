#include "model/Duration.h"

#include "model/Periods.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <utility>

namespace orvo::ctl
{

namespace
{

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

std::optional<std::int64_t> unitMs(const std::string& unit)
{
    constexpr std::array<std::pair<const char*, std::int64_t>, 6> kUnits = {
        {{"ms", 1},
         {"", kMsPerSecond},
         {"s", kMsPerSecond},
         {"m", kMinute * kMsPerSecond},
         {"h", kHour * kMsPerSecond},
         {"d", kDay * kMsPerSecond}}};
    const auto* const found = std::find_if(kUnits.begin(), kUnits.end(),
                                           [&](const auto& each) { return unit == each.first; });
    return found == kUnits.end() ? std::nullopt : std::optional(found->second);
}

std::string pair(std::int64_t large, const char* largeUnit, std::int64_t small,
                 const char* smallUnit)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%lld %s %02lld %s", static_cast<long long>(large),
                  largeUnit, static_cast<long long>(small), smallUnit);
    return text.data();
}

} // namespace

std::optional<std::chrono::milliseconds> durationOf(const std::string& text)
{
    constexpr std::size_t kMostDigits = 10;
    const std::size_t digits = text.find_first_not_of("0123456789");
    const std::string number = text.substr(0, digits);
    const auto unit = unitMs(digits == std::string::npos ? "" : text.substr(digits));
    if (number.empty() || number.size() > kMostDigits || !unit)
    {
        return std::nullopt;
    }
    const std::int64_t count = std::stoll(number) * *unit;
    if (count > std::numeric_limits<std::int32_t>::max())
    {
        return std::nullopt;
    }
    return std::chrono::milliseconds(count);
}

std::string durationText(double seconds)
{
    constexpr double kTenthsBelow = 9.95;
    seconds = std::max(seconds, 0.0);
    if (seconds < kTenthsBelow)
    {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.1f s", seconds);
        return text.data();
    }
    const std::int64_t whole = std::llround(seconds);
    if (whole < kMinute)
    {
        return std::to_string(whole) + " s";
    }
    if (whole < kHour)
    {
        return pair(whole / kMinute, "min", whole % kMinute, "s");
    }
    if (whole < kDay)
    {
        return pair(whole / kHour, "h", whole % kHour / kMinute, "min");
    }
    return pair(whole / kDay, "d", whole % kDay / kHour, "h");
}

} // namespace orvo::ctl
