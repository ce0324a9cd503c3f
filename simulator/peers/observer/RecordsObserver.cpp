#include "observer/RecordsObserver.h"

#include "observer/JsonLine.h"

#include <poll.h>

namespace orvo::simulator
{

namespace
{
constexpr int kReconnectPeriodMs = 50;
constexpr char kRecordsChannel[] = "LOG:ENTRIES";
/// A published message arrives as the array {"message", channel, bytes}.
constexpr std::size_t kMessageParts = 3;
constexpr std::size_t kBytesPart = 2;
} // namespace

RecordsObserver::RecordsObserver(const std::string& socketPath, const std::string& journal)
    : m_socketPath(socketPath), m_journal(journal)
{
}

bool RecordsObserver::run()
{
    while (m_journal.isOpen())
    {
        if (subscribe())
        {
            m_journal.append(JsonLine("listening").str());
            noteUntilLost();
            m_journal.append(JsonLine("redis-lost").str());
        }
        poll(nullptr, 0, kReconnectPeriodMs);
    }
    return false;
}

bool RecordsObserver::subscribe()
{
    m_redis.reset(redisConnectUnix(m_socketPath.c_str()));
    if (!m_redis || m_redis->err != 0)
    {
        return false;
    }
    const Reply reply(
        static_cast<redisReply*>(redisCommand(m_redis.get(), "SUBSCRIBE %s", kRecordsChannel)));
    // A server that is still loading its data refuses.
    return reply && reply->type == REDIS_REPLY_ARRAY;
}

RecordsObserver::Reply RecordsObserver::read()
{
    void* reply = nullptr;
    redisGetReply(m_redis.get(), &reply);
    return Reply(static_cast<redisReply*>(reply));
}

void RecordsObserver::noteUntilLost()
{
    while (const Reply reply = read())
    {
        if (reply->type != REDIS_REPLY_ARRAY || reply->elements != kMessageParts)
        {
            continue;
        }
        const redisReply* const bytes = reply->element[kBytesPart];
        if (bytes->type == REDIS_REPLY_STRING)
        {
            m_journal.append(
                JsonLine("record").text("record", std::string(bytes->str, bytes->len)).str());
        }
    }
}

} // namespace orvo::simulator
