#include "verbs/LogLevel.h"

#include "log/FallBack.h"
#include "log/LevelMask.h"
#include "log/LogConfig.h"
#include "log/StoredLog.h"
#include "logger/LogDefaults.h"
#include "model/Duration.h"
#include "model/Periods.h"
#include "output/ExitStatus.h"
#include "output/Json.h"

#include <csignal>

#include <time.h>

namespace orvo::ctl
{

namespace
{

constexpr std::uint32_t kWarnBit = 0x10;

QJsonObject jsonOf(const SourceMask& mask)
{
    return {{"source", jsonText(mask.source)},
            {"mask", static_cast<int>(mask.mask)},
            {"levels", jsonText(maskText(mask.mask))},
            {"origin", jsonText(mask.origin)}};
}

int showMasks(const Output& output, const std::vector<SourceMask>& masks)
{
    constexpr std::size_t kSourceWidth = 16;
    QJsonArray sources;
    for (const SourceMask& mask : masks)
    {
        sources.append(jsonOf(mask));
        output.line(padded(mask.source, kSourceWidth) + " " + maskText(mask.mask) + " (" +
                    mask.origin + ")");
    }
    QJsonObject json = ctl::jsonOf("loglevel");
    json["sources"] = sources;
    output.json(json);
    return kOk;
}

/// Waits for a time, or until the process is asked to end: then at once.
void waitFor(const std::string& duration)
{
    const auto time = durationOf(duration);
    if (!time)
    {
        return;
    }
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    const timespec bound{static_cast<time_t>(time->count() / kMsPerSecond),
                         static_cast<long>(time->count() % kMsPerSecond) * 1000000L};
    (void)sigtimedwait(&ends, nullptr, &bound);
}

std::string usageComplaint(const LogLevelWords& words)
{
    for (const std::string& duration : {words.span, words.after})
    {
        if (!duration.empty() && !durationOf(duration))
        {
            return "'" + duration + "' is no duration: say 10m";
        }
    }
    if (words.levels.empty() && (words.saves || !words.span.empty() || !words.after.empty()))
    {
        return "levels are missing";
    }
    if (words.saves && !words.span.empty())
    {
        return "what is stored does not fall back: say --for or --save";
    }
    return "";
}

void tell(const Output& output, const LogLevelWords& words, std::uint32_t mask, int listeners,
          pid_t fallBack)
{
    output.line(words.source + " now logs " + maskText(mask) + " (heard by " +
                std::to_string(listeners) + (listeners == 1 ? " process)" : " processes)"));
    if ((mask & kWarnBit) == 0)
    {
        output.line(output.tone(Tone::Warning, "WARN is hidden now: operators need it."));
    }
    if (listeners == 0)
    {
        output.line(output.tone(Tone::Warning, "Nobody listens: no program with a log runs."));
    }
    if (fallBack != 0)
    {
        output.line("falls back in " + words.span + ", or at once with: kill " +
                    std::to_string(fallBack));
    }
    if (words.saves)
    {
        output.line("stored for the next starts");
    }
}

int setMask(const Output& output, const LogLevelWords& words, const SourceMask& former,
            std::uint32_t mask)
{
    // Who waits to take these levels back would undo this change; what it would set was there
    // first.
    const std::vector<FallBack> waiting =
        words.fallsBack ? std::vector<FallBack>() : waitingFallBacks(words.source);
    // The one that falls back is there before the change: nothing may be left changed for good.
    const pid_t fallBack =
        words.span.empty()
            ? 0
            : leaveFallBack(words.source,
                            waiting.empty() ? maskText(former.mask) : waiting.front().levels,
                            words.span);
    if (!words.span.empty() && fallBack == 0)
    {
        output.problem({"loglevel", "the process that would fall back cannot be started",
                        "Set the levels without --for, and take them back by hand."});
        return kFailed;
    }
    const auto listeners = LogConfig::publish(words.source, mask);
    if (!listeners)
    {
        output.problem(redisProblem(Logger::kLogSocket, "the levels were not published"));
        return kLogSilent;
    }
    callOff(waiting);
    if (words.saves && !LogConfig::save(words.source, mask))
    {
        output.problem(redisProblem(Logger::kConfigSocket, "set, but not stored"));
        return kLogSilent;
    }
    tell(output, words, mask, *listeners, fallBack);
    QJsonObject json = ctl::jsonOf("loglevel");
    json["source"] = jsonText(words.source);
    json["mask"] = static_cast<int>(mask);
    json["levels"] = jsonText(maskText(mask));
    json["former"] = jsonOf(former);
    json["listeners"] = *listeners;
    json["stored"] = words.saves;
    json["fallBackPid"] = fallBack == 0 ? QJsonValue() : QJsonValue(static_cast<int>(fallBack));
    output.json(json);
    return kOk;
}

} // namespace

int logLevel(const Output& output, const LogLevelWords& words)
{
    std::string complaint = usageComplaint(words);
    if (!complaint.empty())
    {
        output.problem({"loglevel", complaint, "See wardexctl loglevel --help."});
        return kUsage;
    }
    if (!words.after.empty())
    {
        waitFor(words.after);
    }
    StoredLog log;
    const auto stored = log.read();
    if (!stored)
    {
        output.problem(log.problem());
        return kLogSilent;
    }
    const std::vector<ReadRecord> records = readRecords(*stored);
    const LogConfig config(records);
    if (words.levels.empty())
    {
        return showMasks(output, words.source.empty()
                                     ? config.all()
                                     : std::vector<SourceMask>{config.maskOf(words.source)});
    }
    const SourceMask former = config.maskOf(words.source);
    const auto mask = maskOf(words.levels, former.mask, complaint);
    if (!mask)
    {
        output.problem({"loglevel", complaint,
                        "Say all, default, none, WARN, WARN+ (and worse), or +TRACE, -DEBUG; "
                        "several with commas."});
        return kUsage;
    }
    return setMask(output, words, former, *mask);
}

} // namespace orvo::ctl
