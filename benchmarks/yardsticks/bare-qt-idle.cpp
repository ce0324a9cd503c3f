// A Qt program that pings the two judged services and feeds the watchdog at the supervisor's
// intervals, and does nothing else.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QTimer>

#include <chrono>

#include <fcntl.h>
#include <linux/watchdog.h>
#include <sys/ioctl.h>

namespace
{

void every(std::chrono::milliseconds period, QTimer& timer, void (*work)())
{
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, work);
    timer.start(period);
}

void ping(const char* service, int timeoutMs)
{
    const QString name = QLatin1String(service);
    const QDBusMessage call =
        QDBusMessage::createMethodCall(name, QStringLiteral("/"), name, QStringLiteral("doPing"));
    (void)QDBusConnection::systemBus().call(call, QDBus::Block, timeoutMs);
}

int watchdog()
{
    static const int kDescriptor = ::open("/dev/watchdog", O_RDWR | O_CLOEXEC);
    return kDescriptor;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QTimer vistor;
    QTimer pictor;
    QTimer system;
    using std::chrono::milliseconds;
    every(milliseconds(2200), vistor, [] { ping("com.orvo.vistor", 2200); });
    every(milliseconds(1000), pictor, [] { ping("com.orvo.pictor", 1000); });
    every(milliseconds(1000), system, [] { (void)::ioctl(watchdog(), WDIOC_KEEPALIVE, nullptr); });
    return QCoreApplication::exec();
}
