#include "log/LogConfig.h"

#include "log-reading/RedisLink.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"
#include "model/SupervisorEvent.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdlib>
#include <limits>
#include <set>
#include <stdexcept>

namespace orvo::ctl
{

namespace
{

constexpr char kAnnouncement[] = "Applying new log configuration: mask(0x";

std::optional<std::uint32_t> announced(const ReadRecord& record)
{
    constexpr int kHexadecimal = 16;
    const std::string start = kAnnouncement;
    if (record.message.compare(0, start.size(), start) != 0)
    {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(
        std::strtoul(record.message.c_str() + start.size(), nullptr, kHexadecimal));
}

/// As a logger reads it: one that no 32-bit word holds is ignored like a text.
std::optional<std::uint32_t> asMask(const QJsonValue& value)
{
    constexpr double kLowest = std::numeric_limits<std::int32_t>::lowest();
    constexpr double kHighest = std::numeric_limits<std::uint32_t>::max();
    const double number = value.toDouble();
    if (!value.isDouble() || !(number > kLowest - 1 && number < kHighest + 1))
    {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(number));
}

QString asText(const char* text)
{
    return QString::fromLatin1(text);
}

/// A text as it stands between the quotes of a JSON string.
std::string jsonEscaped(const QString& text)
{
    // Half a surrogate would make the whole text no JSON to the loggers.
    const QString wellFormed = QString::fromUtf8(text.toUtf8());
    const QByteArray array =
        QJsonDocument(QJsonArray{wellFormed}).toJson(QJsonDocument::Compact); // ["text"]
    constexpr int kAround = 2;
    return array.mid(kAround, array.size() - 2 * kAround).toStdString();
}

} // namespace

LogConfig::LogConfig(const std::vector<ReadRecord>& records) : m_records(records) {}

SourceMask LogConfig::maskOf(const std::string& source) const
{
    std::string pid;
    for (auto record = m_records.rbegin(); record != m_records.rend(); ++record)
    {
        if (!record->isRecord || record->source != source || (!pid.empty() && record->pid != pid))
        {
            continue;
        }
        pid = record->pid;
        if (const auto mask = announced(*record))
        {
            return {source, *mask, "announced"};
        }
    }
    for (const std::string& field : {source, std::string(Logger::kCommonSource)})
    {
        if (const auto mask = asMask(stored(field).value(asText("mask"))))
        {
            return {source, *mask, "stored"};
        }
    }
    return {source, Logger::kDefaultMask, "default"};
}

std::vector<SourceMask> LogConfig::all() const
{
    std::set<std::string> sources{kSupervisorSource};
    for (const ReadRecord& record : m_records)
    {
        if (record.isRecord)
        {
            sources.insert(record.source);
        }
    }
    std::vector<SourceMask> masks;
    masks.reserve(sources.size());
    for (const std::string& source : sources)
    {
        masks.push_back(maskOf(source));
    }
    return masks;
}

QJsonObject LogConfig::stored(const std::string& source)
{
    RedisLink store(Logger::kConfigSocket);
    const std::string text =
        store.command({"HGET", Logger::kConfigHash, source}).value_or(std::string());
    return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

std::optional<int> LogConfig::publish(const std::string& source, std::uint32_t mask)
{
    const QJsonObject configuration{{"source", QString::fromStdString(source)},
                                    {"mask", static_cast<int>(mask)}};
    RedisLink cache(Logger::kLogSocket);
    const auto listeners =
        cache.command({"PUBLISH", Logger::kConfigChannel,
                       QJsonDocument(configuration).toJson(QJsonDocument::Compact).toStdString()});
    if (!listeners)
    {
        return std::nullopt;
    }
    constexpr int kDecimal = 10;
    return static_cast<int>(std::strtol(listeners->c_str(), nullptr, kDecimal));
}

bool LogConfig::save(const std::string& source, std::uint32_t mask)
{
    const QJsonObject before = stored(source);
    RedisLink store(Logger::kConfigSocket);
    if (!store.answers())
    {
        return false;
    }
    try
    {
        // Kept: the end of a program's last logger takes a second.
        static auto* const kLogger =
            new Logger::RedisLogger("wardexctl", Logger::kConfigSocket, Logger::kLogList, false);
        // Its answer tells nothing: the server answers with a number, it waits for a text.
        (void)kLogger->saveConfig(jsonEscaped(QString::fromStdString(source)),
                                  static_cast<int>(mask), before.value(asText("max")).toInt(),
                                  jsonEscaped(before.value(asText("segvregex")).toString()));
    }
    catch (const std::runtime_error&)
    {
        return false;
    }
    return stored(source).value(asText("mask")).toInt(-1) == static_cast<int>(mask);
}

} // namespace orvo::ctl
