#include "top/TopScreen.h"

#include "log/RecordText.h"
#include "model/Duration.h"
#include "verbs/StatusParts.h"

#include <algorithm>
#include <array>

namespace orvo::ctl
{

namespace
{

using Lines = std::vector<StyledLine>;

/// A supervisor that waits for a script or a ping is not yet worth a word.
constexpr double kQuietSeconds = 2.5;

constexpr std::array<const char*, 16> kHelp = {
    "Keys",
    "",
    "  j k  Down Up         choose a service (marked >)",
    "  s  x  r              start, stop, restart it; asks y/n first",
    "",
    "  PgUp PgDn  b Space   a page of the log",
    "  - +                  a line of it",
    "  g Home               its oldest record",
    "  G f End              follow the newest again",
    "  /                    show only messages that match an expression",
    "  c                    show all again",
    "  l                    show this level and worse: next one",
    "",
    "  ? h  q               this help; quit",
    "",
    "Strikes, watchdog and what else is shown: wardexctl(1) and wardexctl status --help"};

/// Cut to a width; what is no printable ASCII becomes a question mark.
StyledLine clipped(const StyledLine& line, std::size_t width)
{
    StyledLine clip;
    for (const Span& span : line)
    {
        std::string text;
        for (const char each : span.text)
        {
            const auto byte = static_cast<unsigned char>(each);
            constexpr unsigned char kContinuation = 0x80;
            constexpr unsigned char kContinuationMask = 0xC0;
            if ((byte & kContinuationMask) != kContinuation)
            {
                text += each >= ' ' && each <= '~' ? each : '?';
            }
        }
        text.resize(std::min(text.size(), width));
        width -= text.size();
        if (!text.empty())
        {
            clip.push_back({span.tone, text});
        }
    }
    return clip;
}

void add(Lines& lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
}

Lines headOf(const TopState& state)
{
    if (!state.isKnown())
    {
        return {{{Tone::Plain, "Asking the supervisor and the log ..."}}, {}};
    }
    Lines lines{statusHeadline(state.view)};
    const BusAnswer& answer = state.view.overview.answer;
    if (!answer.isAnswered())
    {
        const Problem problem = SupervisorClient::problemOf(answer);
        lines.push_back({{Tone::Bad, problem.object + ": " + problem.cause}});
    }
    else if (state.silentSeconds > kQuietSeconds)
    {
        lines.push_back({{Tone::Warning, "The supervisor has not answered for " +
                                             durationText(state.silentSeconds) + "."}});
    }
    add(lines, developerLines(state.view));
    add(lines, {{}, serviceTitles()});
    for (const ServiceView& service : state.view.services())
    {
        lines.push_back(
            serviceLine(state.view, service, service.name == state.selected() ? ">" : " "));
    }
    add(lines, {{}});
    add(lines, outlookLines(state.view));
    lines.push_back(state.feedGap.line(state.view.isDeveloper));
    add(lines, remarkLines(state.view));
    lines.emplace_back();
    return lines;
}

StyledLine logTitle(const TopState& state)
{
    const TopLog& log = state.log;
    std::string text = "Log  " + (log.level().empty() ? "all levels" : log.level() + " and worse");
    if (!log.filter().empty())
    {
        text += ", matching /" + log.filter() + "/";
    }
    text += ", " + std::to_string(log.passing()) + " of " + std::to_string(log.records().size());
    text += log.isFollowing() ? ", following"
                              : ", " + std::to_string(log.newer()) + " newer (f follows)";
    return {{Tone::Strong, text}};
}

void addLog(TopScreen& screen, const TopState& state)
{
    screen.lines.push_back(logTitle(state));
    for (const ReadRecord* record : state.log.window(screen.logHeight))
    {
        screen.lines.push_back(
            {{toneOfLevel(record->level), shortRecordText(*record, state.view.clock)}});
    }
}

void overlayHelp(TopScreen& screen)
{
    constexpr std::size_t kFirst = 2;
    screen.lines.resize(kFirst);
    for (const char* line : kHelp)
    {
        screen.lines.push_back({{Tone::Plain, line}});
    }
}

TopScreen tooSmall(const ScreenSize& size)
{
    TopScreen screen;
    screen.isTooSmall = true;
    const auto text = [](const ScreenSize& each)
    {
        return std::to_string(each.columns) + "x" + std::to_string(each.rows);
    };
    for (const std::string& line :
         {"Too small: " + text(size) + ".", "Needs " + text(TopScreen::kSmallest) + ".",
          std::string("q quits.")})
    {
        screen.lines.push_back({{Tone::Plain, line}});
    }
    screen.lines.resize(std::min(screen.lines.size(), size.rows));
    return screen;
}

} // namespace

TopScreen TopScreen::of(const TopState& state, const ScreenSize& size)
{
    TopScreen screen;
    if (size.rows < kSmallest.rows || size.columns < kSmallest.columns)
    {
        screen = tooSmall(size);
    }
    else
    {
        // Below the log there is the status line; the title stands above it.
        constexpr std::size_t kFrame = 2;
        screen.lines = headOf(state);
        screen.logHeight = size.rows - std::min(size.rows, screen.lines.size() + kFrame);
        addLog(screen, state);
        if (state.mode() == TopState::Mode::Help)
        {
            overlayHelp(screen);
        }
        screen.lines.resize(size.rows - 1);
        screen.lines.push_back(state.statusLine());
        screen.cursor = state.cursor();
    }
    // The last column stays empty: some terminals go to the next line there.
    const std::size_t width = size.columns > 0 ? size.columns - 1 : 0;
    for (StyledLine& line : screen.lines)
    {
        line = clipped(line, width);
    }
    if (screen.cursor)
    {
        screen.cursor = std::min(*screen.cursor, width);
    }
    return screen;
}

} // namespace orvo::ctl
