#pragma once

struct redisReply;

namespace orvo::Logger
{

/// The text that a subscription delivered: the third element of a "message" reply. Null for all
/// else, the confirmation of the subscription among it.
const char* publishedText(const redisReply* reply);

} // namespace orvo::Logger
