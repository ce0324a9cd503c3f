#include "Transport.h"

#include "quorl/QuorlWire.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>

namespace orvo::Quorl
{

namespace
{

/// Repeats a system call that a signal interrupted before it did anything.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
    {
        result = call();
    }
    return result;
}

Descriptor connectToService()
{
    Descriptor connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!connection.isOpen())
    {
        std::perror("socket");
        return connection;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    static_assert(sizeof(QuorlWire::kSocketPath) <= sizeof(address.sun_path));
    std::memcpy(address.sun_path, QuorlWire::kSocketPath, sizeof(QuorlWire::kSocketPath));
    const auto connecting = [&]
    {
        return ::connect(connection.number(), reinterpret_cast<const sockaddr*>(&address),
                         sizeof(address));
    };
    if (uninterrupted(connecting) == -1)
    {
        std::perror("connect");
        return Descriptor(-1);
    }
    return connection;
}

bool writeAll(const Descriptor& connection, const void* data, std::size_t size)
{
    const auto* next = static_cast<const unsigned char*>(data);
    while (size > 0)
    {
        const ssize_t written =
            uninterrupted([&] { return ::send(connection.number(), next, size, MSG_NOSIGNAL); });
        if (written == -1)
        {
            std::perror("write");
            return false;
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool readAll(const Descriptor& connection, unsigned char* data, std::size_t size)
{
    std::size_t received = 0;
    while (received < size)
    {
        const ssize_t count = uninterrupted(
            [&] { return ::recv(connection.number(), data + received, size - received, 0); });
        if (count == -1)
        {
            std::perror("read");
            return false;
        }
        if (count == 0)
        {
            std::fprintf(stderr, "not enough bytes read: %u != %u\n",
                         static_cast<unsigned int>(received), static_cast<unsigned int>(size));
            return false;
        }
        received += static_cast<std::size_t>(count);
    }
    return true;
}

Reply allocateReply(std::size_t size)
{
    // An empty reply is a buffer too: nullptr means failure.
    Reply reply(static_cast<unsigned char*>(std::malloc(size > 0 ? size : 1)));
    if (!reply)
    {
        std::perror("malloc");
    }
    return reply;
}

} // namespace

Reply callService(std::uint16_t command, const void* payload, std::uint16_t payloadLength,
                  std::size_t replySize)
{
    const Descriptor connection = connectToService();
    if (!connection.isOpen())
    {
        return nullptr;
    }
    const QuorlWire::RequestHeader header{payloadLength, command};
    if (!writeAll(connection, &header, sizeof(header)) ||
        !writeAll(connection, payload, payloadLength))
    {
        return nullptr;
    }
    Reply reply = allocateReply(replySize);
    if (!reply || !readAll(connection, reply.get(), replySize))
    {
        return nullptr;
    }
    return reply;
}

} // namespace orvo::Quorl
