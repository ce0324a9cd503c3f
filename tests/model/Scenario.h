#pragma once

#include "Dice.h"
#include "ModelState.h"

#include <cstdint>
#include <string>

namespace orvo::model
{

/// How often something goes wrong.
enum class Temper : unsigned
{
    Calm,
    Rough,
    Stormy
};

/// What reaches a supervisor from outside, besides the answers to what it asks.
struct Incident
{
    enum class Kind : unsigned
    {
        Appear,
        Vanish,
        OneShot,
        StepClock,
        Start,
        Stop,
        List,
        Status,
        Interval
    };

    std::int64_t moment; ///< ms since power-on
    Kind kind;
    std::string service{}; ///< bus name, also one that no device has
    std::int64_t value{0}; ///< ms
};

/// One story, told by its seed alone: the device, its temper, and what happens to it and when.
class Scenario
{
public:
    explicit Scenario(std::uint64_t seed);

    [[nodiscard]] const ModelSetting& setting() const { return m_setting; }
    [[nodiscard]] Temper temper() const { return m_temper; }
    [[nodiscard]] bool hasWatchdog() const { return m_hasWatchdog; }
    [[nodiscard]] std::uint64_t seed() const { return m_seed; }
    [[nodiscard]] const char* timeZone() const { return m_timeZone; }
    /// Wall clock at power-on.
    [[nodiscard]] std::int64_t powerOn() const { return m_powerOn; }
    [[nodiscard]] std::string describe() const;

    [[nodiscard]] const Incident& next() const { return m_next; }
    void tellNext();

private:
    void chooseClock();

    std::uint64_t m_seed;
    Dice m_dice;
    ModelSetting m_setting;
    Temper m_temper{Temper::Calm};
    bool m_hasWatchdog{true};
    const char* m_timeZone{"UTC"};
    std::int64_t m_powerOn{0};
    Incident m_next{0, Incident::Kind::List};
};

} // namespace orvo::model
