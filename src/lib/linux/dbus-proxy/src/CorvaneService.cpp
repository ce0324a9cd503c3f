#include "dbus-proxy/CorvaneService.h"

#include "BusPing.h"
#include "ProxyMaker.h"
#include "dbus-proxy/PingLimits.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/CorvaneProxy.h"

namespace orvo
{

CorvaneService::CorvaneService(const QString& shortName, const QString& initScript)
    : Service(shortName, kCorvanePingTimeoutMs, initScript),
      m_proxy(makeProxy<CorvaneProxy>(kVistorBusName))
{
    m_proxy->setTimeout(kCorvanePingTimeoutMs);
}

CorvaneService::~CorvaneService() = default;

bool CorvaneService::isAlive(QString& runLevel)
{
    return pingOverBus(*m_proxy, runLevel);
}

} // namespace orvo
