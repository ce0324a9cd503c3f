#include "Exploration.h"

#include <algorithm>
#include <array>

namespace orvo::model
{

namespace
{

constexpr std::int64_t kWall = 1'591'012'800'000;
constexpr std::size_t kCountedRestarts = 3;
constexpr unsigned kLastTick = 10; // after which the device may still be unstable

ModelSetting silent(ModelSetting setting)
{
    setting.logMask = 0;
    return setting;
}

/// The same future in its shortest form. All restarts here are as old as can be and count.
void normalize(ModelState& state)
{
    state.restarts.resize(std::min(state.restarts.size(), kCountedRestarts), kWall);
    state.unstableTicks = std::min(state.unstableTicks, kLastTick + 1);
    state.timerOrder = 0;
}

} // namespace

Exploration::Exploration(const ModelSetting& setting)
    : m_setting(setting), m_world(setting.isDeveloper), m_model(silent(setting), &m_world)
{
    m_world.setWallClock(kWall);
    m_model.powerOn();
    (void)numberOf(m_model.state());
    for (std::uint32_t number = 0; number < m_states.size(); ++number)
    {
        explore(number);
    }
    const std::vector<std::string>& breaches = m_world.breaches();
    m_breaches.insert(m_breaches.end(), breaches.begin(), breaches.end());
}

std::uint32_t Exploration::numberOf(const ModelState& state)
{
    const auto [entry, isNew] = m_numbers.try_emplace(keyOf(state, state.restarts.size()),
                                                      static_cast<std::uint32_t>(m_states.size()));
    if (isNew)
    {
        m_states.push_back(state);
        normalize(m_states.back());
        m_keys.push_back(entry->first);
    }
    return entry->second;
}

void Exploration::explore(std::uint32_t number)
{
    const ModelState before = m_states[number];
    const std::vector<Step>& steps = allSteps();
    m_edges.emplace_back();
    for (std::size_t index = 0; index < steps.size(); ++index)
    {
        const Step& step = steps[index];
        if (!isPossible(step, before, m_setting))
        {
            continue;
        }
        m_model.setState(before);
        m_world.begin(step.script);
        take(step, m_model);
        ModelState after = m_model.state();
        if (step.kind == Step::Kind::Age)
        {
            after.restarts.pop_back();
        }
        checkStep(step, before, after);
        // A rebooted device is powered on again.
        const std::uint32_t target = after.isRebooting ? 0 : numberOf(after);
        m_edges.back().push_back({static_cast<std::uint16_t>(index), target});
    }
    if (before.system == SystemPhase::Unstable)
    {
        ++m_unstableStates;
        checkRecovery(before);
    }
}

void Exploration::checkStep(const Step& step, const ModelState& before, const ModelState& after)
{
    if ((after.system == SystemPhase::Stable && after.up != kMustBeUp) ||
        (after.system == SystemPhase::Starting && after.up == kMustBeUp) ||
        (after.system == SystemPhase::Unstable && after.up == kMustBeUp))
    {
        breach("the system machine and the services that are up disagree", after);
    }
    const bool wasUnstable = before.system == SystemPhase::Unstable;
    const bool isUnstable = after.system == SystemPhase::Unstable;
    // Each tick of an unstable period brings its end nearer, and nothing takes it farther away.
    if (wasUnstable && isUnstable &&
        (after.unstableTicks < before.unstableTicks || after.unstableTicks > kLastTick + 1 ||
         (step.kind == Step::Kind::Tick && after.unstableTicks != before.unstableTicks + 1) ||
         (step.kind == Step::Kind::Tick && after.unstableTicks > kLastTick)))
    {
        breach("an unstable period without a bound", after);
    }
    if (m_setting.isDeveloper && after.isRebooting)
    {
        breach("a developer's device reboots", after);
    }
    if (!m_setting.isDeveloper && after.system == SystemPhase::Reboot && !after.isRebooting)
    {
        breach("a device waits for a reboot that was not commanded", after);
    }
}

void Exploration::checkRecovery(const ModelState& unstable)
{
    if (m_setting.services != kMustBeUp)
    {
        return; // on a device without the judged services nothing can be good
    }
    std::array<unsigned, std::size_t{2} * kMachines> order{Vistor, Vistor, Pictor, Pictor};
    do
    {
        m_model.setState(unstable);
        for (const unsigned machine : order)
        {
            m_world.begin({{true, "up"}});
            m_model.tickService(machine);
        }
        if (m_model.state().system != SystemPhase::Stable)
        {
            breach("good services do not end an unstable period", unstable);
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

void Exploration::breach(const std::string& text, const ModelState& state)
{
    m_breaches.push_back(text + ": " + SupervisorModel::name(state.system) + " " +
                         SupervisorModel::name(state.machines[Vistor].phase) + " " +
                         SupervisorModel::name(state.machines[Pictor].phase) + " ticks " +
                         std::to_string(state.unstableTicks));
}

std::size_t Exploration::edgeCount() const
{
    std::size_t count = 0;
    for (const std::vector<Edge>& edges : m_edges)
    {
        count += edges.size();
    }
    return count;
}

} // namespace orvo::model
