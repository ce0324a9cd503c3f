#include "ProcessFigures.h"

#include <filesystem>
#include <iterator>

#include <malloc.h>

namespace orvo::test
{

namespace
{

std::size_t entriesIn(const char* folder)
{
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

} // namespace

ProcessFigures ProcessFigures::now()
{
    // Before the folders are read: reading takes memory and a descriptor of its own.
    const struct mallinfo2 heap = mallinfo2();
    return {heap.uordblks + heap.hblkhd, entriesIn("/proc/self/fd"), entriesIn("/proc/self/task")};
}

std::ostream& operator<<(std::ostream& stream, const ProcessFigures& figures)
{
    return stream << figures.heapBytes << " bytes of heap, " << figures.descriptors
                  << " descriptors, " << figures.threads << " threads";
}

} // namespace orvo::test
