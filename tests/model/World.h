#pragma once

#include "Dice.h"
#include "Scenario.h"
#include "Surroundings.h"
#include "WorldClock.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace orvo::model
{

/// Something that a supervisor did, and when.
struct Deed
{
    std::int64_t moment;
    std::string text;

    bool operator==(const Deed& other) const
    {
        return moment == other.moment && text == other.text;
    }
};

/// How much went on in a world.
struct Tally
{
    std::uint64_t pings{0};
    std::uint64_t feeds{0};
    std::uint64_t records{0};
    std::uint64_t signals{0};
    std::uint64_t scripts{0};
    std::uint64_t packageRestarts{0};
    std::uint64_t reboots{0};
    std::uint64_t incidents{0};
};

/// The device around one supervisor: its services with their moods, its processes, its scripts, its
/// watchdog and its clock. It notes every deed. Two worlds of one seed behave alike for as long as
/// their supervisors do the same.
///
/// Borrows: the scenario's facts and the clock.
class World final : public Surroundings
{
public:
    World(const Scenario& scenario, WorldClock* clock);

    PingAnswer ping(const std::string& service) override;
    ProcessEnd run(const std::string& commandLine) override;
    void shell(const std::string& commandLine) override;
    bool openWatchdog() override;
    void feed() override;
    void record(const std::string& level, const std::string& text) override;
    void syslog(int priority, const std::string& text) override;
    void signal(const std::string& availability) override;
    [[nodiscard]] std::int64_t now() const override { return m_clock->now(); }
    [[nodiscard]] std::int64_t wallClock() const override { return m_clock->wall(); }
    void moveTo(std::int64_t moment) override;

    /// A deed that needs no surroundings: a reply, a look at the supervisor.
    void note(const std::string& text);
    /// While a command from the bus is obeyed, actions are its own, not the machines'.
    void obey(bool isCommanded) { m_isCommanded = isCommanded; }
    void stepClock(std::int64_t ms);

    /// The device comes back from a reboot.
    void bootAgain();

    [[nodiscard]] const std::vector<Deed>& deeds() const { return m_deeds; }
    void forgetDeeds() { m_deeds.clear(); }
    [[nodiscard]] const Tally& tally() const { return m_tally; }
    /// What must never happen, and did; empty when all was well.
    [[nodiscard]] const std::vector<std::string>& breaches() const { return m_breaches; }

private:
    enum class Mood : unsigned
    {
        Well,
        Shaky,
        Slow,
        Silent,
        Refusing,
        Starting,
        Down,
        Odd
    };

    struct Peer
    {
        bool isRunning{true};
        bool isListedByPath{false};
        std::int64_t readyAt{0}; ///< it answers from then on
        Mood mood{Mood::Well};
        std::int64_t moodUntil{0};
    };

    /// Marks an action for its duration.
    class Action;

    void setMood(Peer& peer);
    [[nodiscard]] unsigned find(const std::string& part) const;
    PingAnswer answerOf(const Peer& peer, std::int64_t& duration);
    ProcessEnd processList();
    void revive(unsigned service);
    void breach(const std::string& text);

    WorldClock* m_clock;
    Dice m_dice;
    const bool m_isDeveloper;
    const bool m_hasWatchdog;
    const Temper m_temper;
    const ServiceSet m_services;
    std::array<Peer, kServices> m_peers{};
    bool m_isCommanded{false};
    bool m_isActing{false};
    bool m_isRebooting{false};
    std::vector<Deed> m_deeds;
    std::vector<std::string> m_breaches;
    Tally m_tally;
};

} // namespace orvo::model
