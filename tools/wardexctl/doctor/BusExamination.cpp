#include "bus/SupervisorClient.h"
#include "dbus-proxy/BusNames.h"
#include "doctor/DoctorPaths.h"
#include "doctor/Examinations.h"
#include "doctor/ServerProcess.h"
#include "log-reading/RedisLink.h"
#include "logger/LogDefaults.h"
#include "model/SupervisorEvent.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>

namespace orvo::ctl
{

namespace
{

bool runsSupervisor()
{
    const QString folder = QLatin1String(kProcessFolder);
    for (const QString& process : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
    {
        QFile name(folder + "/" + process + "/comm");
        if (name.open(QIODevice::ReadOnly) &&
            name.readAll().trimmed() == QByteArray(kSupervisorSource))
        {
            return true;
        }
    }
    return false;
}

void examineOwner(QDBusConnectionInterface& bus, Findings& findings)
{
    const QDBusReply<uint> user = bus.serviceUid(QLatin1String(kWardexBusName));
    if (user.isValid())
    {
        findings.push_back(
            {user.value() == 0 ? Finding::Grade::Fine : Finding::Grade::Note, kWardexBusName,
             "owned by a process of " +
                 (user.value() == 0 ? std::string("root") : "user " + std::to_string(user.value())),
             user.value() == 0 ? "" : "The supervisor is meant to run as root."});
        return;
    }
    if (runsSupervisor())
    {
        findings.push_back({Finding::Grade::Trouble, kWardexBusName,
                            "the supervisor runs, and does not own its name",
                            "Install its bus policy, reload the bus (SIGHUP to dbus-daemon), and "
                            "start the supervisor again."});
        return;
    }
    findings.push_back({Finding::Grade::Trouble, kWardexBusName, "the supervisor does not run",
                        "Start it by its init script; its last words are in wardexctl log."});
}

/// Whether a server started while the supervisor ran, whose logger connects only at its start.
bool isYoungerThanSupervisor(const char* socket)
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    const auto server = serverProcess(socket);
    if (!bus.isConnected() || !server)
    {
        return false;
    }
    const QDBusReply<uint> supervisor = bus.interface()->servicePid(QLatin1String(kWardexBusName));
    const auto age = ageOfProcess(*server);
    const auto supervisorAge =
        supervisor.isValid() ? ageOfProcess(static_cast<int>(supervisor.value())) : std::nullopt;
    constexpr double kStartSeconds = 1;
    return age && supervisorAge && *age + kStartSeconds < *supervisorAge;
}

/// isKept: the supervisor's connection is made once, and kept.
void examineServer(const char* socket, const char* holds, bool isKept, Findings& findings)
{
    RedisLink link(socket);
    if (link.answers())
    {
        const bool isLost = isKept && isYoungerThanSupervisor(socket);
        findings.push_back(
            {isLost ? Finding::Grade::Trouble : Finding::Grade::Fine, socket,
             isLost ? "Redis started after the supervisor, which has lost its log"
                    : "Redis answers",
             isLost ? "Start the supervisor again: its logger does not connect again." : ""});
        return;
    }
    findings.push_back({Finding::Grade::Trouble, socket,
                        "Redis does not answer (" + link.complaint() + "): it holds " + holds,
                        "Start this Redis server, then the supervisor again."});
}

} // namespace

bool examineBus(Findings& findings)
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
    {
        findings.push_back({Finding::Grade::Trouble, "system bus",
                            "cannot be reached (" + bus.lastError().message().toStdString() + ")",
                            "Start dbus-daemon, then the supervisor: it does not connect again."});
        return false;
    }
    findings.push_back({Finding::Grade::Fine, "system bus", "answers", ""});
    examineOwner(*bus.interface(), findings);
    const BusAnswer answer = SupervisorClient::call("doPing");
    if (answer.isAnswered())
    {
        findings.push_back({Finding::Grade::Fine, "supervisor", "answers its ping", ""});
    }
    else if (answer.kind != BusAnswer::Kind::NoSupervisor)
    {
        const Problem problem = SupervisorClient::problemOf(answer);
        findings.push_back({Finding::Grade::Trouble, "supervisor", problem.cause,
                            answer.kind == BusAnswer::Kind::Refused
                                ? "Install its bus policy and reload the bus."
                                : problem.remedy});
    }
    return answer.isAnswered();
}

void examineRedis(Findings& findings)
{
    // To the other one the logger connects anew each time.
    examineServer(Logger::kLogSocket, "the log", true, findings);
    examineServer(Logger::kConfigSocket, "the stored log configuration", false, findings);
}

} // namespace orvo::ctl
