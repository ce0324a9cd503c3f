// Runs a program and plays the hardware watchdog for it.

#include "common/Diagnostics.h"
#include "watchdog/WatchdogGuard.h"

#include <cstdio>
#include <string>
#include <vector>

namespace
{
constexpr int kUsageStatus = 64;
constexpr char kUsage[] =
    "Usage: watchdog-guard --device FILE --timeout-ms N --journal FILE -- PROGRAM [ARGUMENT...]\n"
    "Runs PROGRAM and plays the hardware watchdog behind the plain file FILE for it.\n"
    "\n"
    "  --device FILE    the watchdog node as PROGRAM opens it\n"
    "  --timeout-ms N   milliseconds without a feed until the device is reset\n"
    "  --journal FILE   a line for each use of the node is appended here\n"
    "\n"
    "Counts on after PROGRAM has ended once the node was opened. Exit status: PROGRAM's (128 +\n"
    "number for a signal); 70 after a reset, which kills PROGRAM and all it has started; 64 for a\n"
    "wrong command line; 71 when the guard cannot work; 126 or 127 when PROGRAM cannot be run.\n";
} // namespace

int main(int argc, char** argv)
{
    using namespace orvo::simulator;

    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() == 1 && (words[0] == "--help" || words[0] == "-h"))
    {
        std::fputs(kUsage, stdout);
        return 0;
    }
    std::string problem;
    const std::optional<GuardOptions> options = GuardOptions::parse(words, problem);
    if (!options)
    {
        complain(problem + "; see watchdog-guard --help");
        return kUsageStatus;
    }
    return WatchdogGuard(*options).run();
}
