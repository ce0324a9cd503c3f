#pragma once

#include <QDBusConnection>
#include <QString>
#include <QTimer>

#include <functional>

class QDBusVirtualObject;

namespace orvo::simulator
{

/// A simulated service's stay on the system bus: its object at "/", then its name.
///
/// Owns/borrows: borrows the object, which must live longer.
/// Threads: event loop only.
/// Errors:  each is complained about on standard error and ends the event loop with status 1:
///          no bus; the object refused; the name still owned by another process after 10 s (an old
///          instance that is about to leave is waited for); the bus going away later.
class BusPresence
{
public:
    BusPresence(const QString& busName, QDBusVirtualObject* object);

    /// Call with the event loop about to run.
    void begin();

private:
    void claimName();
    static void giveUp(const QString& reason);

    QString m_busName;
    QDBusVirtualObject* m_object;
    QDBusConnection m_bus;
    QTimer m_claimTimer;
    int m_refusals{0};
};

} // namespace orvo::simulator
