#pragma once

#include "Exploration.h"
#include "RealSupervisor.h"
#include "SupervisorModel.h"

#include <memory>
#include <string>
#include <vector>

namespace orvo::model
{

/// Walks every edge of an exploration with the product's objects, the model beside them, by ways
/// through the graph that begin at power-on. Each step must make both do the same and know the
/// same, lead to the state that the exploration told, and leave exactly three timers running.
///
/// Borrows: the exploration. The process is used up, as by playScenario().
class GraphReplay
{
public:
    GraphReplay(const Exploration& exploration, const ModelSetting& setting);

    /// False when a step differed; difference() tells how.
    bool walkAll();

    [[nodiscard]] std::size_t steps() const { return m_steps; }
    [[nodiscard]] std::size_t powerOns() const { return m_powerOns; }
    [[nodiscard]] const std::string& difference() const { return m_difference; }

private:
    using Edge = Exploration::Edge;

    void powerOn();
    bool walk(const Edge& edge);
    bool walkToNewEdge();
    [[nodiscard]] std::vector<Edge> wayToNewEdge();
    [[nodiscard]] std::vector<Edge> wayTo(std::uint32_t state) const;
    /// Whether the times of the restarts are of no further use; power-on forgets them.
    [[nodiscard]] bool isHistoryWorn() const;
    [[nodiscard]] bool hasNewEdge(std::uint32_t state) const;
    /// Of the present state, which has one; it counts as walked from here on.
    const Edge& nextNewEdge();
    void chooseWallClock();
    /// False when the device rebooted.
    bool takeOnReal(const Step& step);
    void fire(const Step& step);
    void checkTimers();
    bool differs(const Step& step, const Edge& edge, bool isRunning);

    const Exploration& m_exploration;
    const ModelSetting m_setting;
    HandWorld m_modelWorld;
    HandWorld m_realWorld;
    SupervisorModel m_model;
    std::unique_ptr<RealSupervisor> m_real;
    std::vector<std::uint32_t> m_new; ///< by state: a bit for each edge that was not walked yet
    std::vector<std::vector<Edge>> m_ways; ///< by state: one edge to each state that it leads to
    struct Arrival
    {
        std::uint32_t search{0};
        std::uint32_t from{0};
        Edge edge{};
    };
    std::vector<Arrival> m_arrivals; ///< by state: how the last searches came there
    std::vector<std::uint32_t> m_ahead;
    std::uint32_t m_search{0};
    std::uint32_t m_here{0};
    std::size_t m_recentRestarts{0};
    std::size_t m_steps{0};
    std::size_t m_powerOns{0};
    std::string m_difference;
};

} // namespace orvo::model
