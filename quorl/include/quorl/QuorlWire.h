#pragma once

#include <cstddef>
#include <cstdint>

/// The protocol of the quorl service, which answers one request per connection and then closes.
///
/// Shape:   request: payload length (2 bytes), command (2 bytes), payload; reply: as many bytes as
///          the command calls for, without a header. Texts are zero-filled to their full width.
///          In a request they end with at least one zero byte, but for the name of
///          quorl_emit_data_ready; in a reply one that fills its width has no terminator.
/// Units:   bytes. Numbers are in the device's own order, which is little-endian.
/// On the device: the service is the other end of every figure here.
namespace orvo::QuorlWire
{

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "numbers go to the socket as they are");

inline constexpr char kSocketPath[] = "/tmp/quorld.sock";

enum Command : std::uint16_t
{
    kGetConfig = 4,
    kEmitDataReady = 7,
    kEmitAsyncMessage = 8,
    kEmitJsonOutputFormatUpdate = 9,
    kQueryText = 12,
};

/// The word that ends a reply, and every other 32-bit value.
inline constexpr std::size_t kWordSize = 4;

struct RequestHeader
{
    std::uint16_t payloadLength;
    std::uint16_t command;
};
static_assert(sizeof(RequestHeader) == 4);

/// quorl_getConfig
struct ConfigRequest
{
    char item[128];
};
static_assert(sizeof(ConfigRequest) == 128);
struct ConfigReply
{
    char value[1024];
    std::int32_t result;
};
static_assert(sizeof(ConfigReply) == 1028 && offsetof(ConfigReply, result) == 1024);

/// quorl_emit_data_ready; the reply is one word.
struct DataReadyRequest
{
    char name[12];
    std::uint16_t valueA;
    std::uint16_t valueB;
};
static_assert(sizeof(DataReadyRequest) == 16 && offsetof(DataReadyRequest, valueB) == 14);

/// quorl_emit_async_msg; the reply is one word that means nothing. B comes first.
struct AsyncMessageRequest
{
    std::int32_t valueB;
    char text[4096];
    std::int32_t valueA;
};
static_assert(sizeof(AsyncMessageRequest) == 4104 && offsetof(AsyncMessageRequest, valueA) == 4100);

/// quorl_emit_json_output_format_update; the reply is one word.
struct JsonOutputFormatRequest
{
    char text[1024];
    std::int32_t value;
};
static_assert(sizeof(JsonOutputFormatRequest) == 1028);

/// quorl_queryText; nobody knows what the server makes of the four bytes.
struct QueryTextRequest
{
    char unused[4];
};
static_assert(sizeof(QueryTextRequest) == 4);
struct QueryTextReply
{
    char text[256];
    std::int32_t result;
};
static_assert(sizeof(QueryTextReply) == 260 && offsetof(QueryTextReply, result) == 256);

} // namespace orvo::QuorlWire
