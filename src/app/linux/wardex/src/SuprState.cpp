#include "SuprState.h"

#include "DbusCmd.h"
#include "ProcessTables.h"
#include "ServiceInfo.h"
#include "SuprSM.h"

#include "logger/RedisLogger.h"

namespace orvo
{

SuprState::SuprState(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
                     const QString& serviceName, int badPingThreshold)
    : m_context(context), m_machine(machine), m_system(system), m_serviceName(serviceName),
      m_pingTimer(new QTimer(this)), m_badPingThreshold(badPingThreshold)
{
    // Bad pings are counted as seconds: Qt's usual timer may be a twentieth off.
    m_pingTimer->setTimerType(Qt::PreciseTimer);
    connect(m_pingTimer, &QTimer::timeout, this, &SuprState::ping);
}

SuprState::~SuprState()
{
    // At tear-down the machine deletes its state without exit(): nobody may find it any more.
    const auto active = g_activeStates.find(m_serviceName);
    if (active != g_activeStates.end() && active->second == this)
    {
        g_activeStates.erase(active);
    }
}

void SuprState::entry()
{
    trace("entry");
    g_activeStates[m_serviceName] = this;
    m_pingTimer->start(m_context->serviceInfo->pingInterval(m_serviceName));
}

void SuprState::exit()
{
    trace("exit");
    m_pingTimer->stop();
    g_activeStates.erase(m_serviceName);
}

void SuprState::down()
{
    trace("down");
}

void SuprState::registered()
{
    trace("registered");
}

void SuprState::up()
{
    trace("up");
}

void SuprState::restartTimer(int intervalMs)
{
    m_pingTimer->stop();
    m_pingTimer->start(intervalMs);
}

void SuprState::trace(const char* event) const
{
    if (m_context->logger->isEnabled(Logger::TRACE))
    {
        m_context->logger->log(Logger::TRACE, "%s::%s (%s)", qPrintable(name()), event,
                               qPrintable(m_serviceName));
    }
}

bool SuprState::pingService()
{
    return m_context->dbusCmd->ping(m_serviceName, m_runLevel);
}

void SuprState::changeTo(std::unique_ptr<SuprState> next)
{
    if (m_machine->transition(next.get()))
    {
        (void)next.release(); // the machine's from here on; this state is gone
    }
}

} // namespace orvo
