#pragma once

#include "common/Descriptor.h"

namespace orvo::simulator
{

/// Hands an open file over a Unix socket to the process at the other end; false with errno.
bool sendDescriptor(int channel, const Descriptor& descriptor);

/// The file that the other end handed over (closed on exec); a closed descriptor when it left
/// without doing so.
Descriptor receiveDescriptor(int channel);

} // namespace orvo::simulator
