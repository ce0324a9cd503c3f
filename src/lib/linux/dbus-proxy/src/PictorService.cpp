#include "dbus-proxy/PictorService.h"

#include "BusPing.h"
#include "ProxyMaker.h"
#include "dbus-proxy/PingLimits.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/PictorProxy.h"

namespace orvo
{

PictorService::PictorService(const QString& shortName, const QString& initScript)
    : Service(shortName, kPictorPingTimeoutMs, initScript),
      m_proxy(makeProxy<PictorProxy>(kPictorBusName))
{
    m_proxy->setTimeout(kPictorPingTimeoutMs);
}

PictorService::~PictorService() = default;

bool PictorService::isAlive(QString& runLevel)
{
    return pingOverBus(*m_proxy, runLevel);
}

} // namespace orvo
