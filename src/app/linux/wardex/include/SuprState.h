#pragma once

#include "SupervisionContext.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

namespace orvo
{

class SuprSM;
class SuprSMSystem;

/// One phase in the life of a supervised service: pings it on a repeating timer and judges the
/// answers. SuprSM has the diagram.
///
/// Owns:    its ping timer (a Qt child, it dies with the state).
/// Borrows: context, machine and system machine, which outlive it.
/// Threads: event loop only; a ping blocks it for the service's ping time-out at most.
/// Errors:  a call that changes the state deletes this object: the handler returns at once.
class SuprState : public QObject
{
    Q_OBJECT

public:
    /// badPingThreshold: bad pings in a row that are still borne.
    SuprState(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
              const QString& serviceName, int badPingThreshold);
    ~SuprState() override;
    SuprState(const SuprState&) = delete;
    SuprState& operator=(const SuprState&) = delete;

    /// The service is to be considered down. Here and in up() and registered(): logged only.
    virtual void down();

    /// The service's name appeared on the bus.
    virtual void registered();

    /// The service reported that it is up.
    virtual void up();

    /// The class name, as it stands in the log.
    [[nodiscard]] virtual QString name() const = 0;

    /// Becomes the active state of its service and starts pinging at the service's own interval;
    /// a service that is not in the table is pinged on every pass of the event loop.
    virtual void entry();

    /// Stops pinging; the service has no active state until the next entry().
    virtual void exit();

public Q_SLOTS:
    /// One tick: pings the service and judges the answer.
    virtual void ping() = 0;

public:
    /// Stops the ping timer and starts it again with this interval (ms; SuprSM::restartTimer).
    void restartTimer(int intervalMs);

protected:
    /// Logs at TRACE that this state has met the event.
    void trace(const char* event) const;

    /// True when the service answered; m_runLevel is what it said, "down" when it did not answer.
    [[nodiscard]] bool pingService();

    /// Adds one bad ping.
    void countBadPing() { ++m_badPings; }
    void forgetBadPings() { m_badPings = 0; }
    [[nodiscard]] bool isPatienceExhausted() const { return m_badPings > m_badPingThreshold; }

    /// Hands a fresh state to the machine, which deletes this one.
    template <class State>
    void goTo()
    {
        changeTo(std::make_unique<State>(m_context, m_machine, m_system, m_serviceName));
    }

    [[nodiscard]] const SupervisionContext& context() const { return *m_context; }
    [[nodiscard]] SuprSMSystem& system() const { return *m_system; }
    [[nodiscard]] const QString& serviceName() const { return m_serviceName; }
    [[nodiscard]] const QString& runLevel() const { return m_runLevel; }

private:
    void changeTo(std::unique_ptr<SuprState> next);

    const SupervisionContext* m_context;
    SuprSM* m_machine;
    SuprSMSystem* m_system;
    QString m_serviceName;
    int m_badPings{0};
    QTimer* m_pingTimer;
    QString m_runLevel;
    int m_badPingThreshold;
};

} // namespace orvo
