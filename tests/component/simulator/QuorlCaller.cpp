#include "QuorlCaller.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::test
{

namespace
{
constexpr char kSocket[] = "/tmp/quorld.sock";
constexpr int kBoundMs = 10000;
constexpr std::size_t kItemSize = 128;
} // namespace

QuorlCaller::QuorlCaller() : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, kSocket, sizeof kSocket);
    if (connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    {
        m_error = errno;
    }
}

std::string QuorlCaller::frame(std::uint16_t command, const std::string& payload)
{
    const auto byte = [](std::size_t value)
    {
        return static_cast<char>(value & 0xffU);
    };
    std::string bytes = {byte(payload.size()), byte(payload.size() >> 8U), byte(command),
                         byte(command >> 8U)};
    return bytes + payload;
}

std::string QuorlCaller::item(const std::string& name)
{
    std::string payload = name;
    payload.resize(kItemSize, '\0');
    return payload;
}

void QuorlCaller::send(const std::string& bytes) const
{
    (void)::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

bool QuorlCaller::hasNewsWithin(int milliseconds) const
{
    pollfd source = {m_socket.get(), POLLIN, 0};
    return poll(&source, 1, milliseconds) == 1;
}

std::string QuorlCaller::readToEnd() const
{
    std::string bytes;
    std::array<char, 4096> chunk{};
    ssize_t count = 0;
    while (hasNewsWithin(kBoundMs) &&
           (count = read(m_socket.get(), chunk.data(), chunk.size())) > 0)
    {
        bytes.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}

std::int32_t QuorlCaller::resultOf(const std::string& reply)
{
    std::int32_t result = 0;
    std::memcpy(&result, reply.data() + reply.size() - sizeof result, sizeof result);
    return result;
}

} // namespace orvo::test
