#pragma once

namespace orvo
{

/// Whether this is a developer's device: one of the two marker files can be opened for reading.
/// What they contain does not matter and is never read.
///
/// On the device: asked once at start-up; a marker that comes or goes later has no effect until the
/// supervisor is started again.
[[nodiscard]] bool isDeveloperDevice();

} // namespace orvo
