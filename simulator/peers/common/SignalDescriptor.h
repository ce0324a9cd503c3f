#pragma once

#include "common/Descriptor.h"

#include <initializer_list>

namespace orvo::simulator
{

/// Blocks these signals in the calling thread (and in threads it starts from now on) and makes them
/// readable on a descriptor (non-blocking, closed on exec) instead. Complains and answers a closed
/// descriptor when the kernel refuses.
Descriptor openSignalDescriptor(std::initializer_list<int> signals);

/// Takes all signals that wait on the descriptor; true when there was one.
bool takeSignals(const Descriptor& signals);

} // namespace orvo::simulator
