#pragma once

#include "dbus-proxy/ProxyPtr.h"

#include "ServiceInfo.h"

class CorvaneProxy;

namespace orvo
{

/// Pings corvane, which is on the bus as "com.orvo.vistor".
///
/// Units:   a ping that is not answered within 2200 ms has failed.
/// Owns:    the proxy, see ProxyPtr.
/// Threads: event loop only; a ping blocks it for the time-out at most.
class CorvaneService final : public ServiceInfo::Service
{
public:
    CorvaneService(const QString& shortName, const QString& initScript);
    ~CorvaneService();

    /// True when the answer is a status, whatever its code, with or without a run level. Of an
    /// answer of two values the second is the run level; otherwise runLevel stays as it was.
    bool isAlive(QString& runLevel) override;

private:
    ProxyPtr<CorvaneProxy> m_proxy;
};

} // namespace orvo
