#include "QuorlServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvo::test
{

namespace
{

/// Length 2, command 4, "hi".
const std::string kRequest("\x02\x00\x04\x00hi", 6);

/// Sends the request in two pieces and returns everything that comes until the server closes, or
/// what reading failed with.
std::string ask()
{
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string(QuorlWire::kSocketPath).copy(address.sun_path, sizeof(address.sun_path) - 1);
    std::string reply;
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        write(client, kRequest.data(), 3) != 3 || write(client, kRequest.data() + 3, 3) != 3)
    {
        reply = "not sent";
    }
    char byte = 0;
    ssize_t count = 0;
    while ((count = read(client, &byte, 1)) == 1)
    {
        reply += byte;
    }
    close(client);
    return count == 0 ? reply : strerrorname_np(errno);
}

} // namespace

TEST(QuorlServer, AnswersAConfigurationItemWithoutOrders)
{
    const QuorlServer server;
    EXPECT_EQ(std::string("0.0.0.0") + std::string(1024 - 7, '\0') + std::string("\x07\0\0\0", 4),
              ask());
}

TEST(QuorlServer, AnswersTheBytesThatItIsTold)
{
    QuorlServer server;
    server.answers("abc");
    EXPECT_EQ("abc", ask());
    server.answers("");
    EXPECT_EQ("", ask());
}

TEST(QuorlServer, NotesTheRequestsAsTheyCame)
{
    const QuorlServer server;
    ask();
    ask();
    EXPECT_THAT(server.requests(), testing::ElementsAre(kRequest, kRequest));
}

TEST(QuorlServer, HangsUpOnARequest)
{
    QuorlServer server;
    server.hangsUp();
    EXPECT_EQ("ECONNRESET", ask());
    EXPECT_EQ(1, server.hungUp());
    EXPECT_THAT(server.requests(), testing::IsEmpty());
}

} // namespace orvo::test
