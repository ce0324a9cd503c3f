#include "SignalListener.h"

#include <QDBusConnectionInterface>

namespace orvo::test
{

SignalListener::SignalListener(const QDBusConnection& bus, const QString& path,
                               const QString& interface, const QString& signalName)
{
    QDBusConnection connection = bus;
    connection.connect(QString(), path, interface, signalName, this, SLOT(received(QDBusMessage)));
    // The bus handles a client's messages in order: once this one is answered, the match stands.
    (void)connection.interface()->registeredServiceNames();
}

SignalListener::~SignalListener() = default;

void SignalListener::received(const QDBusMessage& message)
{
    m_messages << message;
}

} // namespace orvo::test
