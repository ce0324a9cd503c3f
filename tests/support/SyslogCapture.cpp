#include "SyslogCapture.h"

#include "Box.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ostream>

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace orvo::test
{

namespace
{

constexpr const char kSocketPath[] = "/dev/log";
/// "Nov 21 02:00:00 "
constexpr std::size_t kStampLength = 16;

/// "<10>Nov 21 02:00:00 wardex: text" or "<10>Nov 21 02:00:00 wardex[7]: text"
SyslogCapture::Message parse(const std::string& datagram)
{
    const std::size_t endOfPriority = datagram.find('>');
    const std::size_t endOfProgram = datagram.find(": ");
    if (datagram.empty() || datagram[0] != '<' || endOfPriority == std::string::npos ||
        endOfProgram == std::string::npos)
    {
        return {-1, datagram};
    }
    const int priority = std::stoi(datagram.substr(1, endOfPriority - 1));
    const std::size_t origin = endOfPriority + 1 + kStampLength;
    return {LOG_PRI(priority), datagram.substr(endOfProgram + 2), priority & LOG_FACMASK,
            datagram.substr(origin, endOfProgram - origin)};
}

} // namespace

SyslogCapture::SyslogCapture() : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    requireBox();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", kSocketPath);
    if (bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    {
        std::perror("SyslogCapture: cannot be the syslog at /dev/log");
        std::abort();
    }
}

SyslogCapture::~SyslogCapture()
{
    closelog();
    close(m_socket);
    unlink(kSocketPath);
}

const std::vector<SyslogCapture::Message>& SyslogCapture::messages()
{
    std::array<char, 8192> datagram{};
    for (;;)
    {
        const ssize_t length = recv(m_socket, datagram.data(), datagram.size(), MSG_DONTWAIT);
        if (length < 0)
        {
            return m_messages;
        }
        m_messages.push_back(parse({datagram.data(), static_cast<std::size_t>(length)}));
    }
}

void PrintTo(const SyslogCapture::Message& message, std::ostream* stream)
{
    *stream << "<" << message.priority << ">" << message.text;
}

} // namespace orvo::test
