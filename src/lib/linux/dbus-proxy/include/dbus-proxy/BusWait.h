#pragma once

#include <QDBusMessage>

#include <chrono>

class QDBusConnection;
class QDBusPendingCall;

namespace orvo
{

/// Waits for the answer to a call, without running the event loop meanwhile.
///
/// Qt's own blocking call never returns when the bus crashes while it waits: the time-out ends with
/// the connection. It would hold the supervisor until the watchdog resets the device, or for ever
/// while the watchdog is not armed yet.
///
/// Threads: any but the bus library's own; blocks for the time-out at most.
/// Errors:  an invalid message when time is up or the bus has ended.
[[nodiscard]] QDBusMessage waitForReply(const QDBusPendingCall& call, const QDBusConnection& bus,
                                        std::chrono::milliseconds timeout);

} // namespace orvo
