#pragma once

#include "World.h"

#include <cstdint>
#include <string>

namespace orvo::model
{

/// What came of one scenario.
struct Verdict
{
    bool isAgreed{true};
    std::string difference; ///< what differed, with the deeds before it
    Tally tally;
    std::int64_t simulatedMs{0};
};

/// Plays the scenario of a seed with the model and with the product's objects, each in a world of
/// its own, and compares every deed. The calling process is used up: what the product says only
/// once in its life was said.
Verdict playScenario(std::uint64_t seed, std::int64_t hours, bool isTold);

} // namespace orvo::model
