#include "UnixListener.h"

#include <stdexcept>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::test
{

UnixListener::UnixListener(std::string path, int backlog)
    : m_path(std::move(path)), m_descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    unlink(m_path.c_str());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_descriptor, backlog) != 0)
    {
        close(m_descriptor);
        throw std::runtime_error("cannot listen on " + m_path);
    }
}

UnixListener::~UnixListener()
{
    close(m_descriptor);
    unlink(m_path.c_str());
}

} // namespace orvo::test
