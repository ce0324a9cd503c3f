#pragma once

#include "model/Timeline.h"

namespace orvo::ctl
{

/// Where things are in the picture, in pixels.
struct PictureGrid
{
    static constexpr double kWidth = 1200;
    static constexpr double kMargin = 24;
    static constexpr double kLeft = 110;   ///< of the bars; the names are before it
    static constexpr double kRight = 1050; ///< of the bars; how it is at present stands behind it
    static constexpr double kAxis = 104;   ///< the line below the wall times
    static constexpr double kDeviceHeight = 40;
    static constexpr double kServiceHeight = 26;
    static constexpr double kLaneGap = 16;
    static constexpr double kMarkHeight = 12; ///< the marks' row below a bar
    static constexpr double kLabelRow = 15;
    static constexpr double kText = 7.2; ///< of a character of the labels, rather too wide

    const Timeline& timeline;

    [[nodiscard]] double xOf(double time) const
    {
        return kLeft + (time - timeline.begin) / (timeline.end - timeline.begin) * (kRight - kLeft);
    }
};

} // namespace orvo::ctl
