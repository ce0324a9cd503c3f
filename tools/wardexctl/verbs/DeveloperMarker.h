#pragma once

namespace orvo::ctl
{

/// Whether a marker of developer mode is there now. The supervisor looked when it started.
bool isDeveloperMarked();

} // namespace orvo::ctl
