#include "SupervisionLimits.h"
#include "bus/ServiceOverview.h"
#include "model/Duration.h"
#include "model/Periods.h"
#include "model/ServiceNames.h"
#include "output/ExitStatus.h"
#include "output/Json.h"
#include "verbs/ServiceVerbs.h"

namespace orvo::ctl
{

namespace
{

struct DeedWords
{
    const char* verb;
    const char* done;
};

DeedWords wordsOf(Deed deed)
{
    switch (deed)
    {
    case Deed::Start:
        return {"start", "started"};
    case Deed::Stop:
        return {"stop", "stopped"};
    case Deed::Restart:
        break;
    }
    return {"restart", "restarted"};
}

/// One call of the supervisor.
struct DeedStep
{
    std::string method;
    BusAnswer answer;
};

QJsonObject jsonOf(const DeedStep& step)
{
    return {{"method", jsonText(step.method)},
            {"code", step.answer.status.code},
            {"message", step.answer.status.message},
            {"seconds", step.answer.seconds}};
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

DeedStep take(const char* method, const std::string& busName)
{
    return {method, SupervisorClient::call(QLatin1String(method), {QString::fromStdString(busName)},
                                           SupervisorClient::kScriptTimeoutMs,
                                           "waiting for the script of " + shortNameOf(busName))};
}

int tell(const Output& output, Deed deed, const ServiceView& before, const DeedStep& step)
{
    const std::string name = shortNameOf(before.name);
    const bool isStart = step.method == "doStartService";
    const std::string spent = ", " + durationText(step.answer.seconds) + ", ";
    if (step.answer.status.code == 0)
    {
        const bool isIdle = deed == Deed::Start && before.process == "up";
        output.line(
            output.tone(Tone::Good, isIdle ? name + " runs already, nothing was done"
                                           : name + " was " +
                                                 wordsOf(isStart ? Deed::Start : Deed::Stop).done) +
            spent + statusText(step.answer.status));
        return kOk;
    }
    const NamedService* const known = findService(before.name);
    const std::string script = known != nullptr ? known->script : "its script";
    const bool isIdle = !isStart && before.process != "up";
    output.problem({name,
                    std::string("was not ") + wordsOf(isStart ? Deed::Start : Deed::Stop).done +
                        spent + statusText(step.answer.status),
                    isIdle ? "It does not run, so there was nothing to stop."
                           : "Its script failed: run " + script + (isStart ? " restart" : " stop") +
                                 " by hand to see why."});
    return isStart ? kNotUp : kFailed;
}

int carryOut(const Output& output, Deed deed, const ServiceView& before)
{
    QJsonArray steps;
    int status = kOk;
    const bool stops = deed == Deed::Stop || (deed == Deed::Restart && before.process == "up");
    for (const char* method : {"doStopService", "doStartService"})
    {
        const bool isStop = std::string(method) == "doStopService";
        if ((isStop && !stops) || (!isStop && deed == Deed::Stop))
        {
            continue;
        }
        const DeedStep step = take(method, before.name);
        if (!step.answer.isAnswered())
        {
            return complainSilent(output, step.answer);
        }
        steps.append(jsonOf(step));
        status = tell(output, deed, before, step);
        if (status != kOk)
        {
            break;
        }
    }
    QJsonObject json = ctl::jsonOf(wordsOf(deed).verb);
    json["service"] = jsonText(before.name);
    json["done"] = status == kOk;
    json["waited"] = true;
    json["steps"] = steps;
    output.json(json);
    return status;
}

int handOver(const Output& output, Deed deed, const ServiceView& before)
{
    const QVariantList name{QString::fromStdString(before.name)};
    QStringList methods;
    if (deed == Deed::Stop || (deed == Deed::Restart && before.process == "up"))
    {
        methods << QStringLiteral("doStopService");
    }
    if (deed != Deed::Stop)
    {
        methods << QStringLiteral("doStartService");
    }
    for (const QString& method : methods)
    {
        const BusAnswer answer = SupervisorClient::send(method, name);
        if (!answer.isAnswered())
        {
            return complainSilent(output, answer);
        }
    }
    output.line("asked to " + std::string(wordsOf(deed).verb) + " " + shortNameOf(before.name));
    QJsonObject json = ctl::jsonOf(wordsOf(deed).verb);
    json["service"] = jsonText(before.name);
    json["done"] = QJsonValue();
    json["waited"] = false;
    json["steps"] = QJsonArray();
    output.json(json);
    return kOk;
}

std::string missesText(const std::string& name, double seconds)
{
    const std::string usual = durationText(pingSeconds(name));
    return "Its next ping comes in " + durationText(seconds) + ", and further ones every " +
           durationText(seconds) + ", until its machine changes state; then every " + usual +
           " again.\nWhile it is up, " + std::to_string(kUpBadPingThreshold + 1) +
           " misses in a row take it down: after " +
           durationText(seconds * (kUpBadPingThreshold + 1)) + ".";
}

} // namespace

int actOnService(const Output& output, Deed deed, const std::string& name, bool waits)
{
    const std::string busName = resolved(output, name);
    if (busName.empty())
    {
        return kUnknown;
    }
    const ServiceOverview overview = askForService(busName);
    if (!overview.answer.isAnswered())
    {
        return complainSilent(output, overview.answer);
    }
    if (overview.services.empty())
    {
        return complainUnknown(output, busName);
    }
    const ServiceView& before = overview.services.front();
    return waits ? carryOut(output, deed, before) : handOver(output, deed, before);
}

int graceService(const Output& output, const std::string& name, const std::string& duration)
{
    const auto time = durationOf(duration);
    if (!time || time->count() == 0)
    {
        output.problem({duration, "is no duration from 1ms to 24d", "Say 30s, 1500ms or 10m."});
        return kUsage;
    }
    const std::string busName = resolved(output, name);
    if (busName.empty())
    {
        return kUnknown;
    }
    const BusAnswer answer =
        SupervisorClient::call("setServicePingTimeoutOneShot",
                               {QString::fromStdString(busName), static_cast<int>(time->count())});
    if (!answer.isAnswered())
    {
        return complainSilent(output, answer);
    }
    QJsonObject json = ctl::jsonOf("grace");
    json["service"] = jsonText(busName);
    json["milliseconds"] = static_cast<int>(time->count());
    json["code"] = answer.status.code;
    json["message"] = answer.status.message;
    if (answer.status.code != 0)
    {
        output.problem({busName,
                        "has no machine whose pings could wait, " + statusText(answer.status),
                        "Only corvane and pictor are pinged for the device's health."});
        output.json(json);
        return kUnknown;
    }
    output.json(json);
    output.line(shortNameOf(busName) + " was given time.");
    output.line(missesText(busName, static_cast<double>(time->count()) / kMsPerSecond));
    return kOk;
}

} // namespace orvo::ctl
