#include "SuprSMSystem.h"

#include "SuprStartingSystem.h"
#include "SuprStateSystem.h"

namespace orvo
{

SuprSMSystem::SuprSMSystem(const SupervisionContext* context)
    : m_context(context), m_state(std::make_unique<SuprStartingSystem>(this, m_context))
{
    m_state->entry();
}

SuprSMSystem::~SuprSMSystem() = default;

void SuprSMSystem::serviceIsUp(const QString& service)
{
    m_state->serviceIsUp(service);
}

void SuprSMSystem::serviceIsDown(const QString& service)
{
    m_state->serviceIsDown(service);
}

bool SuprSMSystem::transition(SuprStateSystem* next)
{
    if (next == nullptr || next == m_state.get())
    {
        return false;
    }
    m_state->exit();
    next->entry();
    m_state.reset(next);
    return true;
}

QString SuprSMSystem::stateName() const
{
    return m_state->name();
}

} // namespace orvo
