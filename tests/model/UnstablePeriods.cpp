#include "UnstablePeriods.h"

namespace orvo::model
{

namespace
{

constexpr unsigned kLongest = 10; // ticks after which the device is still unstable

} // namespace

void UnstablePeriods::begin()
{
    m_ticks = 0;
    m_wasUnstable = false;
}

void UnstablePeriods::afterTick(unsigned timer)
{
    const ModelState& state = m_model.state();
    const bool isUnstable = state.system == SystemPhase::Unstable;
    if (timer == kSystemTimer && m_wasUnstable && ++m_ticks > kLongest && isUnstable)
    {
        m_breaches.push_back("unstable for " + std::to_string(m_ticks) + " ticks");
    }
    if (state.system == SystemPhase::Starting)
    {
        m_ticks = 0;
    }
    if (m_wasUnstable && !isUnstable && timer == kSystemTimer &&
        state.system == SystemPhase::Stable)
    {
        m_breaches.push_back("stable by a tick of the system machine");
    }
    m_wasUnstable = isUnstable;
}

} // namespace orvo::model
