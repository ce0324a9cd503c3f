#include "FileDescriptor.h"
#include "doctor/DoctorPaths.h"
#include "doctor/Examinations.h"
#include "logger/LogDefaults.h"
#include "model/Duration.h"

#include <QFile>

#include <cmath>
#include <cstring>
#include <ctime>
#include <optional>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::ctl
{

namespace
{

/// A server makes its socket within this time of its start, in seconds.
constexpr double kSlackSeconds = 20;

double secondsOf(const timespec& time)
{
    constexpr double kPerSecond = 1e9;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / kPerSecond;
}

double now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return secondsOf(time);
}

std::optional<int> serverProcess(const char* path)
{
    const FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        getsockopt(client.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid <= 0)
    {
        return std::nullopt;
    }
    return peer.pid;
}

/// Seconds since a process started, by a clock that nobody steps.
std::optional<double> ageOf(int process)
{
    QFile file(QLatin1String(kProcessFolder) + "/" + QString::number(process) + "/stat");
    if (!file.open(QIODevice::ReadOnly))
    {
        return std::nullopt;
    }
    const QByteArray text = file.readAll();
    // Behind the name, which may hold anything, the 22nd field is the 20th.
    constexpr int kStartField = 19;
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() <= kStartField)
    {
        return std::nullopt;
    }
    const double ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
    return now(CLOCK_BOOTTIME) - fields[kStartField].toDouble() / ticks;
}

} // namespace

void examineClock(Findings& findings)
{
    const char* const socket = Logger::kLogSocket;
    struct stat state = {};
    const auto process = serverProcess(socket);
    const auto age = process ? ageOf(*process) : std::nullopt;
    if (!age || ::stat(socket, &state) != 0)
    {
        findings.push_back(
            {Finding::Grade::Note, "wall clock", "cannot be judged without Redis", ""});
        return;
    }
    // The socket was made with the wall clock of then, the process has an age by the other one.
    const double step = now(CLOCK_REALTIME) - secondsOf(state.st_mtim) - *age;
    if (std::abs(step) < kSlackSeconds)
    {
        findings.push_back({Finding::Grade::Fine, "wall clock", "runs evenly", ""});
        return;
    }
    findings.push_back({Finding::Grade::Note, "wall clock",
                        "was set " + std::string(step > 0 ? "forward" : "back") + " by " +
                            durationText(std::abs(step)) + " since the log's server started",
                        step > 0 ? "Package restarts before that may no longer count; times of "
                                   "older records are shown as of the new clock."
                                 : "Package restarts before that count for longer; times of older "
                                   "records are shown as of the new clock."});
}

} // namespace orvo::ctl
