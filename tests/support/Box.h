#pragma once

namespace orvo::test
{

/// Ends the program with a message unless it runs in a box (in-box): what it is about to write to
/// the device's paths would hit this machine.
void requireBox();

} // namespace orvo::test
