// Linked into the supervisor in place of its own bounds: the C library's ways with threads.
#include "ProcessMemory.h"

namespace orvo
{

void limitHeap() {}

void setThreadStack(std::size_t /*bytes*/) {}

} // namespace orvo
