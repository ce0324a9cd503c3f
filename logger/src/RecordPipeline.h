#pragma once

#include <cstddef>
#include <string>

struct redisContext;

namespace orvo::Logger
{

/// Appends a record to the list, trims the list to its newest maxEntries and publishes the record
/// on the channel of the same name: three commands in one write, then their three answers. What
/// Redis answers is not looked at.
///
/// Errors: false when a command could not be made or an answer did not come; told on standard
///         error, and the connection is of no more use.
bool writeRecord(redisContext* connection, const std::string& listKey, int maxEntries,
                 const char* record, std::size_t length);

} // namespace orvo::Logger
