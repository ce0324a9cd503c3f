#include "BusDaemon.h"
#include "ScriptedSupervisor.h"
#include "StreamCapture.h"
#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/WardexAdapter.h"
#include "output/ExitStatus.h"
#include "verbs/Monitor.h"
#include "verbs/ServiceVerbs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QJsonDocument>

#include <unistd.h>

namespace orvo::ctl
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{
constexpr char kConnection[] = "supervisor";
} // namespace

class BusVerbs : public testing::Test
{
protected:
    BusVerbs()
        : m_bus(QDBusConnection::connectToBus(
              QString::fromStdString(test::BusDaemon::ofThisProcess().address()), kConnection))
    {
        new WardexAdapter(&m_supervisor);
    }

    ~BusVerbs() override
    {
        m_bus.unregisterService(kWardexBusName);
        m_bus.unregisterObject(kBusObjectPath);
    }

    void supervise()
    {
        ASSERT_TRUE(m_bus.registerService(kWardexBusName));
        ASSERT_TRUE(
            m_bus.registerObject(kBusObjectPath, &m_supervisor, QDBusConnection::ExportAdaptors));
    }

    /// The lines that a verb writes.
    template <typename Verb>
    QStringList told(Verb verb, bool isJson = false)
    {
        const test::StreamCapture out(STDOUT_FILENO);
        const test::StreamCapture err(STDERR_FILENO);
        m_status = verb(Output(isJson, false));
        m_complaint = err.text();
        return QString::fromStdString(out.text()).split('\n', Qt::SkipEmptyParts);
    }

    template <typename Verb>
    QJsonObject toldJson(Verb verb)
    {
        return QJsonDocument::fromJson(told(verb, true).value(0).toUtf8()).object();
    }

    static auto act(Deed deed, const std::string& name, bool waits = true)
    {
        return [=](const Output& output)
        {
            return actOnService(output, deed, name, waits);
        };
    }

    static auto isUp(const std::string& name)
    {
        return [=](const Output& output)
        {
            return isServiceUp(output, name);
        };
    }

    QDBusConnection m_bus;
    test::ScriptedSupervisor m_supervisor;
    int m_status{-1};
    std::string m_complaint;
};

TEST_F(BusVerbs, ListShowsTheServicesOfThisDeviceOnly)
{
    supervise();
    EXPECT_EQ((QStringList{"com.orvo.vistor  corvane  runs          available",
                           "com.orvo.pictor  pictor   runs          available",
                           "com.orvo.wirl    wirl     does not run  not judged"}),
              told(listServices));
    EXPECT_EQ(kOk, m_status);
    const QJsonObject json = toldJson(listServices);
    EXPECT_EQ("list", json["verb"].toString());
    EXPECT_EQ(3, json["services"].toArray().size());
    EXPECT_TRUE(json["services"].toArray()[2].toObject()["available"].isNull());
}

TEST_F(BusVerbs, IsUpOnlyWhenItsProcessRunsAndItIsAvailable)
{
    supervise();
    EXPECT_EQ(QStringList{"pictor is up"}, told(isUp("pictor")));
    EXPECT_EQ(kOk, m_status);
    m_supervisor.m_listed.removeAll("com.orvo.pictor");
    EXPECT_EQ(QStringList{"pictor is not up (its process runs, not available)"},
              told(isUp("pictor")));
    EXPECT_EQ(kNotUp, m_status);
    EXPECT_FALSE(toldJson(isUp("pictor"))["up"].toBool());
    m_supervisor.m_status["com.orvo.vistor"] = "down";
    EXPECT_EQ(QStringList{"corvane is not up (its process does not run, available)"},
              told(isUp("vistor")));
    EXPECT_EQ(kNotUp, m_status);
}

TEST_F(BusVerbs, ServiceThatIsNotJudgedIsUpWithItsProcess)
{
    supervise();
    told(isUp("wirl"));
    EXPECT_EQ(kNotUp, m_status);
    m_supervisor.m_status["com.orvo.wirl"] = "up";
    told(isUp("wirl"));
    EXPECT_EQ(kOk, m_status);
}

TEST_F(BusVerbs, UnknownServicesAreTold)
{
    supervise();
    told(isUp("quorl"));
    EXPECT_EQ(kUnknown, m_status);
    EXPECT_EQ("wardexctl: com.orvo.quorl: this device does not run such a service\n"
              "  wardexctl list shows those it runs.\n",
              m_complaint);
    told(isUp("nobody"));
    EXPECT_EQ(kUnknown, m_status);
    EXPECT_EQ("wardexctl: nobody: no service is called so\n"
              "  Say one of corvane, pictor, wirl, quorl, or a bus name.\n",
              m_complaint);
    told(act(Deed::Start, "quorl"));
    EXPECT_EQ(kUnknown, m_status);
    EXPECT_THAT(m_supervisor.m_calls, IsEmpty());
}

TEST_F(BusVerbs, AbsentSupervisorIsTheSameStatusInEveryVerb)
{
    const std::vector<std::function<int(const Output&)>> verbs{
        listServices,
        isUp("pictor"),
        act(Deed::Start, "pictor"),
        act(Deed::Stop, "pictor", false),
        [](const Output& output) { return graceService(output, "pictor", "30s"); },
        [](const Output& output)
        {
            return Monitor(output).run({"", "1s"});
        }};
    for (const auto& verb : verbs)
    {
        EXPECT_THAT(told(verb), IsEmpty());
        EXPECT_EQ(kSupervisorSilent, m_status);
        EXPECT_THAT(m_complaint, HasSubstr("com.orvo.wardex: nobody owns this name"));
        EXPECT_EQ("com.orvo.wardex", toldJson(verb)["error"].toObject()["object"].toString());
    }
}

TEST_F(BusVerbs, StartOfAServiceThatDoesNotRunRunsItsScript)
{
    supervise();
    const QStringList lines = told(act(Deed::Start, "wirl"));
    EXPECT_EQ(kOk, m_status);
    EXPECT_THAT(lines.value(0).toStdString(),
                testing::MatchesRegex("wirl was started, .* s, status 0"));
    EXPECT_THAT(m_supervisor.m_calls, ElementsAre("start com.orvo.wirl"));
}

TEST_F(BusVerbs, StartOfAServiceThatRunsSaysThatNothingWasDone)
{
    supervise();
    EXPECT_TRUE(told(act(Deed::Start, "pictor"))
                    .value(0)
                    .startsWith("pictor runs already, nothing was done"));
    EXPECT_EQ(kOk, m_status);
}

TEST_F(BusVerbs, FailedDeedsTellTheCodeItsTextAndTheScript)
{
    supervise();
    m_supervisor.m_code = 400006;
    told(act(Deed::Start, "wirl"));
    EXPECT_EQ(kNotUp, m_status);
    EXPECT_THAT(m_complaint, HasSubstr("status 400006 (Unknown error for code %d)"));
    EXPECT_THAT(m_complaint, HasSubstr("run /opt/orvo/etc/init.d/10_wirl restart by hand"));
    m_supervisor.m_code = 400007;
    told(act(Deed::Stop, "pictor"));
    EXPECT_EQ(kFailed, m_status);
    EXPECT_THAT(m_complaint, HasSubstr("run /opt/orvo/etc/init.d/30_pictor stop by hand"));
    told(act(Deed::Stop, "wirl"));
    EXPECT_THAT(m_complaint, HasSubstr("It does not run, so there was nothing to stop."));
}

TEST_F(BusVerbs, RestartStopsOnlyWhatRuns)
{
    supervise();
    told(act(Deed::Restart, "pictor"));
    told(act(Deed::Restart, "wirl"));
    EXPECT_THAT(m_supervisor.m_calls, ElementsAre("stop com.orvo.pictor", "start com.orvo.pictor",
                                                  "start com.orvo.wirl"));
}

TEST_F(BusVerbs, RestartDoesNotStartWhatCouldNotBeStopped)
{
    supervise();
    m_supervisor.m_code = 400007;
    const QJsonObject json = toldJson(act(Deed::Restart, "pictor"));
    EXPECT_EQ(kFailed, m_status);
    EXPECT_THAT(m_supervisor.m_calls, ElementsAre("stop com.orvo.pictor"));
}

TEST_F(BusVerbs, DeedTellsProgramsItsSteps)
{
    supervise();
    const QJsonObject json = toldJson(act(Deed::Restart, "pictor"));
    EXPECT_TRUE(json["done"].toBool());
    EXPECT_TRUE(json["waited"].toBool());
    ASSERT_EQ(2, json["steps"].toArray().size());
    const QJsonObject step = json["steps"].toArray()[1].toObject();
    EXPECT_EQ("doStartService", step["method"].toString());
    EXPECT_EQ(0, step["code"].toInt(-1));
    EXPECT_EQ("", step["message"].toString("none"));
}

TEST_F(BusVerbs, DeedThatIsNotWaitedForIsHandedOver)
{
    supervise();
    EXPECT_EQ(QStringList{"asked to restart pictor"}, told(act(Deed::Restart, "pictor", false)));
    EXPECT_EQ(kOk, m_status);
    // The bus keeps the order, so an answered call shows that those before it arrived.
    told(isUp("pictor"));
    EXPECT_THAT(m_supervisor.m_calls, ElementsAre("stop com.orvo.pictor", "start com.orvo.pictor"));
}

TEST_F(BusVerbs, GraceTellsHowLongItHolds)
{
    supervise();
    EXPECT_EQ(
        (QStringList{"pictor was given time.",
                     "Its next ping comes in 30 s, and further ones every 30 s, until its machine "
                     "changes state; then every 1.0 s again.",
                     "While it is up, 4 misses in a row take it down: after 2 min 00 s."}),
        told([](const Output& output) { return graceService(output, "pictor", "30s"); }));
    EXPECT_THAT(m_supervisor.m_calls, ElementsAre("grace com.orvo.pictor 30000"));
}

TEST_F(BusVerbs, GraceTellsTheUsualIntervalOfTheService)
{
    supervise();
    const auto grace = [](const Output& output)
    {
        return graceService(output, "corvane", "1500ms");
    };
    EXPECT_TRUE(told(grace).value(1).endsWith("every 1.5 s, until its machine changes state; then "
                                              "every 2.2 s again."));
}

TEST_F(BusVerbs, GraceRefusesWhatIsNoDurationBeforeItAsks)
{
    supervise();
    for (const char* duration : {"0", "0s", "soon", "25d"})
    {
        told([=](const Output& output) { return graceService(output, "pictor", duration); });
        EXPECT_EQ(kUsage, m_status) << duration;
    }
    EXPECT_THAT(m_supervisor.m_calls, IsEmpty());
}

TEST_F(BusVerbs, GraceOfAServiceWithoutAMachineIsUnknown)
{
    supervise();
    m_supervisor.m_code = 400004;
    told([](const Output& output) { return graceService(output, "wirl", "30s"); });
    EXPECT_EQ(kUnknown, m_status);
    EXPECT_THAT(m_complaint, HasSubstr("status 400004"));
}

class MonitorOnTheBus : public BusVerbs
{
protected:
    void publish(const QList<QVariantMap>& maps)
    {
        for (const QVariantMap& map : maps)
        {
            Q_EMIT m_supervisor.signalServiceAvailability(map);
        }
    }

    static QVariantMap map(const char* vistor, const char* pictor)
    {
        return {{"com.orvo.vistor", vistor}, {"com.orvo.pictor", pictor}};
    }

    /// "SERVICE STATE" of each line.
    QStringList monitored(const MonitorOptions& options)
    {
        QStringList changes;
        for (const QString& line :
             told([&](const Output& output) { return Monitor(output).run(options); }, true))
        {
            const QJsonObject json = QJsonDocument::fromJson(line.toUtf8()).object();
            if (!json.contains("error"))
            {
                changes << json["service"].toString() + " " + json["state"].toString();
            }
        }
        return changes;
    }
};

TEST_F(MonitorOnTheBus, ShowsHowItIsAndThenEachChangeOnce)
{
    supervise();
    m_supervisor.m_whenAsked = [this]
    {
        publish({map("up", "up"), map("up", "down"), map("up", "down"), map("down", "down")});
    };
    EXPECT_EQ((QStringList{"com.orvo.vistor up", "com.orvo.pictor up", "com.orvo.pictor down",
                           "com.orvo.vistor down"}),
              monitored({"corvane=down", "20s"}));
    EXPECT_EQ(kOk, m_status);
}

TEST_F(MonitorOnTheBus, EndsAtOnceWhenItIsAlreadySo)
{
    supervise();
    EXPECT_EQ((QStringList{"com.orvo.vistor up", "com.orvo.pictor up"}),
              monitored({"pictor=up", ""}));
    EXPECT_EQ(kOk, m_status);
}

TEST_F(MonitorOnTheBus, TimeThatIsUpIsNotUp)
{
    supervise();
    monitored({"pictor=down", "50ms"});
    EXPECT_EQ(kNotUp, m_status);
    EXPECT_THAT(m_complaint, HasSubstr("pictor: did not come to be down within 50ms"));
    monitored({"", "50ms"});
    EXPECT_EQ(kOk, m_status);
}

TEST_F(MonitorOnTheBus, TellsThatTheSupervisorGoesAndComesBack)
{
    supervise();
    m_supervisor.m_whenAsked = [this]
    {
        m_bus.unregisterService(kWardexBusName);
        m_bus.registerService(kWardexBusName);
        publish({map("up", "down")});
    };
    EXPECT_EQ((QStringList{"com.orvo.vistor up", "com.orvo.pictor up", "wardex gone", "wardex back",
                           "com.orvo.pictor down"}),
              monitored({"pictor=down", "20s"}));
}

TEST_F(MonitorOnTheBus, RefusesWhatCannotBeWaitedFor)
{
    supervise();
    for (const char* until : {"pictor", "pictor=ready", "wirl=up"})
    {
        monitored({until, ""});
        EXPECT_EQ(kUsage, m_status) << until;
    }
    for (const char* until : {"=up", "nobody=up", "com.orvo.nobody=down"})
    {
        monitored({until, ""});
        EXPECT_EQ(kUnknown, m_status) << until;
    }
    monitored({"", "soon"});
    EXPECT_EQ(kUsage, m_status);
}

} // namespace orvo::ctl
