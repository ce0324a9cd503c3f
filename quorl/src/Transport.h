#pragma once

#include "Handles.h"

#include <cstddef>
#include <cstdint>
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
[[nodiscard]] Reply callService(std::uint16_t command, const void* payload,
                                std::uint16_t payloadLength, std::size_t replySize);

} // namespace orvo::Quorl
