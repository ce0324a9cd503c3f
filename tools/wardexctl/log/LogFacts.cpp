#include "log/LogFacts.h"

#include "log/DeviceClock.h"
#include "log/StoredLog.h"
#include "model/DeviceModel.h"
#include "model/Outlook.h"

namespace orvo::ctl
{

LogFacts::LogFacts()
{
    RecordFilter filter;
    filter.source = kSupervisorSource;
    StoredLog log;
    DeviceModel model;
    for (const std::string& raw : log.read(filter).value_or(std::vector<std::string>()))
    {
        model.add(readRecord(raw));
    }
    facts = model.facts();
}

bool LogFacts::isAvailable(const ServiceView& view) const
{
    return ctl::isAvailable(facts, view.name, view.isListed, DeviceClock::now().monotonic);
}

} // namespace orvo::ctl
