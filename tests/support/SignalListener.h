#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QString>

namespace orvo::test
{

/// Collects a signal of the bus as a client of the device would get it.
///
/// It listens from its construction on: a signal that is sent afterwards is not missed.
/// Threads: its own thread's event loop must run for a signal to arrive.
class SignalListener : public QObject
{
    Q_OBJECT

public:
    SignalListener(const QDBusConnection& bus, const QString& path, const QString& interface,
                   const QString& signalName);
    ~SignalListener() override;

    [[nodiscard]] const QList<QDBusMessage>& messages() const { return m_messages; }

private Q_SLOTS:
    void received(const QDBusMessage& message);

private:
    QList<QDBusMessage> m_messages;
};

} // namespace orvo::test
