#pragma once

#include "ServiceInfo.h"

namespace orvo
{

/// Asks whether quorl is alive, over its Unix socket: it offers nothing on the bus.
///
/// Units:   the stored 1000 ms are only the interval of its pings.
/// Threads: event loop only; blocks until the service has answered or closed, see quorl/Quorl.h.
class QUORLService final : public ServiceInfo::Service
{
public:
    QUORLService(const QString& shortName, const QString& initScript);

    /// True, and run level "up", when the service has an address to listen on; otherwise runLevel
    /// stays as it was.
    bool isAlive(QString& runLevel) override;
};

} // namespace orvo
