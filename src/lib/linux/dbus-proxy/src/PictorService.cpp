#include "dbus-proxy/PictorService.h"

#include "BusPing.h"
#include "dbus-proxy/PingLimits.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/PictorProxy.h"

namespace orvo
{

PictorService::PictorService(const QString& shortName, const QString& initScript)
    : Service(shortName, kPictorPingTimeoutMs, initScript),
      m_proxy(new PictorProxy(QLatin1String(kPictorBusName), QLatin1String(kBusObjectPath),
                              QDBusConnection::systemBus()))
{
    m_proxy->setTimeout(kPictorPingTimeoutMs);
}

PictorService::~PictorService() = default;

bool PictorService::isAlive(QString& runLevel)
{
    return pingOverBus(*m_proxy, runLevel);
}

} // namespace orvo
