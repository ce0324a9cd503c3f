#include "CommandLine.h"
#include "DbusCmd.h"
#include "DeveloperMode.h"
#include "DevicePaths.h"
#include "ProcessMemory.h"
#include "RealTimeSetup.h"
#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "SupervisionContext.h"
#include "SuprSM.h"
#include "SuprSMSystem.h"
#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/DbusTypes.h"
#include "identification/ServiceRegistration.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using namespace orvo;
using Finding = CommandLine::Finding;

[[noreturn]] void printUsageAndExit()
{
    std::printf("Usage: %s [V.%s] <options ... >\nOptions:  [-?] [-h] [--help]\n",
                program_invocation_short_name, WARDEX_VERSION);
    std::exit(EXIT_SUCCESS); // NOLINT(concurrency-mt-unsafe): no other thread exists yet
}

bool isCommandLineValid(CommandLine& commandLine)
{
    for (Finding found = commandLine.next(); found != Finding::End; found = commandLine.next())
    {
        if (found == Finding::Help)
        {
            printUsageAndExit();
        }
        std::fputs(CommandLine::message(found, commandLine.text()).c_str(), stderr);
        return false;
    }
    return true;
}

/// Builds the supervisor and runs it. Everything lives on this stack: what is built later is torn
/// down earlier, on each way out.
int supervise(int argc, char* argv[])
{
    // The application takes arguments that it knows out of argv; a mistyped one must not vanish so.
    CommandLine commandLine(std::vector<std::string>(argv + 1, argv + argc));
    QCoreApplication application(argc, argv);
    if (!isCommandLineValid(commandLine))
    {
        return EXIT_FAILURE;
    }

    Logger::RedisLogger logger(program_invocation_short_name, Logger::kLogSocket, Logger::kLogList,
                               true);
    setThreadStack(kThreadStackBytes);

    const bool developerMode = isDeveloperDevice();
    logger.log(Logger::WARN,
               developerMode ? "%s starting in developer mode"
                             : "%s: supervision activity starting, Bello the watchdog, is "
                               "unfused ...",
               program_invocation_short_name);

    ServiceRegistration serviceRegistration(&logger);
    if (!serviceRegistration.registerServices())
    {
        logger.log(Logger::FATAL, "%s: Unable to register Services. Giving up!",
                   program_invocation_short_name);
        return EXIT_FAILURE;
    }
    if (!developerMode)
    {
        setUpRealTime(logger);
    }
    registerDbusTypes();

    ServiceInfo serviceInfo(&logger, developerMode);
    DbusCmd dbusCmd(&serviceInfo, &logger);
    ServiceAction serviceAction(&serviceInfo, &logger);
    const SupervisionContext context{&dbusCmd, &serviceInfo, &serviceAction, &logger};
    SuprSMSystem system(&context);
    SuprSM vistor(&context, &system, QLatin1String(kVistorBusName));
    SuprSM pictor(&context, &system, QLatin1String(kPictorBusName));

    return QCoreApplication::exec();
}

} // namespace

// An exception leaves main on purpose: a supervisor without its log must not go on, and the core
// file tells why. Caught once and thrown on, so that everything built so far is torn down first;
// nothing is promised about that for an exception that nobody catches.
int main(int argc, char* argv[]) // NOLINT(bugprone-exception-escape)
{
    limitHeap();
    setThreadStack(kLoggerStackBytes);
    try
    {
        return supervise(argc, argv);
    }
    catch (...)
    {
        throw;
    }
}
