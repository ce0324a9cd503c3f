#include "Transport.h"

#include "Eventually.h"
#include "LibraryFaults.h"
#include "QuorlServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <limits>

#include <sys/resource.h>

/// A sanitizer answers an impossible allocation as the C library does.
/// The sanitizer prescribes the name. NOLINTNEXTLINE(readability-identifier-naming)
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace orvo::Quorl
{

namespace
{

using testing::ElementsAre;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

const std::string kPayload = "0123456789";

/// The reply's bytes, or "none".
std::string ask(std::size_t replySize)
{
    const Reply reply = callService(0x1234, kPayload.data(),
                                    static_cast<std::uint16_t>(kPayload.size()), replySize);
    return reply ? std::string(reinterpret_cast<const char*>(reply.get()), replySize) : "none";
}

/// What is said on standard error by a call that yields no reply.
std::string complaint(std::size_t replySize = 4)
{
    CaptureStderr();
    const std::string reply = ask(replySize);
    const std::string text = GetCapturedStderr();
    return reply == "none" ? text : "there was a reply: " + reply;
}

} // namespace

class QuorlTransport : public testing::Test
{
protected:
    void TearDown() override { test::libraryFaults() = test::LibraryFaults(); }
};

TEST_F(QuorlTransport, SendsLengthCommandAndPayloadAndReturnsTheReply)
{
    test::QuorlServer server;
    server.answers("okay");
    EXPECT_EQ("okay", ask(4));
    EXPECT_THAT(server.requests(), ElementsAre(std::string("\x0a\x00\x34\x12", 4) + kPayload));
}

TEST_F(QuorlTransport, OpensAConnectionPerCall)
{
    test::QuorlServer server;
    server.answers("okay");
    EXPECT_EQ("okay", ask(4));
    EXPECT_EQ("okay", ask(4));
    EXPECT_EQ(2U, server.requests().size());
}

TEST_F(QuorlTransport, ReadsNoMoreThanTheReply)
{
    test::QuorlServer server;
    server.answers("okay and more");
    EXPECT_EQ("okay", ask(4));
}

TEST_F(QuorlTransport, AnswersAReplyOfNoBytesByAnEmptyBufferAtOnce)
{
    test::QuorlServer server;
    server.holds();
    EXPECT_EQ("", ask(0));
}

TEST_F(QuorlTransport, TellsThatNobodyListens)
{
    EXPECT_EQ("connect: No such file or directory\n", complaint());
}

TEST_F(QuorlTransport, TellsThatTheServiceHasLeftItsSocketBehind)
{
    {
        // A crashed service unlinks nothing.
        const test::QuorlServer server;
        ASSERT_EQ(0, std::rename(QuorlWire::kSocketPath, "/tmp/left-behind"));
    }
    ASSERT_EQ(0, std::rename("/tmp/left-behind", QuorlWire::kSocketPath));
    EXPECT_EQ("connect: Connection refused\n", complaint());
}

TEST_F(QuorlTransport, TellsThatItGetsNoSocket)
{
    const test::QuorlServer server;
    CaptureStderr();
    rlimit old{};
    getrlimit(RLIMIT_NOFILE, &old);
    const rlimit none{0, old.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const std::string reply = ask(4);
    setrlimit(RLIMIT_NOFILE, &old);
    EXPECT_EQ("socket: Too many open files\n", GetCapturedStderr());
    EXPECT_EQ("none", reply);
}

TEST_F(QuorlTransport, TellsThatTheServiceHungUpBeforeTheRequestAndLivesOn)
{
    ASSERT_NE(SIG_ERR, std::signal(SIGPIPE, SIG_DFL));
    test::QuorlServer server;
    server.hangsUpAtOnce();
    test::libraryFaults().afterConnect = [&server]
    {
        EXPECT_TRUE(test::eventually([&server] { return server.hungUp() == 1; }));
    };
    EXPECT_EQ("write: Broken pipe\n", complaint());
}

TEST_F(QuorlTransport, TellsThatThereIsNoMemoryForTheReply)
{
    test::QuorlServer server;
    // A sanitizer adds a remark of its own before the line.
    EXPECT_THAT(complaint(std::numeric_limits<std::size_t>::max() / 2),
                testing::EndsWith("malloc: Cannot allocate memory\n"));
    EXPECT_TRUE(test::eventually([&server] { return server.requests().size() == 1; }));
}

TEST_F(QuorlTransport, TellsHowManyBytesCameBeforeTheServiceClosed)
{
    test::QuorlServer server;
    server.answers("");
    EXPECT_EQ("not enough bytes read: 0 != 4\n", complaint());
    server.answers("abc");
    EXPECT_EQ("not enough bytes read: 3 != 4\n", complaint());
}

TEST_F(QuorlTransport, TellsThatTheConnectionWasReset)
{
    test::QuorlServer server;
    server.hangsUp();
    EXPECT_EQ("read: Connection reset by peer\n", complaint());
}

TEST_F(QuorlTransport, GoesOnUntilAllBytesAreWrittenAndRead)
{
    test::QuorlServer server;
    server.answers("okay");
    test::libraryFaults().bytesPerCall = 1;
    EXPECT_EQ("okay", ask(4));
    EXPECT_THAT(server.requests(), ElementsAre(std::string("\x0a\x00\x34\x12", 4) + kPayload));
    EXPECT_EQ(4 + 10 + 4, test::libraryFaults().calls);
}

TEST_F(QuorlTransport, TakesUpAWriteOrReadThatASignalInterrupted)
{
    test::QuorlServer server;
    server.answers("okay");
    test::libraryFaults().bytesPerCall = 3;
    test::libraryFaults().interruptions = true;
    EXPECT_EQ("okay", ask(4));
    EXPECT_THAT(server.requests(), ElementsAre(std::string("\x0a\x00\x34\x12", 4) + kPayload));
}

TEST_F(QuorlTransport, WaitsForASlowService)
{
    test::QuorlServer server;
    server.answers("okay");
    server.holds();
    std::future<std::string> reply = std::async(std::launch::async, [] { return ask(4); });
    ASSERT_TRUE(test::eventually([&server] { return server.requests().size() == 1; }));
    EXPECT_EQ(std::future_status::timeout, reply.wait_for(std::chrono::milliseconds(50)));
    server.release();
    EXPECT_EQ("okay", reply.get());
}

TEST_F(QuorlTransport, ServesSeveralThreadsAtATime)
{
    test::QuorlServer server;
    server.answers("okay");
    constexpr int kCallers = 8;
    std::vector<std::future<std::string>> replies;
    replies.reserve(kCallers);
    for (int i = 0; i < kCallers; ++i)
    {
        replies.push_back(std::async(std::launch::async, [] { return ask(4); }));
    }
    for (auto& reply : replies)
    {
        EXPECT_EQ("okay", reply.get());
    }
}

} // namespace orvo::Quorl
