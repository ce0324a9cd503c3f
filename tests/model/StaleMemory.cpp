// Whoever writes to an object that is gone is found out: this program keeps freed memory of the
// size of a state object for a while, filled with a pattern, and looks at it before it gives it
// away. A state that is touched after its transition ends the program. The address sanitizer does
// the same, and more.

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <malloc.h>

#ifndef __SANITIZE_ADDRESS__

namespace
{

constexpr std::size_t kSmallest = 32; // bytes
constexpr std::size_t kLargest = 160;
constexpr int kPattern = 0xDB;

struct Kept
{
    void* memory;
    std::size_t bytes;
};
std::array<Kept, 64> g_kept{};
std::size_t g_next = 0;

bool isUntouched(const Kept& kept)
{
    const auto* const bytes = static_cast<const unsigned char*>(kept.memory);
    for (std::size_t i = 0; i < kept.bytes; ++i)
    {
        if (bytes[i] != kPattern)
        {
            return false;
        }
    }
    return true;
}

} // namespace

void* operator new(std::size_t bytes)
{
    if (void* const memory = std::malloc(bytes == 0 ? 1 : bytes))
    {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    const std::size_t bytes = malloc_usable_size(memory);
    if (bytes < kSmallest || bytes > kLargest)
    {
        std::free(memory);
        return;
    }
    std::memset(memory, kPattern, bytes);
    Kept& kept = g_kept[g_next++ % g_kept.size()];
    if (kept.memory != nullptr && !isUntouched(kept))
    {
        std::fputs("model: an object was touched after its end\n", stderr);
        std::abort();
    }
    std::free(kept.memory);
    kept = {memory, bytes};
}

void operator delete(void* memory, std::size_t /*bytes*/) noexcept
{
    operator delete(memory);
}

#endif
