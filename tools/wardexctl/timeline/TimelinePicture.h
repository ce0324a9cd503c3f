#pragma once

#include "timeline/TimelineView.h"

#include <QByteArray>

namespace orvo::ctl
{

/// A timeline as a picture that needs nothing else: a title, wall times above, a bar for the device
/// and one per service with labels for what was done, ages below, and a legend. Bars and marks tell
/// their times when they are pointed at.
QByteArray timelineSvg(const TimelineView& view);

/// The same picture in a page.
QByteArray timelineHtml(const TimelineView& view);

} // namespace orvo::ctl
