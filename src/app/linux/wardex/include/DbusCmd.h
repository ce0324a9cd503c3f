#pragma once

#include "BusCallQueue.h"
#include "ServiceAction.h"
#include "dbus-proxy/WardexAdapterInterface.h"

#include <QDBusContext>

#include <cstdint>

class QDBusServiceWatcher;

namespace orvo
{

/// The supervisor on the system bus: the object behind "com.orvo.wardex", and its eyes on the bus
/// names of the device's two main services.
///
/// Owns:    its bus adaptor and its watcher (Qt children), and a ServiceAction of its own.
/// Borrows: the registry and the logger, which must outlive it.
/// Threads: event loop only. A start or a stop blocks the loop until the init script has ended.
/// Calls
///          over the bus for a script or the process list are done one for each pass of the loop.
/// Errors:  a bus name or object that cannot be registered is an ERROR record, without a retry: the
///          supervisor runs on without its bus service. A failed start, stop or timer change is
///          told by the status code alone; the call itself succeeds. Of more calls than may wait,
///          the bus error LimitsExceeded is the answer, and a WARN record tells it once.
class DbusCmd : public WardexAdapterInterface, protected QDBusContext
{
    Q_OBJECT

public:
    DbusCmd(ServiceInfo* serviceInfo, Logger::RedisLogger* logger);
    ~DbusCmd() override;

    /// Pings a service for its machine: sets runLevel to "down", then asks the registry. True when
    /// the service answered; runLevel is then what it reported. Blocks for its ping time-out at
    /// most.
    [[nodiscard]] bool ping(const QString& name, QString& runLevel);

    /// Tells the device which services are up: notes every entry that reads "up" as registered and
    /// every other one as not registered, then sends the map as signalServiceAvailability.
    void publishAvailability(const QVariantMap& serviceMap);

    /// Judges the code that another service replied: true for 0; any other is a WARN record.
    [[nodiscard]] bool isReplySuccess(std::int32_t code);

public Q_SLOTS:
    orvo::ErrorStatus doPing(QString& runlevel) override;
    orvo::ErrorStatus doStartService(QString serviceName) override;
    orvo::ErrorStatus doStopService(QString serviceName) override;
    orvo::ErrorStatus getServiceList(QStringList& services) override;
    orvo::ErrorStatus getServiceStatus(QString serviceName, QString& serviceStatus) override;
    orvo::ErrorStatus setServicePingTimeoutOneShot(QString serviceName, int timeout) override;

    /// A watched service has appeared on the bus, or has left it.
    void serviceRegistered(const QString& name);
    void serviceUnregistered(const QString& name);

private:
    [[nodiscard]] bool isPostponed(BusCallQueue::Deed deed);
    [[nodiscard]] ErrorStatus startService(const QString& name);
    [[nodiscard]] ErrorStatus stopService(const QString& name);
    [[nodiscard]] QString serviceStatus(const QString& name);

    Logger::RedisLogger* m_logger;
    ServiceInfo* m_serviceInfo;
    QDBusServiceWatcher* m_watcher;
    ServiceAction m_serviceAction;
    BusCallQueue m_calls{this};
};

} // namespace orvo
