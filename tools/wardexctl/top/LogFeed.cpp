#include "top/LogFeed.h"

#include "log-reading/LogSubscription.h"
#include "log-reading/OverlapFilter.h"
#include "log-reading/RedisLink.h"
#include "log/StoredLog.h"
#include "logger/LogDefaults.h"
#include "top/EventDescriptor.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include <poll.h>

namespace orvo::ctl
{

namespace
{
/// Between two looks for a server that is not there, and between two questions to one that is.
constexpr int kAgainMs = 500;
/// A server that is slower than this counts as silent.
constexpr int kSlowMs = 1500;
/// How long the end waits for the thread.
constexpr auto kEndBound = std::chrono::milliseconds(300);
} // namespace

class LogFeed::Follower
{
public:
    void run();
    LogNews take();
    [[nodiscard]] int descriptor() const { return m_arrived.descriptor(); }
    /// False when the thread did not come back in time.
    bool stop();

private:
    void follow();
    void followLive(LogSubscription& live, const std::vector<std::string>& stored);
    void put(const std::vector<std::string>& raws, bool isAnew);
    void putAnswers(bool answers);
    bool pause(int milliseconds, int descriptor);

    EventDescriptor m_arrived;
    EventDescriptor m_stopped;
    std::mutex m_mutex;
    std::condition_variable m_hasEnded;
    bool m_isEnded{false};
    LogNews m_news;
};

void LogFeed::Follower::run()
{
    do
    {
        follow();
        putAnswers(false);
    } while (pause(kAgainMs, -1));
    const std::lock_guard lock(m_mutex);
    m_isEnded = true;
    m_hasEnded.notify_all();
}

void LogFeed::Follower::follow()
{
    // Heard first and read then: what comes in between is in both.
    LogSubscription live(Logger::kLogSocket);
    if (!live.subscribe())
    {
        return;
    }
    const auto stored = StoredLog().read();
    if (stored)
    {
        put(*stored, true);
        followLive(live, *stored);
    }
}

void LogFeed::Follower::followLive(LogSubscription& live, const std::vector<std::string>& stored)
{
    OverlapFilter overlap(stored);
    RedisLink question(Logger::kLogSocket, kSlowMs);
    do
    {
        std::vector<std::string> fresh;
        for (std::string& raw : live.take())
        {
            if (overlap.isNew(raw))
            {
                fresh.push_back(std::move(raw));
            }
        }
        if (!fresh.empty())
        {
            put(fresh, false);
        }
        else if (!question.answers())
        {
            // It hangs, or has gone: what it says after that is read anew.
            return;
        }
    } while (!live.isLost() && pause(kAgainMs, live.descriptor()));
}

void LogFeed::Follower::put(const std::vector<std::string>& raws, bool isAnew)
{
    std::vector<ReadRecord> records = readRecords(raws);
    const std::lock_guard lock(m_mutex);
    if (isAnew)
    {
        m_news = {true, true, std::move(records)};
    }
    else
    {
        std::move(records.begin(), records.end(), std::back_inserter(m_news.records));
    }
    m_arrived.set();
}

void LogFeed::Follower::putAnswers(bool answers)
{
    const std::lock_guard lock(m_mutex);
    m_news.answers = answers;
    m_arrived.set();
}

LogNews LogFeed::Follower::take()
{
    const std::lock_guard lock(m_mutex);
    m_arrived.clear();
    const bool answers = m_news.answers;
    LogNews news = std::exchange(m_news, {});
    m_news.answers = answers;
    return news;
}

bool LogFeed::Follower::pause(int milliseconds, int descriptor)
{
    std::array<pollfd, 2> waited{{{m_stopped.descriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
    (void)poll(waited.data(), waited.size(), milliseconds);
    return waited[0].revents == 0;
}

bool LogFeed::Follower::stop()
{
    m_stopped.set();
    std::unique_lock lock(m_mutex);
    return m_hasEnded.wait_for(lock, kEndBound, [this] { return m_isEnded; });
}

LogFeed::LogFeed() : m_follower(std::make_shared<Follower>())
{
    std::thread([follower = m_follower] { follower->run(); }).detach();
}

LogFeed::~LogFeed()
{
    (void)m_follower->stop();
}

int LogFeed::descriptor() const
{
    return m_follower->descriptor();
}

LogNews LogFeed::take()
{
    return m_follower->take();
}

} // namespace orvo::ctl
