#pragma once

#include "dbus-proxy/ProxyPtr.h"

#include "ServiceInfo.h"

class PictorProxy;

namespace orvo
{

/// Pings pictor, the image processing.
///
/// Units:   a ping that is not answered within 1000 ms has failed.
/// Owns:    the proxy, see ProxyPtr.
/// Threads: event loop only; a ping blocks it for the time-out at most.
class PictorService final : public ServiceInfo::Service
{
public:
    PictorService(const QString& shortName, const QString& initScript);
    ~PictorService();

    /// True when the answer is a status, whatever its code, with or without a run level. Of an
    /// answer of two values the second is the run level; otherwise runLevel stays as it was.
    bool isAlive(QString& runLevel) override;

private:
    ProxyPtr<PictorProxy> m_proxy;
};

} // namespace orvo
