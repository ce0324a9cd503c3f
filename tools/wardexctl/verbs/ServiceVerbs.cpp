#include "verbs/ServiceVerbs.h"

#include "bus/ServiceOverview.h"
#include "log/LogFacts.h"
#include "model/ServiceNames.h"
#include "output/ExitStatus.h"
#include "output/Json.h"

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kProcessWidth = 9;
constexpr std::size_t kNameWidth = 17;
constexpr std::size_t kRunsWidth = 14;

/// A service with what the log tells about it.
struct JudgedView
{
    ServiceView view;
    bool isAvailable{false};

    [[nodiscard]] bool isUp() const
    {
        return view.process == "up" && (isAvailable || !view.isJudged);
    }
};

std::string availability(const JudgedView& judged)
{
    if (!judged.view.isJudged)
    {
        return "not judged";
    }
    return judged.isAvailable ? "available" : "not available";
}

Tone toneOf(const JudgedView& judged)
{
    return judged.isUp() ? Tone::Good : Tone::Bad;
}

std::string runs(const ServiceView& view)
{
    return view.process == "up" ? "runs" : "does not run";
}

QJsonObject jsonOf(const JudgedView& judged)
{
    const ServiceView& view = judged.view;
    return {{"name", jsonText(view.name)},
            {"process", jsonText(shortNameOf(view.name))},
            {"running", view.process == "up"},
            {"judged", view.isJudged},
            {"available", view.isJudged ? QJsonValue(judged.isAvailable) : QJsonValue()},
            {"up", judged.isUp()}};
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
    const LogFacts log;
    QJsonArray services;
    for (const ServiceView& view : overview.services)
    {
        const JudgedView judged{view, log.isAvailable(view)};
        services.append(jsonOf(judged));
        output.line(
            padded(view.name, kNameWidth) + padded(shortNameOf(view.name), kProcessWidth) +
            output.tone(toneOf(judged), padded(runs(view), kRunsWidth) + availability(judged)));
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
    const JudgedView judged{view, LogFacts().isAvailable(view)};
    QJsonObject json = ctl::jsonOf("is-up");
    json["service"] = jsonOf(judged);
    json["up"] = judged.isUp();
    output.json(json);
    const std::string why =
        judged.isUp() ? "" : " (its process " + runs(view) + ", " + availability(judged) + ")";
    output.line(output.tone(toneOf(judged), shortNameOf(busName) + " is " +
                                                (judged.isUp() ? "up" : "not up") + why));
    return judged.isUp() ? kOk : kNotUp;
}

} // namespace orvo::ctl
