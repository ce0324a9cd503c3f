#include "model/ScriptRuns.h"

#include "model/ServiceNames.h"
#include "model/SupervisorEvent.h"

namespace orvo::ctl
{

std::optional<ScriptRun> longestScriptRun(const std::vector<ReadRecord>& records)
{
    std::optional<ScriptRun> longest;
    const ReadRecord* begin = nullptr;
    std::string what;
    for (const ReadRecord& record : records)
    {
        if (!record.isRecord || record.source != kSupervisorSource)
        {
            continue;
        }
        // A new life of the supervisor says nothing about the script of the one before.
        if (begin != nullptr && begin->pid == record.pid)
        {
            const double seconds = record.seconds() - begin->seconds();
            if (!longest || seconds > longest->seconds)
            {
                longest = ScriptRun{seconds, what};
            }
        }
        const SupervisorEvent event = supervisorEvent(record);
        begin = nullptr;
        if (event.kind == SupervisorEvent::Kind::ConsideredDead)
        {
            begin = &record;
            what = "the scripts of " + shortNameOf(event.name);
        }
        else if (event.kind == SupervisorEvent::Kind::PackageRestart)
        {
            begin = &record;
            what = "the package script";
        }
    }
    return longest;
}

} // namespace orvo::ctl
