#pragma once

#include "SupervisionContext.h"

#include <QString>

#include <memory>

namespace orvo
{

class SuprSMSystem;
class SuprState;

/// Supervises one service of the device by name.
///
/// Shape (bad = the ping failed, or it told a run level that the state does not know):
///
///     built
///       |
///       v
///     +----------------+ -- "up" -----------------------> +----------------+
///     |  SuprStarting  |                                  |     SuprUp     |
///     |  bears 6 bad   | <----------------- "starting" -- |  bears 3 bad   |
///     +----------------+                                  +----------------+
///       |           ^                                       |
///       | "down",   | "up", "starting", 2nd bad (stopped    | "down", 4th bad,
///       | 7th bad   | and started first), or the device     | bad and off the bus
///       v           | itself is still starting              |
///     +----------------+                                    |
///     |    SuprDown    | <----------------------------------+
///     |  bears 1 bad   |
///     +----------------+
///
/// In developer mode SuprDown is left only by "up" and "starting": nothing is stopped or started.
/// Entering SuprUp and SuprDown is reported to the system machine; SuprStarting is silent.
///
/// Owns:    the current state, exactly one at any time. The destructor deletes it without exit().
/// Borrows: the context and the system machine, which outlive it.
/// Threads: event loop only.
class SuprSM
{
public:
    /// Enters SuprStarting: the service is pinged as soon as the event loop runs.
    SuprSM(const SupervisionContext* context, SuprSMSystem* system, const QString& name);
    virtual ~SuprSM();
    SuprSM(const SuprSM&) = delete;
    SuprSM& operator=(const SuprSM&) = delete;

    /// Leaves the current state (exit), enters newState (entry), deletes the old one. While
    /// newState's entry() runs, the old state is still the current one.
    ///
    /// Owns:   true: newState now belongs to the machine, and the state that asked is gone, so its
    ///         handler returns at once. False (null, the current state itself, or one of the same
    ///         name): nothing happened and newState still belongs to the caller.
    [[nodiscard]] bool transition(SuprState* newState);

    /// Starts the ping timer of the service's current state again with another interval, which
    /// holds until that state is left. False, and the timer goes on as it was, when no state is
    /// active under that name or the interval is negative.
    ///
    /// Units:  ms; 0 = every pass of the event loop.
    [[nodiscard]] static bool restartTimer(const QString& name, int intervalMs);

    /// Tells the service's current state that the name appeared on the bus; only logged.
    static void registered(const QString& name);

private:
    const SupervisionContext* m_context;
    SuprSMSystem* m_system;
    std::unique_ptr<SuprState> m_state;
};

} // namespace orvo
