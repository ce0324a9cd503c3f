#include "doctor/ServerProcess.h"

#include "FileDescriptor.h"
#include "doctor/DoctorPaths.h"

#include <QFile>

#include <cstring>
#include <ctime>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::ctl
{

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

std::optional<double> ageOfProcess(int process)
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
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    constexpr double kPerSecond = 1e9;
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / kPerSecond -
           fields[kStartField].toDouble() / ticks;
}

} // namespace orvo::ctl
