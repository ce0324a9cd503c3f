#pragma once

#include "dbus-proxy/WardexAdapterInterface.h"

#include <QStringList>

namespace orvo::test
{

/// Stands in for the supervisor behind the adaptor: notes each call with its arguments and answers
/// with values that tell the calls apart.
class StubSupervisor : public WardexAdapterInterface
{
    Q_OBJECT

public:
    QStringList m_calls;

public Q_SLOTS:
    orvo::ErrorStatus doPing(QString& runlevel) override
    {
        m_calls << QStringLiteral("doPing");
        runlevel = QStringLiteral("up");
        return ErrorStatus(0);
    }

    orvo::ErrorStatus doStartService(QString serviceName) override
    {
        m_calls << QStringLiteral("doStartService ") + serviceName;
        return ErrorStatus(101001);
    }

    orvo::ErrorStatus doStopService(QString serviceName) override
    {
        m_calls << QStringLiteral("doStopService ") + serviceName;
        return ErrorStatus(101002);
    }

    orvo::ErrorStatus getServiceList(QStringList& services) override
    {
        m_calls << QStringLiteral("getServiceList");
        services = QStringList{QStringLiteral("one"), QStringLiteral("two")};
        return ErrorStatus(101003);
    }

    orvo::ErrorStatus getServiceStatus(QString serviceName, QString& serviceStatus) override
    {
        m_calls << QStringLiteral("getServiceStatus ") + serviceName;
        serviceStatus = QStringLiteral("down");
        return ErrorStatus(101004);
    }

    orvo::ErrorStatus setServicePingTimeoutOneShot(QString serviceName, int timeout) override
    {
        m_calls
            << QStringLiteral("setServicePingTimeoutOneShot %1 %2").arg(serviceName).arg(timeout);
        return ErrorStatus(101005);
    }
};

} // namespace orvo::test
