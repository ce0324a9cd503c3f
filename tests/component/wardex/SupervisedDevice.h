#pragma once

#include "DbusCmd.h"
#include "LoggedDevice.h"
#include "ScriptJournal.h"
#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "StubService.h"
#include "SupervisionContext.h"
#include "SuprSM.h"
#include "SuprSMSystem.h"
#include "SuprState.h"
#include "VirtualTime.h"

#include "logger/RedisLogger.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvo::test
{

inline constexpr char kVistor[] = "com.orvo.vistor";
inline constexpr char kPictor[] = "com.orvo.pictor";
/// A service of the device that need not be up.
inline constexpr char kWirl[] = "com.orvo.wirl";

/// The lists of what has happened, as claims write them.
using Lines = std::vector<std::string>;

/// A camera device with the supervisor's real parts but for the services, which answer their pings
/// as they are told: real log, bus, actions and scripts in a box, and virtual time.
///
/// Shape:   record "TRACE SuprStarting::up (com.orvo.pictor)", signal "pictor=up vistor=down",
///          command "/opt/orvo/etc/init.d/30_pictor restart".
/// Owns:    everything. The process-wide tables of supervision begin anew with each device.
class SupervisedDevice
{
public:
    enum class Mode
    {
        Field,
        Developer
    };

    /// Powers the device on: the system machine has just entered SuprStartingSystem.
    explicit SupervisedDevice(Mode mode);
    ~SupervisedDevice();
    SupervisedDevice(const SupervisedDevice&) = delete;
    SupervisedDevice& operator=(const SupervisedDevice&) = delete;

    /// Begins to supervise a service: its machine has just entered SuprStarting.
    void supervise(const std::string& service);

    StubService::Answers& service(const std::string& name) { return m_services.at(name); }
    SuprSMSystem& system() { return *m_system; }
    SuprSM& machine(const std::string& service) { return *m_machines.at(service); }
    ServiceInfo& registry() { return m_registry; }
    [[nodiscard]] const SupervisionContext* context() const { return &m_context; }

    /// Name of the system machine's state; of the state that is active for a service, or "none".
    [[nodiscard]] std::string state() const;
    [[nodiscard]] static std::string stateOf(const std::string& service);

    /// The state that is active for a service; there must be one.
    [[nodiscard]] static SuprState& activeState(const std::string& service);

    /// Lets so many seconds pass, each a tick of the system machine.
    void afterTicks(int ticks);

    /// Lets the service's machine ping so many times now, while time stands still.
    void afterPings(const std::string& service, int pings);

    /// A machine reports its service to the system machine.
    void reportUp(const std::string& service);
    void reportDown(const std::string& service);

    /// Brings the system machine from power-on into this state by events: SuprRebootSystem on a
    /// developer's device only.
    void bringTo(const std::string& systemState);

    /// What was logged, signalled and run since it was asked last.
    [[nodiscard]] Lines newRecords();
    [[nodiscard]] Lines newSignals();
    [[nodiscard]] Lines newCommands();

    /// Forgets what was logged, signalled and run up to now.
    void forgetThePast();

    ScriptJournal& scripts() { return m_journal; }

private:
    void addService(const char* name, const char* shortName, const char* script, int intervalMs);

    ScriptJournal m_journal;
    LoggedDevice m_log;
    Logger::RedisLogger m_logger;
    std::map<std::string, StubService::Answers> m_services;
    ServiceInfo m_registry;
    DbusCmd m_dbusCmd;
    ServiceAction m_action;
    SupervisionContext m_context;
    std::unique_ptr<SuprSMSystem> m_system;
    std::map<std::string, std::unique_ptr<SuprSM>> m_machines;
    Lines m_signals;
    std::size_t m_knownCommands{0};
};

} // namespace orvo::test
