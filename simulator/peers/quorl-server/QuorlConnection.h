#pragma once

#include "common/Descriptor.h"
#include "quorl-server/QuorlRequest.h"

#include <optional>
#include <string>

namespace orvo::simulator
{

/// One client of quorl: a request, a reply, end.
///
/// Threads: one at a time; nothing here blocks.
class QuorlConnection
{
public:
    explicit QuorlConnection(Descriptor socket) : m_socket(std::move(socket)) {}

    [[nodiscard]] int descriptor() const { return m_socket.get(); }
    [[nodiscard]] bool isOpen() const { return m_socket.isOpen(); }

    /// Takes what has arrived; the request once, when it is complete. Closes when the client left.
    std::optional<QuorlRequest> receive();

    /// Sends the bytes and closes: the server's part is done.
    void finish(const std::string& bytes);

private:
    Descriptor m_socket;
    std::string m_received;
    bool m_requested{false};
};

} // namespace orvo::simulator
