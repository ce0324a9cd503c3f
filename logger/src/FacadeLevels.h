#pragma once

#include <cstdint>

namespace orvo::Logger
{

/// What one level index of the facade stands for.
struct FacadeLevel
{
    std::uint32_t level;
    int syslogPriority;
};

/// Null for what is no index.
const FacadeLevel* facadeLevel(int levelIndex);

} // namespace orvo::Logger
