// Pings pictor over the system bus as often as told.
//
//   is-alive COUNT

#include "Measure.h"
#include "dbus-proxy/DbusTypes.h"
#include "dbus-proxy/PictorService.h"

#include <QCoreApplication>

#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        bench::fail("is-alive COUNT");
    }
    const QCoreApplication application(argc, argv);
    orvo::registerDbusTypes();
    orvo::PictorService pictor(QStringLiteral("pictor"), QString());
    for (long i = bench::repetitions(argv[1]); i > 0; --i)
    {
        QString runLevel;
        if (!pictor.isAlive(runLevel) || runLevel != QLatin1String("up"))
        {
            bench::fail("pictor is not up");
        }
    }
    return EXIT_SUCCESS;
}
