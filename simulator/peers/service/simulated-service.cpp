// Plays one of the camera's services on the system bus; which one, its file name says.

#include "common/Diagnostics.h"
#include "common/SignalDescriptor.h"
#include "service/BusPresence.h"
#include "service/PingResponder.h"
#include "service/ServiceIdentity.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QSocketNotifier>

#include <csignal>
#include <sys/prctl.h>

int main(int argc, char** argv)
{
    using namespace orvo::simulator;

    // Before Qt starts its bus thread, which inherits the mask.
    const Descriptor terminations = openSignalDescriptor({SIGTERM, SIGINT, SIGHUP});
    QCoreApplication application(argc, argv);

    const ServiceIdentity identity = ServiceIdentity::ofExecutable(argv[0]);
    // Under an emulator or a checker the kernel shows that tool's name instead.
    prctl(PR_SET_NAME, identity.shortName.c_str());

    QSocketNotifier terminated(terminations.get(), QSocketNotifier::Read);
    // The signal is private to Qt in 5.15, so only its text can name it.
    QObject::connect(&terminated, SIGNAL(activated(QSocketDescriptor, QSocketNotifier::Type)),
                     &application, SLOT(quit()));

    PingResponder responder(identity);
    BusPresence presence(identity.busName, &responder);
    presence.begin();
    const int status = QCoreApplication::exec();
    if (status == 0 && !QDBusConnection::systemBus().isConnected())
    {
        complain("the system bus has gone, nobody can ping any more");
        return 1;
    }
    return status;
}
