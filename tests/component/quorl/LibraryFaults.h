#pragma once

#include <cstddef>
#include <functional>

namespace orvo::test
{

/// What calls of the C library do in this program as they would on a busy device: the program's own
/// connect(), send(), recv() and strndup() stand before the library's.
///
/// Threads: set while no other thread makes such a call.
struct LibraryFaults
{
    /// Called after each connect() that succeeded.
    std::function<void()> afterConnect;

    /// At most so many bytes per send() and recv(); 0 = as many as asked for.
    std::size_t bytesPerCall{0};

    /// Every other send() and recv() is interrupted by a signal before it does anything.
    bool interruptions{false};

    /// strndup() finds no memory.
    bool noMemoryForTexts{false};

    /// send() and recv() calls so far under one of the two faults above.
    int calls{0};
};

/// The one set of faults in force.
LibraryFaults& libraryFaults();

} // namespace orvo::test
