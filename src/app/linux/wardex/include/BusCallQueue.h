#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QTimer>
#include <QVariantList>

#include <deque>
#include <functional>

namespace orvo
{

/// The bus calls that take long, one for each pass of the event loop.
///
/// The loop delivers all calls that have arrived before it looks at its timers. A program that asks
/// without end would keep it from ever feeding the watchdog, so calls for a script or the process
/// list wait here, and ticks and pings come in between.
///
/// Units:   kWaitingCallLimit calls at most.
/// Threads: event loop only.
/// Errors:  add() answers false when there are as many already; nothing is answered then.
class BusCallQueue : public QObject
{
public:
    /// Answers the values of the reply.
    using Deed = std::function<QVariantList()>;

    explicit BusCallQueue(QObject* parent);

    /// Lets the deed wait for its turn; its values are then sent as the reply to the call.
    [[nodiscard]] bool add(const QDBusConnection& connection, const QDBusMessage& call, Deed deed);

private:
    struct Waiting
    {
        QDBusConnection connection;
        QDBusMessage call;
        Deed deed;
    };

    void doNext();

    std::deque<Waiting> m_waiting;
    QTimer m_turn;
};

} // namespace orvo
