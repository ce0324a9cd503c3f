#pragma once

#include "SupervisionContext.h"

#include <QString>

#include <memory>

namespace orvo
{

class SuprStateSystem;

/// Judges the health of the device as a whole and feeds its hardware watchdog once a second.
///
/// Shape (all up = the services that are up are exactly those of g_knownServices):
///
///     built                                                     6th tick
///       |     +----------------------+                     +--------------------+
///       +---> |  SuprStartingSystem  | ------------------> | SuprUnstableSystem |
///             |  bears 5 ticks       | <------------------ | bears 10 ticks     |
///             +----------------------+   11th tick: the    +--------------------+
///                        |               package is          |    ^           |
///                        | all up        restarted           |    |           | 11th tick,
///                        v                                   |    |           | 3 restarts in
///             +----------------------+ <---- all up ---------+    |           | 5 minutes
///             |  SuprStableSystem    | ---- a service is down ----+           v
///             +----------------------+                     +--------------------+
///                        ^                                 |  SuprRebootSystem  |
///                        +-- all up, developer mode only - |  reboots on entry  |
///                                                          +--------------------+
///
/// Owns:    the current state, exactly one at any time. The destructor deletes it without exit().
/// Borrows: the context, which outlives it.
/// Threads: event loop only. The package restart blocks it until the package's script returns; the
///          reboot never returns outside developer mode.
class SuprSMSystem
{
public:
    /// Enters SuprStartingSystem; the first tick is one second away.
    explicit SuprSMSystem(const SupervisionContext* context);
    virtual ~SuprSMSystem();
    SuprSMSystem(const SuprSMSystem&) = delete;
    SuprSMSystem& operator=(const SuprSMSystem&) = delete;

    /// A service's machine has entered its up (down) state.
    void serviceIsUp(const QString& service);
    void serviceIsDown(const QString& service);

    /// Leaves the current state (exit), enters next (entry), deletes the old one. While next's
    /// entry() runs, the old state is still the current one.
    ///
    /// Owns:   true: next now belongs to the machine, and the state that asked is gone, so its
    ///         handler returns at once. False (null or the current state): nothing happened.
    [[nodiscard]] bool transition(SuprStateSystem* next);

    /// The class name of the current state.
    [[nodiscard]] QString stateName() const;

private:
    const SupervisionContext* m_context;
    std::unique_ptr<SuprStateSystem> m_state;
};

} // namespace orvo
