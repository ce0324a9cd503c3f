#pragma once

#include "Connection.h"
#include "Handles.h"

#include "quorl/QuorlWire.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace orvo::Quorl
{

/// A reply of exactly the size that was asked for.
using Reply = std::unique_ptr<unsigned char, Free>;

/// Sends one request to the quorl service over a connection of its own and reads the reply.
///
/// Units:   sizes in bytes; a reply size of 0 reads nothing and is answered by an empty buffer.
/// Threads: any; blocks until the service has answered or closed, without a bound.
/// Errors:  nullptr, and the failed step with the errno text, or how many bytes came before the
///          service closed, on standard error. A service that has gone does not raise SIGPIPE.
///
/// Defined here so that quorl_getConfig(), which the supervisor asks once a second, is one piece.
[[nodiscard]] inline Reply callService(std::uint16_t command, const void* payload,
                                       std::uint16_t payloadLength, std::size_t replySize)
{
    const Connection connection;
    const QuorlWire::RequestHeader header{payloadLength, command};
    if (!connection.connect() || !connection.write(&header, sizeof(header)) ||
        !connection.write(payload, payloadLength))
    {
        return nullptr;
    }
    // An empty reply is a buffer too: nullptr means failure.
    Reply reply(static_cast<unsigned char*>(std::malloc(replySize > 0 ? replySize : 1)));
    if (!reply)
    {
        std::perror("malloc");
        return nullptr;
    }
    if (!connection.read(reply.get(), replySize))
    {
        return nullptr;
    }
    return reply;
}

} // namespace orvo::Quorl
