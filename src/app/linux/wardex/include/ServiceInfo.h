#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <set>
#include <type_traits>
#include <utility>

namespace orvo
{

namespace Logger
{
class RedisLogger;
}

/// The registry of supervised services: which services this device runs, how each is reached, and
/// which of them are on the bus at the moment.
///
/// Shape:   a process-wide service table (bus name -> service object, ordered by name), filled once
///          at start-up, and one instance with the developer-mode flag and the registered set.
/// Owns:    the table owns the service objects until the process ends; the instance borrows the
///          logger, which must outlive it.
/// Threads: event loop only.
/// Errors:  unknown names never throw: every look-up answers 0, false or nothing.
class ServiceInfo
{
public:
    /// One supervised service, reached by whatever way the derived class knows.
    ///
    /// Shape:   exactly one virtual slot and no virtual destructor: the service objects keep the
    ///          layout that the device's other programs share. Deleting through the base is
    ///          therefore impossible; makeService() gives every object a deleter for its own type.
    class Service
    {
    public:
        /// name: the short name, which is also the name of its process ("pictor").
        /// pingTimeoutMs: bound of one ping, and at the same time the period of its pings.
        /// initScript: absolute path of its start and stop script.
        Service(const QString& name, int pingTimeoutMs, const QString& initScript);
        Service(const Service&) = delete;
        Service& operator=(const Service&) = delete;

        /// Pings the service; blocks for the ping time-out at most. True when it answered; runLevel
        /// is then what it reported, and untouched otherwise.
        [[nodiscard]] virtual bool isAlive(QString& runLevel) = 0;

        [[nodiscard]] const QString& name() const { return m_name; }
        [[nodiscard]] int pingTimeout() const { return m_pingTimeoutMs; }
        void setPingTimeout(int pingTimeoutMs) { m_pingTimeoutMs = pingTimeoutMs; }
        [[nodiscard]] const QString& initScript() const { return m_initScript; }

    protected:
        ~Service() = default;

    private:
        QString m_name;
        int m_pingTimeoutMs;
        QString m_initScript;
    };

    /// Owns a service object; the deleter knows its concrete type.
    using ServicePtr = std::unique_ptr<Service, void (*)(Service*)>;

    /// Makes a service object of the concrete type T, which must be final: nothing derived from it
    /// could be destroyed as a T.
    template <class T, class... Arguments>
    [[nodiscard]] static ServicePtr makeService(Arguments&&... arguments)
    {
        static_assert(std::is_final_v<T>, "a service object is destroyed as exactly this type");
        return {new T(std::forward<Arguments>(arguments)...), [](Service* service)
                {
                    delete static_cast<T*>(service);
                }};
    }

    ServiceInfo(Logger::RedisLogger* logger, bool developerMode);
    virtual ~ServiceInfo();
    ServiceInfo(const ServiceInfo&) = delete;
    ServiceInfo& operator=(const ServiceInfo&) = delete;

    /// Enters service under its bus name. The first registration of a name wins: a later object is
    /// destroyed at once and the table stays as it was.
    static void addService(const QString& name, ServicePtr service);

    [[nodiscard]] static bool isKnown(const QString& name);

    /// Name of the service's process in the process list, which is its short name; empty for an
    /// unknown service, and for one that cannot be mapped to a process.
    [[nodiscard]] static QString processName(const QString& name);

    /// Path of the service's start and stop script; empty for an unknown service.
    [[nodiscard]] static QString initScript(const QString& name);

    /// Period of the service's pings in ms; 0 (a tick on every pass of the event loop) for an
    /// unknown service.
    [[nodiscard]] int pingInterval(const QString& name);

    /// Changes the period of a known service, in ms. The answer is always false, also when the
    /// period was changed: nothing can be learnt from it.
    bool setPingInterval(const QString& name, int intervalMs);

    /// Asks the service object whether the service answers, see Service::isAlive(). An unknown
    /// service is an ERROR record (in developer mode only the first one of each text), false, and
    /// runLevel untouched.
    [[nodiscard]] bool isAlive(const QString& name, QString& runLevel);

    /// True when a word of the device's process list is exactly processName: a process that is
    /// listed by its full path is not found by its short name.
    ///
    /// Threads: blocks the event loop until /bin/ps has ended, however long that takes.
    /// Errors:  a /bin/ps that is missing, crashes or fails is an ERROR record with its standard
    ///          error, and false.
    [[nodiscard]] bool isProcessRunning(const QString& processName);

    /// Notes that a service is on the bus; false, and nothing noted, for an unknown service.
    bool registerService(const QString& name);

    /// Notes that a service has left the bus; false only for an unknown service.
    bool unregisterService(const QString& name);

    [[nodiscard]] bool isRegistered(const QString& name) const;

    /// The services on the bus, ordered by name.
    [[nodiscard]] QStringList registeredServices() const;

    [[nodiscard]] bool isDeveloperMode() const { return m_developerMode; }

    /// Always true: the device has no further health test. The system machine asks all the same on
    /// every tick, so that one can be added here.
    [[nodiscard]] bool isSystemHealthy() const { return true; }

private:
    Logger::RedisLogger* m_logger;
    bool m_developerMode;
    std::set<QString> m_registered;
};

} // namespace orvo
