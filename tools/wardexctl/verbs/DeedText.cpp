#include "verbs/DeedText.h"

#include "model/Duration.h"
#include "model/ServiceNames.h"

namespace orvo::ctl
{

const char* verbOf(Deed deed)
{
    switch (deed)
    {
    case Deed::Start:
        return "start";
    case Deed::Stop:
        return "stop";
    case Deed::Restart:
        break;
    }
    return "restart";
}

std::vector<const char*> methodsOf(Deed deed, const ServiceView& before)
{
    switch (deed)
    {
    case Deed::Start:
        return {kStartMethod};
    case Deed::Stop:
        return {kStopMethod};
    case Deed::Restart:
        break;
    }
    return before.process == "up" ? std::vector<const char*>{kStopMethod, kStartMethod}
                                  : std::vector<const char*>{kStartMethod};
}

std::string statusText(const ErrorStatus& status)
{
    std::string text = "status " + std::to_string(status.code);
    if (!status.message.isEmpty())
    {
        text += " (" + status.message.toStdString() + ")";
    }
    return text;
}

DeedOutcome outcomeOf(Deed deed, const ServiceView& before, Deed step, const BusAnswer& answer)
{
    const bool isStart = step == Deed::Start;
    const char* const done = isStart ? "started" : "stopped";
    DeedOutcome outcome;
    outcome.isDone = answer.status.code == 0;
    outcome.how = ", " + durationText(answer.seconds) + ", " + statusText(answer.status);
    if (outcome.isDone)
    {
        outcome.what = deed == Deed::Start && before.process == "up"
                           ? "runs already, nothing was done"
                           : std::string("was ") + done;
        return outcome;
    }
    const NamedService* const known = findService(before.name);
    const std::string script = known != nullptr ? known->script : "its script";
    outcome.what = std::string("was not ") + done;
    outcome.remedy = !isStart && before.process != "up"
                         ? "It does not run, so there was nothing to stop."
                         : "Its script failed: run " + script + (isStart ? " restart" : " stop") +
                               " by hand to see why.";
    return outcome;
}

} // namespace orvo::ctl
