#pragma once

#include "ChildProcess.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <memory>
#include <string>
#include <vector>

namespace orvo::test
{

/// A simulated-service process in the box, linked as one of the device's services, and the test's
/// own connection to the bus.
///
/// Owns:    the process and the connection.
/// Threads: main thread.
class ServicePeer
{
public:
    /// Links the program as /opt/orvo/bin/SHORT-NAME; does not start it.
    ServicePeer(const std::string& shortName, const QString& busName);
    ~ServicePeer();
    ServicePeer(const ServicePeer&) = delete;
    ServicePeer& operator=(const ServicePeer&) = delete;

    void start();
    /// Starts it and waits until it owns its name.
    void startAndAwaitName();
    [[nodiscard]] bool awaitName() const;
    [[nodiscard]] bool awaitNameGone() const;
    [[nodiscard]] bool ownsName() const;
    /// The process that owns the name; 0 when nobody does.
    [[nodiscard]] unsigned ownerPid() const;

    /// Replaces the order file.
    void order(const std::string& lines) const;
    /// Takes the order file away.
    void orderNothing() const;

    /// Calls doPing and waits for the reply, at most so many milliseconds.
    [[nodiscard]] QDBusMessage ping(int timeoutMs = 10000) const;
    /// The run level of a good reply; the error's name of a D-Bus error.
    [[nodiscard]] QString pingedLevel() const;
    [[nodiscard]] QDBusMessage call(const QString& interface, const QString& method,
                                    int timeoutMs = 10000) const;

    [[nodiscard]] ChildProcess& process() { return *m_process; }
    [[nodiscard]] std::vector<std::string> output() const;
    [[nodiscard]] const QDBusConnection& bus() const { return m_bus; }

private:
    std::string m_shortName;
    QString m_busName;
    QDBusConnection m_bus;
    std::unique_ptr<ChildProcess> m_process;
};

/// The ping journal of the box without its times.
std::vector<std::string> pingJournal();

} // namespace orvo::test
