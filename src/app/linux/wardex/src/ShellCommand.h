#pragma once

namespace orvo
{

/// Hands a command line to the shell and waits for its end. What came of it is not looked at.
void runInShell(const char* commandLine);

} // namespace orvo
