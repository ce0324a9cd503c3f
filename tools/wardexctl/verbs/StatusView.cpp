#include "verbs/StatusView.h"

#include "log/RecordText.h"
#include "model/ServiceNames.h"
#include "output/Json.h"
#include "verbs/DeveloperMarker.h"
#include "verbs/StatusParts.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kScreenWidth = 79;

/// Names come out of records that anybody may write, and are as long as they like.
StyledLine fittedToScreen(StyledLine line)
{
    std::size_t room = kScreenWidth;
    for (Span& span : line)
    {
        span.text = fitted(span.text, room);
        room -= span.text.size();
    }
    return line;
}

QJsonValue wordOrNull(const std::string& word)
{
    return word.empty() ? QJsonValue() : QJsonValue(QString::fromStdString(word));
}

QJsonObject serviceJson(const StatusView& view, const ServiceView& service)
{
    const ServiceFacts& facts = view.factsOf(service.name);
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

void StatusView::takeFacts(const DeviceFacts& told)
{
    facts = told;
    // The supervisor looked at its start; the files only tell when the log no longer does.
    isDeveloper = facts.started ? facts.isDeveloper : isDeveloperMarked();
    facts.isDeveloper = isDeveloper;
}

const ServiceFacts& StatusView::factsOf(const std::string& name) const
{
    static const ServiceFacts kNone;
    const auto found = facts.services.find(name);
    return found != facts.services.end() ? found->second : kNone;
}

bool StatusView::isUp(const ServiceView& service) const
{
    return service.process != "down" &&
           (!service.isJudged ||
            isAvailable(facts, service.name, service.isListed, clock.monotonic));
}

BusView StatusView::bus() const
{
    return {overview.answer.isAnswered(), overview.areJudgedListed(),
            overview.answer.kind != BusAnswer::Kind::NoBus};
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
    std::vector<StyledLine> styled{statusHeadline(view)};
    const auto add = [&](const std::vector<StyledLine>& more)
    {
        styled.insert(styled.end(), more.begin(), more.end());
    };
    add(developerLines(view));
    add({{}, serviceTitles()});
    for (const ServiceView& service : view.services())
    {
        styled.push_back(serviceLine(view, service));
    }
    add({{}});
    add(outlookLines(view));
    add(remarkLines(view));
    for (const ReadRecord& record : view.records)
    {
        styled.push_back({{toneOfLevel(record.level), shortRecordText(record, view.clock)}});
    }
    std::vector<std::string> lines;
    lines.reserve(styled.size());
    for (const StyledLine& line : styled)
    {
        lines.push_back(textOf(output, fittedToScreen(line)));
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
    QJsonObject json = jsonOf("status");
    json["verdict"] = QString::fromStdString(verdictText(view.verdict()));
    json["answers"] = view.overview.answer.isAnswered();
    json["log"] = view.hasLog;
    json["trace"] = view.facts.isTraceSeen;
    json["developer"] = view.isDeveloper;
    json["family"] = wordOrNull(view.facts.family);
    json["supervisorSeconds"] =
        view.facts.started ? QJsonValue(view.clock.age(*view.facts.started)) : QJsonValue();
    json["systemState"] = wordOrNull(view.facts.systemState);
    json["services"] = services;
    json["restarts"] =
        QJsonObject{{"used", view.hasLog ? QJsonValue(budget.used) : QJsonValue()},
                    {"limit", budget.limit},
                    {"windowSeconds", budget.window},
                    {"freeSeconds", budget.used > 0 ? QJsonValue(budget.free) : QJsonValue()}};
    json["next"] = next;
    json["records"] = records;
    return json;
}

} // namespace orvo::ctl
