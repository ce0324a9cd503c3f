#include "top/TopDevice.h"

#include "log-reading/OverlapFilter.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvo::ctl
{

TopDevice::TopDevice(TopState& state, std::function<void(bool)> whenChanged)
    : m_state(state), m_whenChanged(std::move(whenChanged)),
      m_poll(m_link, [this] { takeServices(); }),
      m_deed(m_link,
             [this](const Span& outcome)
             {
                 m_state.say(outcome.tone, outcome.text);
                 m_state.busyText.clear();
                 m_poll.askSoon();
                 m_whenChanged(false);
             }),
      m_fed(m_feed.descriptor(), QSocketNotifier::Read)
{
    QObject::connect(&m_fed, &QSocketNotifier::activated, &m_link, [this] { takeLog(); });
    QObject::connect(&m_link, &BusLink::moved, &m_link, [this] { m_poll.askSoon(); });
    QObject::connect(&m_period, &QTimer::timeout, &m_link, [this] { takePeriod(); });
    m_period.start(kPeriodMs);
    m_poll.askSoon();
}

void TopDevice::act(Deed deed, const ServiceView& service)
{
    m_deed.begin(deed, service);
    m_state.busyText = m_deed.busyText();
}

void TopDevice::takeTime()
{
    m_state.view.clock = DeviceClock::now();
    m_state.silentSeconds = m_poll.silentSeconds();
    m_state.busyText = m_deed.busyText();
}

void TopDevice::takePeriod()
{
    m_link.look();
    m_poll.tick();
    m_state.feedGap.look(WatchdogFacts::read());
    m_whenChanged(true);
}

void TopDevice::takeServices()
{
    m_state.view.overview = m_poll.overview();
    m_state.isBusKnown = true;
    m_whenChanged(false);
}

void TopDevice::takeLog()
{
    LogNews news = m_feed.take();
    if (news.isAnew || !news.answers)
    {
        // What was written while nobody could read is lost, and states with it.
        m_model = DeviceModel();
        m_state.feedGap.forgetRecords();
    }
    if (news.answers)
    {
        learn(news.records);
    }
    m_state.log.add(news.isAnew ? unknownOf(std::move(news.records)) : std::move(news.records));
    m_state.view.hasLog = news.answers;
    m_state.view.takeFacts(m_model.facts());
    m_state.isLogKnown = true;
    m_whenChanged(false);
}

void TopDevice::learn(const std::vector<ReadRecord>& records)
{
    for (const ReadRecord& record : records)
    {
        m_model.add(record);
    }
    m_state.feedGap.add(records);
}

std::vector<ReadRecord> TopDevice::unknownOf(std::vector<ReadRecord> records) const
{
    std::vector<std::string> known;
    for (const ReadRecord& record : m_state.log.records())
    {
        known.push_back(record.raw);
    }
    OverlapFilter overlap(known);
    records.erase(std::remove_if(records.begin(), records.end(),
                                 [&](const ReadRecord& each) { return !overlap.isNew(each.raw); }),
                  records.end());
    return records;
}

} // namespace orvo::ctl
