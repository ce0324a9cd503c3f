#include "bus/ServiceOverview.h"

#include "model/ServiceNames.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

bool askFor(const std::string& busName, ServiceOverview& overview, const QStringList& listed)
{
    const QString name = QString::fromStdString(busName);
    overview.answer = SupervisorClient::call("getServiceStatus", {name});
    if (!overview.answer.isAnswered() || overview.answer.values.isEmpty())
    {
        return false;
    }
    addService(overview, busName, overview.answer, listed);
    return true;
}

QStringList askForList(ServiceOverview& overview)
{
    overview.answer = SupervisorClient::call("getServiceList");
    return overview.answer.isAnswered() && !overview.answer.values.isEmpty()
               ? overview.answer.values.first().toStringList()
               : QStringList();
}

} // namespace

bool ServiceOverview::areJudgedListed() const
{
    const auto judged = std::count_if(services.begin(), services.end(),
                                      [](const ServiceView& each) { return each.isJudged; });
    return judged > 0 &&
           std::all_of(services.begin(), services.end(),
                       [](const ServiceView& each) { return each.isListed || !each.isJudged; });
}

void addService(ServiceOverview& overview, const std::string& busName, const BusAnswer& status,
                const QStringList& listed)
{
    const std::string process = status.values.value(0).toString().toStdString();
    if (process != "unknown")
    {
        const NamedService* const known = findService(busName);
        overview.services.push_back({busName, process, known != nullptr && known->isJudged,
                                     listed.contains(QString::fromStdString(busName))});
    }
}

ServiceOverview askForServices()
{
    ServiceOverview overview;
    const QStringList listed = askForList(overview);
    if (!overview.answer.isAnswered())
    {
        return overview;
    }
    for (const NamedService& service : namedServices())
    {
        if (!askFor(service.busName, overview, listed))
        {
            break;
        }
    }
    return overview;
}

ServiceOverview askForService(const std::string& busName)
{
    ServiceOverview overview;
    const QStringList listed = askForList(overview);
    if (overview.answer.isAnswered())
    {
        askFor(busName, overview, listed);
    }
    return overview;
}

} // namespace orvo::ctl
