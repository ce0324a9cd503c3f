#include "model/DeviceModel.h"

#include "logger/RedisLogger.h"
#include "model/Outlook.h"
#include "model/Periods.h"
#include "model/ServiceNames.h"

namespace orvo::ctl
{

namespace
{

using Kind = SupervisorEvent::Kind;

/// Failed pings further apart than this many periods had an answered one between them. A ping of
/// another service may hold one up.
constexpr double kRowPeriods = 1.9;

} // namespace

void DeviceModel::add(const ReadRecord& record)
{
    const SupervisorEvent event = supervisorEvent(record);
    if (record.source == kSupervisorSource && record.isRecord)
    {
        const bool isStart = event.kind == Kind::Started || event.kind == Kind::StartedDeveloper;
        if (isStart || record.pid != m_facts.pid)
        {
            begin(record);
        }
        if (isStart)
        {
            m_facts.started = record.seconds();
        }
        m_facts.isTraceSeen = m_facts.isTraceSeen || record.level == "TRACE";
    }
    apply(event, record.seconds());
}

void DeviceModel::begin(const ReadRecord& record)
{
    // What the same process announced before its first line still holds.
    const auto mask = record.pid == m_facts.pid ? m_facts.mask : std::nullopt;
    m_facts = DeviceFacts();
    m_facts.pid = record.pid;
    m_facts.mask = mask;
    m_reportedLevel.clear();
    m_isRestartNoted = false;
}

void DeviceModel::apply(const SupervisorEvent& event, double time)
{
    switch (event.kind)
    {
    case Kind::StartedDeveloper:
        m_facts.isDeveloper = true;
        break;
    case Kind::Family:
        m_facts.family = event.name;
        break;
    case Kind::MaskChanged:
        changeMask(event.mask, time);
        break;
    case Kind::SystemEntry:
        enterSystem(event.state, time);
        break;
    case Kind::PackageRestart:
    case Kind::PackageDisabled:
        restartPackage(time);
        break;
    case Kind::TooManyRestarts:
    case Kind::SystemRestart:
    case Kind::SystemRestartDisabled:
        m_facts.reboot = time;
        break;
    case Kind::Unfed:
        m_facts.unfed = time;
        break;
    case Kind::LevelDown:
        m_reportedLevel = "down";
        break;
    case Kind::LevelStarting:
        m_reportedLevel = "starting";
        break;
    default:
        applyService(event, time);
        break;
    }
}

void DeviceModel::changeMask(std::uint32_t mask, double time)
{
    m_facts.mask = mask;
    if ((mask & Logger::TRACE) != 0)
    {
        m_facts.traceHidden.reset();
        return;
    }
    if (!m_facts.traceHidden)
    {
        m_facts.traceHidden = time;
    }
    m_facts.isTraceSeen = false;
    m_facts.systemState.clear();
    m_facts.unstableTicks = 0;
    m_isRestartNoted = false;
    for (auto& [name, service] : m_facts.services)
    {
        ServiceFacts kept;
        kept.lastScript = service.lastScript;
        kept.scripts = service.scripts;
        service = kept;
    }
}

void DeviceModel::applyService(const SupervisorEvent& event, double time)
{
    switch (event.kind)
    {
    case Kind::ServiceEntry:
        enterService(m_facts.services[event.name], event.state, time);
        break;
    case Kind::ServiceDown:
        if (event.state == "SuprUp")
        {
            m_facts.services[event.name].runLevel =
                m_reportedLevel.empty() ? "none" : m_reportedLevel;
        }
        m_reportedLevel.clear();
        break;
    case Kind::PingFailed:
        notePingFailure(event.name, time);
        break;
    case Kind::Grace:
        giveGrace(event.name, event.milliseconds, time);
        break;
    case Kind::ServiceIsUp:
    case Kind::ServiceIsDown:
    {
        ServiceFacts& service = m_facts.services[event.name];
        const bool isUp = event.kind == Kind::ServiceIsUp;
        if (service.isAvailable != isUp)
        {
            service.isAvailable = isUp;
            service.availableSince = time;
        }
        break;
    }
    case Kind::ConsideredDead:
        m_facts.services[event.name].lastScript = time;
        ++m_facts.services[event.name].scripts;
        break;
    default:
        break;
    }
}

void DeviceModel::enterSystem(const std::string& state, double time)
{
    if (m_facts.systemState == "SuprUnstableSystem")
    {
        if (state == "SuprStartingSystem" && !m_isRestartNoted)
        {
            restartPackage(time);
        }
        else if (!m_isRestartNoted)
        {
            m_facts.unstableTicks =
                ticksAfter(m_facts.unstableTicks, time - m_facts.systemSince, kTickSeconds);
        }
    }
    if (state == "SuprStableSystem")
    {
        m_facts.reboot.reset();
    }
    m_facts.systemState = state;
    m_facts.systemSince = time;
    m_isRestartNoted = false;
}

void DeviceModel::enterService(ServiceFacts& service, const std::string& state, double time)
{
    if (state == "SuprUp")
    {
        service.runLevel = "up";
    }
    else if (state == "SuprStarting" && !m_reportedLevel.empty())
    {
        service.runLevel = m_reportedLevel;
    }
    m_reportedLevel.clear();
    service.state = state;
    service.since = time;
    service.failedPings = 0;
    service.interval.reset();
    service.intervalSince = time;
    service.ticksBefore = 0;
}

void DeviceModel::giveGrace(const std::string& name, int milliseconds, double time)
{
    ServiceFacts& service = m_facts.services[name];
    service.ticksBefore = ticksOf(service, name, time).value_or(0);
    service.interval = static_cast<double>(milliseconds) / kMsPerSecond;
    service.intervalSince = time;
}

void DeviceModel::notePingFailure(const std::string& name, double time)
{
    ServiceFacts& service = m_facts.services[name];
    const bool isInARow = time - service.lastFailure < kRowPeriods * intervalOf(service, name);
    service.failedPings = isInARow ? service.failedPings + 1 : 1;
    service.lastFailure = time;
}

void DeviceModel::restartPackage(double time)
{
    m_facts.packageRestarts.push_back(time);
    m_facts.unstableTicks = 0;
    m_isRestartNoted = true;
}

} // namespace orvo::ctl
