#pragma once

#include <functional>

struct redisAsyncContext;
struct redisReply;

namespace orvo::Logger
{

/// The text that a subscription delivered: the third element of a "message" reply. Null for all
/// else, the confirmation of the subscription among it.
const char* publishedText(const redisReply* reply);

/// Takes a published text; it is gone when the call returns.
using TextConsumer = std::function<void(const char*)>;

/// hiredis reply callback of a general subscription.
///
/// privateData: the TextConsumer (borrowed) that gets each published text; null or an empty one
///              when nobody registered: the texts are then dropped.
/// Threads:     that of the event loop the connection is attached to.
void subCallback(redisAsyncContext* context, void* reply, void* privateData);

} // namespace orvo::Logger
