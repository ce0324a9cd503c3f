#pragma once

#include "SupervisionContext.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

namespace orvo
{

class SuprSMSystem;

/// One phase in the life of the whole device: ticks once a second, feeds the hardware watchdog and
/// keeps the set of services that are up. SuprSMSystem has the diagram.
///
/// Owns:    its timer (a Qt child, it dies with the state).
/// Borrows: machine and context, which outlive it.
/// Threads: event loop only.
/// Errors:  a watchdog that cannot be fed is logged on every tick; supervision goes on. A call that
///          changes the state deletes this object: the handler returns at once.
/// On the device: /dev/watchdog is open from the first state on; in developer mode it is never
///          touched, so that a debugger may stop the supervisor.
class SuprStateSystem : public QObject
{
    Q_OBJECT

public:
    SuprStateSystem(SuprSMSystem* machine, const SupervisionContext* context);
    ~SuprStateSystem() override;
    SuprStateSystem(const SuprStateSystem&) = delete;
    SuprStateSystem& operator=(const SuprStateSystem&) = delete;

    /// A service's machine has entered its down (up) state. Here: logged only.
    virtual void serviceIsDown(const QString& service);
    virtual void serviceIsUp(const QString& service);

    /// The class name, as it stands in the log.
    [[nodiscard]] virtual QString name() const = 0;

public Q_SLOTS:
    /// The once-a-second tick. Here: feeds the watchdog outside developer mode, and reboots a
    /// device that the registry declares unhealthy.
    virtual void ping();

public:
    /// Starts ticking.
    virtual void entry();

    /// Stops ticking.
    virtual void exit();

    /// Tells the bus for each known service whether it is "up" or "down"; services outside the
    /// known set do not appear.
    virtual void publishAvailability();

protected:
    /// Takes the service into (out of) the up-set and publishes the result.
    void addService(const QString& service);
    void removeService(const QString& service);

    /// The up-set equals the known set, name by name: a stranger that is up spoils it.
    [[nodiscard]] static bool areAllServicesUp();

    /// Makes a fresh state and hands it to the machine, which deletes this one.
    template <class State>
    void goTo()
    {
        changeTo(std::make_unique<State>(m_machine, m_context));
    }

    [[nodiscard]] const SupervisionContext& context() const { return *m_context; }

private:
    /// Logs at TRACE that this state has met the event, and whose.
    void trace(const char* event) const;
    void trace(const char* event, const QString& service) const;

    void changeTo(std::unique_ptr<SuprStateSystem> next);

    SuprSMSystem* m_machine;
    const SupervisionContext* m_context;
    QTimer* m_timer;
};

} // namespace orvo
