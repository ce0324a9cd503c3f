// A library for LD_PRELOAD: SIGTERM makes the event loop of a Qt program quit, so that its
// tear-down can be watched. Programs that never end by themselves would otherwise never show it.

#include <QCoreApplication>
#include <QMetaObject>

#include <csignal>
#include <thread>

namespace
{

void quitOnSigterm()
{
    sigset_t term;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    int received = 0;
    sigwait(&term, &received);
    QMetaObject::invokeMethod(QCoreApplication::instance(), "quit", Qt::QueuedConnection);
}

// Before main and before any other thread: all of them inherit that the signal is blocked.
[[gnu::constructor]] void start()
{
    sigset_t term;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &term, nullptr);
    std::thread(quitOnSigterm).detach();
}

} // namespace
