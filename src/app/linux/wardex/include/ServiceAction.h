#pragma once

#include <QString>

#include <set>

namespace orvo
{

namespace Logger
{
class RedisLogger;
}
class ServiceInfo;

/// The one place where the supervisor acts on the device: starts and stops single services through
/// their init scripts, restarts the whole software package, reboots.
///
/// Borrows: the registry and the logger, which must outlive it.
/// Threads: event loop only. Every operation blocks it until its script or command has ended.
/// Errors:  a script that is missing, crashes or exits with another status than 0 is a false; its
///          output is read and dropped. Results of the package restart and of the reboot command
///          are not looked at: there is nothing further to try.
/// On the device: both developer-mode lines and the real ones go to the log and to syslog, which
///          survives the restart of the package that holds the log.
class ServiceAction
{
public:
    ServiceAction(ServiceInfo* serviceInfo, Logger::RedisLogger* logger);
    virtual ~ServiceAction();
    ServiceAction(const ServiceAction&) = delete;
    ServiceAction& operator=(const ServiceAction&) = delete;

    /// Makes sure that the service runs; true, and no script, when its process runs already. False
    /// for an unknown service (silently) and for one without a process name (ERROR record).
    bool doStartService(const QString& name);

    /// Stops a running service; true when its script succeeded. Unlike a start, stopping what does
    /// not run is a failure, and runs no script. Unknown and unmappable services as for a start.
    bool doStopService(const QString& name);

    /// Reboots the device and never returns: the event loop stops here, nobody feeds the hardware
    /// watchdog any more, and it resets the device should the reboot command fail to. In developer
    /// mode only says, once per run, what would have happened, and returns.
    void restartSystem(bool developerMode);

    /// Removes the core files and restarts the device's software package; in developer mode only
    /// says, once per run, what would have happened.
    void restartPackage(bool developerMode);

    /// Runs the init script of a service with the word "restart" or "stop"; a start is always done
    /// as a restart. False, silently, for a service without a script.
    bool runInitScript(const QString& name, bool restart);

    /// Runs a command line (program and arguments separated by blanks, double quotes keep blanks
    /// together; no shell) and waits for its end without a time-out. out and err receive what it
    /// wrote, each up to the first zero byte. True exactly when it ended by itself with exit code
    /// 0.
    bool runCommand(const QString& command, QString& out, QString& err);

    /// Sends a text to syslog unless the process has sent the same text before. Texts are cut at
    /// 511 bytes, and compared as they were cut.
    [[gnu::format(printf, 3, 4)]] void syslogOnce(int priority, const char* format, ...);

private:
    [[nodiscard]] bool isMappable(const char* operation, const QString& name);

    Logger::RedisLogger* m_logger;
    ServiceInfo* m_serviceInfo;
    std::set<QString> m_reserved; ///< part of the object's layout on the device; never filled
};

} // namespace orvo
