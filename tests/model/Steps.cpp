#include "Steps.h"

#include <algorithm>

namespace orvo::model
{

namespace
{

constexpr std::size_t kCountedRestarts = 3;
constexpr unsigned kDecidingTick = 11;

std::vector<Step> makeSteps()
{
    std::vector<Step> steps{{Step::Kind::Tick}, {Step::Kind::Age}};
    for (unsigned machine = 0; machine < kMachines; ++machine)
    {
        for (const char* level : {"up", "starting", "down", "odd"})
        {
            steps.push_back({Step::Kind::Ping, machine, {{true, level}}});
        }
        // A dead service is looked for before its stop and before its start.
        steps.push_back({Step::Kind::Ping, machine, {{false, "down"}}});
        for (const char* looks : {"rr", "rg", "gr", "ff", "rf"})
        {
            steps.push_back({Step::Kind::Ping, machine, {{false, "down"}, looks}});
        }
        steps.push_back({Step::Kind::Ping, machine, {{false, "down"}, "rg", true}});
        steps.push_back({Step::Kind::Appear, machine});
        steps.push_back({Step::Kind::Vanish, machine});
        steps.push_back({Step::Kind::OneShot, machine});
    }
    return steps;
}

} // namespace

const std::vector<Step>& allSteps()
{
    static const std::vector<Step> kSteps = makeSteps();
    return kSteps;
}

bool isPossible(const Step& step, const ModelState& state, const ModelSetting& setting)
{
    const ModelState::Machine& machine = state.machines[step.machine];
    switch (step.kind)
    {
    case Step::Kind::Age:
        return !state.restarts.empty();
    case Step::Kind::Ping:
        return step.script.looks.empty() ||
               (machine.phase == ServicePhase::Down && machine.badPings == 1 &&
                !setting.isDeveloper && state.system != SystemPhase::Starting);
    case Step::Kind::Tick:
    case Step::Kind::Appear:
    case Step::Kind::Vanish:
    case Step::Kind::OneShot:
        return true;
    }
    return true;
}

void take(const Step& step, SupervisorModel& model)
{
    const char* const name = kServiceFacts[step.machine].busName;
    switch (step.kind)
    {
    case Step::Kind::Ping:
        model.tickService(step.machine);
        break;
    case Step::Kind::Tick:
        model.tickSystem();
        break;
    case Step::Kind::Appear:
        model.appearOnBus(name);
        break;
    case Step::Kind::Vanish:
        model.vanishFromBus(name);
        break;
    case Step::Kind::OneShot:
        (void)model.setPingTimeoutOneShot(name, kOneShotMs);
        break;
    case Step::Kind::Age:
        break;
    }
}

std::uint64_t keyOf(const ModelState& state, std::size_t recent)
{
    std::uint64_t key = state.isRebooting ? 1 : 0;
    const auto add = [&key](unsigned value, std::uint64_t values)
    {
        key = key * values + value;
    };
    for (const ModelState::Machine& machine : state.machines)
    {
        add(static_cast<unsigned>(machine.phase), 3);
        add(static_cast<unsigned>(machine.badPings), 8);
    }
    add(state.up, 1U << kServices);
    add(state.onBus, 1U << kServices);
    add(static_cast<unsigned>(state.system), 4);
    add(state.startingTicks, 8);
    add(std::min(state.unstableTicks, kDecidingTick), kDecidingTick + 1);
    add(static_cast<unsigned>(std::min(recent, kCountedRestarts)), kCountedRestarts + 1);
    return key;
}

} // namespace orvo::model
