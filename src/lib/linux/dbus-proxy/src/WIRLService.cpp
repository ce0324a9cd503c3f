#include "dbus-proxy/WIRLService.h"

#include "BusPing.h"
#include "ProxyMaker.h"
#include "dbus-proxy/PingLimits.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/WirlProxy.h"

namespace orvo
{

WIRLService::WIRLService(const QString& shortName, const QString& initScript)
    : Service(shortName, kWirlPingTimeoutMs, initScript),
      m_proxy(makeProxy<WirlProxy>(kWirlBusName))
{
    m_proxy->setTimeout(kWirlPingTimeoutMs);
}

WIRLService::~WIRLService() = default;

bool WIRLService::isAlive(QString& runLevel)
{
    return pingOverBus(*m_proxy, runLevel);
}

} // namespace orvo
