#pragma once

#include "dbus-proxy/ErrorStatus.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace orvo
{

/// What the supervisor offers on the system bus, as the object behind the bus adaptor sees it.
///
/// The generated WardexAdapter is made as a child of an object of this class; it hands each call of
/// the interface "com.orvo.wardex" to the slot of the same name and relays the signal.
///
/// Threads: event loop only; the adaptor calls in it.
/// Errors:  a call always succeeds on the bus, failures are told by the returned status.
class WardexAdapterInterface : public QObject
{
    Q_OBJECT

public:
    explicit WardexAdapterInterface(QObject* parent = nullptr);
    ~WardexAdapterInterface() override;

public Q_SLOTS:
    // The status is spelled with its namespace: moc knows a type only by its written name, and a
    // reply value of an unknown name vanishes from the bus without a word.

    /// The supervisor's own run level, "up" whenever it can answer.
    virtual orvo::ErrorStatus doPing(QString& runlevel) = 0;

    /// serviceName: the bus name of a supervised service. Blocks until the init script has ended.
    virtual orvo::ErrorStatus doStartService(QString serviceName) = 0;
    virtual orvo::ErrorStatus doStopService(QString serviceName) = 0;

    /// The bus names of the services seen on the bus.
    virtual orvo::ErrorStatus getServiceList(QStringList& services) = 0;

    /// serviceStatus: "up" or "down" by the process list, "unknown" for a name not supervised.
    virtual orvo::ErrorStatus getServiceStatus(QString serviceName, QString& serviceStatus) = 0;

    /// timeout: milliseconds until the next ping of the service.
    virtual orvo::ErrorStatus setServicePingTimeoutOneShot(QString serviceName, int timeout) = 0;

Q_SIGNALS:
    /// serviceMap: from bus name to "up" or "down".
    void signalServiceAvailability(QVariantMap serviceMap);
};

} // namespace orvo
