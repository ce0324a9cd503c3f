#include "verbs/ServiceVerbs.h"

#include "bus/ServiceOverview.h"
#include "model/ServiceNames.h"
#include "output/ExitStatus.h"
#include "output/Json.h"

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kProcessWidth = 9;
constexpr std::size_t kNameWidth = 17;

std::string availability(const ServiceView& view)
{
    if (!view.isJudged)
    {
        return "not judged";
    }
    return view.isListed ? "available" : "not available";
}

Tone toneOf(const ServiceView& view)
{
    return view.isUp() ? Tone::Good : Tone::Bad;
}

std::string runs(const ServiceView& view)
{
    return view.process == "up" ? "runs" : "does not run";
}

QJsonObject jsonOf(const ServiceView& view)
{
    return {{"name", jsonText(view.name)},
            {"process", jsonText(shortNameOf(view.name))},
            {"running", view.process == "up"},
            {"judged", view.isJudged},
            {"available", view.isJudged ? QJsonValue(view.isListed) : QJsonValue()},
            {"up", view.isUp()}};
}

} // namespace

std::string resolved(const Output& output, const std::string& name)
{
    const auto busName = busNameOf(name);
    if (!busName)
    {
        output.problem(
            {name, "no service is called so", "Say one of " + offeredNames() + ", or a bus name."});
    }
    return busName.value_or("");
}

int complainUnknown(const Output& output, const std::string& busName)
{
    output.problem({busName, "this device does not run such a service",
                    "wardexctl list shows those it runs."});
    return kUnknown;
}

int complainSilent(const Output& output, const BusAnswer& answer)
{
    output.problem(SupervisorClient::problemOf(answer));
    return answer.kind == BusAnswer::Kind::Refused ? kFailed : kSupervisorSilent;
}

int listServices(const Output& output)
{
    const ServiceOverview overview = askForServices();
    if (!overview.answer.isAnswered())
    {
        return complainSilent(output, overview.answer);
    }
    QJsonArray services;
    for (const ServiceView& view : overview.services)
    {
        services.append(jsonOf(view));
        output.line(padded(view.name, kNameWidth) + padded(shortNameOf(view.name), kProcessWidth) +
                    output.tone(toneOf(view), padded(runs(view), 14) + availability(view)));
    }
    QJsonObject json = ctl::jsonOf("list");
    json["services"] = services;
    output.json(json);
    return kOk;
}

int isServiceUp(const Output& output, const std::string& name)
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
    const ServiceView& view = overview.services.front();
    QJsonObject json = ctl::jsonOf("is-up");
    json["service"] = jsonOf(view);
    json["up"] = view.isUp();
    output.json(json);
    const std::string why =
        view.isUp() ? "" : " (its process " + runs(view) + ", " + availability(view) + ")";
    output.line(output.tone(toneOf(view),
                            shortNameOf(busName) + " is " + (view.isUp() ? "up" : "not up") + why));
    return view.isUp() ? kOk : kNotUp;
}

} // namespace orvo::ctl
