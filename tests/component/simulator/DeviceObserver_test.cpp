#include "BusDaemon.h"
#include "Eventually.h"
#include "Files.h"
#include "RedisClient.h"
#include "RedisServer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace orvo::test
{

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;

namespace
{
constexpr char kChannel[] = "LOG:ENTRIES";
const QString kConnectionName = QStringLiteral("observed-device");

std::string event(const std::string& members)
{
    return ",\"event\":" + members + "}";
}
} // namespace

class DeviceObserver : public testing::Test
{
protected:
    void observe(const std::vector<std::string>& words)
    {
        std::vector<std::string> command = {peer("device-observer")};
        command.insert(command.end(), words.begin(), words.end());
        m_observer = std::make_unique<ChildProcess>(command, path("output"));
    }

    [[nodiscard]] std::string path(const std::string& name) const
    {
        return m_folder.filePath(QString::fromStdString(name)).toStdString();
    }

    [[nodiscard]] std::string journal() const { return path("journal"); }

    /// The lines from the event on, once there are so many.
    [[nodiscard]] std::vector<std::string> events(std::size_t count) const
    {
        (void)eventually([&] { return linesOf(journal()).size() >= count; });
        std::vector<std::string> lines = linesOf(journal());
        for (std::string& line : lines)
        {
            line.erase(0, line.find(','));
        }
        return lines;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<ChildProcess> m_observer;
};

class BusObserver : public DeviceObserver
{
protected:
    BusObserver() : m_device(connect()) {}
    ~BusObserver() override { QDBusConnection::disconnectFromBus(kConnectionName); }

    static QDBusConnection connect()
    {
        return QDBusConnection::connectToBus(QDBusConnection::SystemBus, kConnectionName);
    }

    void observeBus()
    {
        observe({"bus", journal()});
        ASSERT_THAT(events(1), ElementsAre(event("\"listening\"")));
    }

    void publish(const QVariantList& values, const QString& path = QStringLiteral("/"))
    {
        QDBusMessage signal = QDBusMessage::createSignal(
            path, QStringLiteral("com.orvo.wardex"), QStringLiteral("signalServiceAvailability"));
        signal.setArguments(values);
        ASSERT_TRUE(m_device.send(signal));
    }

    QDBusConnection m_device;
};

TEST_F(BusObserver, SaysFirstThatItListens)
{
    observeBus();
    EXPECT_THAT(linesOf(journal()),
                ElementsAre(MatchesRegex("\\{\"t\":[0-9]+\\.[0-9]{6},\"event\":\"listening\"\\}")));
}

TEST_F(BusObserver, NotesTheDevicesNamesComingAndGoing)
{
    observeBus();
    ASSERT_TRUE(m_device.registerService(QStringLiteral("com.orvo.pictor")));
    ASSERT_TRUE(m_device.registerService(QStringLiteral("org.elsewhere")));
    ASSERT_TRUE(m_device.registerService(QStringLiteral("com.orvofake")));
    ASSERT_TRUE(m_device.unregisterService(QStringLiteral("com.orvo.pictor")));
    ASSERT_TRUE(m_device.registerService(QStringLiteral("com.orvo.wardex")));
    EXPECT_THAT(events(4),
                ElementsAre(event("\"listening\""),
                            event("\"name\",\"name\":\"com.orvo.pictor\",\"owned\":true"),
                            event("\"name\",\"name\":\"com.orvo.pictor\",\"owned\":false"),
                            event("\"name\",\"name\":\"com.orvo.wardex\",\"owned\":true")));
}

TEST_F(BusObserver, NotesTheAvailabilityWithItsSender)
{
    observeBus();
    publish({QVariantMap{{QStringLiteral("com.orvo.vistor"), QStringLiteral("up")},
                         {QStringLiteral("com.orvo.pictor"), QStringLiteral("down")}}});
    publish({QVariantMap()}, QStringLiteral("/elsewhere"));
    const std::string sender = m_device.baseService().toStdString();
    EXPECT_THAT(events(3),
                ElementsAre(event("\"listening\""),
                            event("\"availability\",\"services\":{\"com.orvo.pictor\":\"down\","
                                  "\"com.orvo.vistor\":\"up\"},\"sender\":\"" +
                                  sender + "\",\"path\":\"/\""),
                            event("\"availability\",\"services\":{},\"sender\":\"" + sender +
                                  "\",\"path\":\"/elsewhere\"")));
}

TEST_F(BusObserver, LeavesOutASignalOfAnotherForm)
{
    observeBus();
    publish({QStringLiteral("up")});
    publish({});
    publish({QVariantMap()});
    EXPECT_THAT(events(2), ElementsAre(event("\"listening\""),
                                       testing::HasSubstr("\"availability\",\"services\":{}")));
    const std::string complaint =
        "device-observer: left out a signalServiceAvailability of signature '";
    EXPECT_THAT(linesOf(path("output")), ElementsAre(complaint + "s'; a{sv} is expected",
                                                     complaint + "'; a{sv} is expected"));
}

TEST_F(BusObserver, GoesOnAfterTheDeathOfTheBus)
{
    observeBus();
    BusDaemon::ofThisProcess().crash();
    EXPECT_THAT(events(2), ElementsAre(event("\"listening\""), event("\"bus-lost\"")));
    BusDaemon::ofThisProcess().restart();
    ASSERT_THAT(events(3),
                ElementsAre(event("\"listening\""), event("\"bus-lost\""), event("\"listening\"")));
    QDBusConnection::disconnectFromBus(kConnectionName);
    m_device = connect();
    ASSERT_TRUE(m_device.registerService(QStringLiteral("com.orvo.wirl")));
    EXPECT_THAT(events(4).back(), EndsWith("\"name\",\"name\":\"com.orvo.wirl\",\"owned\":true}"));
}

TEST_F(BusObserver, WaitsForTheBusToComeUp)
{
    BusDaemon::ofThisProcess().crash();
    observe({"bus", journal()});
    ASSERT_TRUE(eventually([&] { return access(journal().c_str(), F_OK) == 0; }));
    BusDaemon::ofThisProcess().restart();
    EXPECT_THAT(events(1), ElementsAre(event("\"listening\"")));
}

class RecordsObserver : public DeviceObserver
{
protected:
    void observeRecords()
    {
        observe({"records", m_socket, journal()});
        ASSERT_THAT(events(1), ElementsAre(event("\"listening\"")));
    }

    std::string m_socket{path("redis")};
};

TEST_F(RecordsObserver, NotesEachRecordWithTheTimeOfItsArrival)
{
    const RedisServer server(m_socket);
    observeRecords();
    RedisClient(m_socket).command({"PUBLISH", kChannel, "{\"M\":\"first\"}"});
    RedisClient(m_socket).command({"PUBLISH", "OTHER", "nothing"});
    RedisClient(m_socket).command({"PUBLISH", kChannel, "second"});
    EXPECT_THAT(events(3), ElementsAre(event("\"listening\""),
                                       event("\"record\",\"record\":\"{\\\"M\\\":\\\"first\\\"}\""),
                                       event("\"record\",\"record\":\"second\"")));
    const std::vector<std::string> lines = linesOf(journal());
    EXPECT_THAT(lines[1], MatchesRegex("\\{\"t\":[0-9]+\\.[0-9]{6},.*"));
}

TEST_F(RecordsObserver, LosesNoByteOfARecord)
{
    const RedisServer server(m_socket);
    observeRecords();
    RedisClient(m_socket).command(
        {"PUBLISH", kChannel, std::string("cut \xc3\0 \xff \xc3\xa4\n\"", 13)});
    EXPECT_THAT(events(2).back(), EndsWith("\"cut \\udcc3\\u0000 \\udcff \xc3\xa4\\u000a\\\"\"}"));
}

TEST_F(RecordsObserver, GoesOnAfterRedisWasKilledAndStartedAgain)
{
    RedisServer server(m_socket);
    observeRecords();
    server.kill();
    EXPECT_THAT(events(2), ElementsAre(event("\"listening\""), event("\"redis-lost\"")));
    server.restart();
    EXPECT_THAT(events(3), ElementsAre(event("\"listening\""), event("\"redis-lost\""),
                                       event("\"listening\"")));
    RedisClient(m_socket).command({"PUBLISH", kChannel, "again"});
    EXPECT_THAT(events(4).back(), event("\"record\",\"record\":\"again\""));
}

TEST_F(RecordsObserver, WaitsForRedisToComeUp)
{
    observe({"records", m_socket, journal()});
    ASSERT_TRUE(eventually([&] { return access(journal().c_str(), F_OK) == 0; }));
    const RedisServer server(m_socket);
    EXPECT_THAT(events(1), ElementsAre(event("\"listening\"")));
}

TEST_F(RecordsObserver, EndsOnSigterm)
{
    const RedisServer server(m_socket);
    observeRecords();
    m_observer->signal(SIGTERM);
    EXPECT_TRUE(m_observer->waitForEnd(5000));
}

TEST_F(DeviceObserver, RefusesAWrongCommandLineAndSaysTheRightOne)
{
    const std::vector<std::vector<std::string>> mistakes = {{},
                                                            {"bus"},
                                                            {"bus", "a", "b"},
                                                            {"records", "a"},
                                                            {"watch", "a"},
                                                            {"records", "a", "b", "c"}};
    for (const auto& words : mistakes)
    {
        observe(words);
        ASSERT_TRUE(m_observer->waitForEnd(5000));
        EXPECT_EQ(64, m_observer->exitStatus());
        EXPECT_THAT(linesOf(path("output")),
                    ElementsAre("device-observer: give 'bus FILE' or 'records SOCKET FILE'; see "
                                "device-observer --help"));
    }
}

TEST_F(DeviceObserver, EndsWhenItCannotWrite)
{
    for (const auto& words : {std::vector<std::string>{"bus", "/none/journal"},
                              std::vector<std::string>{"records", path("redis"), "/none/journal"}})
    {
        observe(words);
        ASSERT_TRUE(m_observer->waitForEnd(5000));
        EXPECT_EQ(1, m_observer->exitStatus());
        EXPECT_THAT(linesOf(path("output")),
                    ElementsAre("device-observer: cannot open the journal /none/journal: No such "
                                "file or directory; create its folder and make it writable"));
    }
}

TEST_F(DeviceObserver, HelpNamesBothKinds)
{
    observe({"--help"});
    ASSERT_TRUE(m_observer->waitForEnd(5000));
    EXPECT_EQ(0, m_observer->exitStatus());
    EXPECT_THAT(contentOf(path("output")), testing::HasSubstr("bus FILE"));
    EXPECT_THAT(contentOf(path("output")), testing::HasSubstr("records SOCKET FILE"));
}

} // namespace orvo::test
