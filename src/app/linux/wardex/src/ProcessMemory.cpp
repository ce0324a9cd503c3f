#include "ProcessMemory.h"

#include <malloc.h>
#include <pthread.h>

namespace orvo
{

void limitHeap()
{
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread exists yet
    (void)mallopt(M_ARENA_MAX, kMallocArenas);
    (void)mallopt(M_TOP_PAD, kHeapPadBytes);
    // NOLINTEND(concurrency-mt-unsafe)
}

void setThreadStack(std::size_t bytes)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
    {
        return;
    }
    if (pthread_attr_setstacksize(&attributes, bytes) == 0)
    {
        (void)pthread_setattr_default_np(&attributes);
    }
    (void)pthread_attr_destroy(&attributes);
}

} // namespace orvo
