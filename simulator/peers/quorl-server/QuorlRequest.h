#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace orvo::simulator
{

/// One request frame as it arrives at quorl's socket.
///
/// Shape: two bytes payload length, two bytes command code, both little-endian, then the payload.
///        Written down here once more instead of shared with the supervisor's client, so that the
///        two check each other. Payload and reply bytes by command: 4 configuration query 128 and
///        1028; 7 data ready 16 and 4; 8 asynchronous message 4104 and 4; 9 output format 1028 and
///        4; 12 text query 4 and 260.
struct QuorlRequest
{
    static constexpr std::uint16_t kGetConfig = 4;
    static constexpr std::uint16_t kDataReady = 7;
    static constexpr std::uint16_t kAsyncMessage = 8;
    static constexpr std::uint16_t kOutputFormat = 9;
    static constexpr std::uint16_t kQueryText = 12;

    std::uint16_t command{0};
    std::string payload;

    /// The request when bytes holds all of it, else nothing.
    static std::optional<QuorlRequest> decode(const std::string& bytes);

    /// Bytes of the reply to this command; 0 for an unknown command or a payload of the wrong size.
    [[nodiscard]] std::size_t replySize() const;

    /// The whole reply: a text, zero-filled, where the command has one, then the 32-bit result.
    /// The item "Bind-Address" is "0.0.0.0", or "" with emptyConfiguration; the result of a query
    /// is the length of its text, -1 for an unknown item. The result of everything else is 0.
    [[nodiscard]] std::string reply(bool emptyConfiguration) const;
};

} // namespace orvo::simulator
