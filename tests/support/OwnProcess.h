#pragma once

#include <functional>

namespace orvo::test
{

/// Runs a claim in a process of its own, for what a process does only once or remembers to its end.
/// A failed expectation there fails the calling test too. Objects that live as long as the process
/// are destroyed there before this returns.
///
/// Errors:  the caller must not have threads: only the calling one goes on in the new process.
void inOwnProcess(const std::function<void()>& claim);

} // namespace orvo::test
