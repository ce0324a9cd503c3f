#pragma once

namespace orvo
{

namespace Logger
{
class RedisLogger;
}

/// Makes supervision immune to a busy device: first-in-first-out scheduling for the calling thread,
/// all memory locked, and a kernel that reboots by itself after a panic.
///
/// Threads: to be called on the event-loop thread. Threads that exist already (the logger's) keep
///          ordinary scheduling; threads and processes made later inherit the caller's.
/// Errors:  a refused step is a WARN record with the system's text, and the next one is tried; the
///          result of the panic setting is not looked at.
/// On the device: never in developer mode: a developer's device keeps ordinary scheduling, so that
/// a
///          debugger can stop the supervisor, and the kernel's own panic setting.
void setUpRealTime(Logger::RedisLogger& logger);

} // namespace orvo
