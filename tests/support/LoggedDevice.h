#pragma once

#include "LogRecords.h"
#include "RedisServer.h"

#include <string>
#include <vector>

namespace orvo::test
{

/// The two Redis servers of the device on their real sockets, configured to record every level.
/// Meant for programs that run in a box.
class LoggedDevice
{
public:
    LoggedDevice();

    RedisServer cache{"/tmp/redis-cache.sock"};
    RedisServer store{"/tmp/redis.sock"};

    /// Everything in the log as "LEVEL message", oldest first, without INFO: the logger itself
    /// announces its configuration there.
    [[nodiscard]] static std::vector<std::string> lines();
};

} // namespace orvo::test
