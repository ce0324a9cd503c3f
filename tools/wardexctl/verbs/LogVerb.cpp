#include "verbs/LogVerb.h"

#include "log-reading/OverlapFilter.h"
#include "log/DeviceClock.h"
#include "log/RecordText.h"
#include "log/StoredLog.h"
#include "logger/LogDefaults.h"
#include "output/ExitStatus.h"

#include <algorithm>
#include <array>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace orvo::ctl
{

namespace
{

constexpr int kAgainMs = 200;

/// Waits for something to read, or for the time; false when the reader of our output has gone.
bool isReaderThereAfter(int descriptor, int milliseconds)
{
    std::array<pollfd, 2> waited{{{STDOUT_FILENO, 0, 0}, {descriptor, POLLIN, 0}}};
    (void)poll(waited.data(), waited.size(), milliseconds);
    return (waited[0].revents & (POLLERR | POLLNVAL)) == 0;
}

} // namespace

LogVerb::LogVerb(const Output& output, LogWords words, bool follows)
    : m_output(output), m_words(std::move(words)), m_follows(follows), m_live(Logger::kLogSocket)
{
}

int LogVerb::run()
{
    const DeviceClock clock = DeviceClock::now();
    std::string complaint;
    const auto query = LogQuery::of(m_words, clock.monotonic, clock.wallMs, complaint);
    if (!query)
    {
        m_output.problem({"log", complaint, "See wardexctl log --help."});
        return kUsage;
    }
    m_query = *query;
    if (!begin())
    {
        return kLogSilent;
    }
    if (showStored(m_stored) && m_follows)
    {
        while (follow() && waitForServer())
        {
        }
    }
    return kOk;
}

bool LogVerb::begin()
{
    // Heard first and read then: what comes in between is in both.
    if (m_follows && !m_live.subscribe())
    {
        m_output.problem(redisProblem(Logger::kLogSocket, m_live.complaint()));
        return false;
    }
    StoredLog log;
    auto stored = log.read(m_query.serverFilter());
    if (!stored)
    {
        m_output.problem(log.problem());
        return false;
    }
    m_stored = std::move(*stored);
    return true;
}

bool LogVerb::show(const std::string& raw)
{
    const ReadRecord record = readRecord(raw);
    const DeviceClock clock = DeviceClock::now();
    return m_output.line(recordText(m_output, record, clock)) &&
           m_output.json(recordJson(record, clock));
}

bool LogVerb::showStored(const std::vector<std::string>& raws)
{
    std::vector<const std::string*> shown;
    for (const std::string& raw : raws)
    {
        if (m_query.passes(readRecord(raw)))
        {
            shown.push_back(&raw);
        }
    }
    const std::size_t most =
        m_words.newest < 0 ? shown.size() : static_cast<std::size_t>(m_words.newest);
    const std::size_t first = shown.size() - std::min(most, shown.size());
    return std::all_of(shown.begin() + static_cast<std::ptrdiff_t>(first), shown.end(),
                       [this](const std::string* raw) { return show(*raw); });
}

bool LogVerb::follow()
{
    OverlapFilter overlap(m_stored);
    while (!m_live.isLost())
    {
        for (const std::string& raw : m_live.take())
        {
            if (overlap.isNew(raw) && m_query.passes(readRecord(raw)) && !show(raw))
            {
                return false;
            }
        }
        if (!isReaderThereAfter(m_live.descriptor(), kAgainMs))
        {
            return false;
        }
    }
    return true;
}

bool LogVerb::waitForServer()
{
    m_output.problem({Logger::kLogSocket, "Redis went away (" + m_live.complaint() + ")",
                      "Waiting for it; its stored records went with it."});
    while (!m_live.subscribe())
    {
        if (!isReaderThereAfter(-1, kAgainMs))
        {
            return false;
        }
    }
    // A server that starts anew is empty but for what was written since.
    StoredLog log;
    m_stored = log.read(m_query.serverFilter()).value_or(std::vector<std::string>());
    return std::all_of(m_stored.begin(), m_stored.end(),
                       [this](const std::string& raw)
                       { return !m_query.passes(readRecord(raw)) || show(raw); });
}

} // namespace orvo::ctl
