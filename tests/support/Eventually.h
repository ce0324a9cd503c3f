#pragma once

#include <chrono>
#include <thread>

namespace orvo::test
{

/// Polls every 2 ms until condition() holds, at most boundMs; the last answer of the condition.
/// The bound only ends a failing test; a passing one goes on as soon as the condition holds.
template <typename Condition>
bool eventually(Condition condition, int boundMs = 10000)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(boundMs);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
        {
            return condition();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace orvo::test
