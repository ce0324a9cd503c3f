#pragma once

#include "common/Journal.h"
#include "common/OrderFile.h"
#include "service/ServiceIdentity.h"

#include <QDBusVirtualObject>

namespace orvo::simulator
{

struct PingAnswer;

/// The bus object of a simulated service: answers `doPing` as its order file says.
///
/// Threads: event loop only; a delayed or missing reply never keeps it from the next ping.
/// Errors:  any other method of the interface is answered with the bus' error UnknownMethod.
/// On the device: notes every ping in the ping journal before it answers, so that a ping that ends
///          in a crash or in silence is seen too.
class PingResponder : public QDBusVirtualObject
{
public:
    explicit PingResponder(const ServiceIdentity& identity);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    void answer(const PingAnswer& answer, const QDBusMessage& message,
                const QDBusConnection& connection);
    void replyAfter(int delayMs, const QDBusMessage& reply, const QDBusConnection& connection);

    ServiceIdentity m_identity;
    OrderFile m_orders;
    Journal m_journal;
};

} // namespace orvo::simulator
