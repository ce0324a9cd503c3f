#pragma once

#include "LogRecord.h"

#include <cstddef>
#include <string>

struct redisContext;

namespace orvo::Logger
{

class RecordFrame;

/// Appends a record to the list, trims the list to its newest records and publishes the record on
/// the channel of the same name: three commands in one write, then their three answers. What Redis
/// answers is not looked at.
///
/// frame: the commands with the record in them.
/// Errors: false when a command could not be made or an answer did not come; told on standard
///         error, and the connection is good for nothing but being freed.
bool writeRecord(redisContext* connection, const RecordFrame& frame, const std::string& listKey,
                 const RecordText& record);

} // namespace orvo::Logger
