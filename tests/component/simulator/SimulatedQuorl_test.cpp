#include "ChildProcess.h"
#include "Eventually.h"
#include "Files.h"
#include "QuorlCaller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

namespace orvo::test
{

using testing::ElementsAre;
using testing::SizeIs;

namespace
{
constexpr char kQuorlSocket[] = "/tmp/quorld.sock";
constexpr char kOrders[] = "/run/orders/quorl";
constexpr char kJournal[] = "/log/pings";
constexpr char kOutput[] = "/tmp/output";
constexpr std::uint16_t kGetConfig = 4;
constexpr int kAWhileMs = 150;
} // namespace

class SimulatedQuorl : public testing::Test
{
protected:
    SimulatedQuorl()
    {
        std::filesystem::create_directories("/log");
        std::filesystem::create_directories("/run/orders");
        std::filesystem::remove(kJournal);
        std::filesystem::remove(kOrders);
        start();
        EXPECT_TRUE(eventually([] { return QuorlCaller().error() == 0; }));
    }

    void start()
    {
        m_quorl = std::make_unique<ChildProcess>(std::vector<std::string>{peer("simulated-quorl")},
                                                 kOutput);
    }

    static std::string call(std::uint16_t command, const std::string& payload)
    {
        const QuorlCaller caller;
        caller.send(QuorlCaller::frame(command, payload));
        return caller.readToEnd();
    }

    static std::string query(const std::string& item)
    {
        return call(kGetConfig, QuorlCaller::item(item));
    }

    std::unique_ptr<ChildProcess> m_quorl;
};

struct CommandRow
{
    const char* name;
    std::uint16_t command;
    std::size_t payload;
    std::size_t reply;
    std::string text;
    int result;
};

void PrintTo(const CommandRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class SimulatedQuorlCommand : public SimulatedQuorl, public testing::WithParamInterface<CommandRow>
{
};

TEST_P(SimulatedQuorlCommand, IsAnsweredWithItsSizeTextAndResult)
{
    const CommandRow& row = GetParam();
    std::string payload(row.payload, '\0');
    if (row.command == kGetConfig)
    {
        payload = QuorlCaller::item("Bind-Address");
    }
    const std::string reply = call(row.command, payload);
    ASSERT_THAT(reply, SizeIs(row.reply));
    EXPECT_EQ(row.result, QuorlCaller::resultOf(reply));
    std::string expected = row.text;
    expected.resize(row.reply - sizeof(std::int32_t), '\0');
    EXPECT_EQ(expected, reply.substr(0, expected.size()));
}

TEST_P(SimulatedQuorlCommand, IsRefusedWithAPayloadOfAnotherSize)
{
    const CommandRow& row = GetParam();
    for (const std::size_t size : {row.payload - 1, row.payload + 1})
    {
        EXPECT_EQ("", call(row.command, std::string(size, 'x')));
    }
    const std::string command = "simulated-quorl: refused command " + std::to_string(row.command);
    EXPECT_THAT(
        linesOf(kOutput),
        ElementsAre(command + " with " + std::to_string(row.payload - 1) + " bytes of payload",
                    command + " with " + std::to_string(row.payload + 1) + " bytes of payload"));
}

INSTANTIATE_TEST_SUITE_P(Commands, SimulatedQuorlCommand,
                         testing::Values(CommandRow{"GetConfig", 4, 128, 1028, "0.0.0.0", 7},
                                         CommandRow{"DataReady", 7, 16, 4, "", 0},
                                         CommandRow{"AsyncMessage", 8, 4104, 4, "", 0},
                                         CommandRow{"OutputFormat", 9, 1028, 4, "", 0},
                                         CommandRow{"QueryText", 12, 4, 260, "simulated quorl",
                                                    15}),
                         [](const auto& row) { return row.param.name; });

TEST_F(SimulatedQuorl, AnswersAnUnknownItemWithMinusOne)
{
    const std::string reply = query("Bind-Addres");
    ASSERT_THAT(reply, SizeIs(1028));
    EXPECT_EQ(-1, QuorlCaller::resultOf(reply));
    EXPECT_EQ(std::string(1024, '\0'), reply.substr(0, 1024));
}

TEST_F(SimulatedQuorl, RefusesAnUnknownCommand)
{
    EXPECT_EQ("", call(5, std::string(128, '\0')));
    EXPECT_THAT(linesOf(kOutput),
                ElementsAre("simulated-quorl: refused command 5 with 128 bytes of payload"));
}

TEST_F(SimulatedQuorl, AnswersAFrameThatArrivesByteByByte)
{
    const QuorlCaller caller;
    for (const char byte : QuorlCaller::frame(kGetConfig, QuorlCaller::item("Bind-Address")))
    {
        EXPECT_FALSE(caller.hasNewsWithin(0));
        caller.send(std::string(1, byte));
    }
    EXPECT_THAT(caller.readToEnd(), SizeIs(1028));
}

TEST_F(SimulatedQuorl, OutlivesAClientThatLeavesInTheMiddle)
{
    {
        const QuorlCaller caller;
        caller.send("\x80");
    }
    EXPECT_THAT(query("Bind-Address"), SizeIs(1028));
}

TEST_F(SimulatedQuorl, EmptyMeansAnEmptyItem)
{
    replaceFile(kOrders, "empty\n");
    const std::string reply = query("Bind-Address");
    ASSERT_THAT(reply, SizeIs(1028));
    EXPECT_EQ(0, QuorlCaller::resultOf(reply));
    EXPECT_EQ(std::string(1024, '\0'), reply.substr(0, 1024));
}

TEST_F(SimulatedQuorl, ShortMeansThousandBytesAndTheEnd)
{
    replaceFile(kOrders, "short\n");
    EXPECT_THAT(query("Bind-Address"), SizeIs(1000));
    EXPECT_THAT(call(7, std::string(16, '\0')), SizeIs(3));
}

TEST_F(SimulatedQuorl, HangHoldsTheConnectionAndOthersAreServedLater)
{
    replaceFile(kOrders, "hang\n");
    const QuorlCaller hanging;
    hanging.send(QuorlCaller::frame(kGetConfig, QuorlCaller::item("Bind-Address")));
    EXPECT_FALSE(hanging.hasNewsWithin(kAWhileMs));
    replaceFile(kOrders, "up\n");
    EXPECT_THAT(query("Bind-Address"), SizeIs(1028));
    EXPECT_FALSE(hanging.hasNewsWithin(0));
}

TEST_F(SimulatedQuorl, DownRefusesConnectionsUntilTheNextOrder)
{
    replaceFile(kOrders, "down\n");
    EXPECT_TRUE(eventually([] { return QuorlCaller().error() == ECONNREFUSED; }));
    EXPECT_TRUE(m_quorl->isRunning());
    replaceFile(kOrders, "up\n");
    EXPECT_TRUE(eventually([] { return QuorlCaller().error() == 0; }));
    EXPECT_THAT(query("Bind-Address"), SizeIs(1028));
}

TEST_F(SimulatedQuorl, LinesAreForOneRequestEachAndTheLastRepeats)
{
    replaceFile(kOrders, "short\nempty\nup\n");
    EXPECT_THAT(query("Bind-Address"), SizeIs(1000));
    EXPECT_EQ(0, QuorlCaller::resultOf(query("Bind-Address")));
    EXPECT_EQ(7, QuorlCaller::resultOf(query("Bind-Address")));
    EXPECT_EQ(7, QuorlCaller::resultOf(query("Bind-Address")));
    EXPECT_THAT(journalOf(kJournal),
                ElementsAre("quorl short", "quorl empty", "quorl up", "quorl up"));
}

TEST_F(SimulatedQuorl, ClosesAtAnUnknownOrderAndNamesTheRightOnes)
{
    replaceFile(kOrders, "starting\n");
    EXPECT_EQ("", query("Bind-Address"));
    EXPECT_THAT(linesOf(kOutput),
                ElementsAre("simulated-quorl: no reply at the order 'starting'; the orders are up, "
                            "hang, empty, short, down"));
}

TEST_F(SimulatedQuorl, TakesItsSocketAwayOnSigterm)
{
    m_quorl->signal(SIGTERM);
    ASSERT_TRUE(m_quorl->waitForEnd(5000));
    EXPECT_EQ(0, m_quorl->exitStatus());
    EXPECT_EQ(ENOENT, QuorlCaller().error());
}

TEST_F(SimulatedQuorl, TakesOverTheSocketOfOneThatWasKilled)
{
    m_quorl->kill();
    EXPECT_EQ(ECONNREFUSED, QuorlCaller().error());
    start();
    EXPECT_TRUE(eventually([] { return QuorlCaller().error() == 0; }));
}

TEST_F(SimulatedQuorl, LeavesTheSocketOfItsSuccessorInPlace)
{
    const std::unique_ptr<ChildProcess> old = std::move(m_quorl);
    const auto before = std::filesystem::last_write_time(kQuorlSocket);
    start();
    ASSERT_TRUE(eventually(
        [&]
        {
            std::error_code missing;
            return std::filesystem::last_write_time(kQuorlSocket, missing) != before && !missing;
        }));
    old->signal(SIGTERM);
    ASSERT_TRUE(old->waitForEnd(5000));
    EXPECT_THAT(query("Bind-Address"), SizeIs(1028));
}

} // namespace orvo::test
