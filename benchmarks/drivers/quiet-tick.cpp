// A supervisor whose pictor is up, told to tick as often as told.
//
//   quiet-tick REDIS-SOCKET COUNT

#include "DbusCmd.h"
#include "Measure.h"
#include "ProcessTables.h"
#include "ServiceAction.h"
#include "ServiceInfo.h"
#include "SupervisionContext.h"
#include "SuprSM.h"
#include "SuprSMSystem.h"
#include "SuprState.h"
#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/DbusTypes.h"
#include "dbus-proxy/PictorService.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <QCoreApplication>

#include <cstdlib>

namespace
{

using namespace orvo;

/// Ticks the machine of pictor; false unless it is in SuprUp.
bool tick()
{
    SuprState& state = *g_activeStates.at(QLatin1String(kPictorBusName));
    if (state.name() != QLatin1String("SuprUp"))
    {
        return false;
    }
    state.ping();
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        bench::fail("quiet-tick REDIS-SOCKET COUNT");
    }
    const QCoreApplication application(argc, argv);
    registerDbusTypes();
    Logger::RedisLogger logger("wardex", argv[1], Logger::kLogList, false);
    ServiceInfo registry(&logger, true);
    ServiceInfo::addService(
        QLatin1String(kPictorBusName),
        ServiceInfo::makeService<PictorService>(QStringLiteral("pictor"), QString()));
    DbusCmd dbusCmd(&registry, &logger);
    ServiceAction action(&registry, &logger);
    const SupervisionContext context{&dbusCmd, &registry, &action, &logger};
    SuprSMSystem system(&context);
    SuprSM pictor(&context, &system, QLatin1String(kPictorBusName));
    g_activeStates.at(QLatin1String(kPictorBusName))->ping(); // it answers, so SuprUp is next
    for (long i = bench::repetitions(argv[2]); i > 0; --i)
    {
        if (!tick())
        {
            bench::fail("pictor is not up");
        }
    }
    return EXIT_SUCCESS;
}
