#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvo::fuzz
{

/// One D-Bus message with its values in wire form.
struct BusMessage
{
    enum Type : std::uint8_t
    {
        Call = 1,
        Reply = 2,
        Error = 3,
        Signal = 4
    };

    static constexpr std::size_t kFixedHeaderSize = 16;

    Type type{Call};
    std::uint32_t serial{0};
    std::uint32_t replySerial{0}; ///< of replies and errors
    std::string path;             ///< empty: not in the message; so with the others
    std::string interface;
    std::string member;
    std::string errorName;
    std::string destination;
    std::string sender;
    std::string signature;
    std::string body;

    [[nodiscard]] std::string wire() const;

    /// The size of a whole message that begins with those bytes, at least kFixedHeaderSize.
    static std::size_t sizeOf(std::string_view fixedHeader);
    /// Reads a message of that size, as a client library sends it.
    static BusMessage read(std::string_view wire);

    /// The values that stand first, when they are such.
    [[nodiscard]] std::uint32_t firstNumber() const;
    [[nodiscard]] std::string firstText() const;
};

} // namespace orvo::fuzz
