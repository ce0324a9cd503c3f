#pragma once

#include "model/DeviceModel.h"
#include "top/BusLink.h"
#include "top/DeedCall.h"
#include "top/LogFeed.h"
#include "top/ServicePoll.h"
#include "top/TopState.h"

#include <QSocketNotifier>
#include <QTimer>

#include <functional>

namespace orvo::ctl
{

/// Keeps a state up to date with the device, and acts on that.
///
/// Borrows: the state.
/// Threads: the one of the application object; nothing blocks.
class TopDevice
{
public:
    static constexpr int kPeriodMs = 1000;

    /// whenChanged: something is to be shown; isPeriod: another period is over.
    TopDevice(TopState& state, std::function<void(bool isPeriod)> whenChanged);

    void act(Deed deed, const ServiceView& service);

    /// Takes the clocks, for what is drawn now.
    void takeTime();

private:
    void takePeriod();
    void takeServices();
    void takeLog();
    void learn(const std::vector<ReadRecord>& records);
    [[nodiscard]] std::vector<ReadRecord> unknownOf(std::vector<ReadRecord> records) const;

    TopState& m_state;
    std::function<void(bool)> m_whenChanged;
    DeviceModel m_model;
    BusLink m_link;
    ServicePoll m_poll;
    DeedCall m_deed;
    LogFeed m_feed;
    QSocketNotifier m_fed;
    QTimer m_period;
};

} // namespace orvo::ctl
