#pragma once

#include <functional>

struct redisAsyncContext;

namespace orvo::Logger
{

/// Takes a text that was published on a channel. The text is gone when the call returns.
using TextConsumer = std::function<void(const char*)>;

/// Reply callback for a subscription of one's own, as hiredis' asynchronous interface takes it: a
/// program that follows the log gives it to redisAsyncCommand() together with "SUBSCRIBE
/// LOG:ENTRIES" (kLogList).
///
/// context:     not used.
/// reply:       a redisReply, or null when the connection ended. Only a "message" of three elements
///              counts; the confirmation of the subscription and all else is dropped. A record of
///              500 bytes ends at its zero byte, like any text.
/// privateData: the TextConsumer (borrowed, for as long as the subscription lasts) that gets each
///              published text. Null, or an empty one, when nobody registered: texts are dropped.
/// Threads:     that of the event loop the connection is attached to; no lock is held.
/// Errors:      none of its own; what the consumer throws passes through hiredis, which is C, so it
///              must not throw.
void subCallback(redisAsyncContext* context, void* reply, void* privateData);

} // namespace orvo::Logger
