#include "World.h"

namespace orvo::model
{

namespace
{

constexpr std::int64_t kSecond = 1000;

} // namespace

class World::Action
{
public:
    explicit Action(World* world, const std::string& text) : m_world(world)
    {
        if (world->m_isActing)
        {
            world->breach("a second action at once: " + text);
        }
        if (world->m_isRebooting)
        {
            world->breach("an action after the reboot command: " + text);
        }
        if (world->m_isDeveloper && !world->m_isCommanded)
        {
            world->breach("an action on a developer's device: " + text);
        }
        world->m_isActing = true;
    }
    ~Action() { m_world->m_isActing = false; }
    Action(const Action&) = delete;
    Action& operator=(const Action&) = delete;

private:
    World* m_world;
};

World::World(const Scenario& scenario, WorldClock* clock)
    : m_clock(clock), m_dice(scenario.seed() * 2), m_isDeveloper(scenario.setting().isDeveloper),
      m_hasWatchdog(scenario.hasWatchdog()), m_temper(scenario.temper()),
      m_services(scenario.setting().services)
{
    for (Peer& peer : m_peers)
    {
        peer.readyAt = m_dice.between(0, 20 * kSecond);
        peer.isListedByPath = m_dice.isOneOf(8);
    }
}

void World::note(const std::string& text)
{
    m_deeds.push_back({now(), text});
}

void World::breach(const std::string& text)
{
    m_breaches.push_back("at " + std::to_string(now()) + " ms: " + text);
}

void World::moveTo(std::int64_t moment)
{
    if (moment > now())
    {
        m_clock->spend(moment - now());
    }
}

void World::stepClock(std::int64_t ms)
{
    m_clock->stepWall(ms);
}

unsigned World::find(const std::string& part) const
{
    unsigned service = 0;
    while (service < kServices && part != kServiceFacts[service].busName &&
           part != kServiceFacts[service].script)
    {
        ++service;
    }
    return service;
}

void World::setMood(Peer& peer)
{
    using Moods = std::array<Mood, 16>;
    constexpr Mood kWell = Mood::Well;
    static constexpr Moods kMoods{kWell,        kWell,        kWell,          kWell,
                                  kWell,        Mood::Shaky,  Mood::Shaky,    Mood::Slow,
                                  Mood::Silent, Mood::Silent, Mood::Refusing, Mood::Starting,
                                  Mood::Down,   Mood::Odd,    Mood::Shaky,    Mood::Refusing};
    peer.mood = m_temper == Temper::Calm && !m_dice.isOneOf(6) ? Mood::Well : m_dice.pick(kMoods);
    const std::int64_t longest = m_temper == Temper::Calm    ? 3000
                                 : m_temper == Temper::Rough ? 400
                                                             : 40;
    // Troubles pass sooner than good times on a calm device; on others anything goes.
    const bool isShort = peer.mood != Mood::Well && m_dice.isOneOf(2);
    peer.moodUntil = now() + m_dice.between(1, isShort ? 15 : longest) * kSecond;
    if (peer.mood == Mood::Refusing && m_dice.isOneOf(2))
    {
        peer.isRunning = false; // it crashed
    }
}

PingAnswer World::answerOf(const Peer& peer, std::int64_t& duration)
{
    PingAnswer none{false, "down"};
    static constexpr std::array<const char*, 6> kOdd{"", "busy", "UP", "Starting", "up ", "ready"};
    switch (peer.mood)
    {
    case Mood::Well:
        return {true, "up"};
    case Mood::Shaky:
        return m_dice.isOneOf(3) ? none : PingAnswer{true, m_dice.isOneOf(12) ? "starting" : "up"};
    case Mood::Slow:
        duration = m_dice.between(300, 2600);
        return {true, "up"};
    case Mood::Silent:
        duration = 100 * kSecond;
        return none;
    case Mood::Refusing:
        return none;
    case Mood::Starting:
        return {true, "starting"};
    case Mood::Down:
        return m_dice.isOneOf(3) ? none : PingAnswer{true, "down"};
    case Mood::Odd:
        return m_dice.isOneOf(4) ? PingAnswer{true, "up"} : PingAnswer{true, m_dice.pick(kOdd)};
    }
    return none;
}

PingAnswer World::ping(const std::string& service)
{
    note("ping " + service);
    ++m_tally.pings;
    const unsigned which = find(service);
    Peer& peer = m_peers.at(which);
    if (now() >= peer.moodUntil && now() >= peer.readyAt)
    {
        setMood(peer);
    }
    std::int64_t duration = m_dice.isOneOf(4) ? m_dice.between(1, 40) : 0;
    PingAnswer answer{false, "down"};
    if (peer.isRunning && now() >= peer.readyAt)
    {
        answer = answerOf(peer, duration);
    }
    else if (peer.isRunning && m_dice.isOneOf(2))
    {
        answer = {true, "starting"};
    }
    const std::int64_t timeOut = kServiceFacts[which].intervalMs;
    if (duration >= timeOut)
    {
        answer = {false, "down"};
        duration = timeOut;
    }
    m_clock->spend(duration);
    return answer;
}

ProcessEnd World::processList()
{
    m_clock->spend(m_dice.between(5, 60));
    if (m_dice.isOneOf(40))
    {
        return {false, "", m_dice.isOneOf(2) ? "" : "error: \"/proc\"\tmust be mounted\n"};
    }
    std::string out = "  PID TTY          TIME CMD\n    1 ?        00:00:01 init\n";
    for (unsigned service = 0; service < kServices; ++service)
    {
        if (m_peers[service].isRunning && (m_services & bitOf(service)) != 0)
        {
            out += "  " + std::to_string(100 + service) + " ?        00:00:09 " +
                   (m_peers[service].isListedByPath ? "/usr/bin/" : "") +
                   kServiceFacts[service].process + "\n";
        }
    }
    return {true, out, ""};
}

void World::revive(unsigned service)
{
    Peer& peer = m_peers[service];
    peer.isRunning = true;
    peer.readyAt = now() + m_dice.between(0, m_dice.isOneOf(4) ? 90 * kSecond : 8 * kSecond);
    peer.moodUntil = 0;
    if (!m_dice.isOneOf(3))
    {
        peer.mood = Mood::Well;
        peer.moodUntil = peer.readyAt + m_dice.between(1, 600) * kSecond;
    }
}

ProcessEnd World::run(const std::string& commandLine)
{
    note("run " + commandLine);
    if (commandLine == "/bin/ps")
    {
        return processList();
    }
    const Action action(this, commandLine);
    ++m_tally.scripts;
    m_clock->spend(m_dice.isOneOf(10) ? m_dice.between(5, 40) * kSecond : m_dice.between(20, 3000));
    const std::size_t blank = commandLine.rfind(' ');
    const unsigned service = find(commandLine.substr(0, blank));
    if (service == kServices || m_dice.isOneOf(6))
    {
        return {false, "", "failed\n"};
    }
    if (commandLine.substr(blank) == " restart")
    {
        revive(service);
    }
    else
    {
        m_peers[service].isRunning = m_dice.isOneOf(10); // a stop may be in vain
    }
    return {true, "done\n", ""};
}

void World::shell(const std::string& commandLine)
{
    note("shell " + commandLine);
    const Action action(this, commandLine);
    m_clock->spend(m_dice.between(1, 200));
    if (commandLine == "reboot")
    {
        ++m_tally.reboots;
        m_isRebooting = true;
    }
    else if (commandLine == "/etc/init.d/mf-optware restart")
    {
        ++m_tally.packageRestarts;
        m_clock->spend(m_dice.between(1, 20) * kSecond);
        revive(Vistor);
        revive(Pictor);
    }
}

bool World::openWatchdog()
{
    note("open watchdog");
    if (m_isDeveloper)
    {
        breach("the watchdog is opened on a developer's device");
    }
    return m_hasWatchdog;
}

void World::feed()
{
    note("feed");
    ++m_tally.feeds;
    if (m_isRebooting)
    {
        breach("a feed after the reboot command");
    }
}

void World::record(const std::string& level, const std::string& text)
{
    note("record " + level + " " + text);
    ++m_tally.records;
}

void World::syslog(int priority, const std::string& text)
{
    note("syslog " + std::to_string(priority) + " " + text);
}

void World::signal(const std::string& availability)
{
    note("signal " + availability);
    ++m_tally.signals;
}

void World::bootAgain()
{
    m_isRebooting = false;
    m_clock->spend(m_dice.between(15, 60) * kSecond);
    for (unsigned service = 0; service < kServices; ++service)
    {
        revive(service);
    }
    note("power on");
}

} // namespace orvo::model
