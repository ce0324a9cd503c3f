#include "top/ServicePoll.h"

#include "log/DeviceClock.h"
#include "model/ServiceNames.h"

#include <algorithm>
#include <utility>

namespace orvo::ctl
{

ServicePoll::ServicePoll(BusLink& link, std::function<void()> whenAnswered)
    : m_link(link), m_whenAnswered(std::move(whenAnswered))
{
}

void ServicePoll::tick()
{
    m_untilProcesses = std::max(m_untilProcesses - 1, 0);
    if (!m_askedAt)
    {
        ask();
    }
}

void ServicePoll::askSoon()
{
    m_untilProcesses = 0;
    m_isWanted = m_askedAt.has_value();
    if (!m_askedAt)
    {
        ask();
    }
}

double ServicePoll::silentSeconds() const
{
    return m_askedAt ? DeviceClock::now().age(*m_askedAt) : 0;
}

void ServicePoll::ask()
{
    m_askedAt = DeviceClock::now().monotonic;
    m_isWanted = false;
    m_link.call("getServiceList", {}, SupervisorClient::kTimeoutMs,
                [this](const BusAnswer& answer) { takeList(answer); });
}

void ServicePoll::takeList(const BusAnswer& answer)
{
    m_next = {answer, {}};
    if (!answer.isAnswered())
    {
        end();
        return;
    }
    m_listed = answer.values.value(0).toStringList();
    if (m_untilProcesses == 0 || !m_overview.answer.isAnswered())
    {
        askForProcesses();
        return;
    }
    m_next.services = m_overview.services;
    for (ServiceView& service : m_next.services)
    {
        service.isListed = m_listed.contains(QString::fromStdString(service.name));
    }
    end();
}

void ServicePoll::askForProcesses()
{
    m_untilProcesses = kProcessPeriods;
    m_waitingFor = namedServices().size();
    for (const NamedService& service : namedServices())
    {
        const std::string busName = service.busName;
        m_link.call("getServiceStatus", {QString::fromStdString(busName)},
                    SupervisorClient::kTimeoutMs,
                    [this, busName](const BusAnswer& answer) { takeStatus(busName, answer); });
    }
}

void ServicePoll::takeStatus(const std::string& busName, const BusAnswer& answer)
{
    if (!answer.isAnswered())
    {
        m_next.answer = answer;
    }
    else
    {
        addService(m_next, busName, answer, m_listed);
    }
    if (--m_waitingFor == 0)
    {
        end();
    }
}

void ServicePoll::end()
{
    m_overview = std::exchange(m_next, {});
    m_askedAt.reset();
    m_whenAnswered();
    if (m_isWanted)
    {
        ask();
    }
}

} // namespace orvo::ctl
