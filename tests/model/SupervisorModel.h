#pragma once

#include "ModelState.h"
#include "Surroundings.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>

namespace orvo::model
{

/// The rules of supervision, written down a second time: both kinds of machine, the set of services
/// on the bus, the restart history, the actions and the lines of the log, on an event loop of three
/// timers. Knows nothing of the product and nothing of Qt.
///
/// Borrows: the surroundings.
/// Threads: one.
class SupervisorModel
{
public:
    SupervisorModel(const ModelSetting& setting, Surroundings* surroundings);

    /// Start-up builds everything, up to the event loop. What the process has said once before is
    /// still known; all else is forgotten.
    void powerOn();

    /// The event loop runs up to this moment, or to the reboot; longer when a handler takes longer.
    void runUntil(std::int64_t moment);

    // What comes from the bus. The numbers are the codes of the replies.
    void appearOnBus(const std::string& name);
    void vanishFromBus(const std::string& name);
    int startService(const std::string& name);
    int stopService(const std::string& name);
    int setPingTimeoutOneShot(const std::string& name, int intervalMs);
    [[nodiscard]] std::string serviceList() const;
    std::string serviceStatus(const std::string& name);
    void setPingInterval(const std::string& name, int intervalMs);

    // One tick, outside the event loop.
    void tickService(unsigned machine);
    void tickSystem();

    [[nodiscard]] const ModelState& state() const { return m_state; }
    void setState(const ModelState& state) { m_state = state; }

    /// Called after each tick in the event loop with the timer that fired.
    void watch(std::function<void(unsigned timer)> watcher) { m_watcher = std::move(watcher); }

    [[nodiscard]] static const char* name(ServicePhase phase);
    [[nodiscard]] static const char* name(SystemPhase phase);

private:
    // event loop
    void startTimer(unsigned timer, int intervalMs);
    [[nodiscard]] std::int64_t nextDeadline() const;
    void passOnce();
    void fire(unsigned timer);

    // service machine
    void tickStarting(unsigned machine, const PingAnswer& answer);
    void tickUp(unsigned machine, const PingAnswer& answer);
    void tickDown(unsigned machine, const PingAnswer& answer);
    void enter(unsigned machine, ServicePhase phase);
    void change(unsigned machine, ServicePhase phase);
    void event(unsigned machine, const char* what);
    PingAnswer ping(unsigned machine);
    void revive(unsigned machine);

    // system machine
    void reportUp(unsigned machine);
    void reportDown(unsigned machine);
    void enterSystem(SystemPhase phase);
    void changeSystem(SystemPhase phase);
    void publish();
    void decide();

    // registry, actions, log
    [[nodiscard]] bool isKnown(unsigned service) const;
    [[nodiscard]] unsigned find(const std::string& name) const;
    int interval(unsigned service);
    bool isRunning(const std::string& process);
    bool start(unsigned service);
    bool stop(unsigned service);
    void restartPackage();
    void restartSystem();
    void log(std::uint32_t level, const std::string& text);
    void logOnce(std::uint32_t level, const std::string& text);
    void syslogOnce(const std::string& text);

    const ModelSetting m_setting;
    Surroundings* m_surroundings;
    ModelState m_state;
    bool m_isWatchdogAsked{false};
    bool m_isWatchdogOpen{false};
    std::set<std::string> m_logged;
    std::set<std::string> m_syslogged;
    std::function<void(unsigned)> m_watcher;
};

} // namespace orvo::model
