#include "bus/BusMessage.h"

#include "bus/InputReader.h"
#include "bus/WireWriter.h"

#include <map>

namespace orvo::fuzz
{

namespace
{

enum Field : std::uint8_t
{
    Path = 1,
    Interface = 2,
    Member = 3,
    ErrorName = 4,
    ReplySerial = 5,
    Destination = 6,
    Sender = 7,
    Signature = 8
};

constexpr std::size_t kStructureAlignment = 8;

std::uint32_t numberAt(std::string_view bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(InputReader(bytes.substr(at)).number(4));
}

std::size_t aligned(std::size_t at, std::size_t boundary)
{
    return (at + boundary - 1) / boundary * boundary;
}

void putField(WireWriter& wire, Field field, std::string_view type, std::string_view value)
{
    if (value.empty())
    {
        return;
    }
    wire.align(kStructureAlignment);
    wire.number(field, 1);
    wire.signature(type);
    if (type == "g")
    {
        wire.signature(value);
    }
    else
    {
        wire.text(value);
    }
}

} // namespace

std::string BusMessage::wire() const
{
    constexpr std::size_t kFieldsLength = 12;
    WireWriter wire;
    wire.append("l");
    wire.number(type, 1);
    wire.number(0, 1); // no flags
    wire.number(1, 1); // version of the protocol
    wire.number(body.size(), 4);
    wire.number(serial, 4);
    wire.number(0, 4);
    putField(wire, Path, "o", path);
    putField(wire, Interface, "s", interface);
    putField(wire, Member, "s", member);
    putField(wire, ErrorName, "s", errorName);
    putField(wire, Destination, "s", destination);
    putField(wire, Sender, "s", sender);
    putField(wire, Signature, "g", signature);
    if (replySerial != 0)
    {
        wire.align(kStructureAlignment);
        wire.number(ReplySerial, 1);
        wire.signature("u");
        wire.number(replySerial, 4);
    }
    wire.replace(kFieldsLength, wire.size() - kFixedHeaderSize, 4);
    wire.align(kStructureAlignment);
    wire.append(body);
    return wire.bytes();
}

std::size_t BusMessage::sizeOf(std::string_view fixedHeader)
{
    return aligned(kFixedHeaderSize + numberAt(fixedHeader, 12), kStructureAlignment) +
           numberAt(fixedHeader, 4);
}

BusMessage BusMessage::read(std::string_view wire)
{
    BusMessage message;
    message.type = static_cast<Type>(wire[1]);
    message.serial = numberAt(wire, 8);
    const std::map<std::uint8_t, std::string*> texts = {
        {Path, &message.path},           {Interface, &message.interface},
        {Member, &message.member},       {ErrorName, &message.errorName},
        {Sender, &message.sender},       {Destination, &message.destination},
        {Signature, &message.signature},
    };
    const std::size_t end = kFixedHeaderSize + numberAt(wire, 12);
    std::size_t at = kFixedHeaderSize;
    while (at < end)
    {
        at = aligned(at, kStructureAlignment);
        const auto field = static_cast<std::uint8_t>(wire[at]);
        const char type = wire[at + 2];
        at += 4; // a field's type is one letter, with its length and terminator
        if (type == 'u')
        {
            message.replySerial = numberAt(wire, at);
            at += 4;
            continue;
        }
        const bool isShort = type == 'g';
        const std::size_t length =
            isShort ? static_cast<std::uint8_t>(wire[at]) : numberAt(wire, at);
        at += isShort ? 1 : 4;
        const auto text = texts.find(field);
        if (text != texts.end())
        {
            *text->second = wire.substr(at, length);
        }
        at += length + 1;
    }
    message.body = wire.substr(aligned(end, kStructureAlignment));
    return message;
}

std::uint32_t BusMessage::firstNumber() const
{
    return body.size() < 4 ? 0 : numberAt(body, 0);
}

std::string BusMessage::firstText() const
{
    return body.size() < 4 ? "" : body.substr(4, firstNumber());
}

} // namespace orvo::fuzz
