// The same question to the quorl service by hand: connect, write, read, close, with what the
// protocol calls for (whole writes and reads, a text that may have no terminator) and nothing else.
//
//   socket-query COUNT

#include "Measure.h"
#include "quorl/QuorlWire.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

using namespace orvo::QuorlWire;

bool writeAll(int connection, const void* data, std::size_t size)
{
    std::size_t sent = 0;
    while (sent < size)
    {
        const ssize_t count = write(connection, static_cast<const char*>(data) + sent, size - sent);
        if (count == -1)
        {
            std::perror("write");
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool readAll(int connection, void* data, std::size_t size)
{
    std::size_t received = 0;
    while (received < size)
    {
        const ssize_t count =
            read(connection, static_cast<char*>(data) + received, size - received);
        if (count <= 0)
        {
            std::perror("read");
            return false;
        }
        received += static_cast<std::size_t>(count);
    }
    return true;
}

// Not to be fitted to the one question that main asks.
[[gnu::noipa]] int query(const char* item, char** value)
{
    const int connection = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, kSocketPath, sizeof kSocketPath);
    if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == -1)
    {
        std::perror("connect");
        close(connection);
        return -1;
    }
    const RequestHeader header{sizeof(ConfigRequest), kGetConfig};
    ConfigRequest request{};
    std::strncpy(request.item, item, sizeof request.item - 1);
    auto* const reply = static_cast<ConfigReply*>(std::malloc(sizeof(ConfigReply)));
    int result = -1;
    if (reply != nullptr && writeAll(connection, &header, sizeof header) &&
        writeAll(connection, &request, sizeof request) && readAll(connection, reply, sizeof *reply))
    {
        result = reply->result;
        *value = strndup(reply->value, sizeof reply->value);
    }
    std::free(reply);
    close(connection);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        bench::fail("socket-query COUNT");
    }
    for (long i = bench::repetitions(argv[1]); i > 0; --i)
    {
        char* value = nullptr;
        if (query("Bind-Address", &value) < 1)
        {
            bench::fail("no answer");
        }
        std::free(value);
    }
    return EXIT_SUCCESS;
}
