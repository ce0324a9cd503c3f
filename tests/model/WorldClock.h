#pragma once

#include <cstdint>

namespace orvo::model
{

/// The time of a world: a steady one, and the wall clock that somebody may set.
class WorldClock
{
public:
    virtual ~WorldClock() = default;
    WorldClock(const WorldClock&) = delete;
    WorldClock& operator=(const WorldClock&) = delete;

    [[nodiscard]] virtual std::int64_t now() const = 0;
    [[nodiscard]] virtual std::int64_t wall() const = 0;
    virtual void spend(std::int64_t ms) = 0;
    virtual void stepWall(std::int64_t ms) = 0;

protected:
    WorldClock() = default;
};

/// The time of the model's world: two numbers.
class CountedClock final : public WorldClock
{
public:
    explicit CountedClock(std::int64_t wall) : m_wall(wall) {}

    [[nodiscard]] std::int64_t now() const override { return m_now; }
    [[nodiscard]] std::int64_t wall() const override { return m_wall; }
    void spend(std::int64_t ms) override
    {
        m_now += ms;
        m_wall += ms;
    }
    void stepWall(std::int64_t ms) override { m_wall += ms; }

private:
    std::int64_t m_now{0};
    std::int64_t m_wall;
};

} // namespace orvo::model
