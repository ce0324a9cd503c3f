#include "ModelLog.h"
#include "SupervisorModel.h"

#include <cctype>
#include <sstream>

namespace orvo::model
{

namespace
{

constexpr int kCritical = 2;
constexpr int kNoError = 0;
constexpr int kTimerRestartFailed = 400004;
constexpr int kStartFailed = 400006;
constexpr int kStopFailed = 400007;

const char* levelName(std::uint32_t level)
{
    switch (level)
    {
    case kTrace:
        return "TRACE";
    case kWarn:
        return "WARN";
    case kError:
        return "ERROR";
    case kFatal:
        return "FATAL";
    default:
        return "EMERG";
    }
}

/// As it stands in a record.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char byte : text)
    {
        if (std::isprint(static_cast<unsigned char>(byte)) == 0)
        {
            result += '#';
            continue;
        }
        if (byte == '"' || byte == '/' || byte == '\\')
        {
            result += '\\';
        }
        result += byte;
    }
    return result;
}

} // namespace

bool SupervisorModel::isKnown(unsigned service) const
{
    return service < kServices && (m_setting.services & bitOf(service)) != 0;
}

unsigned SupervisorModel::find(const std::string& name) const
{
    unsigned service = 0;
    while (service < kServices && name != kServiceFacts[service].busName)
    {
        ++service;
    }
    return service;
}

int SupervisorModel::interval(unsigned service)
{
    const int intervalMs = isKnown(service) ? m_state.intervals[service] : 0;
    log(kTrace, std::string("Ping interval of service ") + kServiceFacts[service].busName + " is " +
                    std::to_string(intervalMs));
    return intervalMs;
}

void SupervisorModel::setPingInterval(const std::string& name, int intervalMs)
{
    const unsigned service = find(name);
    if (isKnown(service))
    {
        m_state.intervals[service] = intervalMs;
    }
    log(kTrace, "Set Ping interval of service " + name + " to " + std::to_string(intervalMs));
}

bool SupervisorModel::isRunning(const std::string& process)
{
    const ProcessEnd list = m_surroundings->run("/bin/ps");
    if (!list.isSuccess)
    {
        log(kError, "isProcessRunning: stderr: " + list.err);
        return false;
    }
    std::istringstream words(list.out);
    for (std::string word; words >> word;)
    {
        if (word == process)
        {
            return true;
        }
    }
    return false;
}

bool SupervisorModel::start(unsigned service)
{
    if (!isKnown(service))
    {
        return false;
    }
    const ServiceFacts& facts = kServiceFacts[service];
    return isRunning(facts.process) ||
           m_surroundings->run(std::string(facts.script) + " restart").isSuccess;
}

bool SupervisorModel::stop(unsigned service)
{
    if (!isKnown(service))
    {
        return false;
    }
    const ServiceFacts& facts = kServiceFacts[service];
    return isRunning(facts.process) &&
           m_surroundings->run(std::string(facts.script) + " stop").isSuccess;
}

void SupervisorModel::restartPackage()
{
    if (m_setting.isDeveloper)
    {
        const std::string text =
            "SUPERVISOR would restart mf-optware, but saved via developer mode";
        logOnce(kFatal, text);
        syslogOnce(text);
        return;
    }
    const std::string text =
        "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware";
    log(kFatal, text);
    m_surroundings->syslog(kCritical, text);
    m_surroundings->shell("rm -f /tmp/core_*");
    m_surroundings->shell("/etc/init.d/mf-optware restart");
}

void SupervisorModel::restartSystem()
{
    if (m_setting.isDeveloper)
    {
        const std::string text =
            "SUPERVISOR WOULD RESTART SYSTEM via /dev/watchdog ... but saved via developer mode";
        logOnce(kEmerg, m_setting.program + ": " + text);
        syslogOnce(text);
        return;
    }
    const std::string text = "SUPERVISOR RESTARTING SYSTEM via /dev/watchdog ...";
    log(kEmerg, m_setting.program + ": " + text);
    m_surroundings->syslog(kCritical, text);
    m_surroundings->shell("reboot");
    m_state.isRebooting = true;
}

void SupervisorModel::syslogOnce(const std::string& text)
{
    if (m_syslogged.insert(text).second)
    {
        m_surroundings->syslog(kCritical, text);
    }
}

void SupervisorModel::log(std::uint32_t level, const std::string& text)
{
    if ((level & m_setting.logMask) != 0)
    {
        m_surroundings->record(levelName(level), escaped(text));
    }
}

void SupervisorModel::logOnce(std::uint32_t level, const std::string& text)
{
    if ((level & m_setting.logMask) != 0 && m_logged.insert(text).second)
    {
        log(level, text);
    }
}

void SupervisorModel::appearOnBus(const std::string& name)
{
    log(kTrace, "DBus service " + name + " available");
    const unsigned service = find(name);
    if (isKnown(service))
    {
        m_state.onBus |= bitOf(service);
    }
    else
    {
        log(kWarn, "DBus service " + name + " could not be registered internally?!");
    }
    if (service < kMachines)
    {
        event(service, "registered");
    }
}

void SupervisorModel::vanishFromBus(const std::string& name)
{
    log(kTrace, "DBus Service " + name + " unavailable");
    const unsigned service = find(name);
    if (isKnown(service))
    {
        m_state.onBus &= ~bitOf(service);
    }
    else
    {
        log(kWarn, "DBus service " + name + " could not be unregistered internally?!");
    }
}

int SupervisorModel::startService(const std::string& name)
{
    return start(find(name)) ? kNoError : kStartFailed;
}

int SupervisorModel::stopService(const std::string& name)
{
    return stop(find(name)) ? kNoError : kStopFailed;
}

int SupervisorModel::setPingTimeoutOneShot(const std::string& name, int intervalMs)
{
    const std::string call = "setServicePingTimeoutOneShot: restartTimer(" + name + ", " +
                             std::to_string(intervalMs) + ")";
    const unsigned machine = find(name);
    if (machine >= kMachines || intervalMs < 0)
    {
        log(kWarn, call + " failed !");
        return kTimerRestartFailed;
    }
    startTimer(machine, intervalMs);
    log(kTrace, call);
    return kNoError;
}

std::string SupervisorModel::serviceList() const
{
    std::string list;
    for (const unsigned service : {Pictor, Quorl, Vistor, Wirl}) // in the order of their names
    {
        if ((m_state.onBus & bitOf(service)) != 0)
        {
            list += list.empty() ? "" : " ";
            list += kServiceFacts[service].busName;
        }
    }
    return list;
}

std::string SupervisorModel::serviceStatus(const std::string& name)
{
    const unsigned service = find(name);
    if (!isKnown(service))
    {
        return "unknown";
    }
    return isRunning(kServiceFacts[service].process) ? "up" : "down";
}

} // namespace orvo::model
