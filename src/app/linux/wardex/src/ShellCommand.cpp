#include "ShellCommand.h"

#include <cstdlib>

namespace orvo
{

void runInShell(const char* commandLine)
{
    // The commands are constants of the device and need the shell for wildcards and redirection.
    // NOLINTNEXTLINE(cert-env33-c,concurrency-mt-unsafe)
    const int ignoredResult = std::system(commandLine);
    (void)ignoredResult;
}

} // namespace orvo
