#pragma once

#include <string>
#include <vector>

namespace orvo::test
{

/// The device's syslog: collects what any process in the box sends to /dev/log.
///
/// To be made before the first message: the C library remembers whether there was a syslog.
/// Owns:    the socket, which is gone with the object.
/// Errors:  a socket that cannot be made ends the program with a message.
class SyslogCapture
{
public:
    struct Message
    {
        int priority;     ///< LOG_EMERG to LOG_DEBUG, without the facility
        std::string text; ///< without time and program
        /// LOG_USER or what the program opened syslog with; no part of a comparison, like origin.
        int facility{0};
        std::string origin{}; ///< the program, and its process id if it wants it told: "wardex[7]"

        bool operator==(const Message& other) const
        {
            return priority == other.priority && text == other.text;
        }
    };

    SyslogCapture();
    ~SyslogCapture();
    SyslogCapture(const SyslogCapture&) = delete;
    SyslogCapture& operator=(const SyslogCapture&) = delete;

    /// Everything sent so far, oldest first. Sending is done when syslog() has returned.
    [[nodiscard]] const std::vector<Message>& messages();

private:
    int m_socket;
    std::vector<Message> m_messages;
};

void PrintTo(const SyslogCapture::Message& message, std::ostream* stream);

} // namespace orvo::test
