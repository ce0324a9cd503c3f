#pragma once

#include <cstddef>

namespace orvo
{

// What the supervisor takes for its threads and their allocations. All of it is resident once
// memory is locked, and taken from the camera's images for good.

/// Bytes of the stack of the logger's thread. It compiles the crash patterns that anybody may
/// publish: the worst one that is accepted takes 450 KiB, in a build for the debugger 530 KiB.
inline constexpr std::size_t kLoggerStackBytes = std::size_t{560} * 1024;

/// Bytes of the stacks of all later threads; that is Qt's for the bus.
inline constexpr std::size_t kThreadStackBytes = std::size_t{256} * 1024;

/// Regions to allocate from: the heap alone. Each further one reserves, and counts as locked, 64
/// MiB.
inline constexpr int kMallocArenas = 1;

/// Bytes by which the heap grows beyond what is asked for.
inline constexpr int kHeapPadBytes = 16 * 1024;

/// Lets all threads allocate from one heap that grows in small steps.
///
/// Threads: to be called before the first thread is made.
/// Errors:  a C library that refuses keeps its own ways: more memory, and nothing else.
void limitHeap();

/// Sets the size of the stacks of threads that are made from now on, those of libraries included,
/// unless they ask for a size of their own. The main thread's is the kernel's and grows as needed.
///
/// Errors:  as above; the size must be one that the system accepts, 16 KiB or more.
void setThreadStack(std::size_t bytes);

} // namespace orvo
