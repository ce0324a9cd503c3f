#include "verbs/StatusParts.h"

#include "model/Duration.h"
#include "model/ServiceNames.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

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

std::string columns(const std::string& name, const std::string& level, const std::string& process,
                    const std::string& available, const std::string& strikes,
                    const std::string& script)
{
    return padded(name, 9) + padded(level, 11) + padded(process, 14) + padded(available, 22) +
           padded(strikes, 9) + script;
}

} // namespace

StyledLine statusHeadline(const StatusView& view)
{
    const std::string family = view.facts.family.empty() ? "not in the log" : view.facts.family;
    const bool isAnswering = view.overview.answer.isAnswered();
    std::string supervisor = isAnswering ? "answers" : "does not answer";
    if (isAnswering && view.facts.started)
    {
        supervisor += ", started " + durationText(view.clock.age(*view.facts.started)) + " ago";
    }
    constexpr std::size_t kVerdictWidth = 19;
    return {{toneOfVerdict(view.verdict()), padded(verdictText(view.verdict()), kVerdictWidth)},
            {Tone::Plain, "family " + family + ", supervisor " + supervisor}};
}

std::vector<StyledLine> developerLines(const StatusView& view)
{
    if (!view.isDeveloper)
    {
        return {};
    }
    return {{{Tone::Bad, "DEVELOPER MODE: nothing is restarted or rebooted"}}};
}

StyledLine serviceTitles()
{
    return {{Tone::Strong,
             columns("SERVICE", "RUN LEVEL", "PROCESS", "AVAILABLE", "STRIKES", "LAST SCRIPT")}};
}

StyledLine serviceLine(const StatusView& view, const ServiceView& service, const std::string& mark)
{
    const ServiceFacts& facts = view.factsOf(service.name);
    const std::string level = facts.runLevel.empty()     ? "-"
                              : facts.runLevel == "none" ? "no answer"
                                                         : facts.runLevel;
    const std::string process = service.process.empty()   ? "?"
                                : service.process == "up" ? "runs"
                                                          : "does not run";
    return {{view.isUp(service) ? Tone::Plain : Tone::Bad,
             columns(mark + shortNameOf(service.name), level, process,
                     availableText(view, service, facts), strikesText(view, service, facts),
                     scriptText(view, facts))}};
}

std::vector<StyledLine> outlookLines(const StatusView& view)
{
    std::vector<StyledLine> lines{
        {{Tone::Plain,
          view.hasLog ? "Restarts  " + budgetText(restartBudget(view.facts, view.clock.monotonic))
                      : "Restarts  not known"}}};
    const auto events = nextEvents(view.facts, view.bus(), view.clock.monotonic);
    if (events.empty())
    {
        lines.push_back({{Tone::Plain, view.verdict() == Verdict::Stable
                                           ? "Next      nothing, while both judged services answer"
                                           : "Next      the records do not tell"}});
    }
    for (std::size_t index = 0; index < std::min(events.size(), kMostNext); ++index)
    {
        const NextEvent& event = events[index];
        lines.push_back(
            {{Tone::Plain,
              (index == 0 ? "Next      " : "          ") +
                  (event.seconds < 0 ? "" : "in about " + durationText(event.seconds) + ": ") +
                  event.text}});
    }
    return lines;
}

std::vector<StyledLine> remarkLines(const StatusView& view)
{
    std::vector<StyledLine> lines;
    if (!view.hasLog)
    {
        lines.push_back({{Tone::Bad, "The log does not answer: states are not known."}});
    }
    else if (view.facts.pid.empty())
    {
        lines.push_back(
            {{Tone::Warning,
              "The log has nothing of the supervisor: TRACE is masked, or its log was lost;"}});
        lines.push_back(
            {{Tone::Warning,
              "  wardexctl loglevel wardex +TRACE; if nothing comes: wardexctl doctor"}});
    }
    else if (!view.facts.isTraceSeen)
    {
        lines.push_back(
            {{Tone::Warning,
              "States and strikes are logged at TRACE, which is masked; to see them:"}});
        lines.push_back({{Tone::Warning, "  wardexctl loglevel wardex +TRACE"}});
    }
    if (view.facts.unfed)
    {
        lines.push_back({{Tone::Bad, "The watchdog was not fed " +
                                         durationText(view.clock.age(*view.facts.unfed)) +
                                         " ago: wardexctl doctor"}});
    }
    return lines;
}

} // namespace orvo::ctl
