#pragma once

#include "ChildProcess.h"

#include <QTemporaryDir>

#include <memory>
#include <string>

namespace orvo::test
{

/// The private system bus of this test process: a real dbus-daemon that lets everybody own every
/// name and send everything.
///
/// Qt connects a process to its system bus once, so there is one daemon for all claims of a test
/// program. Programs linked with bus_test_main have it running before the first claim, together
/// with a QCoreApplication.
///
/// Owns:    the daemon and its folder, until the process ends.
/// Threads: main thread.
/// Errors:  a daemon that does not listen within 10 s ends the program with a message.
class BusDaemon
{
public:
    /// Starts the daemon at the first call and makes it the system bus of this process (and of its
    /// children); the system bus must not have been used before.
    static BusDaemon& ofThisProcess();

    ~BusDaemon();
    BusDaemon(const BusDaemon&) = delete;
    BusDaemon& operator=(const BusDaemon&) = delete;

    /// What a client connects to: "unix:path=...".
    [[nodiscard]] const std::string& address() const { return m_address; }

    /// Kills the daemon, as when the device's bus crashes. No claim after it in the same process
    /// has a bus, because Qt never connects again.
    void crash();

    /// Starts a new daemon at the same address after a crash, for clients that connect again.
    void restart();

private:
    BusDaemon();
    void start();

    QTemporaryDir m_folder;
    std::string m_address;
    std::unique_ptr<ChildProcess> m_daemon;
};

} // namespace orvo::test
