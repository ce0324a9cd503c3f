#include "SupervisionLimits.h"
#include "SupervisorOnTheBus.h"

#include "NamedProcess.h"
#include "SignalListener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnectionInterface>

#include <vector>

namespace orvo
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char kScript[] = "/opt/orvo/etc/init.d/30_pictor";

class BusCommands : public test::SupervisorOnTheBus
{
protected:
    QString m_pictor{test::addScriptedService(QStringLiteral("pictor"), kScript)};
    QString m_unmappable{test::addScriptedService({}, kScript)};
    QString m_unknown{test::freshBusName(QStringLiteral("unknown"))};
};

class Availability : public test::SupervisorOnTheBus
{
protected:
    QString m_first{test::addScriptedService(QStringLiteral("first"), {})};
    QString m_second{test::addScriptedService(QStringLiteral("second"), {})};
    QString m_unknown{test::freshBusName(QStringLiteral("unknown"))};
};

class InternalPing : public test::SupervisorOnTheBus
{
};

} // namespace

TEST_F(BusCommands, AnswerAPingWithUp)
{
    const QDBusMessage reply = call("doPing");
    EXPECT_EQ(0, statusOf(reply).code);
    EXPECT_TRUE(statusOf(reply).message.isEmpty());
    EXPECT_EQ("up", reply.arguments().value(1).toString());
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(BusCommands, AnswerTheirOwnProgramAtOnce)
{
    QString status;
    EXPECT_EQ(0, m_supervisor->getServiceStatus(m_unknown, status).code);
    EXPECT_EQ("unknown", status);
}

TEST_F(BusCommands, RefuseACallBehindTooManyOthers)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        kName, QLatin1String(kBusObjectPath), kName, QStringLiteral("getServiceStatus"));
    message.setArguments({m_unknown});
    std::vector<QDBusPendingCall> calls;
    for (std::size_t call = 0; call < kWaitingCallLimit + 1; ++call)
    {
        calls.push_back(m_client.asyncCall(message));
    }
    // When both connections have had an answer since, all the calls have arrived.
    EXPECT_TRUE(m_client.interface()->isServiceRegistered(kName));
    EXPECT_TRUE(QDBusConnection::systemBus().interface()->isServiceRegistered(kName));
    EXPECT_TRUE(runUntil([&] { return calls.back().isFinished(); }));
    EXPECT_EQ("org.freedesktop.DBus.Error.LimitsExceeded", calls.back().error().name());
    EXPECT_EQ("too many calls are waiting", calls.back().error().message());
    calls.pop_back();
    for (QDBusPendingCall& call : calls)
    {
        EXPECT_TRUE(runUntil([&] { return call.isFinished(); }));
        EXPECT_EQ(0, codeOf(call.reply()));
    }
    EXPECT_THAT(m_device.lines(), ElementsAre("WARN DbusCmd: 64 calls are waiting, refusing more"));
}

TEST_F(BusCommands, ListTheRegisteredServicesByName)
{
    EXPECT_EQ(QStringList(), call("getServiceList").arguments().value(1).toStringList());
    m_info.registerService(m_unmappable);
    m_info.registerService(m_pictor);
    const QDBusMessage reply = call("getServiceList");
    EXPECT_EQ(0, codeOf(reply));
    EXPECT_EQ(m_info.registeredServices(), reply.arguments().value(1).toStringList());
    EXPECT_EQ(2, m_info.registeredServices().size());
}

TEST_F(BusCommands, TellThatAServiceIsUpWhileItsProcessRuns)
{
    const test::NamedProcess process("pictor");
    const QDBusMessage reply = call("getServiceStatus", {m_pictor});
    EXPECT_EQ(0, codeOf(reply));
    EXPECT_EQ("up", reply.arguments().value(1).toString());
}

TEST_F(BusCommands, TellThatAServiceIsDownWithoutItsProcess)
{
    const QDBusMessage reply = call("getServiceStatus", {m_pictor});
    EXPECT_EQ(0, codeOf(reply));
    EXPECT_EQ("down", reply.arguments().value(1).toString());
}

TEST_F(BusCommands, TellThatAServiceIsUnknown)
{
    for (const QString& name : {m_unknown, QString(), QStringLiteral("pictor"), m_pictor.toUpper()})
    {
        const QDBusMessage reply = call("getServiceStatus", {name});
        EXPECT_EQ(0, codeOf(reply));
        EXPECT_EQ("unknown", reply.arguments().value(1).toString()) << qPrintable(name);
    }
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(BusCommands, TellNothingAboutAServiceWithoutAProcessName)
{
    const QDBusMessage reply = call("getServiceStatus", {m_unmappable});
    EXPECT_EQ(0, codeOf(reply));
    EXPECT_EQ(QVariant(QString()), reply.arguments().value(1));
}

TEST_F(BusCommands, StartAServiceByItsScript)
{
    m_journal.install(kScript);
    EXPECT_EQ(0, codeOf(call("doStartService", {m_pictor})));
    EXPECT_THAT(m_journal.calls(), ElementsAre(std::string(kScript) + " restart"));
}

TEST_F(BusCommands, RunNoScriptToStartWhatRuns)
{
    m_journal.install(kScript);
    const test::NamedProcess process("pictor");
    EXPECT_EQ(0, codeOf(call("doStartService", {m_pictor})));
    EXPECT_THAT(m_journal.calls(), IsEmpty());
}

TEST_F(BusCommands, AnswerAFailedStartWithItsCode)
{
    m_journal.install(kScript, 1);
    for (const QString& name : {m_pictor, m_unknown, m_unmappable})
    {
        const ErrorStatus status = statusOf(call("doStartService", {name}));
        EXPECT_EQ(400006, status.code) << qPrintable(name);
        EXPECT_EQ("Unknown error for code %d", status.message);
    }
}

TEST_F(BusCommands, StopAServiceByItsScript)
{
    m_journal.install(kScript);
    const test::NamedProcess process("pictor");
    EXPECT_EQ(0, codeOf(call("doStopService", {m_pictor})));
    EXPECT_THAT(m_journal.calls(), ElementsAre(std::string(kScript) + " stop"));
}

TEST_F(BusCommands, AnswerAFailedStopWithItsCode)
{
    m_journal.install(kScript);
    for (const QString& name : {m_pictor, m_unknown, m_unmappable})
    {
        const ErrorStatus status = statusOf(call("doStopService", {name}));
        EXPECT_EQ(400007, status.code) << qPrintable(name);
        EXPECT_EQ("Unknown error for code %d", status.message);
    }
    EXPECT_THAT(m_journal.calls(), IsEmpty());
}

TEST_F(BusCommands, AnswerAndReportATimerThatIsNotThere)
{
    const ErrorStatus status = statusOf(call("setServicePingTimeoutOneShot", {m_pictor, 77}));
    EXPECT_EQ(400004, status.code);
    EXPECT_EQ("Unknown error for code %d", status.message);
    EXPECT_THAT(m_device.lines(), ElementsAre("WARN setServicePingTimeoutOneShot: restartTimer(" +
                                              m_pictor.toStdString() + ", 77) failed !"));
}

TEST_F(Availability, IsSentAsItIsGiven)
{
    test::SignalListener listener(m_client, QLatin1String(kBusObjectPath), kName,
                                  QStringLiteral("signalServiceAvailability"));
    const QVariantMap map{{m_first, QStringLiteral("up")},
                          {m_second, QStringLiteral("down")},
                          {m_unknown, QStringLiteral("up")}};
    m_supervisor->publishAvailability(map);
    ASSERT_TRUE(runUntil([&] { return !listener.messages().empty(); }));
    ASSERT_EQ(1, listener.messages().size());
    const QDBusMessage signal = listener.messages().first();
    EXPECT_EQ("a{sv}", signal.signature());
    EXPECT_EQ(map, qdbus_cast<QVariantMap>(signal.arguments().value(0)));
}

TEST_F(Availability, RegistersWhatIsUpAndUnregistersEverythingElse)
{
    m_info.registerService(m_second);
    m_supervisor->publishAvailability(
        {{m_first, QStringLiteral("up")}, {m_second, QStringLiteral("down")}});
    EXPECT_THAT(m_info.registeredServices(), ElementsAre(m_first));
    m_supervisor->publishAvailability(
        {{m_first, QStringLiteral("UP")}, {m_second, QStringLiteral("up")}});
    EXPECT_THAT(m_info.registeredServices(), ElementsAre(m_second));
}

TEST_F(Availability, LeavesServicesAloneThatItDoesNotName)
{
    m_info.registerService(m_first);
    m_supervisor->publishAvailability({{m_unknown, QStringLiteral("up")}});
    EXPECT_THAT(m_info.registeredServices(), ElementsAre(m_first));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(InternalPing, PassesOnWhatTheServiceReports)
{
    static test::StubService::Answers answers;
    answers = {true, QStringLiteral("starting")};
    const QString name = test::freshBusName();
    ServiceInfo::addService(
        name, ServiceInfo::makeService<test::StubService>(QStringLiteral("pictor"), 1000,
                                                          QStringLiteral("/x"), &answers));
    QString runLevel = QStringLiteral("up");
    EXPECT_TRUE(m_supervisor->ping(name, runLevel));
    EXPECT_EQ("starting", runLevel);
    EXPECT_EQ(1, answers.pings);

    answers.isAlive = false;
    EXPECT_FALSE(m_supervisor->ping(name, runLevel));
    EXPECT_EQ("down", runLevel) << "a level reported earlier must not count";
}

TEST_F(InternalPing, CountsAnUnknownServiceAsDown)
{
    const QString unknown = test::freshBusName(QStringLiteral("unknown"));
    QString runLevel = QStringLiteral("up");
    EXPECT_FALSE(m_supervisor->ping(unknown, runLevel));
    EXPECT_EQ("down", runLevel);
    EXPECT_THAT(m_device.lines(),
                ElementsAre("ERROR isAlive: Unknown service " + unknown.toStdString()));
}

TEST_F(InternalPing, TakesAReplyCodeOfZeroForSuccessAndReportsAnyOther)
{
    EXPECT_TRUE(m_supervisor->isReplySuccess(0));
    EXPECT_THAT(m_device.lines(), IsEmpty());
    EXPECT_FALSE(m_supervisor->isReplySuccess(0x61a86));
    EXPECT_FALSE(m_supervisor->isReplySuccess(-1));
    EXPECT_THAT(m_device.lines(),
                ElementsAre("WARN reply code: 0x61a86", "WARN reply code: 0xffffffff"));
}

} // namespace orvo
