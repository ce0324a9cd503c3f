#include "quorl-server/QuorlConnection.h"

#include "common/Diagnostics.h"

#include <array>
#include <cerrno>

#include <sys/socket.h>

namespace orvo::simulator
{

namespace
{
constexpr std::size_t kReadChunk = 4096;
}

std::optional<QuorlRequest> QuorlConnection::receive()
{
    std::array<char, kReadChunk> chunk{};
    ssize_t count = 0;
    while ((count = recv(m_socket.get(), chunk.data(), chunk.size(), 0)) > 0)
    {
        m_received.append(chunk.data(), static_cast<std::size_t>(count));
    }
    if (count == 0 || errno != EAGAIN)
    {
        m_socket.reset();
        return std::nullopt;
    }
    if (m_requested)
    {
        // More than one request on a connection is ignored.
        m_received.clear();
        return std::nullopt;
    }
    std::optional<QuorlRequest> request = QuorlRequest::decode(m_received);
    m_requested = request.has_value();
    return request;
}

void QuorlConnection::finish(const std::string& bytes)
{
    // A reply fits into the empty buffer of a fresh connection.
    if (send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(bytes.size()))
    {
        complain("cannot send a reply of " + std::to_string(bytes.size()) +
                 " bytes: " + errnoText() + "; the client has left");
    }
    m_socket.reset();
}

} // namespace orvo::simulator
