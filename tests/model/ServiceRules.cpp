#include "ModelLog.h"
#include "SupervisorModel.h"

namespace orvo::model
{

namespace
{

// How many bad pings in a row a phase bears.
int patience(ServicePhase phase)
{
    switch (phase)
    {
    case ServicePhase::Starting:
        return 6;
    case ServicePhase::Up:
        return 3;
    case ServicePhase::Down:
        return 1;
    }
    return 0;
}

} // namespace

const char* SupervisorModel::name(ServicePhase phase)
{
    switch (phase)
    {
    case ServicePhase::Starting:
        return "SuprStarting";
    case ServicePhase::Up:
        return "SuprUp";
    case ServicePhase::Down:
        return "SuprDown";
    }
    return "";
}

void SupervisorModel::event(unsigned machine, const char* what)
{
    log(kTrace, std::string(name(m_state.machines[machine].phase)) + "::" + what + " (" +
                    kServiceFacts[machine].busName + ")");
}

void SupervisorModel::enter(unsigned machine, ServicePhase phase)
{
    m_state.machines[machine] = {phase, 0};
    event(machine, "entry");
    startTimer(machine, interval(machine));
    if (phase == ServicePhase::Down)
    {
        reportDown(machine);
    }
    else if (phase == ServicePhase::Up)
    {
        reportUp(machine);
    }
}

void SupervisorModel::change(unsigned machine, ServicePhase phase)
{
    event(machine, "exit");
    enter(machine, phase);
}

PingAnswer SupervisorModel::ping(unsigned machine)
{
    if (isKnown(machine))
    {
        return m_surroundings->ping(kServiceFacts[machine].busName);
    }
    const std::string text =
        std::string("isAlive: Unknown service ") + kServiceFacts[machine].busName;
    if (m_setting.isDeveloper)
    {
        logOnce(kError, text);
    }
    else
    {
        log(kError, text);
    }
    return {false, "down"};
}

void SupervisorModel::tickService(unsigned machine)
{
    const ServicePhase phase = m_state.machines[machine].phase;
    if (phase == ServicePhase::Down && m_state.system == SystemPhase::Starting &&
        !m_setting.isDeveloper)
    {
        event(machine, "up");
        change(machine, ServicePhase::Starting);
        return;
    }
    const PingAnswer answer = ping(machine);
    if (phase == ServicePhase::Starting)
    {
        tickStarting(machine, answer);
    }
    else if (phase == ServicePhase::Up)
    {
        tickUp(machine, answer);
    }
    else
    {
        tickDown(machine, answer);
    }
}

void SupervisorModel::tickStarting(unsigned machine, const PingAnswer& answer)
{
    if (answer.isAnswered && answer.level == "up")
    {
        event(machine, "up");
        change(machine, ServicePhase::Up);
    }
    else if ((answer.isAnswered && answer.level == "down") ||
             ++m_state.machines[machine].badPings > patience(ServicePhase::Starting))
    {
        event(machine, "down");
        change(machine, ServicePhase::Down);
    }
}

void SupervisorModel::tickUp(unsigned machine, const PingAnswer& answer)
{
    int& badPings = m_state.machines[machine].badPings;
    const bool isOnBus = (m_state.onBus & bitOf(machine)) != 0;
    const std::string service = kServiceFacts[machine].busName;
    const char* reason = nullptr;
    std::string missing;
    if (!answer.isAnswered)
    {
        ++badPings;
        log(kTrace, "Ping " + service + " failed");
        missing = "Service " + service + " not registered anymore?! Going down.";
        reason = !isOnBus                                ? missing.c_str()
                 : badPings > patience(ServicePhase::Up) ? "Ping threshold exceeded. Going down"
                                                         : nullptr;
    }
    else if (answer.level == "down")
    {
        reason = "System run level is down. Going down.";
    }
    else if (answer.level == "starting")
    {
        log(kTrace, "System run level STARTING. Going starting");
        change(machine, ServicePhase::Starting);
        return;
    }
    else
    {
        badPings = 0;
        m_state.onBus |= isKnown(machine) ? bitOf(machine) : 0;
    }
    if (reason != nullptr)
    {
        log(kTrace, reason);
        event(machine, "down");
        change(machine, ServicePhase::Down);
    }
}

void SupervisorModel::tickDown(unsigned machine, const PingAnswer& answer)
{
    if (answer.isAnswered && (answer.level == "up" || answer.level == "starting"))
    {
        event(machine, "up");
        change(machine, ServicePhase::Starting);
    }
    else if (++m_state.machines[machine].badPings > patience(ServicePhase::Down))
    {
        m_state.machines[machine].badPings = 0;
        revive(machine);
    }
}

void SupervisorModel::revive(unsigned machine)
{
    const std::string dead =
        std::string("Service ") + kServiceFacts[machine].busName + " considered dead, restarting";
    if (m_setting.isDeveloper)
    {
        logOnce(kWarn, dead + " .... (disabled)");
        return;
    }
    log(kWarn, dead);
    stop(machine);
    start(machine);
    change(machine, ServicePhase::Starting);
}

} // namespace orvo::model
