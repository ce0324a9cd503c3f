#pragma once

#include <QLatin1String>

namespace orvo
{

/// Run levels that a pinged service reports, and the values of an availability map. Compared byte
/// by byte; any other text is a level that no machine knows.
inline constexpr QLatin1String kRunLevelUp("up", sizeof "up" - 1);
inline constexpr QLatin1String kRunLevelStarting("starting", sizeof "starting" - 1);
inline constexpr QLatin1String kRunLevelDown("down", sizeof "down" - 1);

} // namespace orvo
