#include "doctor/WallClock.h"

#include "FileDescriptor.h"
#include "doctor/DoctorPaths.h"
#include "logger/LogDefaults.h"

#include <QFile>

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

std::optional<double> wallClockStep()
{
    const char* const socket = Logger::kLogSocket;
    struct stat state = {};
    const auto process = serverProcess(socket);
    const auto age = process ? ageOf(*process) : std::nullopt;
    if (!age || ::stat(socket, &state) != 0)
    {
        return std::nullopt;
    }
    // The socket was made with the wall clock of then, the process has an age by the other one.
    return now(CLOCK_REALTIME) - secondsOf(state.st_mtim) - *age;
}

} // namespace orvo::ctl
