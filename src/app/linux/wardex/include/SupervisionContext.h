#pragma once

namespace orvo
{

namespace Logger
{
class RedisLogger;
}
class DbusCmd;
class ServiceAction;
class ServiceInfo;

/// What every state machine and every state reaches the rest of the supervisor by.
///
/// Owns:    nothing; start-up owns all four and outlives every machine.
/// Threads: event loop only.
struct SupervisionContext
{
    DbusCmd* dbusCmd;
    ServiceInfo* serviceInfo;
    ServiceAction* serviceAction;
    Logger::RedisLogger* logger;
};

} // namespace orvo
