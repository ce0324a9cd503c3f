#include "timeline/TimelineJson.h"

#include "model/ServiceNames.h"
#include "output/Json.h"

namespace orvo::ctl
{

namespace
{

const char* kindText(TimelineAction::Kind kind)
{
    switch (kind)
    {
    case TimelineAction::Kind::SupervisorStart:
        return "supervisor start";
    case TimelineAction::Kind::PackageRestart:
        return "package restart";
    case TimelineAction::Kind::Reboot:
        return "reboot";
    case TimelineAction::Kind::Unfed:
        return "watchdog not fed";
    case TimelineAction::Kind::ServiceRestart:
        return "service restart";
    case TimelineAction::Kind::LeftBus:
        return "off the bus";
    case TimelineAction::Kind::CameToBus:
        return "on the bus";
    case TimelineAction::Kind::Rejoined:
        break;
    }
    return "off and on the bus";
}

QJsonValue wallTime(const TimelineView& view, double time)
{
    return view.wallStep ? QJsonValue() : jsonText(view.clock.isoText(time));
}

QJsonArray spansJson(const TimelineView& view, const TimelineLane& lane)
{
    QJsonArray spans;
    for (const TimelineSpan& span : lane.spans)
    {
        spans.append(QJsonObject{{"state", jsonText(healthText(span.health, lane.name.empty()))},
                                 {"begin", wallTime(view, span.begin)},
                                 {"age", view.clock.age(span.begin)},
                                 {"seconds", span.seconds()},
                                 {"why", jsonTextOrNull(span.why)}});
    }
    return spans;
}

QJsonArray lanesJson(const TimelineView& view)
{
    QJsonArray lanes;
    for (const TimelineLane& lane : view.timeline.lanes)
    {
        const bool isDevice = lane.name.empty();
        lanes.append(
            QJsonObject{{"name", isDevice ? QJsonValue("device") : jsonText(lane.name)},
                        {"process", isDevice ? QJsonValue() : jsonText(shortNameOf(lane.name))},
                        {"spans", spansJson(view, lane)}});
    }
    return lanes;
}

QJsonArray actionsJson(const TimelineView& view)
{
    QJsonArray actions;
    for (const TimelineAction& action : view.timeline.actions)
    {
        actions.append(
            QJsonObject{{"what", kindText(action.kind)},
                        {"service", jsonTextOrNull(action.name)},
                        {"time", wallTime(view, action.time)},
                        {"age", view.clock.age(action.time)},
                        {"seconds", action.seconds ? QJsonValue(*action.seconds) : QJsonValue()},
                        {"noted", action.isNoted},
                        {"text", jsonText(actionText(action))}});
    }
    return actions;
}

} // namespace

QJsonObject timelineJson(const TimelineView& view)
{
    const Timeline& timeline = view.timeline;
    QJsonObject json = jsonOf("timeline");
    json["begin"] = wallTime(view, timeline.begin);
    json["end"] = jsonText(view.clock.isoText(timeline.end));
    json["seconds"] = timeline.end - timeline.begin;
    json["developer"] = timeline.isDeveloper;
    json["trace"] = timeline.isTraceSeen;
    json["wallStep"] = view.wallStep ? QJsonValue(*view.wallStep) : QJsonValue();
    json["earlier"] = static_cast<int>(timeline.earlier);
    json["lanes"] = lanesJson(view);
    json["actions"] = actionsJson(view);
    return json;
}

} // namespace orvo::ctl
