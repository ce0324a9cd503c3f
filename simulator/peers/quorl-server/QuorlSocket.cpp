#include "quorl-server/QuorlSocket.h"

#include "common/Diagnostics.h"

#include <cerrno>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
constexpr int kBacklog = 16;
}

QuorlSocket::~QuorlSocket()
{
    if (m_inode != 0 && inode() == m_inode)
    {
        unlink(m_path.c_str());
    }
}

bool QuorlSocket::listen()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    errno = ENAMETOOLONG;
    Descriptor socket;
    if (m_path.size() < sizeof address.sun_path)
    {
        m_path.copy(address.sun_path, m_path.size());
        unlink(m_path.c_str());
        socket.reset(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    }
    if (!socket.isOpen() ||
        bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), kBacklog) != 0)
    {
        complain("cannot listen on " + m_path + ": " + errnoText() +
                 "; make its folder writable and the path short");
        return false;
    }
    m_inode = inode();
    m_socket = std::move(socket);
    return true;
}

Descriptor QuorlSocket::accept() const
{
    return Descriptor(accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

ino_t QuorlSocket::inode() const
{
    struct stat status = {};
    return lstat(m_path.c_str(), &status) == 0 ? status.st_ino : 0;
}

} // namespace orvo::simulator
