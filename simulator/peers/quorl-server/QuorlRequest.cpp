#include "quorl-server/QuorlRequest.h"

#include <cstring>
#include <map>

namespace orvo::simulator
{

namespace
{
constexpr std::size_t kHeaderSize = 4;

struct FrameSizes
{
    std::size_t payload;
    std::size_t reply;
};

const std::map<std::uint16_t, FrameSizes>& frameSizes()
{
    static const std::map<std::uint16_t, FrameSizes> kSizes = {
        {QuorlRequest::kGetConfig, {128, 1028}},  {QuorlRequest::kDataReady, {16, 4}},
        {QuorlRequest::kAsyncMessage, {4104, 4}}, {QuorlRequest::kOutputFormat, {1028, 4}},
        {QuorlRequest::kQueryText, {4, 260}},
    };
    return kSizes;
}

std::uint16_t wordAt(const std::string& bytes, std::size_t offset)
{
    const auto low = static_cast<unsigned char>(bytes[offset]);
    const auto high = static_cast<unsigned char>(bytes[offset + 1]);
    return static_cast<std::uint16_t>(low | high << 8U);
}
} // namespace

std::optional<QuorlRequest> QuorlRequest::decode(const std::string& bytes)
{
    if (bytes.size() < kHeaderSize)
    {
        return std::nullopt;
    }
    const std::size_t length = wordAt(bytes, 0);
    if (bytes.size() < kHeaderSize + length)
    {
        return std::nullopt;
    }
    QuorlRequest request;
    request.command = wordAt(bytes, 2);
    request.payload = bytes.substr(kHeaderSize, length);
    return request;
}

std::size_t QuorlRequest::replySize() const
{
    const auto sizes = frameSizes().find(command);
    return sizes != frameSizes().end() && sizes->second.payload == payload.size()
               ? sizes->second.reply
               : 0;
}

std::string QuorlRequest::reply(bool emptyConfiguration) const
{
    std::string bytes(replySize(), '\0');
    std::string text;
    std::int32_t result = 0;
    if (command == kQueryText)
    {
        text = "simulated quorl";
        result = static_cast<std::int32_t>(text.size());
    }
    else if (command == kGetConfig)
    {
        const bool known = std::strcmp(payload.c_str(), "Bind-Address") == 0;
        text = known && !emptyConfiguration ? "0.0.0.0" : "";
        result = known ? static_cast<std::int32_t>(text.size()) : -1;
    }
    if (bytes.size() >= text.size() + sizeof result)
    {
        text.copy(bytes.data(), text.size());
        std::memcpy(bytes.data() + bytes.size() - sizeof result, &result, sizeof result);
    }
    return bytes;
}

} // namespace orvo::simulator
