#include "LogConfiguration.h"

#include "RedisHandles.h"

#include <limits>
#include <optional>

#include <cstring>

namespace orvo::Logger
{

namespace
{

/// What a configuration text says, before it is known whether it is for us.
struct Reading
{
    bool isForUs{false};
    std::optional<double> pid;
    LogSettings settings;
};

template <typename Integer>
constexpr double kLowest = static_cast<double>(std::numeric_limits<Integer>::lowest());
template <typename Integer>
constexpr double kHighest = static_cast<double>(std::numeric_limits<Integer>::max());

/// The negated comparison also catches what is not a number.
bool isWithin(double value, double low, double high)
{
    return value > low - 1.0 && value < high + 1.0;
}

void readNumber(const char* key, double value, Reading& reading)
{
    if (std::strcmp(key, "pid") == 0)
    {
        reading.pid = value;
    }
    else if (std::strcmp(key, "max") == 0 &&
             isWithin(value, kLowest<std::int32_t>, kHighest<std::int32_t>))
    {
        reading.settings.maxEntries = static_cast<std::int32_t>(value);
    }
    else if (std::strcmp(key, "mask") == 0 &&
             isWithin(value, kLowest<std::int32_t>, kHighest<std::uint32_t>))
    {
        reading.settings.mask = static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
    }
}

void readString(const char* key, const char* value, const std::string& source, Reading& reading)
{
    if (std::strcmp(key, "source") == 0)
    {
        reading.isForUs =
            reading.isForUs || source == value || std::strcmp(value, kCommonSource) == 0;
    }
    else if (std::strcmp(key, "segvregex") == 0)
    {
        reading.settings.segvRegex = value;
    }
}

} // namespace

ConfigVerdict readConfiguration(const char* text, const std::string& source, int pid,
                                LogSettings& settings)
{
    constexpr cJSON_bool kNothingMayFollow = 1;
    const Json json(cJSON_ParseWithOpts(text, nullptr, kNothingMayFollow));
    if (json == nullptr)
    {
        return ConfigVerdict::NotJson;
    }
    // The elements of an array have no name to be read by.
    if (cJSON_IsObject(json.get()) == 0)
    {
        return ConfigVerdict::Ignored;
    }

    Reading reading;
    reading.settings = settings;
    const cJSON* member = nullptr;
    cJSON_ArrayForEach(member, json.get())
    {
        if (cJSON_IsNumber(member) != 0)
        {
            readNumber(member->string, member->valuedouble, reading);
        }
        else if (cJSON_IsString(member) != 0)
        {
            readString(member->string, member->valuestring, source, reading);
        }
    }
    if (!reading.isForUs || (reading.pid && *reading.pid != static_cast<double>(pid)))
    {
        return ConfigVerdict::Ignored;
    }
    settings = std::move(reading.settings);
    return ConfigVerdict::Taken;
}

std::string configurationText(const std::string& source, int mask, int maxEntries,
                              const std::string& pattern)
{
    std::string text = "{\n\"source\" : \"" + source + "\"\n";
    if (maxEntries > 0)
    {
        text += ",\"max\" : " + std::to_string(maxEntries) + "\n";
    }
    if (mask >= 0)
    {
        text += ",\"mask\" : " + std::to_string(mask) + "\n";
    }
    if (!pattern.empty())
    {
        text += ",\"segvregex\" : \"" + pattern + "\"\n";
    }
    return text + "}\n";
}

} // namespace orvo::Logger
