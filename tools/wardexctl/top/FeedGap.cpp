#include "top/FeedGap.h"

#include "model/Duration.h"
#include "model/SupervisorEvent.h"
#include "output/Json.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

QJsonValue secondsOrNull(const std::optional<double>& seconds)
{
    return seconds ? QJsonValue(*seconds) : QJsonValue();
}

} // namespace

void FeedGap::look(const WatchdogFacts& facts)
{
    m_facts = facts;
    m_current.reset();
    if (facts.timeout && facts.timeLeft)
    {
        m_current = std::max(*facts.timeout - *facts.timeLeft, 0.0);
        m_longest = std::max(m_longest, *m_current);
    }
}

void FeedGap::add(const std::vector<ReadRecord>& records)
{
    std::vector<ReadRecord> joined = m_last;
    std::copy_if(records.begin(), records.end(), std::back_inserter(joined),
                 [](const ReadRecord& each)
                 { return each.isRecord && each.source == kSupervisorSource; });
    if (joined.empty())
    {
        return;
    }
    m_hasRecords = true;
    const auto run = longestScriptRun(joined);
    if (run && (!m_run || run->seconds > m_run->seconds))
    {
        m_run = run;
    }
    m_last.assign(joined.end() - 1, joined.end());
}

void FeedGap::forgetRecords()
{
    m_run.reset();
    m_last.clear();
    m_hasRecords = false;
}

StyledLine FeedGap::line(bool isDeveloper) const
{
    std::string text = "Watchdog  ";
    const std::string of = " of";
    const std::string timeout = m_facts.timeout ? of + " " + durationText(*m_facts.timeout) : "";
    if (isDeveloper)
    {
        text += "not fed: developer mode";
    }
    else if (m_current)
    {
        text += "fed " + durationText(*m_current) + " ago, longest gap seen " +
                durationText(m_longest) + timeout;
    }
    else if (m_run)
    {
        text += "longest gap by the records " + durationText(m_run->seconds) + timeout + " (" +
                m_run->what + ")";
    }
    else if (m_hasRecords)
    {
        text += "gap between feeds not told; no script in the records held it up" +
                (timeout.empty() ? "" : "; time-out" + timeout.substr(of.size()));
    }
    else
    {
        text += "feed gap unknown: neither the kernel nor a record tells";
    }
    return {
        {m_facts.timeout && m_longest * 2 > *m_facts.timeout ? Tone::Warning : Tone::Plain, text}};
}

QJsonObject FeedGap::json() const
{
    const std::optional<double> recorded = m_run ? std::optional(m_run->seconds) : std::nullopt;
    return {{"from", m_current ? QJsonValue("kernel")
                     : m_run   ? QJsonValue("records")
                               : QJsonValue()},
            {"currentSeconds", secondsOrNull(m_current)},
            {"longestSeconds", secondsOrNull(m_current ? std::optional(m_longest) : recorded)},
            {"timeoutSeconds", secondsOrNull(m_facts.timeout)}};
}

} // namespace orvo::ctl
