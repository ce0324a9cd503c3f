// wardexctl: what the supervisor does, why, and how to act through it.

#include "CommandLine.h"

#include "dbus-proxy/DbusTypes.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

int main(int argc, char** argv)
{
    // A reader that goes early is no accident, and told by the failing write.
    std::signal(SIGPIPE, SIG_IGN);
    try
    {
        const QCoreApplication application(argc, argv);
        orvo::registerDbusTypes();
        return orvo::ctl::runCommandLine(argc, argv);
    }
    catch (const std::exception& error)
    {
        // No memory, say: told like any other failure.
        std::fprintf(stderr, "wardexctl: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
