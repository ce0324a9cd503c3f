// Plays quorl, the camera's service behind a Unix socket.

#include "common/SignalDescriptor.h"
#include "quorl-server/QuorlServer.h"

#include <csignal>

int main()
{
    using namespace orvo::simulator;
    const Descriptor terminations = openSignalDescriptor({SIGTERM, SIGINT, SIGHUP});
    return QuorlServer().run(terminations);
}
