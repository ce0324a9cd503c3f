#pragma once

#include "common/Journal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QTimer>

#include <string>

namespace orvo::simulator
{

/// Writes down what happens on the device's system bus.
///
/// Shape:   JSON lines with the events `listening` (the bus delivers to us from now on); `name`
/// with
///          "name" and "owned" when a name that begins with "com.orvo." gets or loses its owner;
///          `availability` with "services" (name to state), "sender" and "path" for the
///          supervisor's signal; `bus-lost`. What happens between `bus-lost` and `listening` is not
///          seen.
/// Owns:    a connection of its own, made anew after a loss: Qt never reconnects one.
/// Threads: event loop only.
/// Errors:  a bus that is not there yet or no longer is waited for, for ever. A signal with other
///          values than the supervisor's is complained about on standard error and left out.
class BusObserver : public QObject
{
    Q_OBJECT

public:
    explicit BusObserver(const std::string& journal);
    ~BusObserver() override;

    /// False when the journal cannot be opened.
    bool begin();

private Q_SLOTS:
    void nameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner);
    void availabilityChanged(const QDBusMessage& signal);
    void lost();

private:
    void attach();
    bool listen();

    Journal m_journal;
    QTimer m_retry;
    QString m_connectionName;
    int m_attempts{0};
};

} // namespace orvo::simulator
