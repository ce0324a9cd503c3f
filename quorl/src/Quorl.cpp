#include "quorl/Quorl.h"

#include "Transport.h"

#include "logger/LoggerFacade.h"
#include "quorl/QuorlWire.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <type_traits>

namespace
{

using namespace orvo::Logger;
using namespace orvo::QuorlWire;

// The texts end with a blank; who filters the log for them has always found it there.
constexpr char kCallFailed[] = "%s(): rpc call failed ";
constexpr char kInvalidItem[] = "%s(): invalid item given ";

/// The operations log through the facade of the process and are the only ones here to use it, so
/// the first of them sets it up.
void prepareFirstUse()
{
    [[maybe_unused]] static const bool kPrepared = []
    {
        loggerInit();
        loggerSetMode(LoggerRedis);
        loggerInit();
        return true;
    }();
}

/// One call with a request and a reply of fixed layout, which is read where it was received.
template <typename ReplyLayout, typename Request>
std::unique_ptr<const ReplyLayout, orvo::Quorl::Free> call(Command command, const Request& request)
{
    static_assert(std::is_trivially_copyable_v<Request> && std::is_trivial_v<ReplyLayout>);
    orvo::Quorl::Reply reply =
        orvo::Quorl::callService(command, &request, sizeof(request), sizeof(ReplyLayout));
    return std::unique_ptr<const ReplyLayout, orvo::Quorl::Free>(
        static_cast<const ReplyLayout*>(static_cast<const void*>(reply.release())));
}

/// Copies a text into a zero-filled field, which keeps its last byte as terminator.
template <std::size_t Size>
void copyText(char (&field)[Size], const char* text, std::size_t maximum = Size - 1)
{
    std::memcpy(field, text, strnlen(text, std::min(maximum, Size - 1)));
}

} // namespace

// Flattened: each boundary between functions costs as much as a step of the query.
[[gnu::flatten]] std::int32_t quorl_getConfig(const char* item, char** value)
{
    prepareFirstUse();
    if (item == nullptr)
    {
        loggerPrintf(LoggerError, kInvalidItem, __func__);
        return -1;
    }
    ConfigRequest request{};
    copyText(request.item, item);
    const auto reply = call<ConfigReply>(kGetConfig, request);
    if (!reply)
    {
        loggerPrintf(LoggerDebug, kCallFailed, __func__);
        return -1;
    }
    if (reply->result != 0)
    {
        char* const text = strndup(reply->value, sizeof(reply->value));
        if (text == nullptr)
        {
            loggerPrintf(LoggerDebug, "%s(): Unable to strdup", __func__);
            return -1;
        }
        *value = text;
    }
    return reply->result;
}

std::int32_t quorl_emit_data_ready(const char* name, std::size_t nameLength, std::uint16_t valueA,
                                   std::uint16_t valueB)
{
    prepareFirstUse();
    if (name == nullptr || nameLength == 0)
    {
        return -1;
    }
    DataReadyRequest request{};
    std::memcpy(request.name, name, std::min(nameLength, sizeof(request.name)));
    request.valueA = valueA;
    request.valueB = valueB;
    const auto result = call<std::int32_t>(kEmitDataReady, request);
    if (!result)
    {
        loggerPrintf(LoggerDebug, kCallFailed, __func__);
    }
    return result ? *result : -1;
}

void quorl_emit_async_msg(std::int32_t valueA, std::int32_t valueB, const char* text)
{
    prepareFirstUse();
    AsyncMessageRequest request{};
    request.valueB = valueB;
    copyText(request.text, text != nullptr ? text : "");
    request.valueA = valueA;
    if (!call<std::int32_t>(kEmitAsyncMessage, request))
    {
        loggerPrintf(LoggerWarn, kCallFailed, __func__);
    }
}

std::int32_t quorl_emit_json_output_format_update(const char* text, std::size_t textLength,
                                                  std::int32_t value)
{
    prepareFirstUse();
    if (text == nullptr || textLength == 0)
    {
        return -1;
    }
    JsonOutputFormatRequest request{};
    copyText(request.text, text, textLength);
    request.value = value;
    const auto result = call<std::int32_t>(kEmitJsonOutputFormatUpdate, request);
    if (!result)
    {
        loggerPrintf(LoggerDebug, kCallFailed, __func__);
    }
    return result ? *result : -1;
}

std::int32_t quorl_queryText(char** text)
{
    prepareFirstUse();
    const auto reply = call<QueryTextReply>(kQueryText, QueryTextRequest{});
    if (!reply)
    {
        std::fprintf(stderr, "rpc call failed!\n");
        return 0;
    }
    if (reply->result != 0)
    {
        char* const copy = strndup(reply->text, sizeof(reply->text));
        if (copy == nullptr)
        {
            std::perror("strdup");
            return 0;
        }
        *text = copy;
    }
    return reply->result;
}
