#include "verbs/StateVerbs.h"

#include "log/StoredLog.h"
#include "model/DeviceModel.h"
#include "model/Outlook.h"
#include "model/ServiceNames.h"
#include "model/WhyChain.h"
#include "output/ExitStatus.h"
#include "output/Json.h"
#include "verbs/ServiceVerbs.h"
#include "verbs/StatusView.h"

#include <algorithm>

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kLastRecords = 10;
/// An answer that takes longer is old news when it comes.
constexpr double kLongSeconds = 0.5;

bool mentions(const ReadRecord& record, const std::string& busName)
{
    return record.message.find(busName) != std::string::npos ||
           record.source == shortNameOf(busName);
}

std::vector<ReadRecord> lastOf(const std::vector<ReadRecord>& records, const std::string& busName)
{
    std::vector<ReadRecord> last;
    for (auto record = records.rbegin(); record != records.rend() && last.size() < kLastRecords;
         ++record)
    {
        if (busName.empty() || mentions(*record, busName))
        {
            last.push_back(*record);
        }
    }
    std::reverse(last.begin(), last.end());
    return last;
}

/// Answers false without the log.
bool readLog(StatusView& view, StoredLog& log)
{
    const auto stored = log.read();
    view.hasLog = stored.has_value();
    const std::vector<ReadRecord> records =
        readRecords(stored.value_or(std::vector<std::string>()));
    DeviceModel model;
    for (const ReadRecord& record : records)
    {
        model.add(record);
    }
    view.takeFacts(model.facts());
    view.records = lastOf(records, view.only);
    return view.hasLog;
}

StatusView gather(const Output& output, const std::string& busName)
{
    StatusView view;
    view.only = busName;
    StoredLog log;
    if (!readLog(view, log))
    {
        output.problem(log.problem());
    }
    if (!isBeyondAnswering(view.facts))
    {
        const DeviceClock asked = DeviceClock::now();
        view.overview = askForServices();
        if (view.overview.answer.kind == BusAnswer::Kind::NoBus)
        {
            output.problem(SupervisorClient::problemOf(view.overview.answer));
        }
        // What it did meanwhile belongs to the picture.
        if (view.hasLog && DeviceClock::now().age(asked.monotonic) > kLongSeconds)
        {
            (void)readLog(view, log);
        }
    }
    view.clock = DeviceClock::now();
    return view;
}

int statusOf(const StatusView& view)
{
    if (!view.overview.answer.isAnswered())
    {
        return kSupervisorSilent;
    }
    if (!view.hasLog)
    {
        return kLogSilent;
    }
    if (view.only.empty())
    {
        return view.verdict() == Verdict::Stable ? kOk : kNotUp;
    }
    return view.isUp(view.services().front()) ? kOk : kNotUp;
}

QJsonObject jsonOf(const WhyChain& chain, const DeviceClock& clock)
{
    QJsonArray steps;
    for (const WhyStep& step : chain.steps)
    {
        steps.append(QJsonObject{{"time", jsonText(clock.isoText(step.time))},
                                 {"age", clock.age(step.time)},
                                 {"what", jsonText(step.what)},
                                 {"times", step.times},
                                 {"rule", jsonTextOrNull(step.rule)}});
    }
    QJsonObject json = ctl::jsonOf("why");
    json["happened"] = jsonTextOrNull(chain.title);
    json["steps"] = steps;
    json["trace"] = chain.isTraceSeen;
    json["whole"] = chain.isWhole;
    return json;
}

void showChain(const Output& output, const WhyChain& chain, const DeviceClock& clock)
{
    output.line(output.tone(Tone::Strong, chain.title) + ", " +
                clock.timeText(chain.steps.back().time));
    if (!chain.isWhole)
    {
        output.line(output.tone(Tone::Warning, "The log no longer has the beginning."));
    }
    for (const WhyStep& step : chain.steps)
    {
        output.line(clock.timeText(step.time) + "  " + step.what +
                    (step.times > 1 ? " (" + std::to_string(step.times) + " times)" : ""));
        if (!step.rule.empty())
        {
            output.line(output.tone(Tone::Faint, "                rule: " + step.rule));
        }
    }
    if (!chain.isTraceSeen)
    {
        output.line(output.tone(Tone::Warning,
                                "The steps in between are logged at TRACE, which was masked.\n"
                                "From now on: wardexctl loglevel wardex +TRACE"));
    }
}

} // namespace

int showStatus(const Output& output, const std::string& name)
{
    const std::string busName = name.empty() ? "" : resolved(output, name);
    if (busName.empty() != name.empty())
    {
        return kUnknown;
    }
    const StatusView view = gather(output, busName);
    if (!busName.empty() && view.overview.answer.isAnswered() && view.services().empty())
    {
        return complainUnknown(output, busName);
    }
    for (const std::string& line : statusLines(output, view))
    {
        output.line(line);
    }
    output.json(statusJson(view));
    return statusOf(view);
}

int explainWhy(const Output& output, const std::string& name)
{
    const std::string busName = name.empty() ? "" : resolved(output, name);
    if (busName.empty() != name.empty())
    {
        return kUnknown;
    }
    if (!busName.empty() && findService(busName) == nullptr)
    {
        return complainUnknown(output, busName);
    }
    StoredLog log;
    const auto stored = log.read();
    if (!stored)
    {
        output.problem(log.problem());
        return kLogSilent;
    }
    const DeviceClock clock = DeviceClock::now();
    const WhyChain chain = whyChain(readRecords(*stored), busName);
    output.json(jsonOf(chain, clock));
    if (chain.title.empty())
    {
        output.line("The log knows of no restart" + (busName.empty()
                                                         ? std::string(" or reboot.")
                                                         : " of " + shortNameOf(busName) + "."));
        output.line("It begins anew with each boot; what came before is in the syslog.");
        return kOk;
    }
    showChain(output, chain, clock);
    return kOk;
}

} // namespace orvo::ctl
