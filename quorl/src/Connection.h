#pragma once

#include "Handles.h"

#include "quorl/QuorlWire.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>

#include <sys/socket.h>
#include <sys/un.h>

namespace orvo::Quorl
{

/// The service's socket as the kernel takes it, made once and for all.
constexpr sockaddr_un serviceAddress()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    static_assert(sizeof(QuorlWire::kSocketPath) <= sizeof(address.sun_path));
    for (std::size_t i = 0; i < sizeof(QuorlWire::kSocketPath); ++i)
    {
        address.sun_path[i] = QuorlWire::kSocketPath[i];
    }
    return address;
}

/// One connection to the quorl service, closed with this object.
///
/// Threads: any; blocks until the service has taken or sent everything.
/// Errors:  false, and the failed step with the errno text on standard error. A call that a signal
///          interrupted is repeated; a service that has gone does not raise SIGPIPE.
class Connection
{
public:
    Connection() : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}

    [[nodiscard]] bool connect() const
    {
        if (!m_socket.isOpen())
        {
            std::perror("socket");
            return false;
        }
        static constexpr sockaddr_un kAddress = serviceAddress();
        const auto* const address = reinterpret_cast<const sockaddr*>(&kAddress);
        while (::connect(m_socket.number(), address, sizeof(kAddress)) == -1)
        {
            if (!isInterrupted())
            {
                std::perror("connect");
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool write(const void* data, std::size_t size) const
    {
        const auto* next = static_cast<const unsigned char*>(data);
        const auto* const end = next + size;
        while (next != end)
        {
            const ssize_t written =
                ::send(m_socket.number(), next, static_cast<std::size_t>(end - next), MSG_NOSIGNAL);
            if (written >= 0)
            {
                next += written;
            }
            else if (!isInterrupted())
            {
                std::perror("write");
                return false;
            }
        }
        return true;
    }

    /// A service that closes too early is told by how many bytes came.
    [[nodiscard]] bool read(unsigned char* data, std::size_t size) const
    {
        std::size_t received = 0;
        while (received < size)
        {
            const ssize_t count = ::recv(m_socket.number(), data + received, size - received, 0);
            if (count > 0)
            {
                received += static_cast<std::size_t>(count);
            }
            else if (count == 0)
            {
                std::fprintf(stderr, "not enough bytes read: %u != %u\n",
                             static_cast<unsigned int>(received), static_cast<unsigned int>(size));
                return false;
            }
            else if (!isInterrupted())
            {
                std::perror("read");
                return false;
            }
        }
        return true;
    }

private:
    /// The call has done nothing yet.
    static bool isInterrupted() { return errno == EINTR; }

    Descriptor m_socket;
};

} // namespace orvo::Quorl
