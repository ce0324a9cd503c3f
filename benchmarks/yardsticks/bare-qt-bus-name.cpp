// A Qt program that owns a bus name and does nothing else, with the supervisor's libraries.
#include <QCoreApplication>
#include <QDBusConnection>

#include <cstdlib>

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerService(QStringLiteral("com.orvo.wardex")))
    {
        return EXIT_FAILURE;
    }
    return QCoreApplication::exec();
}
