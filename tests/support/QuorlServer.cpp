#include "QuorlServer.h"

#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvo::test
{

namespace
{

/// Exactly so many bytes, fewer when the client closes.
std::string readFrom(int connection, std::size_t size)
{
    std::string bytes(size, '\0');
    std::size_t received = 0;
    while (received < size)
    {
        const ssize_t count = ::read(connection, &bytes[received], size - received);
        if (count <= 0)
        {
            break;
        }
        received += static_cast<std::size_t>(count);
    }
    bytes.resize(received);
    return bytes;
}

/// A request without its last bytes.
std::string readRequest(int connection, std::size_t leftOut)
{
    std::string request = readFrom(connection, sizeof(QuorlWire::RequestHeader));
    QuorlWire::RequestHeader header{};
    if (request.size() == sizeof(header))
    {
        std::memcpy(&header, request.data(), sizeof(header));
    }
    return request + readFrom(connection, header.payloadLength - leftOut);
}

} // namespace

QuorlServer::QuorlServer()
{
    answersConfig("0.0.0.0", 7);
    m_thread = std::thread([this] { serve(); });
}

QuorlServer::~QuorlServer()
{
    release();
    ::shutdown(m_listener.descriptor(), SHUT_RDWR);
    m_thread.join();
}

void QuorlServer::answers(const std::string& bytes)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_answer = bytes;
}

void QuorlServer::answersConfig(const std::string& value, std::int32_t result)
{
    std::string bytes = value;
    bytes.resize(sizeof(QuorlWire::ConfigReply::value), '\0');
    bytes.append(reinterpret_cast<const char*>(&result), sizeof(result));
    answers(bytes);
}

void QuorlServer::hangsUp()
{
    behave(Manner::kHangsUp);
}

void QuorlServer::hangsUpAtOnce()
{
    behave(Manner::kHangsUpAtOnce);
}

int QuorlServer::hungUp() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_hungUp;
}

void QuorlServer::holds()
{
    behave(Manner::kHolds);
}

void QuorlServer::release()
{
    behave(Manner::kAnswers);
}

std::vector<std::string> QuorlServer::requests() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

void QuorlServer::behave(Manner manner)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_manner = manner;
    m_changed.notify_all();
}

QuorlServer::Manner QuorlServer::currentManner() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_manner;
}

void QuorlServer::serve()
{
    for (;;)
    {
        const int connection = ::accept(m_listener.descriptor(), nullptr, nullptr);
        if (connection == -1)
        {
            return;
        }
        handle(connection);
    }
}

void QuorlServer::handle(int connection)
{
    const Manner manner = currentManner();
    std::string request;
    if (manner == Manner::kHangsUp)
    {
        // A socket that is closed with one byte unread resets the other end.
        request = readRequest(connection, 1);
        pollfd lastByte{connection, POLLIN, 0};
        ::poll(&lastByte, 1, -1);
    }
    else if (manner != Manner::kHangsUpAtOnce)
    {
        request = readRequest(connection, 0);
    }

    std::unique_lock<std::mutex> lock(m_mutex);
    if (manner == Manner::kHangsUp || manner == Manner::kHangsUpAtOnce)
    {
        ::close(connection);
        ++m_hungUp;
        return;
    }
    m_requests.push_back(request);
    m_changed.wait(lock, [this] { return m_manner != Manner::kHolds; });
    // Not send(), which a test program may have made unreliable for the client.
    (void)::sendto(connection, m_answer.data(), m_answer.size(), MSG_NOSIGNAL, nullptr, 0);
    ::close(connection);
}

} // namespace orvo::test
