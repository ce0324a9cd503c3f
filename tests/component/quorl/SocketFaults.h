#pragma once

#include <cstddef>
#include <functional>

namespace orvo::test
{

/// What the socket calls of this program do beside their work: the program's own connect(), send()
/// and recv() stand before those of the C library, as a busy device would make them behave.
///
/// Threads: set while no other thread uses a socket.
struct SocketFaults
{
    /// Called after each connect() that succeeded.
    std::function<void()> afterConnect;

    /// At most so many bytes per send() and recv(); 0 = as many as asked for.
    std::size_t bytesPerCall{0};

    /// Every other send() and recv() is interrupted by a signal before it does anything.
    bool interruptions{false};

    /// send() and recv() calls so far under one of the two faults above.
    int calls{0};
};

/// The one set of faults in force.
SocketFaults& socketFaults();

} // namespace orvo::test
