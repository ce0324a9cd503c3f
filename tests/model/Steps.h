#pragma once

#include "HandWorld.h"
#include "ModelState.h"
#include "SupervisorModel.h"

#include <cstdint>
#include <vector>

namespace orvo::model
{

/// One thing that can happen to a supervisor next, whatever the time.
struct Step
{
    enum class Kind : std::uint8_t
    {
        Ping,   ///< a service's timer fires; script.answer is what it says
        Tick,   ///< the system machine's timer fires
        Appear, ///< on the bus
        Vanish,
        OneShot, ///< another interval for the present state
        Age      ///< the oldest restart that counts leaves the window
    };

    Kind kind;
    unsigned machine{0};
    StepScript script{};
};

/// All of them, in an order that does not change.
const std::vector<Step>& allSteps();

/// Whether the step can happen, and differs from another one, in this state.
bool isPossible(const Step& step, const ModelState& state, const ModelSetting& setting);

/// Takes the step on the model; its surroundings have begun it. Age is not the model's to take.
void take(const Step& step, SupervisorModel& model);

/// A state without time: equal keys mean the same future, whatever the steps. Restarts count only
/// inside the window and up to the limit, ticks only up to the one that decides.
/// recent: how many restarts count.
std::uint64_t keyOf(const ModelState& state, std::size_t recent);

inline constexpr int kOneShotMs = 77;

} // namespace orvo::model
