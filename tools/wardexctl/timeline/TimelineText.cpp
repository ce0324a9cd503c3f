#include "timeline/TimelineText.h"

#include "model/ServiceNames.h"
#include "timeline/LaneCells.h"
#include "timeline/TimeScale.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <set>

namespace orvo::ctl
{

namespace
{

constexpr std::size_t kNameWidth = 9;
constexpr std::size_t kScreenLines = 23; ///< of 24, one is the prompt's
constexpr std::size_t kLeastActions = 4;
/// So many columns for a time of day and the room behind it.
constexpr int kTickColumns = 13;

/// How a health looks: the fuller the better.
struct Sign
{
    Health health;
    const char* ascii;
    const char* utf8;
    Tone tone;
    const char* meaning;
};

constexpr std::array<Sign, kHealths> kSigns = {
    {{Health::Up, "#", "\u2588", Tone::Good, "stable/up"},
     {Health::Starting, "=", "\u2584", Tone::Warning, "starting"},
     {Health::Down, "_", "\u2581", Tone::Bad, "unstable/down"},
     {Health::Rebooting, "!", "!", Tone::Bad, "rebooting"},
     {Health::Unknown, ".", "\u00b7", Tone::Faint, "unknown"}}};

constexpr Sign kMixedSign = {Health::Unknown, "%", "\u2592", Tone::Warning, "mixed: short trouble"};

const Sign& signOf(const LaneCell& cell)
{
    return cell.isMixed() ? kMixedSign
                          : *std::find_if(kSigns.begin(), kSigns.end(),
                                          [health = cell.worst()](const Sign& each)
                                          { return each.health == health; });
}

/// The letter of an action; small where developer mode only noted it. Where two meet the later one
/// of this list is shown.
struct Letter
{
    TimelineAction::Kind kind;
    char letter;
    const char* meaning;
};

constexpr std::array<Letter, 8> kLetters = {
    {{TimelineAction::Kind::CameToBus, '+', "on the bus"},
     {TimelineAction::Kind::LeftBus, '-', "off the bus"},
     {TimelineAction::Kind::Rejoined, 'o', "off and on the bus"},
     {TimelineAction::Kind::SupervisorStart, 'S', "supervisor started"},
     {TimelineAction::Kind::Unfed, 'W', "watchdog not fed"},
     {TimelineAction::Kind::ServiceRestart, 'R', "restart by script"},
     {TimelineAction::Kind::PackageRestart, 'P', "package restart"},
     {TimelineAction::Kind::Reboot, 'B', "reboot"}}};

const Letter& letterOf(TimelineAction::Kind kind)
{
    return *std::find_if(kLetters.begin(), kLetters.end(),
                         [&](const Letter& each) { return each.kind == kind; });
}

class Chart
{
public:
    Chart(const Output& output, const TimelineView& view, const Terminal& terminal)
        : m_output(output), m_view(view), m_isUtf8(terminal.isUtf8), m_width(terminal.width - 1),
          m_columns(m_width - kNameWidth)
    {
    }

    std::vector<std::string> lines()
    {
        const Timeline& timeline = m_view.timeline;
        m_lines = {m_output.tone(Tone::Strong, fitted(headlineOf(timeline), m_width)),
                   fitted(m_view.rangeText() + modeText(timeline), m_width), ""};
        const int parts = std::max(static_cast<int>(m_columns) / kTickColumns, 1);
        if (!m_view.wallStep)
        {
            addAxis("time", wallTicks(timeline.begin, timeline.end, m_view.clock, parts), true);
        }
        for (const TimelineLane& lane : timeline.lanes)
        {
            addLane(lane);
        }
        addAxis("ago", ageTicks(timeline.begin, timeline.end, parts), false);
        addLegend();
        addActions();
        return m_lines;
    }

private:
    [[nodiscard]] std::size_t columnOf(double time) const
    {
        return cellOf(time, m_view.timeline.begin, m_view.timeline.end, m_columns);
    }

    void addAxis(const char* name, const std::vector<Tick>& ticks, bool isAbove)
    {
        std::string labels(m_columns, ' ');
        std::string marks(m_columns, ' ');
        for (const Tick& tick : ticks)
        {
            const std::size_t column = columnOf(tick.time);
            const std::size_t length = tick.label.size();
            const std::size_t place = std::min(column, m_columns - std::min(length, m_columns));
            marks[column] = '|';
            const std::size_t before = place == 0 ? 0 : place - 1;
            const std::string room = labels.substr(before, length + (place - before) + 1);
            if (room.find_first_not_of(' ') == std::string::npos)
            {
                labels.replace(place, length, tick.label);
            }
        }
        const std::string named = padded(name, kNameWidth) + labels;
        const std::string bare = padded("", kNameWidth) + marks;
        add(m_output.tone(Tone::Faint, isAbove ? named : bare));
        add(m_output.tone(Tone::Faint, isAbove ? bare : named));
    }

    void addLane(const TimelineLane& lane)
    {
        const std::string name = lane.name.empty() ? "device" : shortNameOf(lane.name);
        std::string line = padded(fitted(name, kNameWidth - 1), kNameWidth);
        const auto cells =
            laneCells(lane.spans, m_view.timeline.begin, m_view.timeline.end, m_columns);
        std::vector<const Sign*> signs;
        std::transform(cells.begin(), cells.end(), std::back_inserter(signs),
                       [](const LaneCell& cell) { return &signOf(cell); });
        for (std::size_t first = 0, next = 0; first < signs.size(); first = next)
        {
            const Sign* const sign = signs[first];
            std::string bar;
            for (; next < signs.size() && signs[next] == sign; ++next)
            {
                bar += m_isUtf8 ? sign->utf8 : sign->ascii;
            }
            line += m_output.tone(sign->tone, bar);
            m_signs.insert(sign);
        }
        m_lines.push_back(line);
        const std::string letters = lettersOf(lane);
        if (letters.find_first_not_of(' ') != std::string::npos)
        {
            add(padded("", kNameWidth) + letters);
        }
    }

    std::string lettersOf(const TimelineLane& lane)
    {
        std::string letters(m_columns, ' ');
        for (const Letter& letter : kLetters)
        {
            for (const TimelineAction& action : m_view.timeline.actions)
            {
                if (action.kind == letter.kind && action.name == lane.name)
                {
                    letters[columnOf(action.time)] = letterFor(action);
                }
            }
        }
        return letters;
    }

    static char letterFor(const TimelineAction& action)
    {
        const char letter = letterOf(action.kind).letter;
        const bool isSmall = action.isNoted && letter >= 'A' && letter <= 'Z' &&
                             action.kind != TimelineAction::Kind::SupervisorStart;
        return isSmall ? static_cast<char>(letter - 'A' + 'a') : letter;
    }

    void addLegend()
    {
        std::vector<std::string> words;
        const auto addSign = [&](const Sign& sign)
        {
            if (m_signs.count(&sign) > 0)
            {
                words.push_back(std::string(m_isUtf8 ? sign.utf8 : sign.ascii) + " " +
                                sign.meaning);
            }
        };
        std::for_each(kSigns.begin(), kSigns.end(), addSign);
        addSign(kMixedSign);
        for (const Letter& letter : kLetters)
        {
            const auto& actions = m_view.timeline.actions;
            const auto action =
                std::find_if(actions.begin(), actions.end(),
                             [&](const TimelineAction& each) { return each.kind == letter.kind; });
            if (action != actions.end())
            {
                words.push_back(std::string(1, letterFor(*action)) + " " + letter.meaning);
            }
        }
        m_lines.emplace_back("");
        std::string line;
        for (const std::string& word : words)
        {
            if (!line.empty() && line.size() + 3 + word.size() > m_width)
            {
                add(line);
                line.clear();
            }
            line += (line.empty() ? "" : "   ") + word;
        }
        add(line);
    }

    void addActions()
    {
        const auto& actions = m_view.timeline.actions;
        const std::vector<std::string> remarks = remarksOf(m_view);
        const std::size_t used = m_lines.size() + remarks.size() + 2;
        const std::size_t room =
            std::max(kScreenLines - std::min(used, kScreenLines), kLeastActions);
        if (!actions.empty())
        {
            m_lines.emplace_back("");
        }
        std::size_t first = 0;
        if (actions.size() > room)
        {
            first = actions.size() - room;
            add(fitted(std::to_string(first) + " earlier actions: --json, -o FILE.svg, or --since",
                       m_width));
        }
        for (std::size_t index = first; index < actions.size(); ++index)
        {
            add(fitted(m_view.timeText(actions[index].time) + "  " + actionText(actions[index]),
                       m_width));
        }
        for (const std::string& remark : remarks)
        {
            m_lines.push_back(m_output.tone(Tone::Warning, fitted(remark, m_width)));
        }
    }

    /// Without blanks at its end.
    void add(const std::string& line)
    {
        const std::size_t end = line.find_last_not_of(' ');
        m_lines.push_back(line.substr(0, end == std::string::npos ? 0 : end + 1));
    }

    const Output& m_output;
    const TimelineView& m_view;
    bool m_isUtf8;
    std::size_t m_width;
    std::size_t m_columns;
    std::set<const Sign*> m_signs;
    std::vector<std::string> m_lines;
};

} // namespace

std::vector<std::string> timelineLines(const Output& output, const TimelineView& view,
                                       const Terminal& terminal)
{
    return Chart(output, view, terminal).lines();
}

} // namespace orvo::ctl
