#include "Duel.h"

#include "RealSupervisor.h"
#include "SupervisorModel.h"
#include "UnstablePeriods.h"
#include "VirtualClock.h"
#include "VirtualTime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <ctime>

namespace orvo::model
{

namespace
{

constexpr std::int64_t kHourMs = 3'600'000;
constexpr std::int64_t kLookMs = 60'000; ///< between two looks at what both know
constexpr std::size_t kDeedsBefore = 30;
constexpr std::size_t kDeedsAfter = 8;

std::string told(const Deed& deed)
{
    char moment[32];
    (void)std::snprintf(moment, sizeof moment, "%12.3f s  ",
                        static_cast<double>(deed.moment) / 1e3);
    return moment + deed.text + "\n";
}

void tell(const std::vector<Deed>& deeds, std::size_t first, std::size_t last, std::string& text)
{
    for (std::size_t i = first; i < std::min(last, deeds.size()); ++i)
    {
        text += "    " + told(deeds[i]);
    }
}

class Duel
{
public:
    Duel(std::uint64_t seed, bool isTold)
        : m_scenario(seed), m_isTold(isTold), m_countedClock(m_scenario.powerOn()),
          m_modelWorld(m_scenario, &m_countedClock), m_realWorld(m_scenario, &m_virtualClock),
          m_model(m_scenario.setting(), &m_modelWorld), m_periods(m_model)
    {
        m_model.watch([this](unsigned timer) { m_periods.afterTick(timer); });
        setTimeZone();
        test::VirtualClock::set(m_scenario.powerOn());
    }

    Verdict play(std::int64_t ms)
    {
        powerOn();
        while (m_verdict.isAgreed && m_countedClock.now() < ms)
        {
            const std::int64_t moment =
                std::min(m_scenario.next().moment, m_countedClock.now() + kLookMs);
            if (runUntil(moment) && m_scenario.next().moment <= m_countedClock.now())
            {
                meet(m_scenario.next());
                m_scenario.tellNext();
            }
            look();
            compare();
        }
        m_verdict.tally = m_realWorld.tally();
        m_verdict.tally.incidents = m_incidents;
        m_verdict.simulatedMs = m_countedClock.now();
        return m_verdict;
    }

private:
    void setTimeZone() const
    {
        (void)setenv("TZ", m_scenario.timeZone(), 1); // NOLINT(concurrency-mt-unsafe): one thread
        tzset();
    }

    void powerOn()
    {
        m_real = std::make_unique<RealSupervisor>(m_scenario.setting(), &m_realWorld);
        m_model.powerOn();
        m_periods.begin();
    }

    /// Both event loops run; false when the device has rebooted meanwhile.
    bool runUntil(std::int64_t moment)
    {
        m_model.runUntil(moment);
        bool isRebooted = false;
        try
        {
            auto& time = test::VirtualTime::instance();
            time.advance(std::max<std::int64_t>(0, moment - time.now()));
        }
        catch (const Rebooted&)
        {
            isRebooted = true;
        }
        if (isRebooted != m_model.state().isRebooting)
        {
            m_realWorld.note(isRebooted ? "waits for the reset" : "runs on");
        }
        if (isRebooted)
        {
            compare();
            m_real.reset();
            m_realWorld.bootAgain();
            m_modelWorld.bootAgain();
            powerOn();
        }
        return !isRebooted;
    }

    void meet(const Incident& incident);

    void look()
    {
        m_modelWorld.note("knows " + describe(m_model.state()));
        m_realWorld.note("knows " + m_real->describe());
    }

    void compare();

    Scenario m_scenario;
    bool m_isTold;
    CountedClock m_countedClock;
    VirtualWorldClock m_virtualClock;
    World m_modelWorld;
    World m_realWorld;
    SupervisorModel m_model;
    UnstablePeriods m_periods;
    std::unique_ptr<RealSupervisor> m_real;
    std::string m_past;
    std::uint64_t m_incidents{0};
    Verdict m_verdict;
};

void Duel::meet(const Incident& incident)
{
    ++m_incidents;
    const std::string& name = incident.service;
    const QString qName = QString::fromStdString(name);
    const int value = static_cast<int>(incident.value);
    std::string expected;
    std::string actual;
    m_modelWorld.obey(true);
    m_realWorld.obey(true);
    switch (incident.kind)
    {
    case Incident::Kind::Appear:
        m_model.appearOnBus(name);
        m_real->bus().serviceRegistered(qName);
        break;
    case Incident::Kind::Vanish:
        m_model.vanishFromBus(name);
        m_real->bus().serviceUnregistered(qName);
        break;
    case Incident::Kind::OneShot:
        expected = std::to_string(m_model.setPingTimeoutOneShot(name, value));
        actual = std::to_string(m_real->bus().setServicePingTimeoutOneShot(qName, value).code);
        break;
    case Incident::Kind::StepClock:
        m_modelWorld.stepClock(incident.value);
        m_realWorld.stepClock(incident.value);
        break;
    case Incident::Kind::Start:
        expected = std::to_string(m_model.startService(name));
        actual = std::to_string(m_real->bus().doStartService(qName).code);
        break;
    case Incident::Kind::Stop:
        expected = std::to_string(m_model.stopService(name));
        actual = std::to_string(m_real->bus().doStopService(qName).code);
        break;
    case Incident::Kind::List:
    {
        QStringList services;
        const int code = m_real->bus().getServiceList(services).code;
        actual = std::to_string(code) + " " + services.join(' ').toStdString();
        expected = "0 " + m_model.serviceList();
        break;
    }
    case Incident::Kind::Status:
    {
        QString status;
        const int code = m_real->bus().getServiceStatus(qName, status).code;
        actual = std::to_string(code) + " " + status.toStdString();
        expected = "0 " + m_model.serviceStatus(name);
        break;
    }
    case Incident::Kind::Interval:
        m_model.setPingInterval(name, value);
        actual = m_real->registry().setPingInterval(qName, value) ? "true" : "false";
        expected = "false";
        break;
    }
    m_modelWorld.obey(false);
    m_realWorld.obey(false);
    const std::string label = "incident " + std::to_string(static_cast<unsigned>(incident.kind)) +
                              " " + name + " " + std::to_string(incident.value) + ": ";
    m_modelWorld.note(label + expected);
    m_realWorld.note(label + actual);
}

void Duel::compare()
{
    const std::vector<Deed>& expected = m_modelWorld.deeds();
    const std::vector<Deed>& actual = m_realWorld.deeds();
    const auto [wrong, right] =
        std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
    const auto agreed = static_cast<std::size_t>(wrong - actual.begin());
    if (m_isTold)
    {
        std::string text;
        tell(actual, 0, agreed, text);
        std::fputs(text.c_str(), stdout);
    }
    if (m_verdict.isAgreed && (wrong != actual.end() || right != expected.end()))
    {
        m_verdict.isAgreed = false;
        m_verdict.difference = "both did:\n" + (agreed < kDeedsBefore ? m_past : std::string());
        tell(actual, agreed - std::min(agreed, kDeedsBefore), agreed, m_verdict.difference);
        m_verdict.difference += "then the model:\n";
        tell(expected, agreed, agreed + kDeedsAfter, m_verdict.difference);
        m_verdict.difference += "but the product:\n";
        tell(actual, agreed, agreed + kDeedsAfter, m_verdict.difference);
    }
    std::vector<std::string> breaches = m_periods.breaches();
    breaches.insert(breaches.end(), m_realWorld.breaches().begin(), m_realWorld.breaches().end());
    if (m_verdict.isAgreed && !breaches.empty())
    {
        m_verdict.isAgreed = false;
        m_verdict.difference = "this must never be: " + breaches.front() + "\n";
        tell(actual, agreed - std::min(agreed, kDeedsBefore), agreed, m_verdict.difference);
    }
    m_past.clear();
    tell(actual, agreed - std::min(agreed, kDeedsBefore), agreed, m_past);
    m_modelWorld.forgetDeeds();
    m_realWorld.forgetDeeds();
}

} // namespace

Verdict playScenario(std::uint64_t seed, std::int64_t hours, bool isTold)
{
    if (isTold)
    {
        std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed),
                    Scenario(seed).describe().c_str());
    }
    return Duel(seed, isTold).play(hours * kHourMs);
}

} // namespace orvo::model
