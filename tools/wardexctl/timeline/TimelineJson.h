#pragma once

#include "timeline/TimelineView.h"

#include <QJsonObject>

namespace orvo::ctl
{

/// A timeline for programs; docs/wardexctl.md has the members.
QJsonObject timelineJson(const TimelineView& view);

} // namespace orvo::ctl
