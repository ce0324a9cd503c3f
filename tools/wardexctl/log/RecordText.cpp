#include "log/RecordText.h"

#include "output/Json.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kTimeWidth = 12;
constexpr std::size_t kAgeWidth = 5;
constexpr std::size_t kLevelWidth = 5;

std::string behind(const std::string& text, std::size_t width)
{
    return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

/// The clock began anew since: a record can not come from the future.
bool isOfThisLife(const ReadRecord& record, const DeviceClock& clock)
{
    constexpr double kSlack = 1.0;
    return record.time >= 0 && clock.age(record.seconds()) > -kSlack;
}

} // namespace

std::string ageText(double seconds)
{
    struct Unit
    {
        std::int64_t seconds;
        const char* name;
    };
    constexpr std::array<Unit, 4> kUnits = {{{86400, " d"}, {3600, " h"}, {60, " m"}, {1, " s"}}};
    constexpr std::int64_t kEnough = 2;
    const auto whole = static_cast<std::int64_t>(std::max(seconds, 0.0));
    for (const Unit& unit : kUnits)
    {
        if (whole >= kEnough * unit.seconds || unit.seconds == 1)
        {
            return std::to_string(whole / unit.seconds) + unit.name;
        }
    }
    return "";
}

Tone toneOfLevel(const std::string& level)
{
    if (level == "WARN")
    {
        return Tone::Warning;
    }
    if (level == "INFO")
    {
        return Tone::Plain;
    }
    return level == "DEBUG" || level == "DIAG" || level == "TRACE" ? Tone::Faint : Tone::Bad;
}

std::string recordText(const Output& output, const ReadRecord& record, const DeviceClock& clock)
{
    if (!record.isRecord)
    {
        return std::string(kTimeWidth + 1 + kAgeWidth, ' ') + " ?     " + record.message;
    }
    const bool isTimed = isOfThisLife(record, clock);
    const std::string time = isTimed ? clock.timeText(record.seconds()) : "before start";
    const std::string age = isTimed ? ageText(clock.age(record.seconds())) : "";
    const Tone tone = toneOfLevel(record.level);
    return output.tone(Tone::Faint, time + " " + behind(age, kAgeWidth)) + " " +
           output.tone(tone, padded(record.level, kLevelWidth)) + " " + record.source + "[" +
           record.pid + "] " + output.tone(tone, record.message) +
           (record.isCut ? output.tone(Tone::Warning, " [cut]") : "");
}

std::string shortRecordText(const ReadRecord& record, const DeviceClock& clock)
{
    if (!record.isRecord)
    {
        return std::string(kTimeWidth, ' ') + " ?     " + record.message;
    }
    const std::string time =
        isOfThisLife(record, clock) ? clock.timeText(record.seconds()) : "before start";
    return time + " " + padded(record.level, kLevelWidth) + " " + record.source + " " +
           record.message + (record.isCut ? " [cut]" : "");
}

QJsonObject recordJson(const ReadRecord& record, const DeviceClock& clock)
{
    if (!record.isRecord)
    {
        return {{"record", false}, {"message", jsonText(record.message)}};
    }
    const bool isTimed = isOfThisLife(record, clock);
    return {{"record", true},
            {"time", isTimed ? jsonText(clock.isoText(record.seconds())) : QJsonValue()},
            {"age", isTimed ? QJsonValue(clock.age(record.seconds())) : QJsonValue()},
            {"monotonic", record.seconds()},
            {"pid", jsonText(record.pid)},
            {"level", jsonText(record.level)},
            {"source", jsonText(record.source)},
            {"message", jsonText(record.message)},
            {"cut", record.isCut}};
}

} // namespace orvo::ctl
