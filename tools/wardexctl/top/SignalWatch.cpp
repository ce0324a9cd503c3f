#include "top/SignalWatch.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace orvo::ctl
{

namespace
{

sigset_t watched()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT, SIGWINCH})
    {
        sigaddset(&signals, signal);
    }
    return signals;
}

int blocked()
{
    const sigset_t signals = watched();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

SignalWatch::SignalWatch() : m_descriptor(blocked(), "signalfd") {}

SignalWatch::~SignalWatch()
{
    const sigset_t signals = watched();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

int SignalWatch::take() const
{
    signalfd_siginfo information{};
    const ssize_t size = read(m_descriptor.get(), &information, sizeof information);
    return size == static_cast<ssize_t>(sizeof information)
               ? static_cast<int>(information.ssi_signo)
               : 0;
}

void SignalWatch::obey(int signal)
{
    // The screen's library has a handler of its own, which would draw.
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    struct sigaction former = {};
    sigaction(signal, &action, &former);
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, signal);
    sigset_t before;
    (void)raise(signal);
    pthread_sigmask(SIG_UNBLOCK, &one, &before);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    sigaction(signal, &former, nullptr);
}

} // namespace orvo::ctl
