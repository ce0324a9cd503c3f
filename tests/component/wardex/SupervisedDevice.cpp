#include "SupervisedDevice.h"

#include "ProcessTables.h"
#include "SupervisionLimits.h"

#include "logger/LogDefaults.h"

#include <QVariantMap>

#include <stdexcept>
#include <utility>

namespace orvo::test
{

namespace
{

std::string asLine(const QVariantMap& availability)
{
    std::string line;
    for (auto entry = availability.cbegin(); entry != availability.cend(); ++entry)
    {
        line += line.empty() ? "" : " ";
        line += entry.key().section('.', -1).toStdString() + "=";
        line += entry.value().toString().toStdString();
    }
    return line;
}

} // namespace

SupervisedDevice::SupervisedDevice(Mode mode)
    : m_logger("wardex", Logger::kLogSocket, Logger::kLogList, true),
      m_registry(&m_logger, mode == Mode::Developer), m_dbusCmd(&m_registry, &m_logger),
      m_action(&m_registry, &m_logger), m_context{&m_dbusCmd, &m_registry, &m_action, &m_logger}
{
    g_upServices.clear();
    g_restartHistory.clear();
    g_unstableTicks = 0;
    addService(kVistor, "corvane", "/opt/orvo/etc/init.d/40_corvane", 2200);
    addService(kPictor, "pictor", "/opt/orvo/etc/init.d/30_pictor", 1000);
    addService(kWirl, "wirl", "/opt/orvo/etc/init.d/10_wirl", 1000);
    m_journal.install("/etc/init.d/mf-optware");
    QObject::connect(&m_dbusCmd, &DbusCmd::signalServiceAvailability, &m_dbusCmd,
                     [this](const QVariantMap& map) { m_signals.push_back(asLine(map)); });
    m_system = std::make_unique<SuprSMSystem>(&m_context);
}

SupervisedDevice::~SupervisedDevice()
{
    g_services.clear(); // before the answers that the services tell
}

void SupervisedDevice::addService(const char* name, const char* shortName, const char* script,
                                  int intervalMs)
{
    m_journal.install(script);
    ServiceInfo::addService(name, ServiceInfo::makeService<StubService>(shortName, intervalMs,
                                                                        script, &m_services[name]));
}

void SupervisedDevice::supervise(const std::string& service)
{
    m_machines[service] =
        std::make_unique<SuprSM>(&m_context, m_system.get(), QString::fromStdString(service));
}

std::string SupervisedDevice::state() const
{
    return m_system->stateName().toStdString();
}

std::string SupervisedDevice::stateOf(const std::string& service)
{
    const auto active = g_activeStates.find(QString::fromStdString(service));
    return active == g_activeStates.end() ? "none" : active->second->name().toStdString();
}

SuprState& SupervisedDevice::activeState(const std::string& service)
{
    return *g_activeStates.at(QString::fromStdString(service));
}

void SupervisedDevice::afterTicks(int ticks)
{
    VirtualTime::instance().advance(std::int64_t{ticks} * kSystemTickMs);
}

void SupervisedDevice::afterPings(const std::string& service, int pings)
{
    for (int i = 0; i < pings; ++i)
    {
        activeState(service).ping();
    }
}

void SupervisedDevice::reportUp(const std::string& service)
{
    m_system->serviceIsUp(QString::fromStdString(service));
}

void SupervisedDevice::reportDown(const std::string& service)
{
    m_system->serviceIsDown(QString::fromStdString(service));
}

void SupervisedDevice::bringTo(const std::string& systemState)
{
    constexpr int kLongEnough = 200; // ticks; three restarts and the fourth need take 68
    if (systemState == "SuprStableSystem")
    {
        reportUp(kVistor);
        reportUp(kPictor);
    }
    for (int i = 0; i < kLongEnough && state() != systemState; ++i)
    {
        afterTicks(1);
    }
    if (state() != systemState)
    {
        throw std::runtime_error("the device does not reach " + systemState);
    }
}

Lines SupervisedDevice::newRecords()
{
    Lines lines = LoggedDevice::lines();
    LogRecords().clear();
    return lines;
}

Lines SupervisedDevice::newSignals()
{
    return std::exchange(m_signals, {});
}

Lines SupervisedDevice::newCommands()
{
    const Lines calls = m_journal.calls();
    const auto first = calls.cbegin() + static_cast<std::ptrdiff_t>(m_knownCommands);
    m_knownCommands = calls.size();
    return {first, calls.cend()};
}

void SupervisedDevice::forgetThePast()
{
    (void)newRecords();
    (void)newSignals();
    (void)newCommands();
}

} // namespace orvo::test
