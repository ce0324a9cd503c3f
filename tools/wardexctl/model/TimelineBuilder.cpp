#include "model/TimelineBuilder.h"

#include "logger/RedisLogger.h"
#include "model/Periods.h"
#include "model/ServiceNames.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

using Kind = SupervisorEvent::Kind;

/// Shown when the log has nothing to begin with, in seconds.
constexpr double kEmptySeconds = 60;
/// A picture needs some width.
constexpr double kLeastSeconds = 1;
/// Ticks without a feed that follow each other belong together.
constexpr double kUnfedRow = 2.5 * kTickSeconds;

/// What the bus tells so soon after a script is that script's work, in seconds.
constexpr double kScriptEcho = 1;
/// A service that is back so soon was restarted, in seconds.
constexpr double kAtOnce = 2;

constexpr char kBeginsLater[] = "the log begins later";
constexpr char kMasked[] = "TRACE was masked";
constexpr char kUntold[] = "no record told yet";
constexpr char kReplaced[] = "the supervisor was replaced";
constexpr char kSilent[] = "the supervisor does not answer";

Health healthOf(const std::string& state)
{
    if (state == "SuprUp" || state == "SuprStableSystem")
    {
        return Health::Up;
    }
    if (state == "SuprStarting" || state == "SuprStartingSystem")
    {
        return Health::Starting;
    }
    if (state == "SuprDown" || state == "SuprUnstableSystem")
    {
        return Health::Down;
    }
    return state == "SuprRebootSystem" ? Health::Rebooting : Health::Unknown;
}

} // namespace

TimelineBuilder::TimelineBuilder(const TimelineWindow& window) : m_window(window)
{
    m_timeline.lanes.push_back({});
    for (const NamedService& service : namedServices())
    {
        if (service.isJudged)
        {
            m_timeline.lanes.push_back({service.busName, {}});
        }
    }
}

void TimelineBuilder::add(const ReadRecord& record)
{
    // Programs are stored in another order than they took the time, and anybody may write a time
    // that is yet to come: no span may end before it begins.
    const double present = std::min(record.seconds(), m_window.now);
    const double time = m_isBegun ? std::max(present, m_last) : present;
    const bool isReplaced = m_isBegun && record.pid != m_model.facts().pid;
    if (isReplaced)
    {
        replaceSupervisor();
    }
    if (!m_isBegun)
    {
        m_first = time;
        m_isBegun = true;
    }
    endScript(time);
    const std::size_t restarts = isReplaced ? 0 : m_model.facts().packageRestarts.size();
    m_model.add(record);
    noteAction(supervisorEvent(record), time, restarts);
    sampleAll(time);
    m_last = time;
}

void TimelineBuilder::replaceSupervisor()
{
    // When the former one ended no record tells.
    for (TimelineLane& lane : m_timeline.lanes)
    {
        forget(lane, kReplaced);
    }
    m_script.reset();
}

void TimelineBuilder::noteAction(const SupervisorEvent& event, double time,
                                 std::size_t restartsBefore)
{
    using Action = TimelineAction::Kind;
    switch (event.kind)
    {
    case Kind::Started:
    case Kind::StartedDeveloper:
        push(Action::SupervisorStart, time, "", event.kind == Kind::StartedDeveloper, false);
        break;
    case Kind::ConsideredDead:
    case Kind::DeadDisabled:
        push(Action::ServiceRestart, time, event.name, event.kind == Kind::DeadDisabled,
             event.kind == Kind::ConsideredDead);
        break;
    case Kind::TooManyRestarts:
        push(Action::Reboot, time, "", isDeveloper(), false);
        break;
    case Kind::Unfed:
        if (!m_lastUnfed || time - *m_lastUnfed > kUnfedRow)
        {
            push(Action::Unfed, time, "", false, false);
        }
        m_lastUnfed = time;
        break;
    case Kind::LeftBus:
    case Kind::CameToBus:
        noteBus(event, time);
        break;
    default:
        break;
    }
    // Developer mode writes only the first one down; the others follow from the states.
    if (m_model.facts().packageRestarts.size() > restartsBefore)
    {
        push(Action::PackageRestart, time, "", isDeveloper(), event.kind == Kind::PackageRestart);
    }
}

void TimelineBuilder::endScript(double time)
{
    if (m_script)
    {
        TimelineAction& action = m_timeline.actions[*m_script];
        action.seconds = time - action.time;
        m_scriptEnd = time;
        m_scriptName = action.name;
        m_script.reset();
    }
}

void TimelineBuilder::noteBus(const SupervisorEvent& event, double time)
{
    if (m_scriptEnd && time - *m_scriptEnd < kScriptEcho &&
        (m_scriptName.empty() || m_scriptName == event.name))
    {
        return;
    }
    const bool isBack = event.kind == Kind::CameToBus;
    const auto last =
        std::find_if(m_timeline.actions.rbegin(), m_timeline.actions.rend(),
                     [&](const TimelineAction& each) { return each.name == event.name; });
    if (isBack && last != m_timeline.actions.rend() &&
        last->kind == TimelineAction::Kind::LeftBus && time - last->time < kAtOnce)
    {
        last->kind = TimelineAction::Kind::Rejoined;
        last->seconds = time - last->time;
        return;
    }
    push(isBack ? TimelineAction::Kind::CameToBus : TimelineAction::Kind::LeftBus, time, event.name,
         false, false);
}

void TimelineBuilder::push(TimelineAction::Kind kind, double time, const std::string& name,
                           bool isNoted, bool runsScript)
{
    if (runsScript)
    {
        m_script = m_timeline.actions.size();
    }
    m_timeline.actions.push_back({kind, time, name, std::nullopt, isNoted});
    if (!name.empty())
    {
        (void)laneOf(name);
    }
}

void TimelineBuilder::sampleAll(double time)
{
    const DeviceFacts& facts = m_model.facts();
    const std::string why = isMasked() ? kMasked : kUntold;
    for (const auto& [name, service] : facts.services)
    {
        (void)laneOf(name);
    }
    for (TimelineLane& lane : m_timeline.lanes)
    {
        const auto service = facts.services.find(lane.name);
        const Health health = lane.name.empty()                 ? deviceHealth()
                              : service == facts.services.end() ? Health::Unknown
                                                                : healthOf(service->second.state);
        sample(lane, health, health == Health::Unknown ? why : "", time);
    }
}

void TimelineBuilder::sample(TimelineLane& lane, Health health, const std::string& why, double time)
{
    if (!lane.spans.empty())
    {
        TimelineSpan& last = lane.spans.back();
        if (last.health == health && last.why == why)
        {
            return;
        }
        last.end = time;
        if (last.seconds() <= 0)
        {
            lane.spans.pop_back();
            sample(lane, health, why, time);
            return;
        }
    }
    lane.spans.push_back({time, time, health, why});
}

void TimelineBuilder::forget(TimelineLane& lane, const std::string& why)
{
    const Health last = lane.spans.empty() ? Health::Unknown : lane.spans.back().health;
    const std::string told = last == Health::Unknown
                                 ? ""
                                 : "; '" + healthText(last, lane.name.empty()) + "' was told last";
    sample(lane, Health::Unknown, why + told, m_last);
}

TimelineLane& TimelineBuilder::laneOf(const std::string& name)
{
    const auto found = std::find_if(m_timeline.lanes.begin(), m_timeline.lanes.end(),
                                    [&](const TimelineLane& each) { return each.name == name; });
    if (found != m_timeline.lanes.end())
    {
        return *found;
    }
    m_timeline.lanes.push_back({name, {}});
    if (m_isBegun && m_last > m_first)
    {
        sample(m_timeline.lanes.back(), Health::Unknown, kUntold, m_first);
    }
    return m_timeline.lanes.back();
}

bool TimelineBuilder::isMasked() const
{
    const DeviceFacts& facts = m_model.facts();
    return !facts.isTraceSeen && (!facts.mask || (*facts.mask & Logger::TRACE) == 0);
}

bool TimelineBuilder::isDeveloper() const
{
    return m_model.facts().started ? m_model.facts().isDeveloper : m_window.isMarked;
}

Health TimelineBuilder::deviceHealth() const
{
    const DeviceFacts& facts = m_model.facts();
    const Health health = healthOf(facts.systemState);
    if (isDeveloper())
    {
        return health == Health::Rebooting ? Health::Down : health;
    }
    return facts.reboot ? Health::Rebooting : health;
}

Timeline TimelineBuilder::finish()
{
    const double now = m_window.now;
    const bool isRebooting = m_isBegun && deviceHealth() == Health::Rebooting;
    double begin = m_window.since.value_or(m_isBegun ? m_first : now - kEmptySeconds);
    begin = std::min(begin, now - kLeastSeconds);
    for (TimelineLane& lane : m_timeline.lanes)
    {
        if (!m_window.isAnswering && !(isRebooting && lane.name.empty()))
        {
            forget(lane, kSilent);
        }
        cut(lane, begin);
    }
    auto& actions = m_timeline.actions;
    actions.erase(std::remove_if(actions.begin(), actions.end(),
                                 [&](const TimelineAction& each) { return each.time < begin; }),
                  actions.end());
    m_timeline.begin = begin;
    m_timeline.end = now;
    m_timeline.isDeveloper = isDeveloper();
    m_timeline.isMasked = m_isBegun && isMasked();
    m_timeline.isSilent = !m_window.isAnswering && !isRebooting;
    m_timeline.isTraceSeen = m_model.facts().isTraceSeen;
    return m_timeline;
}

void TimelineBuilder::cut(TimelineLane& lane, double begin) const
{
    auto& spans = lane.spans;
    const double first = m_isBegun ? std::min(m_first, m_window.now) : m_window.now;
    if (!spans.empty())
    {
        spans.back().end = m_window.now;
    }
    if (spans.empty() || spans.front().begin > begin)
    {
        const double end = spans.empty() ? m_window.now : spans.front().begin;
        spans.insert(spans.begin(), {std::min(begin, first), end, Health::Unknown, kBeginsLater});
    }
    spans.erase(std::remove_if(spans.begin(), spans.end(),
                               [&](const TimelineSpan& each)
                               { return each.end <= begin || each.seconds() <= 0; }),
                spans.end());
    if (!spans.empty())
    {
        spans.front().begin = begin;
    }
}

} // namespace orvo::ctl
