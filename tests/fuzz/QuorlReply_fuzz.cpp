// What comes over the quorl service's socket, in pieces as its first byte says: the service's
// socket is this program's own. Each operation of the client reads it.

#include "FuzzTarget.h"

#include "Claim.h"

#include "dbus-proxy/QUORLService.h"
#include "quorl/Quorl.h"
#include "quorl/QuorlWire.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <sys/socket.h>
#include <unistd.h>

namespace
{

using orvo::fuzz::claim;

struct Free
{
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

/// The service's side of a connection.
struct Service
{
    std::string reply;
    std::size_t sent{0};
    std::size_t piece{1};
    bool isInterrupted{false};
};
Service g_service;
int g_connected = -1;

/// The result word of a reply whose text takes so many bytes; nothing when the reply is too short.
bool hasResult(std::size_t textSize, std::int32_t& result)
{
    if (g_service.reply.size() < textSize + sizeof result)
    {
        return false;
    }
    std::memcpy(&result, g_service.reply.data() + textSize, sizeof result);
    return true;
}

std::string textOf(std::size_t textSize)
{
    const std::string text = g_service.reply.substr(0, textSize);
    return text.substr(0, text.find('\0'));
}

void rewind()
{
    g_service.sent = 0;
}

template <typename Query>
void judgeQuery(Query query, std::size_t textSize, std::int32_t failure)
{
    rewind();
    char* value = nullptr;
    const std::int32_t answer = query(&value);
    const Text owned(value);
    std::int32_t result = 0;
    const bool isWhole = hasResult(textSize, result);
    claim(answer == (isWhole ? result : failure), "the answer is the reply's word");
    claim((value != nullptr) == (isWhole && result != 0), "a text comes with a word");
    claim(value == nullptr || textOf(textSize) == value, "the text as far as its field goes");
}

void judgeEmissions()
{
    std::int32_t result = 0;
    const std::int32_t expected = hasResult(0, result) ? result : -1;
    rewind();
    claim(quorl_emit_data_ready("frame", 5, 1, 2) == expected, "data ready");
    rewind();
    claim(quorl_emit_json_output_format_update("{}", 2, 3) == expected, "format update");
    rewind();
    quorl_emit_async_msg(1, 2, "text");
}

void judgePing()
{
    static orvo::QUORLService service(QStringLiteral("quorl"), QStringLiteral("script"));
    rewind();
    QString level = QStringLiteral("unset");
    std::int32_t result = 0;
    const bool isUp = hasResult(sizeof(orvo::QuorlWire::ConfigReply::value), result) && result >= 1;
    claim(service.isAlive(level) == isUp, "alive by a positive word");
    claim(level == (isUp ? "up" : "unset"), "up, or untouched");
}

} // namespace

// They stand before the C library's: the program is the service, too.

extern "C" int connect(int socket, const sockaddr* address, socklen_t /*length*/)
{
    if (std::strcmp(address->sa_data, orvo::QuorlWire::kSocketPath) != 0)
    {
        errno = ECONNREFUSED;
        return -1;
    }
    g_connected = socket;
    return 0;
}

extern "C" ssize_t send(int /*socket*/, const void* /*data*/, std::size_t size, int /*flags*/)
{
    return static_cast<ssize_t>(std::min(size, g_service.piece));
}

extern "C" ssize_t recv(int socket, void* data, std::size_t size, int /*flags*/)
{
    claim(socket == g_connected, "read from the service");
    g_service.isInterrupted = g_service.piece % 2 == 1 && !g_service.isInterrupted;
    if (g_service.isInterrupted)
    {
        errno = EINTR;
        return -1;
    }
    const std::size_t rest = g_service.reply.size() - g_service.sent;
    const std::size_t count = std::min({size, rest, g_service.piece});
    std::memcpy(data, g_service.reply.data() + g_service.sent, count);
    g_service.sent += count;
    return static_cast<ssize_t>(count);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace orvo::QuorlWire;

    g_service.reply.assign(data + std::min<std::size_t>(size, 1), data + size);
    g_service.piece = size == 0 ? 1 : 1 + 16 * std::size_t{data[0]};
    judgeQuery([](char** value) { return quorl_getConfig("Bind-Address", value); },
               sizeof(ConfigReply::value), -1);
    judgeQuery(quorl_queryText, sizeof(QueryTextReply::text), 0);
    judgeEmissions();
    judgePing();
    return 0;
}
