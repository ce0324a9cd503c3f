// Writes down what the simulated device shows to the outside, for those who tell or judge its
// story.

#include "common/Diagnostics.h"
#include "observer/BusObserver.h"
#include "observer/RecordsObserver.h"

#include <QCoreApplication>

#include <cstdio>
#include <string>
#include <vector>

namespace
{
constexpr int kUsageStatus = 64;
constexpr char kUsage[] =
    "Usage: device-observer bus FILE\n"
    "       device-observer records SOCKET FILE\n"
    "Appends a JSON line to FILE for each event, until SIGTERM ends it.\n"
    "\n"
    "  bus      names of the device on the system bus, and the availability signal\n"
    "  records  log records published in the Redis server behind SOCKET\n";
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
    if (words.size() == 2 && words[0] == "bus")
    {
        QCoreApplication application(argc, argv);
        BusObserver observer(words[1]);
        return observer.begin() ? QCoreApplication::exec() : 1;
    }
    if (words.size() == 3 && words[0] == "records")
    {
        return RecordsObserver(words[1], words[2]).run() ? 0 : 1;
    }
    complain("give 'bus FILE' or 'records SOCKET FILE'; see device-observer --help");
    return kUsageStatus;
}
