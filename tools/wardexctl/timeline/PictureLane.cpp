#include "timeline/PictureLane.h"

#include "model/Duration.h"
#include "model/ServiceNames.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace orvo::ctl
{

namespace
{

/// Shorter ones would not be seen.
constexpr double kLeastWidth = 1.2;
/// Of a column that shows the shares of many short times.
constexpr double kColumnWidth = 2;

std::vector<std::pair<double, double>> shapeOf(TimelineAction::Kind kind)
{
    switch (kind)
    {
    case TimelineAction::Kind::ServiceRestart:
        return {{0, 0}, {5, 9}, {-5, 9}};
    case TimelineAction::Kind::PackageRestart:
        return {{0, 0}, {6, 6}, {0, 12}, {-6, 6}};
    case TimelineAction::Kind::Reboot:
        return {{-3, 0}, {3, 0}, {6, 3}, {6, 9}, {3, 12}, {-3, 12}, {-6, 9}, {-6, 3}};
    case TimelineAction::Kind::SupervisorStart:
        return {{-3, 0}, {6, 5.5}, {-3, 11}};
    case TimelineAction::Kind::Unfed:
        return {{-5, 1}, {5, 1}, {5, 11}, {-5, 11}};
    case TimelineAction::Kind::LeftBus:
        return {{-5, 4}, {5, 4}, {5, 7}, {-5, 7}};
    case TimelineAction::Kind::Rejoined:
        return {{-5, 0}, {5, 0}, {5, 3}, {-5, 3}, {-5, 7}, {5, 7}, {5, 10}, {-5, 10}};
    case TimelineAction::Kind::CameToBus:
        break;
    }
    return {{-1.5, 0}, {1.5, 0},   {1.5, 4},  {5, 4},  {5, 7},  {1.5, 7},
            {1.5, 11}, {-1.5, 11}, {-1.5, 7}, {-5, 7}, {-5, 4}, {-1.5, 4}};
}

} // namespace

std::string actionSign(TimelineAction::Kind kind, double x, double y)
{
    std::string points;
    for (const auto& [right, down] : shapeOf(kind))
    {
        std::array<char, 48> point{};
        std::snprintf(point.data(), point.size(), "%s%.1f,%.1f", points.empty() ? "" : " ",
                      x + right, y + down);
        points += point.data();
    }
    return points;
}

const char* styleOf(Health health)
{
    switch (health)
    {
    case Health::Up:
        return "up";
    case Health::Starting:
        return "starting";
    case Health::Down:
        return "down";
    case Health::Rebooting:
        return "rebooting";
    case Health::Unknown:
        break;
    }
    return "unknown";
}

const char* textStyleOf(Health health)
{
    return health == Health::Unknown    ? "in-unknown"
           : health == Health::Starting ? "in-starting"
                                        : "in";
}

PictureLane::PictureLane(const TimelineView& view, const TimelineLane& lane)
    : m_view(view), m_lane(lane), m_grid{view.timeline}
{
    std::vector<Label> labels;
    for (const TimelineAction& action : view.timeline.actions)
    {
        if (action.name == lane.name)
        {
            m_actions.push_back(&action);
            labels.push_back({m_grid.xOf(action.time), actionLabel(action)});
        }
    }
    m_cells = drawnCells(lane, kColumnWidth / (PictureGrid::kRight - PictureGrid::kLeft) *
                                   (view.timeline.end - view.timeline.begin));
    constexpr std::size_t kMostRows = 3;
    m_labels = placeLabels(labels, {PictureGrid::kLeft, PictureGrid::kWidth - PictureGrid::kMargin,
                                    PictureGrid::kText, PictureGrid::kText, kMostRows});
}

double PictureLane::barHeight() const
{
    return m_lane.name.empty() ? PictureGrid::kDeviceHeight : PictureGrid::kServiceHeight;
}

double PictureLane::height() const
{
    std::size_t rows = 0;
    for (const PlacedLabel& label : m_labels)
    {
        rows = std::max(rows, label.row + 1);
    }
    const double below =
        rows == 0 ? 0
                  : PictureGrid::kMarkHeight + static_cast<double>(rows) * PictureGrid::kLabelRow;
    return barHeight() + below + PictureGrid::kLaneGap;
}

void PictureLane::draw(SvgWriter& svg, double y) const
{
    constexpr double kBaseline = 5;
    const double middle = y + barHeight() / 2 + kBaseline;
    const std::string name = m_lane.name.empty() ? "device" : shortNameOf(m_lane.name);
    svg.text(PictureGrid::kMargin, middle, name, "name");
    drawBar(svg, y);
    svg.text(PictureGrid::kRight + 8, middle, presentText(m_lane), "present");
    drawActions(svg, y + barHeight());
}

void PictureLane::drawBar(SvgWriter& svg, double y) const
{
    svg.rectangle(PictureGrid::kLeft, y, PictureGrid::kRight - PictureGrid::kLeft, barHeight(),
                  "track");
    for (const LaneCell& cell : m_cells)
    {
        if (cell.spans > 1)
        {
            drawMixed(svg, y, cell);
        }
        else if (isSeen(cell))
        {
            drawCell(svg, y, cell);
        }
    }
}

bool PictureLane::isSeen(const LaneCell& cell) const
{
    return cell.worst() != Health::Unknown ||
           m_grid.xOf(cell.end) - m_grid.xOf(cell.begin) >= kLeastWidth;
}

bool PictureLane::isColumn(const LaneCell& cell) const
{
    return cell.spans > 1 && isSeen(cell) &&
           m_grid.xOf(cell.end) - m_grid.xOf(cell.begin) >= kColumnWidth;
}

void PictureLane::drawCell(SvgWriter& svg, double y, const LaneCell& cell) const
{
    constexpr double kBaseline = 4;
    constexpr double kLetter = 7.5;
    const Health health = cell.worst();
    const double left = m_grid.xOf(cell.begin);
    const double width = std::max(m_grid.xOf(cell.end) - left, kLeastWidth);
    svg.rectangle(std::min(left, PictureGrid::kRight - width), y, width, barHeight(),
                  styleOf(health), titleOf(cell));
    const std::string word = healthText(health, m_lane.name.empty());
    if (width > (static_cast<double>(word.size()) + 1) * kLetter)
    {
        svg.text(left + width / 2, y + barHeight() / 2 + kBaseline, word, textStyleOf(health),
                 Anchor::Middle);
    }
}

void PictureLane::drawMixed(SvgWriter& svg, double y, const LaneCell& cell) const
{
    constexpr double kLeastHeight = 3;
    const double left = m_grid.xOf(cell.begin);
    const double width = std::max(m_grid.xOf(cell.end) - left, kLeastWidth);
    double bottom = y + barHeight();
    for (const Health health : {Health::Rebooting, Health::Down, Health::Starting, Health::Up})
    {
        const double share = cell.secondsOf(health) / (cell.end - cell.begin);
        if (share > 0)
        {
            const double height = std::min(std::max(share * barHeight(), kLeastHeight), bottom - y);
            bottom -= height;
            svg.rectangle(left, bottom, width, height, styleOf(health), titleOf(cell));
        }
    }
}

std::string PictureLane::titleOf(const LaneCell& cell) const
{
    std::string words;
    for (const Health health :
         {Health::Up, Health::Starting, Health::Down, Health::Rebooting, Health::Unknown})
    {
        if (cell.secondsOf(health) > 0)
        {
            words += (words.empty() ? "" : ", ") + healthText(health, m_lane.name.empty()) +
                     (health == Health::Unknown ? whyAt(cell.begin) : "") + " for " +
                     durationText(cell.secondsOf(health));
        }
    }
    return words + ": " + m_view.timeText(cell.begin) + " to " + m_view.timeText(cell.end);
}

std::string PictureLane::whyAt(double time) const
{
    const auto span = std::find_if(m_lane.spans.begin(), m_lane.spans.end(),
                                   [&](const TimelineSpan& each) { return time < each.end; });
    return span == m_lane.spans.end() || span->why.empty() ? "" : " (" + span->why + ")";
}

void PictureLane::drawActions(SvgWriter& svg, double y) const
{
    for (const PlacedLabel& label : m_labels)
    {
        const double top =
            y + PictureGrid::kMarkHeight + static_cast<double>(label.row) * PictureGrid::kLabelRow;
        constexpr double kBaseline = 12;
        if (label.row > 0)
        {
            svg.line(label.x, y + PictureGrid::kMarkHeight, label.x, top + 2, "leader");
        }
        svg.text(label.left, top + kBaseline, label.text, "label");
    }
    for (const TimelineAction* action : m_actions)
    {
        const double x = m_grid.xOf(action->time);
        const std::string title = m_view.timeText(action->time) + " " + actionText(*action);
        if (action->seconds)
        {
            const double width = m_grid.xOf(action->time + *action->seconds) - x;
            svg.rectangle(x, y - 4, std::max(width, kLeastWidth), 4, "script", title);
        }
        svg.polygon(actionSign(action->kind, x, y + 1), "mark", title);
    }
}

} // namespace orvo::ctl
