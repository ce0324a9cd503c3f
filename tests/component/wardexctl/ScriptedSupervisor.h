#pragma once

#include "dbus-proxy/WardexAdapterInterface.h"

#include <QMap>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <utility>

namespace orvo::test
{

/// A supervisor behind the real adaptor whose answers a claim decides.
class ScriptedSupervisor : public WardexAdapterInterface
{
    Q_OBJECT

public:
    QStringList m_calls; ///< those that change something
    QStringList m_listed{"com.orvo.pictor", "com.orvo.vistor"};
    QMap<QString, QString> m_status{
        {"com.orvo.vistor", "up"}, {"com.orvo.pictor", "up"}, {"com.orvo.wirl", "down"}};
    std::int32_t m_code{0}; ///< answered to what changes something
    /// Called once, behind the answer about the last service that a client asks for.
    std::function<void()> m_whenAsked;

public Q_SLOTS:
    orvo::ErrorStatus doPing(QString& runlevel) override
    {
        runlevel = QStringLiteral("up");
        return ErrorStatus(0);
    }

    orvo::ErrorStatus doStartService(QString serviceName) override
    {
        m_calls << "start " + serviceName;
        return ErrorStatus(m_code);
    }

    orvo::ErrorStatus doStopService(QString serviceName) override
    {
        m_calls << "stop " + serviceName;
        return ErrorStatus(m_code);
    }

    orvo::ErrorStatus getServiceList(QStringList& services) override
    {
        services = m_listed;
        return ErrorStatus(0);
    }

    orvo::ErrorStatus getServiceStatus(QString serviceName, QString& serviceStatus) override
    {
        if (serviceName == QLatin1String("com.orvo.quorl") && m_whenAsked)
        {
            QTimer::singleShot(0, this, std::exchange(m_whenAsked, nullptr));
        }
        serviceStatus = m_status.value(serviceName, QStringLiteral("unknown"));
        return ErrorStatus(0);
    }

    orvo::ErrorStatus setServicePingTimeoutOneShot(QString serviceName, int timeout) override
    {
        m_calls << QStringLiteral("grace %1 %2").arg(serviceName).arg(timeout);
        return ErrorStatus(m_code);
    }
};

} // namespace orvo::test
