#include "GraphReplay.h"

#include "HandTime.h"
#include "ProcessTables.h"
#include "SuprState.h"
#include "VirtualClock.h"

#include <algorithm>

namespace orvo::model
{

namespace
{

constexpr std::int64_t kPowerOn = 1'591'012'800'000;
constexpr std::int64_t kWindow = 300'000;
constexpr int kSystemTickMs = 1000;
/// ms. Restarts so near to each other leave little room for a time at which only some count.
constexpr std::int64_t kNarrow = 256;
/// Restarts that are too many to look at for each decision.
constexpr std::size_t kLongHistory = 300;

std::string listed(const std::vector<std::string>& deeds)
{
    std::string text;
    for (const std::string& deed : deeds)
    {
        text += "    " + deed + "\n";
    }
    return text;
}

} // namespace

GraphReplay::GraphReplay(const Exploration& exploration, const ModelSetting& setting)
    : m_exploration(exploration), m_setting(setting), m_modelWorld(setting.isDeveloper),
      m_realWorld(setting.isDeveloper), m_model(setting, &m_modelWorld),
      m_arrivals(exploration.edges().size())
{
    for (const std::vector<Edge>& edges : exploration.edges())
    {
        m_new.push_back((std::uint32_t{1} << edges.size()) - 1);
        m_ways.push_back(edges);
        std::vector<Edge>& ways = m_ways.back();
        const auto isSame = [](const Edge& one, const Edge& other)
        {
            return one.target == other.target;
        };
        std::sort(ways.begin(), ways.end(),
                  [](const Edge& one, const Edge& other) { return one.target < other.target; });
        ways.erase(std::unique(ways.begin(), ways.end(), isSame), ways.end());
    }
}

bool GraphReplay::walkAll()
{
    powerOn();
    while (m_difference.empty())
    {
        if (isHistoryWorn())
        {
            powerOn();
        }
        if (hasNewEdge(m_here))
        {
            (void)walk(nextNewEdge());
        }
        else if (!walkToNewEdge())
        {
            break;
        }
    }
    m_real.reset();
    return m_difference.empty();
}

void GraphReplay::powerOn()
{
    ++m_powerOns;
    m_here = 0;
    m_recentRestarts = 0;
    m_realWorld.begin({});
    m_modelWorld.begin({});
    m_real.reset();
    m_real = std::make_unique<RealSupervisor>(m_setting, &m_realWorld);
    m_model.powerOn();
    checkTimers();
    if (m_realWorld.deeds() != m_modelWorld.deeds())
    {
        m_difference = "power-on; the model:\n" + listed(m_modelWorld.deeds()) + "the product:\n" +
                       listed(m_realWorld.deeds());
    }
}

bool GraphReplay::isHistoryWorn() const
{
    const std::vector<std::int64_t>& restarts = m_model.state().restarts;
    const auto isNarrow = [](std::int64_t one, std::int64_t next)
    {
        return next - one < kNarrow;
    };
    return restarts.size() > kLongHistory ||
           std::adjacent_find(restarts.begin(), restarts.end(), isNarrow) != restarts.end();
}

bool GraphReplay::hasNewEdge(std::uint32_t state) const
{
    return m_new[state] != 0;
}

const GraphReplay::Edge& GraphReplay::nextNewEdge()
{
    // One that goes on to further new ones spares a search for them.
    const std::vector<Edge>& edges = m_exploration.edges()[m_here];
    std::size_t chosen = edges.size();
    for (std::size_t i = 0; i < edges.size(); ++i)
    {
        if ((m_new[m_here] >> i & 1U) != 0 &&
            (chosen == edges.size() || hasNewEdge(edges[i].target)))
        {
            chosen = i;
        }
    }
    m_new[m_here] &= ~(1U << chosen);
    return edges[chosen];
}

bool GraphReplay::walkToNewEdge()
{
    std::vector<Edge> way = wayToNewEdge();
    if (way.empty())
    {
        if (m_here == 0)
        {
            return false; // all was walked
        }
        powerOn();
        if (hasNewEdge(m_here))
        {
            return true;
        }
        way = wayToNewEdge();
    }
    return !way.empty() &&
           std::all_of(way.begin(), way.end(), [this](const Edge& edge) { return walk(edge); });
}

std::vector<GraphReplay::Edge> GraphReplay::wayToNewEdge()
{
    // Marked by the number of the search, so that nothing is to be cleared.
    ++m_search;
    m_ahead.assign(1, m_here);
    m_arrivals[m_here].search = m_search;
    for (std::size_t next = 0; next < m_ahead.size(); ++next)
    {
        const std::uint32_t state = m_ahead[next];
        for (const Edge& edge : m_ways[state])
        {
            Arrival& arrival = m_arrivals[edge.target];
            if (arrival.search == m_search)
            {
                continue;
            }
            arrival = {m_search, state, edge};
            if (hasNewEdge(edge.target))
            {
                return wayTo(edge.target);
            }
            m_ahead.push_back(edge.target);
        }
    }
    return {};
}

std::vector<GraphReplay::Edge> GraphReplay::wayTo(std::uint32_t state) const
{
    std::vector<Edge> way;
    for (std::uint32_t back = state; back != m_here; back = m_arrivals[back].from)
    {
        way.push_back(m_arrivals[back].edge);
    }
    std::reverse(way.begin(), way.end());
    return way;
}

void GraphReplay::chooseWallClock()
{
    // Each is later than those before, so the last ones count.
    const std::vector<std::int64_t>& restarts = m_model.state().restarts;
    std::int64_t wallClock = kPowerOn;
    if (!restarts.empty())
    {
        const auto first = restarts.end() - static_cast<std::ptrdiff_t>(m_recentRestarts);
        const std::int64_t newest = restarts.back();
        // A restart of just the window's age does not count any more.
        const std::int64_t leaves = first == restarts.begin() ? newest : *(first - 1) + kWindow;
        const std::int64_t before = m_recentRestarts > 0 ? *first + kWindow : leaves + 2 * kWindow;
        wallClock = leaves > newest ? leaves : newest + (before - newest) / 2;
    }
    m_realWorld.setWallClock(wallClock);
    m_modelWorld.setWallClock(wallClock);
    test::VirtualClock::set(wallClock);
}

bool GraphReplay::walk(const Edge& edge)
{
    const Step& step = allSteps()[edge.step];
    ++m_steps;
    m_recentRestarts -= step.kind == Step::Kind::Age ? 1 : 0;
    chooseWallClock();
    StepScript script = step.script;
    script.isCommanded = false;
    m_modelWorld.begin(script);
    m_realWorld.begin(script);
    const std::size_t restarts = m_model.state().restarts.size();
    take(step, m_model);
    m_recentRestarts += m_model.state().restarts.size() - restarts;
    const bool isRunning = takeOnReal(step);
    if (differs(step, edge, isRunning))
    {
        return false;
    }
    m_here = edge.target;
    if (!isRunning)
    {
        powerOn();
    }
    return m_difference.empty();
}

bool GraphReplay::takeOnReal(const Step& step)
{
    const QString name(kServiceFacts[step.machine].busName);
    try
    {
        switch (step.kind)
        {
        case Step::Kind::Ping:
        case Step::Kind::Tick:
            fire(step);
            break;
        case Step::Kind::Appear:
            m_real->bus().serviceRegistered(name);
            break;
        case Step::Kind::Vanish:
            m_real->bus().serviceUnregistered(name);
            break;
        case Step::Kind::OneShot:
            (void)m_real->bus().setServicePingTimeoutOneShot(name, kOneShotMs);
            break;
        case Step::Kind::Age:
            break;
        }
    }
    catch (const Rebooted&)
    {
        return false;
    }
    checkTimers();
    return true;
}

void GraphReplay::fire(const Step& step)
{
    const SuprState* const active = g_activeStates[kServiceFacts[step.machine].busName];
    for (const HandTime::Timer& timer : HandTime::instance().timers())
    {
        const QObject* const owner = timer.object->parent();
        const bool isTheSystems = !owner->inherits("orvo::SuprState");
        if (step.kind == Step::Kind::Tick ? isTheSystems : owner == active)
        {
            HandTime::instance().fire(timer);
            return;
        }
    }
    m_realWorld.note("a machine without a timer");
}

void GraphReplay::checkTimers()
{
    std::size_t systems = 0;
    std::size_t services = 0;
    for (const HandTime::Timer& timer : HandTime::instance().timers())
    {
        const QObject* const owner = timer.object->parent();
        const bool isActive =
            std::any_of(g_activeStates.begin(), g_activeStates.end(),
                        [owner](const auto& active) { return active.second == owner; });
        services += isActive ? 1 : 0;
        systems +=
            !owner->inherits("orvo::SuprState") && timer.intervalMs == kSystemTickMs ? 1U : 0U;
    }
    if (services != kMachines || systems != 1 ||
        HandTime::instance().timers().size() != kMachines + 1)
    {
        m_realWorld.note("timers that are not those of the three present states");
    }
}

bool GraphReplay::differs(const Step& step, const Edge& edge, bool isRunning)
{
    const ModelState& state = m_model.state();
    std::string expected = listed(m_modelWorld.deeds());
    std::string actual = listed(m_realWorld.deeds());
    if (isRunning && !state.isRebooting)
    {
        expected += "    knows " + describe(state) + "\n";
        actual += "    knows " + m_real->describe() + "\n";
        const bool isFound = m_exploration.key(edge.target) == keyOf(state, m_recentRestarts);
        actual += isFound ? "" : "    (not the state that the exploration told)\n";
    }
    actual += isRunning == state.isRebooting ? "    (one of the two has rebooted)\n" : "";
    for (const std::string& breach : m_realWorld.breaches())
    {
        actual += "    (this must never be: " + breach + ")\n";
    }
    if (expected == actual)
    {
        return false;
    }
    m_difference = "state " + std::to_string(m_here) + ", step " + std::to_string(edge.step) +
                   " (kind " + std::to_string(static_cast<unsigned>(step.kind)) + ", machine " +
                   std::to_string(step.machine) + ", answer " + step.script.answer.level +
                   "); the model:\n" + expected + "the product:\n" + actual;
    return true;
}

} // namespace orvo::model
