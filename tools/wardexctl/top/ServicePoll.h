#pragma once

#include "bus/ServiceOverview.h"
#include "top/BusLink.h"

#include <functional>
#include <optional>

namespace orvo::ctl
{

/// Keeps up with what the supervisor tells about its services.
///
/// Shape:   one question at a time. The list costs the supervisor nothing and is asked for once per
///          period; for each process it has to run ps, so that is asked for every kProcessPeriods
///          only, and when something moved.
/// Borrows: the link.
/// Threads: the one of the application object.
class ServicePoll
{
public:
    static constexpr int kProcessPeriods = 5;

    ServicePoll(BusLink& link, std::function<void()> whenAnswered);

    /// To be called once per period.
    void tick();
    /// Asks for all as soon as the open question is answered.
    void askSoon();

    [[nodiscard]] const ServiceOverview& overview() const { return m_overview; }
    /// Since when the open question waits; 0 with none open.
    [[nodiscard]] double silentSeconds() const;

private:
    void ask();
    void takeList(const BusAnswer& answer);
    void askForProcesses();
    void takeStatus(const std::string& busName, const BusAnswer& answer);
    void end();

    BusLink& m_link;
    std::function<void()> m_whenAnswered;
    ServiceOverview m_overview;
    ServiceOverview m_next;
    QStringList m_listed;
    std::optional<double> m_askedAt;
    std::size_t m_waitingFor{0};
    int m_untilProcesses{0}; ///< periods
    bool m_isWanted{false};
};

} // namespace orvo::ctl
