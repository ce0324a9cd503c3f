#include "Scenario.h"

#include <algorithm>
#include <array>

namespace orvo::model
{

namespace
{

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;

constexpr std::array<const char*, 12> kNames{
    "com.orvo.vistor", "com.orvo.vistor", "com.orvo.vistor", "com.orvo.vistor",
    "com.orvo.pictor", "com.orvo.pictor", "com.orvo.pictor", "com.orvo.pictor",
    "com.orvo.wirl",   "com.orvo.quorl",  "com.orvo.nobody", ""};

using Kind = Incident::Kind;
constexpr std::array<Kind, 16> kKinds{
    Kind::Appear,  Kind::Appear,  Kind::Vanish,    Kind::Vanish,    Kind::Vanish,    Kind::OneShot,
    Kind::OneShot, Kind::OneShot, Kind::StepClock, Kind::StepClock, Kind::StepClock, Kind::Start,
    Kind::Stop,    Kind::List,    Kind::Status,    Kind::Interval};

constexpr std::array<std::int64_t, 8> kOneShots{-1, 400, 999, 1000, 2200, 10'000, 30'000, 120'000};
constexpr std::array<std::int64_t, 6> kIntervals{500, 900, 1000, 1000, 2200, 5000};
/// Rare, because a service that is pinged so often fills a scenario.
constexpr std::array<std::int64_t, 3> kHasty{0, 1, 50};
constexpr std::array<std::int64_t, 8> kClockSteps{1,           kSecond, 20 * kSecond, 299 * kSecond,
                                                  5 * kMinute, kHour,   kDay,         400 * kDay};

/// Mean time between two incidents.
std::int64_t calmness(Temper temper)
{
    switch (temper)
    {
    case Temper::Calm:
        return 20 * kMinute;
    case Temper::Rough:
        return 2 * kMinute;
    case Temper::Stormy:
        return 15 * kSecond;
    }
    return kHour;
}

} // namespace

Scenario::Scenario(std::uint64_t seed) : m_seed(seed), m_dice(seed * 2 + 1)
{
    const std::int64_t family = m_dice.between(1, 20);
    if (family == 1)
    {
        m_setting.services = bitOf(Wirl);
    }
    else if (family <= 12)
    {
        m_setting.services = bitOf(Vistor) | bitOf(Pictor) | bitOf(Wirl) | bitOf(Quorl);
    }
    m_setting.isDeveloper = m_dice.isOneOf(6);
    m_setting.logMask = m_dice.isOneOf(6) ? 0xF0 : 0xFF;
    m_hasWatchdog = !m_dice.isOneOf(12);
    m_temper = m_dice.pick(std::array<Temper, 6>{Temper::Calm, Temper::Calm, Temper::Rough,
                                                 Temper::Rough, Temper::Rough, Temper::Stormy});
    chooseClock();
    tellNext();
}

void Scenario::chooseClock()
{
    constexpr std::int64_t kSummer = 1'591'012'800'000;       // 2020-06-01 12:00 UTC
    constexpr std::int64_t kSummerEnds = 1'603'587'600'000;   // 2020-10-25 01:00 UTC
    constexpr std::int64_t kSummerBegins = 1'585'443'600'000; // 2020-03-29 01:00 UTC
    constexpr std::int64_t kUnset = 0;                        // a device without a battery
    m_powerOn = m_dice.pick(std::array<std::int64_t, 4>{kSummer, kSummer, kUnset, kSummerBegins});
    if (m_dice.isOneOf(4))
    {
        // Power-on shortly before the hour that comes twice in Berlin, or the one that never comes.
        m_timeZone = "CET-1CEST,M3.5.0,M10.5.0/3";
        m_powerOn = m_dice.isOneOf(2) ? kSummerEnds : kSummerBegins;
        m_powerOn -= m_dice.between(0, 90) * kMinute;
    }
}

void Scenario::tellNext()
{
    m_next.moment += m_dice.between(0, 2 * calmness(m_temper));
    m_next.kind = m_dice.pick(kKinds);
    m_next.service = m_dice.pick(kNames);
    m_next.value = 0;
    if (m_next.kind == Kind::OneShot)
    {
        m_next.value = m_dice.isOneOf(20) ? m_dice.pick(kHasty) : m_dice.pick(kOneShots);
    }
    else if (m_next.kind == Kind::Interval)
    {
        m_next.value = m_dice.pick(kIntervals);
    }
    else if (m_next.kind == Kind::StepClock)
    {
        m_next.value = m_dice.pick(kClockSteps) * (m_dice.isOneOf(2) ? 1 : -1);
    }
}

std::string Scenario::describe() const
{
    std::string text = m_temper == Temper::Calm    ? "calm"
                       : m_temper == Temper::Rough ? "rough"
                                                   : "stormy";
    text += m_setting.services == bitOf(Wirl) ? ", without judged services"
            : m_setting.services == kMustBeUp ? ", two services"
                                              : ", four services";
    text += m_setting.isDeveloper ? ", a developer's" : "";
    text += m_hasWatchdog ? "" : ", without a watchdog";
    text += m_setting.logMask == 0xFF ? ", all levels" : ", usual levels";
    return text + ", " + m_timeZone;
}

} // namespace orvo::model
