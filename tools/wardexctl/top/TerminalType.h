#pragma once

namespace orvo::ctl
{

/// Whether TERM names a terminal on which something can be put at any place. False, too, for a name
/// that the device does not know.
bool canPlaceCursor();

} // namespace orvo::ctl
