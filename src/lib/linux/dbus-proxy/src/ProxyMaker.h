#pragma once

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/ProxyPtr.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

namespace orvo
{

/// Makes an object that asks the system bus something while it is made.
///
/// A proxy asks for its service's owner, in a blocking call of the library that never returns when
/// the bus ends meanwhile. Nobody would reset the device, whose watchdog is not armed yet. So the
/// object is made in a thread of its own, which is left behind when the bus ends; then it is made
/// once more, and without a bus nothing is asked.
///
/// Threads: the object belongs to the caller's thread. Blocks until the bus has answered or ended.
[[nodiscard]] QObject* makeUnlessTheBusEnds(const std::function<QObject*()>& make);

/// The proxy of a service on the system bus.
template <class Proxy>
ProxyPtr<Proxy> makeProxy(const char* busName)
{
    return ProxyPtr<Proxy>(static_cast<Proxy*>(makeUnlessTheBusEnds(
        [busName]
        {
            return new Proxy(QLatin1String(busName), QLatin1String(kBusObjectPath),
                             QDBusConnection::systemBus());
        })));
}

} // namespace orvo
