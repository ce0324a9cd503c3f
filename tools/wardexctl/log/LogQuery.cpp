#include "log/LogQuery.h"

#include "model/Duration.h"
#include "model/Periods.h"

#include <QDateTime>
#include <QString>

#include <algorithm>

namespace orvo::ctl
{

namespace
{

/// Seconds before now; nothing for what is neither a duration nor a time of day.
std::optional<double> secondsAgo(const std::string& text, std::int64_t wallNowMs)
{
    if (const auto duration = durationOf(text))
    {
        return static_cast<double>(duration->count()) / kMsPerSecond;
    }
    const QString word = QString::fromStdString(text);
    QTime time = QTime::fromString(word, QStringLiteral("H:m:s"));
    if (!time.isValid())
    {
        time = QTime::fromString(word, QStringLiteral("H:m"));
    }
    if (!time.isValid())
    {
        return std::nullopt;
    }
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(wallNowMs);
    QDateTime then(now.date(), time);
    if (then > now)
    {
        then = then.addDays(-1);
    }
    return static_cast<double>(then.msecsTo(now)) / kMsPerSecond;
}

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char each) {
                       return each >= 'a' && each <= 'z' ? static_cast<char>(each - 'a' + 'A')
                                                         : each;
                   });
    return text;
}

bool isAtLeast(const std::string& level, const std::string& wanted)
{
    const auto& names = levelNames();
    // A record of no known level passes any: it may be the worst.
    return std::find(names.begin(), names.end(), level) >=
           std::find(names.begin(), names.end(), wanted);
}

std::string joinedLevels()
{
    std::string names;
    for (const std::string& name : levelNames())
    {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

} // namespace

std::optional<LogQuery> LogQuery::of(const LogWords& words, double monotonicNow,
                                     std::int64_t wallNowMs, std::string& complaint)
{
    LogQuery query;
    query.m_filter.level = upper(words.level);
    query.m_filter.source = words.source;
    const auto& names = levelNames();
    if (!words.level.empty() &&
        std::find(names.begin(), names.end(), query.m_filter.level) == names.end())
    {
        complaint = "no level is called '" + words.level + "': say one of " + joinedLevels();
        return std::nullopt;
    }
    if (!words.since.empty())
    {
        const auto ago = secondsAgo(words.since, wallNowMs);
        if (!ago)
        {
            complaint = "'" + words.since + "' is no time: say 10m, 05:30 or 05:30:10";
            return std::nullopt;
        }
        query.m_filter.since = monotonicNow - *ago;
    }
    if (!words.regex.empty())
    {
        QRegularExpression regex(QString::fromStdString(words.regex));
        if (!regex.isValid())
        {
            complaint = "'" + words.regex +
                        "' is no regular expression: " + regex.errorString().toStdString();
            return std::nullopt;
        }
        query.m_regex = regex;
    }
    return query;
}

bool LogQuery::passes(const ReadRecord& record) const
{
    if (record.isRecord)
    {
        if ((!m_filter.level.empty() && !isAtLeast(record.level, m_filter.level)) ||
            (!m_filter.source.empty() && record.source != m_filter.source) ||
            (m_filter.since && record.seconds() < *m_filter.since))
        {
            return false;
        }
    }
    else if (!m_filter.level.empty() || !m_filter.source.empty())
    {
        return false;
    }
    return !m_regex || m_regex->match(QString::fromStdString(record.message)).hasMatch();
}

} // namespace orvo::ctl
