#include "RealSupervisor.h"

#include "ProcessTables.h"
#include "RealWorld.h"
#include "SupervisorModel.h"
#include "SuprState.h"
#include "VirtualClock.h"
#include "VirtualTime.h"

#include "logger/LogDefaults.h"

#include <QTimer>
#include <QVariantMap>

namespace orvo::model
{

namespace
{

using test::VirtualClock;
using test::VirtualTime;

/// A service whose peer is the world's.
class WorldService final : public ServiceInfo::Service
{
public:
    explicit WorldService(const ServiceFacts& facts)
        : Service(facts.process, facts.intervalMs, facts.script), m_busName(facts.busName)
    {
    }

    bool isAlive(QString& runLevel) override
    {
        const PingAnswer answer = realWorld().ping(m_busName);
        if (answer.isAnswered)
        {
            runLevel = QString::fromStdString(answer.level);
        }
        return answer.isAnswered;
    }

private:
    const char* m_busName;
};

std::string asLine(const QVariantMap& availability)
{
    std::string line;
    for (auto entry = availability.cbegin(); entry != availability.cend(); ++entry)
    {
        line += line.empty() ? "" : " ";
        line += entry.key().toStdString() + "=" + entry.value().toString().toStdString();
    }
    return line;
}

std::string machine(const std::string& phase, int intervalMs)
{
    return phase + "/" + std::to_string(intervalMs) + " ";
}

std::string system(const std::string& phase, unsigned ticks, const std::string& up,
                   const std::string& onBus, std::size_t restarts, std::int64_t last)
{
    return phase + " unstable " + std::to_string(ticks) + " up [" + up + "] bus [" + onBus +
           "] restarts " + std::to_string(restarts) + " last " + std::to_string(last);
}

template <class Names>
std::string joined(const Names& names)
{
    std::string line;
    for (const QString& name : names)
    {
        line += line.empty() ? "" : " ";
        line += name.toStdString();
    }
    return line;
}

std::string joined(ServiceSet set)
{
    std::string line;
    for (const unsigned service : {Pictor, Quorl, Vistor, Wirl}) // in the order of their names
    {
        if ((set & bitOf(service)) != 0)
        {
            line += line.empty() ? "" : " ";
            line += kServiceFacts[service].busName;
        }
    }
    return line;
}

} // namespace

std::int64_t VirtualWorldClock::now() const
{
    return VirtualTime::instance().now();
}

std::int64_t VirtualWorldClock::wall() const
{
    return VirtualClock::now();
}

void VirtualWorldClock::spend(std::int64_t ms)
{
    VirtualTime::instance().spend(ms);
}

void VirtualWorldClock::stepWall(std::int64_t ms)
{
    VirtualClock::step(ms);
}

RealSupervisor::Tables::Tables(const ModelSetting& setting)
{
    g_upServices.clear();
    g_restartHistory.clear();
    g_unstableTicks = 0;
    for (unsigned service = 0; service < kServices; ++service)
    {
        if ((setting.services & bitOf(service)) != 0)
        {
            const ServiceFacts& facts = kServiceFacts[service];
            ServiceInfo::addService(facts.busName, ServiceInfo::makeService<WorldService>(facts));
        }
    }
}

RealSupervisor::Tables::~Tables()
{
    g_services.clear();
}

RealSupervisor::RealSupervisor(const ModelSetting& setting, Surroundings* world)
    : m_tables((enterRealWorld(world, setting.logMask), setting)),
      m_logger(setting.program, Logger::kLogSocket, Logger::kLogList, true),
      m_registry(&m_logger, setting.isDeveloper), m_dbusCmd(&m_registry, &m_logger),
      m_action(&m_registry, &m_logger), m_context{&m_dbusCmd, &m_registry, &m_action, &m_logger}
{
    QObject::connect(&m_dbusCmd, &DbusCmd::signalServiceAvailability, &m_dbusCmd,
                     [](const QVariantMap& map) { realWorld().signal(asLine(map)); });
    m_system = std::make_unique<SuprSMSystem>(&m_context);
    m_vistor = std::make_unique<SuprSM>(&m_context, m_system.get(),
                                        QString(kServiceFacts[Vistor].busName));
    m_pictor = std::make_unique<SuprSM>(&m_context, m_system.get(),
                                        QString(kServiceFacts[Pictor].busName));
}

RealSupervisor::~RealSupervisor() = default;

std::string RealSupervisor::describe() const
{
    std::string line;
    for (unsigned service = 0; service < kMachines; ++service)
    {
        const auto active = g_activeStates.find(kServiceFacts[service].busName);
        if (active == g_activeStates.end())
        {
            line += "none ";
            continue;
        }
        const auto* const timer = active->second->findChild<QTimer*>();
        line += machine(active->second->name().toStdString(), timer->interval());
    }
    return line +
           system(m_system->stateName().toStdString(), g_unstableTicks, joined(g_upServices),
                  joined(m_registry.registeredServices()), g_restartHistory.size(),
                  g_restartHistory.empty() ? 0 : g_restartHistory.back().toMSecsSinceEpoch());
}

std::string describe(const ModelState& state)
{
    std::string line;
    for (unsigned service = 0; service < kMachines; ++service)
    {
        line += machine(SupervisorModel::name(state.machines[service].phase),
                        state.timers[service].intervalMs);
    }
    return line + system(SupervisorModel::name(state.system), state.unstableTicks, joined(state.up),
                         joined(state.onBus), state.restarts.size(),
                         state.restarts.empty() ? 0 : state.restarts.back());
}

} // namespace orvo::model
