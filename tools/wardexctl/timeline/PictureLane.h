#pragma once

#include "timeline/LabelLayout.h"
#include "timeline/LaneCells.h"
#include "timeline/PictureGrid.h"
#include "timeline/SvgWriter.h"
#include "timeline/TimelineView.h"

#include <vector>

namespace orvo::ctl
{

/// The device's or a service's part of the picture: name, bar, present, marks and their labels.
///
/// Borrows: the view.
class PictureLane
{
public:
    PictureLane(const TimelineView& view, const TimelineLane& lane);

    [[nodiscard]] double height() const;
    /// What is drawn: one colour, or many.
    [[nodiscard]] const std::vector<LaneCell>& cells() const { return m_cells; }
    /// Short times of which nothing is known are left out; all others can be seen.
    [[nodiscard]] bool isSeen(const LaneCell& cell) const;
    /// One that shows the shares of many short times.
    [[nodiscard]] bool isColumn(const LaneCell& cell) const;
    /// Draws it with its upper edge at y.
    void draw(SvgWriter& svg, double y) const;

private:
    void drawBar(SvgWriter& svg, double y) const;
    void drawCell(SvgWriter& svg, double y, const LaneCell& cell) const;
    void drawMixed(SvgWriter& svg, double y, const LaneCell& cell) const;
    void drawActions(SvgWriter& svg, double y) const;
    [[nodiscard]] std::string titleOf(const LaneCell& cell) const;
    [[nodiscard]] std::string whyAt(double time) const;
    [[nodiscard]] double barHeight() const;

    const TimelineView& m_view;
    const TimelineLane& m_lane;
    PictureGrid m_grid;
    std::vector<const TimelineAction*> m_actions;
    std::vector<LaneCell> m_cells;
    std::vector<PlacedLabel> m_labels;
};

/// The points of an action's sign with its tip at x and y.
std::string actionSign(TimelineAction::Kind kind, double x, double y);

/// The style of a health, and of a text in it.
const char* styleOf(Health health);
const char* textStyleOf(Health health);

} // namespace orvo::ctl
