#include "bus/OwnBus.h"

#include "Claim.h"

#include "bus/WireWriter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::fuzz
{

namespace
{

constexpr char kBusName[] = "org.freedesktop.DBus";
constexpr char kClientName[] = ":1.1";
constexpr char kOtherName[] = ":1.2";

/// False at the end of the connection.
bool receive(int connection, char* data, std::size_t size)
{
    while (size > 0)
    {
        const ssize_t count = ::recv(connection, data, size, 0);
        if (count <= 0)
        {
            return false;
        }
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

void transmit(int connection, const std::string& bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size())
    {
        const ssize_t count =
            ::send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        claim(count > 0, "the client keeps its connection");
        sent += static_cast<std::size_t>(count);
    }
}

std::string lineFrom(int connection)
{
    std::string line;
    char byte = 0;
    while (receive(connection, &byte, 1) && byte != '\n')
    {
        if (byte != '\r' && byte != '\0')
        {
            line += byte;
        }
    }
    return line;
}

/// An abstract address: there is no file to be left behind.
std::string addressName()
{
    return "wardex-fuzz-" + std::to_string(getpid());
}

} // namespace

OwnBus::OwnBus(Service service)
    : m_service(std::move(service)), m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = addressName();
    std::copy(name.begin(), name.end(), address.sun_path + 1);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    claim(::bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) == 0 &&
              ::listen(m_listener, 1) == 0,
          "the bus listens");
    // The program has no second thread yet. NOLINTNEXTLINE(concurrency-mt-unsafe)
    setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:abstract=" + name).c_str(), 1);
    m_thread = std::thread(&OwnBus::serve, this);
}

OwnBus::~OwnBus()
{
    ::shutdown(m_listener, SHUT_RDWR);
    ::shutdown(m_connection, SHUT_RDWR);
    m_thread.join();
    ::close(m_listener);
}

std::uint32_t OwnBus::send(BusMessage message)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_connected.wait(lock, [this] { return m_connection != -1; });
    message.serial = ++m_serial;
    message.destination = kClientName;
    if (message.sender.empty())
    {
        message.sender = kOtherName;
    }
    transmit(m_connection, message.wire());
    return message.serial;
}

std::optional<BusMessage> OwnBus::takeAnswer(std::uint32_t serial)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_answers.find(serial);
    if (found == m_answers.end())
    {
        return std::nullopt;
    }
    BusMessage answer = std::move(found->second);
    m_answers.erase(found);
    return answer;
}

void OwnBus::onAnswer(std::function<void()> wake)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wake = std::move(wake);
}

void OwnBus::serve()
{
    const int connection = ::accept(m_listener, nullptr, nullptr);
    if (connection == -1)
    {
        return;
    }
    logIn(connection);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_connection = connection;
    }
    m_connected.notify_all();
    std::string bytes(BusMessage::kFixedHeaderSize, '\0');
    while (receive(connection, bytes.data(), BusMessage::kFixedHeaderSize))
    {
        bytes.resize(BusMessage::sizeOf(bytes));
        if (!receive(connection, bytes.data() + BusMessage::kFixedHeaderSize,
                     bytes.size() - BusMessage::kFixedHeaderSize))
        {
            break;
        }
        handle(BusMessage::read(bytes));
        bytes.resize(BusMessage::kFixedHeaderSize);
    }
    ::close(connection);
}

void OwnBus::logIn(int connection)
{
    for (std::string line = lineFrom(connection); line != "BEGIN"; line = lineFrom(connection))
    {
        claim(!line.empty(), "the client logs in");
        // Descriptors are not passed; everybody is let in.
        transmit(connection, line.compare(0, 4, "AUTH") == 0
                                 ? "OK 0123456789abcdef0123456789abcdef\r\n"
                                 : "ERROR\r\n");
    }
}

void OwnBus::handle(const BusMessage& message)
{
    if (message.type == BusMessage::Signal)
    {
        return;
    }
    if (message.type != BusMessage::Call)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_answers[message.replySerial] = message;
        if (m_wake)
        {
            m_wake();
        }
        return;
    }
    const bool isForBus = message.destination == kBusName;
    std::optional<BusMessage> answer = isForBus ? answerOfBus(message) : m_service(message);
    if (answer)
    {
        answer->replySerial = message.serial;
        answer->sender = isForBus ? kBusName : kOtherName;
        send(*answer);
    }
}

std::optional<BusMessage> OwnBus::answerOfBus(const BusMessage& call)
{
    BusMessage answer;
    answer.type = BusMessage::Reply;
    WireWriter body;
    if (call.member == "Hello")
    {
        answer.signature = "s";
        body.text(kClientName);
    }
    else if (call.member == "GetNameOwner")
    {
        answer.signature = "s";
        body.text(kOtherName);
    }
    else if (call.member == "RequestName" || call.member == "ReleaseName")
    {
        answer.signature = "u";
        body.number(1, 4);
    }
    else if (call.member == "NameHasOwner")
    {
        answer.signature = "b";
        body.number(1, 4);
    }
    answer.body = body.bytes();
    return answer;
}

} // namespace orvo::fuzz
