#include "common/SignalDescriptor.h"

#include "common/Diagnostics.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace orvo::simulator
{

Descriptor openSignalDescriptor(std::initializer_list<int> signals)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : signals)
    {
        sigaddset(&set, number);
    }
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    Descriptor descriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!descriptor.isOpen())
    {
        complain("cannot receive signals: " + errnoText());
    }
    return descriptor;
}

bool takeSignals(const Descriptor& signals)
{
    bool any = false;
    signalfd_siginfo info{};
    while (read(signals.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info))
    {
        any = true;
    }
    return any;
}

} // namespace orvo::simulator
