#include "SuprSM.h"

#include "ProcessTables.h"
#include "SuprStarting.h"
#include "SuprState.h"

namespace orvo
{

SuprSM::SuprSM(const SupervisionContext* context, SuprSMSystem* system, const QString& name)
    : m_context(context), m_system(system),
      m_state(std::make_unique<SuprStarting>(m_context, this, m_system, name))
{
    m_state->entry();
}

SuprSM::~SuprSM() = default;

bool SuprSM::transition(SuprState* newState)
{
    if (newState == nullptr || newState == m_state.get() || newState->name() == m_state->name())
    {
        return false;
    }
    m_state->exit();
    newState->entry();
    m_state.reset(newState);
    return true;
}

bool SuprSM::restartTimer(const QString& name, int intervalMs)
{
    const auto active = g_activeStates.find(name);
    // A timer cannot be started with a negative interval: the service would not be pinged any more.
    if (active == g_activeStates.end() || intervalMs < 0)
    {
        return false;
    }
    active->second->restartTimer(intervalMs);
    return true;
}

void SuprSM::registered(const QString& name)
{
    const auto active = g_activeStates.find(name);
    if (active != g_activeStates.end())
    {
        active->second->registered();
    }
}

} // namespace orvo
