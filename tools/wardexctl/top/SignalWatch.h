#pragma once

#include "top/OwnedDescriptor.h"

namespace orvo::ctl
{

/// Turns the signals that a program on a terminal has to answer into something to read, so that
/// they come between two deeds and not into one.
///
/// Shape:   from the construction on they are blocked, also in threads made later; make it before
///          those. What is neither read nor raised is delivered at the destruction.
/// Threads: one.
/// Errors:  the constructor throws std::system_error when the system gives no more descriptors.
class SignalWatch
{
public:
    SignalWatch();
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }
    /// The next signal; 0: none came.
    [[nodiscard]] int take() const;

    /// Does by default what the signal does: stops the program here until it is continued, or ends
    /// it.
    static void obey(int signal);

private:
    OwnedDescriptor m_descriptor;
};

} // namespace orvo::ctl
