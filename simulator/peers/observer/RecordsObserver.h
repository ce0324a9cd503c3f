#pragma once

#include "common/Journal.h"

#include <memory>
#include <string>

#include <hiredis/hiredis.h>

namespace orvo::simulator
{

/// Writes down every log record that is published on the device, with the time of its arrival.
///
/// Shape:   JSON lines with the events `listening` (the subscription is in force), `record` with
/// the
///          member "record", and `redis-lost`. What is published while Redis is away or between
///          `redis-lost` and `listening` is not seen.
/// Owns:    its connection and the journal.
/// Threads: one; run() never returns, SIGTERM ends the process.
/// Errors:  a Redis that is not there yet or no longer is waited for, for ever.
class RecordsObserver
{
public:
    RecordsObserver(const std::string& socketPath, const std::string& journal);

    /// False at once when the journal cannot be opened; else never returns.
    bool run();

private:
    struct ContextDeleter
    {
        void operator()(redisContext* context) const { redisFree(context); }
    };
    struct ReplyDeleter
    {
        void operator()(redisReply* reply) const { freeReplyObject(reply); }
    };
    using Reply = std::unique_ptr<redisReply, ReplyDeleter>;

    bool subscribe();
    Reply read();
    void noteUntilLost();

    std::string m_socketPath;
    Journal m_journal;
    std::unique_ptr<redisContext, ContextDeleter> m_redis;
};

} // namespace orvo::simulator
