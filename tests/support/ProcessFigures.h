#pragma once

#include <cstddef>
#include <ostream>

namespace orvo::test
{

/// What this process holds at a moment, for claims that it does not grow.
///
/// Units: heapBytes counts what is allocated, not what the C library keeps in reserve; it is 0
/// under
///        a sanitizer, which allocates by itself.
struct ProcessFigures
{
    std::size_t heapBytes;
    std::size_t descriptors;
    std::size_t threads;

    static ProcessFigures now();
};

std::ostream& operator<<(std::ostream& stream, const ProcessFigures& figures);

} // namespace orvo::test
