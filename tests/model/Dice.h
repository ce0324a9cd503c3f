#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvo::model
{

/// Random numbers that are the same for the same seed on every machine and library.
class Dice
{
public:
    explicit Dice(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t roll()
    {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    /// From low to high, both included.
    std::int64_t between(std::int64_t low, std::int64_t high)
    {
        return low + static_cast<std::int64_t>(roll() % static_cast<std::uint64_t>(high - low + 1));
    }

    [[nodiscard]] bool isOneOf(std::int64_t count) { return between(1, count) == 1; }

    template <class T, std::size_t size>
    const T& pick(const std::array<T, size>& values)
    {
        return values[static_cast<std::size_t>(roll() % size)];
    }

private:
    std::uint64_t m_state;
};

} // namespace orvo::model
