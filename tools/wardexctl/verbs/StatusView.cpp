#include "verbs/StatusView.h"

#include "log/RecordText.h"
#include "model/Duration.h"
#include "model/ServiceNames.h"
#include "output/Json.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kScreenWidth = 79;
constexpr std::size_t kMostNext = 2;

Tone toneOfVerdict(Verdict verdict)
{
    switch (verdict)
    {
    case Verdict::Stable:
        return Tone::Good;
    case Verdict::Starting:
        return Tone::Warning;
    default:
        return Tone::Bad;
    }
}

const ServiceFacts& factsOf(const DeviceFacts& facts, const std::string& name)
{
    static const ServiceFacts kNone;
    const auto found = facts.services.find(name);
    return found != facts.services.end() ? found->second : kNone;
}

std::string headline(const Output& output, const StatusView& view)
{
    const std::string verdict = verdictText(view.verdict());
    const std::string family = view.facts.family.empty() ? "not in the log" : view.facts.family;
    std::string supervisor = view.overview.answer.isAnswered() ? "answers" : "does not answer";
    if (view.facts.started)
    {
        supervisor += ", started " + durationText(view.clock.age(*view.facts.started)) + " ago";
    }
    constexpr std::size_t kVerdictWidth = 19;
    return output.tone(toneOfVerdict(view.verdict()), padded(verdict, kVerdictWidth)) + "family " +
           family + ", supervisor " + supervisor;
}

std::string availableText(const StatusView& view, const ServiceView& service,
                          const ServiceFacts& facts)
{
    if (!service.isJudged)
    {
        return "not judged";
    }
    if (!facts.isAvailable)
    {
        return !view.overview.answer.isAnswered() ? "?" : view.isUp(service) ? "up" : "down";
    }
    return (*facts.isAvailable ? "up for " : "down for ") +
           durationText(view.clock.age(facts.availableSince));
}

std::string strikesText(const StatusView& view, const ServiceView& service,
                        const ServiceFacts& facts)
{
    const auto strikes = strikesOf(view.facts, facts, service.name, view.clock.monotonic);
    if (!strikes || !view.overview.answer.isAnswered())
    {
        return "-";
    }
    return std::to_string(strikes->count) + " of " + std::to_string(strikes->threshold);
}

std::string scriptText(const StatusView& view, const ServiceFacts& facts)
{
    if (!facts.lastScript)
    {
        return "-";
    }
    return durationText(view.clock.age(*facts.lastScript)) + " ago" +
           (facts.scripts > 1 ? " (" + std::to_string(facts.scripts) + ")" : "");
}

std::string serviceLine(const std::string& name, const std::string& level,
                        const std::string& process, const std::string& available,
                        const std::string& strikes, const std::string& script)
{
    return padded(name, 9) + padded(level, 11) + padded(process, 14) + padded(available, 22) +
           padded(strikes, 9) + script;
}

std::string serviceLine(const Output& output, const StatusView& view, const ServiceView& service)
{
    const ServiceFacts& facts = factsOf(view.facts, service.name);
    const std::string level = facts.runLevel.empty()     ? "-"
                              : facts.runLevel == "none" ? "no answer"
                                                         : facts.runLevel;
    const std::string process = service.process.empty()   ? "?"
                                : service.process == "up" ? "runs"
                                                          : "does not run";
    return output.tone(view.isUp(service) ? Tone::Plain : Tone::Bad,
                       serviceLine(shortNameOf(service.name), level, process,
                                   availableText(view, service, facts),
                                   strikesText(view, service, facts), scriptText(view, facts)));
}

void addNext(std::vector<std::string>& lines, const StatusView& view)
{
    const auto events = nextEvents(view.facts, view.bus(), view.clock.monotonic);
    if (events.empty())
    {
        lines.emplace_back(view.verdict() == Verdict::Stable
                               ? "Next      nothing, while both judged services answer"
                               : "Next      the records do not tell");
    }
    for (std::size_t index = 0; index < std::min(events.size(), kMostNext); ++index)
    {
        const NextEvent& event = events[index];
        lines.push_back(
            (index == 0 ? "Next      " : "          ") +
            (event.seconds < 0 ? "" : "in about " + durationText(event.seconds) + ": ") +
            event.text);
    }
}

void addRemarks(std::vector<std::string>& lines, const Output& output, const StatusView& view)
{
    if (!view.hasLog)
    {
        lines.push_back(output.tone(Tone::Bad, "The log does not answer: states are not known."));
    }
    else if (!view.facts.isTraceSeen)
    {
        lines.push_back(
            output.tone(Tone::Warning,
                        "States and strikes are logged at TRACE, which is masked; to see them:"));
        lines.push_back(output.tone(Tone::Warning, "  wardexctl loglevel wardex +TRACE"));
    }
    if (view.facts.unfed)
    {
        lines.push_back(output.tone(Tone::Bad, "The watchdog was not fed " +
                                                   durationText(view.clock.age(*view.facts.unfed)) +
                                                   " ago: wardexctl doctor"));
    }
}

QJsonValue secondsOrNull(const std::optional<double>& seconds)
{
    return seconds ? QJsonValue(*seconds) : QJsonValue();
}

QJsonValue wordOrNull(const std::string& word)
{
    return word.empty() ? QJsonValue() : QJsonValue(QString::fromStdString(word));
}

QJsonObject serviceJson(const StatusView& view, const ServiceView& service)
{
    const ServiceFacts& facts = factsOf(view.facts, service.name);
    const auto strikes = strikesOf(view.facts, facts, service.name, view.clock.monotonic);
    const auto age = [&](bool isKnown, double time)
    {
        return isKnown ? QJsonValue(view.clock.age(time)) : QJsonValue();
    };
    QJsonObject json{
        {"name", QString::fromStdString(service.name)},
        {"process", QString::fromStdString(shortNameOf(service.name))},
        {"running", service.process.empty() ? QJsonValue() : QJsonValue(service.process == "up")},
        {"judged", service.isJudged},
        {"state", wordOrNull(facts.state)},
        {"stateSeconds", age(!facts.state.empty(), facts.since)},
        {"runLevel", wordOrNull(facts.runLevel)},
        {"availableSeconds", age(facts.isAvailable.has_value(), facts.availableSince)},
        {"lastScriptSeconds", facts.lastScript ? age(true, *facts.lastScript) : QJsonValue()},
        {"scripts", facts.scripts}};
    json["available"] = !service.isJudged
                            ? QJsonValue()
                            : QJsonValue(isAvailable(view.facts, service.name, service.isListed,
                                                     view.clock.monotonic));
    json["strikes"] = strikes ? QJsonValue(strikes->count) : QJsonValue();
    json["threshold"] = strikes ? QJsonValue(strikes->threshold) : QJsonValue();
    return json;
}

} // namespace

bool StatusView::isUp(const ServiceView& service) const
{
    return service.process != "down" &&
           (!service.isJudged ||
            isAvailable(facts, service.name, service.isListed, clock.monotonic));
}

BusView StatusView::bus() const
{
    return {overview.answer.isAnswered(), overview.areJudgedListed()};
}

Verdict StatusView::verdict() const
{
    return verdictOf(facts, bus(), clock.monotonic);
}

std::vector<ServiceView> StatusView::services() const
{
    std::vector<ServiceView> services = overview.services;
    if (!overview.answer.isAnswered())
    {
        services.clear();
        for (const auto& [name, known] : facts.services)
        {
            services.push_back({name, "", true, known.isAvailable.value_or(false)});
        }
    }
    if (!only.empty())
    {
        services.erase(std::remove_if(services.begin(), services.end(),
                                      [&](const ServiceView& each) { return each.name != only; }),
                       services.end());
    }
    return services;
}

std::vector<std::string> statusLines(const Output& output, const StatusView& view)
{
    std::vector<std::string> lines{headline(output, view)};
    if (view.isDeveloper)
    {
        lines.push_back(output.tone(Tone::Bad, "DEVELOPER MODE: nothing is restarted or rebooted"));
    }
    lines.emplace_back("");
    lines.push_back(output.tone(Tone::Strong, serviceLine("SERVICE", "RUN LEVEL", "PROCESS",
                                                          "AVAILABLE", "STRIKES", "LAST SCRIPT")));
    for (const ServiceView& service : view.services())
    {
        lines.push_back(serviceLine(output, view, service));
    }
    lines.emplace_back("");
    lines.push_back("Restarts  " + budgetText(restartBudget(view.facts, view.clock.monotonic)));
    addNext(lines, view);
    addRemarks(lines, output, view);
    for (const ReadRecord& record : view.records)
    {
        lines.push_back(output.tone(toneOfLevel(record.level),
                                    fitted(shortRecordText(record, view.clock), kScreenWidth)));
    }
    return lines;
}

QJsonObject statusJson(const StatusView& view)
{
    QJsonArray services;
    for (const ServiceView& service : view.services())
    {
        services.append(serviceJson(view, service));
    }
    const RestartBudget budget = restartBudget(view.facts, view.clock.monotonic);
    QJsonArray next;
    for (const NextEvent& event : nextEvents(view.facts, view.bus(), view.clock.monotonic))
    {
        next.append(
            QJsonObject{{"seconds", event.seconds < 0 ? QJsonValue() : QJsonValue(event.seconds)},
                        {"text", QString::fromStdString(event.text)}});
    }
    QJsonArray records;
    for (const ReadRecord& record : view.records)
    {
        records.append(recordJson(record, view.clock));
    }
    const std::optional<double> uptime =
        view.facts.started ? std::optional(view.clock.age(*view.facts.started)) : std::nullopt;
    QJsonObject json = jsonOf("status");
    json["verdict"] = QString::fromStdString(verdictText(view.verdict()));
    json["answers"] = view.overview.answer.isAnswered();
    json["log"] = view.hasLog;
    json["trace"] = view.facts.isTraceSeen;
    json["developer"] = view.isDeveloper;
    json["family"] = wordOrNull(view.facts.family);
    json["supervisorSeconds"] = secondsOrNull(uptime);
    json["systemState"] = wordOrNull(view.facts.systemState);
    json["services"] = services;
    json["restarts"] =
        QJsonObject{{"used", budget.used},
                    {"limit", budget.limit},
                    {"windowSeconds", budget.window},
                    {"freeSeconds", budget.used > 0 ? QJsonValue(budget.free) : QJsonValue()}};
    json["next"] = next;
    json["records"] = records;
    return json;
}

} // namespace orvo::ctl
