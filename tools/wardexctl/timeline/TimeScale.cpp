#include "timeline/TimeScale.h"

#include "model/Periods.h"

#include <QDateTime>

#include <array>
#include <cmath>
#include <cstdint>

namespace orvo::ctl
{

namespace
{

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

std::string ageLabel(std::int64_t age, std::int64_t step)
{
    struct Unit
    {
        std::int64_t seconds;
        const char* name;
    };
    constexpr std::array<Unit, 3> kUnits = {{{kDay, " d"}, {kHour, " h"}, {kMinute, " min"}}};
    if (age == 0)
    {
        return "now";
    }
    for (const Unit& unit : kUnits)
    {
        if (step % unit.seconds == 0)
        {
            return std::to_string(age / unit.seconds) + unit.name;
        }
    }
    return std::to_string(age) + " s";
}

} // namespace

double roundStep(double span, int mostParts)
{
    constexpr std::array<std::int64_t, 21> kSteps = {
        1,        2,           5,           10,           15,           30,
        kMinute,  2 * kMinute, 5 * kMinute, 10 * kMinute, 15 * kMinute, 30 * kMinute,
        kHour,    2 * kHour,   3 * kHour,   6 * kHour,    12 * kHour,   kDay,
        2 * kDay, 7 * kDay,    28 * kDay};
    for (const std::int64_t step : kSteps)
    {
        if (span <= static_cast<double>(step * mostParts))
        {
            return static_cast<double>(step);
        }
    }
    return static_cast<double>(kSteps.back()) *
           std::ceil(span / static_cast<double>(kSteps.back() * mostParts));
}

std::vector<Tick> wallTicks(double begin, double end, const DeviceClock& clock, int mostParts)
{
    const double step = roundStep(end - begin, mostParts);
    const auto stepMs = static_cast<std::int64_t>(step) * kMsPerSecond;
    const QString format = step >= kDay         ? QStringLiteral("MM-dd")
                           : end - begin > kDay ? QStringLiteral("MM-dd HH:mm")
                           : step >= kMinute    ? QStringLiteral("HH:mm")
                                                : QStringLiteral("HH:mm:ss");
    // Round in local time.
    const std::int64_t endMs = clock.wallMsOf(end);
    const std::int64_t offsetMs =
        static_cast<std::int64_t>(QDateTime::fromMSecsSinceEpoch(endMs).offsetFromUtc()) *
        kMsPerSecond;
    const std::int64_t beginMs = clock.wallMsOf(begin);
    std::vector<Tick> ticks;
    for (std::int64_t wall = ((beginMs + offsetMs + stepMs - 1) / stepMs) * stepMs - offsetMs;
         wall <= endMs; wall += stepMs)
    {
        const double time = end - static_cast<double>(endMs - wall) / kMsPerSecond;
        ticks.push_back(
            {time, QDateTime::fromMSecsSinceEpoch(wall).toString(format).toStdString()});
    }
    return ticks;
}

std::vector<Tick> ageTicks(double begin, double end, int mostParts)
{
    const auto step = static_cast<std::int64_t>(roundStep(end - begin, mostParts));
    std::vector<Tick> ticks;
    for (std::int64_t age = 0; end - static_cast<double>(age) >= begin; age += step)
    {
        ticks.push_back({end - static_cast<double>(age), ageLabel(age, step)});
    }
    return ticks;
}

} // namespace orvo::ctl
