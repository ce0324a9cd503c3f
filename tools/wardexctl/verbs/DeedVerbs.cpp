#include "SupervisionLimits.h"
#include "bus/ServiceOverview.h"
#include "model/Duration.h"
#include "model/Periods.h"
#include "model/ServiceNames.h"
#include "output/ExitStatus.h"
#include "output/Json.h"
#include "verbs/DeedText.h"
#include "verbs/ServiceVerbs.h"

namespace orvo::ctl
{

namespace
{

/// One call of the supervisor.
struct DeedStep
{
    std::string method;
    BusAnswer answer;
};

QJsonObject stepJson(const DeedStep& step)
{
    return {{"method", jsonText(step.method)},
            {"code", step.answer.status.code},
            {"message", step.answer.status.message},
            {"seconds", step.answer.seconds}};
}

DeedStep take(const char* method, const std::string& busName)
{
    return {method, SupervisorClient::call(QLatin1String(method), {QString::fromStdString(busName)},
                                           SupervisorClient::kScriptTimeoutMs,
                                           "waiting for the script of " + shortNameOf(busName))};
}

int tell(const Output& output, Deed deed, const ServiceView& before, const DeedStep& step)
{
    const bool isStart = step.method == kStartMethod;
    const DeedOutcome outcome =
        outcomeOf(deed, before, isStart ? Deed::Start : Deed::Stop, step.answer);
    if (outcome.isDone)
    {
        output.line(output.tone(Tone::Good, shortNameOf(before.name) + " " + outcome.what) +
                    outcome.how);
        return kOk;
    }
    output.problem({shortNameOf(before.name), outcome.what + outcome.how, outcome.remedy});
    return isStart ? kNotUp : kFailed;
}

int carryOut(const Output& output, Deed deed, const ServiceView& before)
{
    QJsonArray steps;
    int status = kOk;
    for (const char* method : methodsOf(deed, before))
    {
        const DeedStep step = take(method, before.name);
        if (!step.answer.isAnswered())
        {
            return complainSilent(output, step.answer);
        }
        steps.append(stepJson(step));
        status = tell(output, deed, before, step);
        if (status != kOk)
        {
            break;
        }
    }
    QJsonObject json = ctl::jsonOf(verbOf(deed));
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
    for (const char* method : methodsOf(deed, before))
    {
        const BusAnswer answer = SupervisorClient::send(QLatin1String(method), name);
        if (!answer.isAnswered())
        {
            return complainSilent(output, answer);
        }
    }
    output.line("asked to " + std::string(verbOf(deed)) + " " + shortNameOf(before.name));
    QJsonObject json = ctl::jsonOf(verbOf(deed));
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
