#include "StubSupervisor.h"

#include "BusDaemon.h"
#include "Eventually.h"
#include "SignalListener.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/WardexAdapter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusPendingCall>

#include <fstream>
#include <sstream>

namespace orvo
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

const QString kName = QLatin1String(kWardexBusName);
const QString kPath = QLatin1String(kBusObjectPath);

ErrorStatus statusOf(const QDBusMessage& reply)
{
    return qdbus_cast<ErrorStatus>(reply.arguments().value(0));
}

/// The interface's own lines of the description file, comments included.
std::string describedInterface()
{
    std::ostringstream content;
    content << std::ifstream(INTERFACE_FILE).rdbuf();
    const std::string xml = content.str();
    const std::string end = "</interface>\n";
    const auto begin = xml.find("  <interface name=\"com.orvo.wardex\">");
    return xml.substr(begin, xml.find(end) + end.size() - begin);
}

} // namespace

/// The adaptor over a stub, on the bus under the supervisor's name, and a client with a connection
/// of its own.
class WardexAdapterOnTheBus : public testing::Test
{
protected:
    void SetUp() override
    {
        new WardexAdapter(&m_supervisor);
        ASSERT_TRUE(m_serverBus.registerService(kName));
        ASSERT_TRUE(
            m_serverBus.registerObject(kPath, &m_supervisor, QDBusConnection::ExportAdaptors));
    }

    void TearDown() override
    {
        m_serverBus.unregisterObject(kPath);
        m_serverBus.unregisterService(kName);
        QDBusConnection::disconnectFromBus(m_clientBus.name());
    }

    QDBusMessage call(const QString& method, const QVariantList& arguments = {},
                      const QString& interface = kName)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(kName, kPath, interface, method);
        message.setArguments(arguments);
        QDBusPendingCall pending = m_clientBus.asyncCall(message);
        EXPECT_TRUE(test::eventually(
            [&pending]
            {
                QCoreApplication::processEvents();
                return pending.isFinished();
            }));
        return pending.reply();
    }

    test::StubSupervisor m_supervisor;
    QDBusConnection m_serverBus = QDBusConnection::systemBus();
    QDBusConnection m_clientBus = QDBusConnection::connectToBus(
        QString::fromStdString(test::BusDaemon::ofThisProcess().address()),
        QStringLiteral("client"));
};

TEST_F(WardexAdapterOnTheBus, ServesTheDescriptionFileWithItsComments)
{
    const QDBusMessage reply = call(QStringLiteral("Introspect"), {},
                                    QStringLiteral("org.freedesktop.DBus.Introspectable"));
    const std::string live = reply.arguments().value(0).toString().toStdString();
    const std::string described = describedInterface();
    EXPECT_THAT(described, HasSubstr("<!-- DEBUGGING -->"));
    EXPECT_THAT(live, HasSubstr(described));
}

TEST_F(WardexAdapterOnTheBus, GroupsTheInterfaceUnderItsFiveComments)
{
    std::istringstream lines(describedInterface());
    std::vector<std::string> members;
    for (std::string line; std::getline(lines, line);)
    {
        const auto from = line.find_first_not_of(' ');
        if (from != std::string::npos &&
            (line.compare(from, 4, "<!--") == 0 || line.compare(from, 7, "<method") == 0 ||
             line.compare(from, 7, "<signal") == 0))
        {
            members.push_back(line.substr(from));
        }
    }
    EXPECT_THAT(members,
                ElementsAre("<!-- GETTER -->", R"(<method name="getServiceStatus">)",
                            R"(<method name="getServiceList">)", "<!-- SETTER -->",
                            R"(<method name="setServicePingTimeoutOneShot">)", "<!-- DO-ER -->",
                            R"(<method name="doStartService">)", R"(<method name="doStopService">)",
                            R"(<method name="doPing">)", "<!-- DEBUGGING -->", "<!-- SIGNALS -->",
                            R"(<signal name="signalServiceAvailability">)"));
}

TEST_F(WardexAdapterOnTheBus, RelaysDoPing)
{
    const QDBusMessage reply = call(QStringLiteral("doPing"));
    EXPECT_EQ(QStringLiteral("(is)s"), reply.signature());
    EXPECT_EQ(0, statusOf(reply).code);
    EXPECT_EQ(QString(), statusOf(reply).message);
    EXPECT_EQ(QStringLiteral("up"), reply.arguments().value(1).toString());
    EXPECT_EQ(QStringList{QStringLiteral("doPing")}, m_supervisor.m_calls);
}

TEST_F(WardexAdapterOnTheBus, RelaysDoStartService)
{
    const QDBusMessage reply = call(QStringLiteral("doStartService"), {QStringLiteral("a.b")});
    EXPECT_EQ(QStringLiteral("(is)"), reply.signature());
    EXPECT_EQ(101001, statusOf(reply).code);
    EXPECT_EQ(QStringLiteral("value incompatible format"), statusOf(reply).message);
    EXPECT_EQ(QStringList{QStringLiteral("doStartService a.b")}, m_supervisor.m_calls);
}

TEST_F(WardexAdapterOnTheBus, RelaysDoStopService)
{
    const QDBusMessage reply = call(QStringLiteral("doStopService"), {QStringLiteral("a.b")});
    EXPECT_EQ(QStringLiteral("(is)"), reply.signature());
    EXPECT_EQ(101002, statusOf(reply).code);
    EXPECT_EQ(QStringList{QStringLiteral("doStopService a.b")}, m_supervisor.m_calls);
}

TEST_F(WardexAdapterOnTheBus, RelaysGetServiceList)
{
    const QDBusMessage reply = call(QStringLiteral("getServiceList"));
    EXPECT_EQ(QStringLiteral("(is)as"), reply.signature());
    EXPECT_EQ(101003, statusOf(reply).code);
    EXPECT_EQ((QStringList{QStringLiteral("one"), QStringLiteral("two")}),
              reply.arguments().value(1).toStringList());
    EXPECT_EQ(QStringList{QStringLiteral("getServiceList")}, m_supervisor.m_calls);
}

TEST_F(WardexAdapterOnTheBus, RelaysGetServiceStatus)
{
    const QDBusMessage reply = call(QStringLiteral("getServiceStatus"), {QStringLiteral("a.b")});
    EXPECT_EQ(QStringLiteral("(is)s"), reply.signature());
    EXPECT_EQ(101004, statusOf(reply).code);
    EXPECT_EQ(QStringLiteral("down"), reply.arguments().value(1).toString());
    EXPECT_EQ(QStringList{QStringLiteral("getServiceStatus a.b")}, m_supervisor.m_calls);
}

TEST_F(WardexAdapterOnTheBus, RelaysSetServicePingTimeoutOneShot)
{
    const QDBusMessage reply =
        call(QStringLiteral("setServicePingTimeoutOneShot"), {QStringLiteral("a.b"), -77});
    EXPECT_EQ(QStringLiteral("(is)"), reply.signature());
    EXPECT_EQ(101005, statusOf(reply).code);
    EXPECT_EQ(QStringList{QStringLiteral("setServicePingTimeoutOneShot a.b -77")},
              m_supervisor.m_calls);
}

TEST_F(WardexAdapterOnTheBus, AnswersACallWithOtherArgumentsByAnErrorAndRelaysNothing)
{
    EXPECT_EQ(QDBusMessage::ErrorMessage, call(QStringLiteral("doStartService"), {7}).type());
    EXPECT_EQ(QDBusMessage::ErrorMessage, call(QStringLiteral("doStartService")).type());
    EXPECT_EQ(QDBusMessage::ErrorMessage, call(QStringLiteral("doReboot")).type());
    EXPECT_EQ(QStringList(), m_supervisor.m_calls);
}

TEST_F(WardexAdapterOnTheBus, RelaysTheAvailabilitySignal)
{
    const QString signalName = QStringLiteral("signalServiceAvailability");
    const test::SignalListener listener(m_clientBus, kPath, kName, signalName);
    const QVariantMap sent{{QStringLiteral("com.orvo.pictor"), QStringLiteral("up")},
                           {QStringLiteral("com.orvo.vistor"), QStringLiteral("down")}};
    Q_EMIT m_supervisor.signalServiceAvailability(sent);

    ASSERT_TRUE(test::eventually(
        [&listener]
        {
            QCoreApplication::processEvents();
            return !listener.messages().isEmpty();
        }));
    const QDBusMessage& message = listener.messages().first();
    EXPECT_EQ(QStringLiteral("a{sv}"), message.signature());
    EXPECT_EQ(sent, qdbus_cast<QVariantMap>(message.arguments().value(0)));
}

} // namespace orvo
