#pragma once

#include "DbusCmd.h"
#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "SupervisionContext.h"
#include "SuprSM.h"
#include "SuprSMSystem.h"

#include "ModelState.h"
#include "Surroundings.h"
#include "WorldClock.h"

#include "logger/RedisLogger.h"

#include <memory>
#include <string>

namespace orvo::model
{

/// Leaves the event loop from inside the endless wait for the reset; thrown by the stand-in of the
/// C library's sleep.
struct Rebooted
{
};

/// Virtual time as a world's clock.
class VirtualWorldClock final : public WorldClock
{
public:
    [[nodiscard]] std::int64_t now() const override;
    [[nodiscard]] std::int64_t wall() const override;
    void spend(std::int64_t ms) override;
    void stepWall(std::int64_t ms) override;
};

/// The product's own objects, wired as start-up does it, in a world: nothing of them is replaced
/// but what they reach outside of the process (RealWorld.cpp).
///
/// Threads: one. One at a time: the process-wide tables of supervision begin anew with each.
class RealSupervisor
{
public:
    RealSupervisor(const ModelSetting& setting, Surroundings* world);
    ~RealSupervisor();
    RealSupervisor(const RealSupervisor&) = delete;
    RealSupervisor& operator=(const RealSupervisor&) = delete;

    DbusCmd& bus() { return m_dbusCmd; }
    ServiceInfo& registry() { return m_registry; }

    /// Notes what the supervisor knows, as describe() does it of a model's state.
    [[nodiscard]] std::string describe() const;

private:
    struct Tables
    {
        explicit Tables(const ModelSetting& setting);
        ~Tables();
        Tables(const Tables&) = delete;
        Tables& operator=(const Tables&) = delete;
    };

    Tables m_tables;
    Logger::RedisLogger m_logger;
    ServiceInfo m_registry;
    DbusCmd m_dbusCmd;
    ServiceAction m_action;
    SupervisionContext m_context;
    std::unique_ptr<SuprSMSystem> m_system;
    std::unique_ptr<SuprSM> m_vistor;
    std::unique_ptr<SuprSM> m_pictor;
};

/// What a supervisor knows, in one line.
[[nodiscard]] std::string describe(const ModelState& state);

} // namespace orvo::model
