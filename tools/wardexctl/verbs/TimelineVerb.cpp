#include "verbs/TimelineVerb.h"

#include "bus/SupervisorClient.h"
#include "doctor/WallClock.h"
#include "log/LogQuery.h"
#include "log/StoredLog.h"
#include "model/SupervisorEvent.h"
#include "output/ExitStatus.h"
#include "output/PictureFile.h"
#include "output/Terminal.h"
#include "timeline/TimelineJson.h"
#include "timeline/TimelinePicture.h"
#include "timeline/TimelineText.h"
#include "timeline/TimelineView.h"
#include "verbs/DeveloperMarker.h"

#include <cmath>
#include <optional>

namespace orvo::ctl
{

namespace
{

/// The time from which on is shown; empty and complaint set when the words are not understood.
std::optional<TimelineWindow> windowOf(const TimelineWords& words, std::string& complaint)
{
    const DeviceClock clock = DeviceClock::now();
    LogWords log;
    log.since = words.since;
    const auto query = LogQuery::of(log, clock.monotonic, clock.wallMs, complaint);
    if (!query)
    {
        return std::nullopt;
    }
    TimelineWindow window;
    window.since = query->serverFilter().since;
    return window;
}

bool isRebooting(const Timeline& timeline)
{
    return timeline.lanes.front().spans.back().health == Health::Rebooting;
}

/// Reads the supervisor's records; those from before the window tell the states at its begin.
bool readTimeline(const Output& output, TimelineWindow& window, TimelineView& view)
{
    RecordFilter filter;
    filter.source = kSupervisorSource;
    StoredLog log;
    const auto stored = log.read(filter);
    if (!stored)
    {
        output.problem(log.problem());
        return false;
    }
    const std::vector<ReadRecord> records = readRecords(*stored);
    view.clock = DeviceClock::now();
    window.now = view.clock.monotonic;
    view.timeline = timelineOf(records, window);
    return true;
}

/// Nothing without the log.
std::optional<TimelineView> gather(const Output& output, TimelineWindow window)
{
    TimelineView view;
    window.isMarked = isDeveloperMarked();
    if (!readTimeline(output, window, view))
    {
        return std::nullopt;
    }
    // A supervisor that ordered the reboot never answers again, and is not to be waited for.
    window.isAnswering =
        !isRebooting(view.timeline) && SupervisorClient::call("doPing").isAnswered();
    if (!readTimeline(output, window, view))
    {
        return std::nullopt;
    }
    const auto step = wallClockStep();
    if (step && std::abs(*step) >= kWallClockSlack)
    {
        view.wallStep = step;
    }
    return view;
}

int writePicture(const Output& output, const std::string& file, const TimelineView& view)
{
    const QByteArray picture =
        pictureKindOf(file) == PictureKind::Html ? timelineHtml(view) : timelineSvg(view);
    if (const auto problem = replaceFile(file, picture))
    {
        output.problem(*problem);
        return kFailed;
    }
    output.line(file + ": " + headlineOf(view.timeline) + "; " + view.rangeText());
    return kOk;
}

} // namespace

int showTimeline(const Output& output, const TimelineWords& words)
{
    if (!words.file.empty() && !pictureKindOf(words.file))
    {
        output.problem({words.file, "its name ends neither in .svg nor in .html",
                        "Say which picture is wanted: -o timeline.svg or -o timeline.html."});
        return kUsage;
    }
    std::string complaint;
    const auto window = windowOf(words, complaint);
    if (!window)
    {
        output.problem({"timeline", complaint, "See wardexctl timeline --help."});
        return kUsage;
    }
    const auto view = gather(output, *window);
    if (!view)
    {
        return kLogSilent;
    }
    if (!words.file.empty())
    {
        const int status = writePicture(output, words.file, *view);
        output.json(timelineJson(*view));
        return status;
    }
    for (const std::string& line : timelineLines(output, *view, Terminal::ofOutput()))
    {
        output.line(line);
    }
    output.json(timelineJson(*view));
    return kOk;
}

} // namespace orvo::ctl
