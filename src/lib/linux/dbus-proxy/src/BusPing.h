#pragma once

#include <QString>

class QDBusAbstractInterface;

namespace orvo
{

/// Calls doPing of the service behind a proxy and waits for the answer, without running the event
/// loop meanwhile.
///
/// Units:   the proxy's own time-out bounds the wait, also when the bus ends during it.
/// Threads: event loop only.
/// Errors:  false for every D-Bus error, an answer that does not start with a status among them.
///          Of an answer of exactly two values the second becomes runLevel (an empty one when it is
///          no text); otherwise runLevel stays as it was. The status itself is not looked at.
[[nodiscard]] bool pingOverBus(QDBusAbstractInterface& proxy, QString& runLevel);

} // namespace orvo
