// Pings pictor through nothing but its generated Qt proxy.
//
//   qt-ping COUNT

#include "Measure.h"
#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/DbusTypes.h"
#include "dbus-proxy/PictorProxy.h"

#include <QCoreApplication>

#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        bench::fail("qt-ping COUNT");
    }
    constexpr int kTimeoutMs = 1000;
    const QCoreApplication application(argc, argv);
    orvo::registerDbusTypes();
    PictorProxy pictor(QLatin1String(orvo::kPictorBusName), QLatin1String(orvo::kBusObjectPath),
                       QDBusConnection::systemBus());
    pictor.setTimeout(kTimeoutMs);
    for (long i = bench::repetitions(argv[1]); i > 0; --i)
    {
        QString runLevel;
        if (!pictor.doPing(runLevel).isValid() || runLevel != QLatin1String("up"))
        {
            bench::fail("pictor is not up");
        }
    }
    return EXIT_SUCCESS;
}
