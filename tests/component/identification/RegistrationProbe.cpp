// Registers the services as the supervisor does at its start, in a process of its own because the
// service table lives as long as the process, and tells what came of it, one fact per line:
//
//     registered yes|no                       once per round
//     knows BUS-NAME PROCESS INTERVAL SCRIPT  the service table
//     watches BUS-NAME                        names that a living proxy of this process follows
//
//   registration_probe [--rounds N] [--occupied BUS-NAME]

#include "ServiceInfo.h"
#include "identification/ServiceRegistration.h"
#include "logger/RedisLogger.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QRegularExpression>

#include <cstdio>

namespace
{
using MatchRules = QMap<QString, QStringList>;

class Placeholder final : public orvo::ServiceInfo::Service
{
public:
    Placeholder() : Service("placeholder", 5, "/placeholder") {}
    bool isAlive(QString&) override { return false; }
};

void tellServiceTable(orvo::Logger::RedisLogger& logger)
{
    orvo::ServiceInfo registry(&logger, false);
    for (const char* name :
         {"com.orvo.vistor", "com.orvo.pictor", "com.orvo.wirl", "com.orvo.quorl"})
    {
        if (orvo::ServiceInfo::isKnown(name))
        {
            std::printf(
                "knows %s %s %d %s\n", name, qPrintable(orvo::ServiceInfo::processName(name)),
                registry.pingInterval(name), qPrintable(orvo::ServiceInfo::initScript(name)));
        }
    }
}

/// A proxy follows the owner of its name from its construction to its destruction; the bus daemon
/// knows the rules of each connection.
void tellWatchedNames()
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    const QDBusMessage reply = bus.call(
        QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus.Debug.Stats", "GetAllMatchRules"));
    if (reply.type() != QDBusMessage::ReplyMessage)
    {
        std::printf("cannot ask the bus: %s\n", qPrintable(reply.errorMessage()));
        return;
    }
    const auto rules = qdbus_cast<MatchRules>(reply.arguments().constFirst());
    const QRegularExpression owned("member='NameOwnerChanged'.*arg0='(com[.]orvo[^']*)'");
    for (const QString& rule : rules.value(bus.baseService()))
    {
        const QRegularExpressionMatch match = owned.match(rule);
        if (match.hasMatch())
        {
            std::printf("watches %s\n", qPrintable(match.captured(1)));
        }
    }
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    orvo::Logger::RedisLogger logger("wardex", "/tmp/redis-cache.sock", "LOG:ENTRIES", false);

    int rounds = 1;
    for (int i = 1; i + 1 < words.size(); i += 2)
    {
        if (words[i] == "--rounds")
        {
            rounds = words[i + 1].toInt();
        }
        else if (words[i] == "--occupied")
        {
            orvo::ServiceInfo::addService(words[i + 1],
                                          orvo::ServiceInfo::makeService<Placeholder>());
        }
    }

    orvo::ServiceRegistration registration(&logger);
    for (int round = 0; round < rounds; ++round)
    {
        std::printf("registered %s\n", registration.registerServices() ? "yes" : "no");
    }
    tellServiceTable(logger);
    tellWatchedNames();
    return 0;
}
