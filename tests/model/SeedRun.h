#pragma once

#include "World.h"

#include <cstdint>
#include <string>

namespace orvo::model
{

/// What came of a seed, or of many.
struct SeedFigures
{
    Tally tally;
    std::int64_t simulatedMs{0};
    std::uint64_t seeds{0};
    std::uint64_t failed{0};

    void add(const SeedFigures& other);
    [[nodiscard]] std::string inWords() const;
};

/// Which seeds to play, and how.
struct SeedOrder
{
    std::uint64_t first{1};
    std::uint64_t count{1};
    std::int64_t hours{2};
    int jobs{1};
    bool isTold{false};
};

/// Plays each seed in a process of its own, so many side by side; a seed that failed, or whose
/// process crashed, goes to standard output with what differed and how to play it again.
SeedFigures playSeeds(const SeedOrder& order);

} // namespace orvo::model
