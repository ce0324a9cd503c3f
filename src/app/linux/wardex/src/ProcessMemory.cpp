#include "ProcessMemory.h"

#include <link.h>
#include <malloc.h>
#include <pthread.h>

namespace orvo
{

namespace
{

constexpr std::size_t kPageBytes = 4096;

/// Whole pages of thread-local data, for which the C library takes room from the stack. None on the
/// device; a thread checker's are more than a stack of ours.
std::size_t threadLocalBytes()
{
    std::size_t bytes = 0;
    dl_iterate_phdr(
        [](dl_phdr_info* module, std::size_t /*size*/, void* sum)
        {
            for (int index = 0; index < module->dlpi_phnum; ++index)
            {
                if (module->dlpi_phdr[index].p_type == PT_TLS)
                {
                    *static_cast<std::size_t*>(sum) += module->dlpi_phdr[index].p_memsz;
                }
            }
            return 0;
        },
        &bytes);
    return bytes / kPageBytes * kPageBytes;
}

} // namespace

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
    if (pthread_attr_setstacksize(&attributes, bytes + threadLocalBytes()) == 0)
    {
        (void)pthread_setattr_default_np(&attributes);
    }
    (void)pthread_attr_destroy(&attributes);
}

} // namespace orvo
