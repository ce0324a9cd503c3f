#include "Eventually.h"
#include "SimulatedService.h"

#include "dbus-proxy/BusNames.h"
#include "dbus-proxy/CorvaneService.h"
#include "dbus-proxy/DbusTypes.h"
#include "dbus-proxy/PictorService.h"
#include "dbus-proxy/WIRLService.h"

#include <gtest/gtest.h>

#include <QDBusVariant>
#include <QElapsedTimer>

#include <sys/resource.h>

namespace orvo
{

namespace
{

const QString kUntouched = QStringLiteral("untouched");

/// What a ping says: whether the service is alive, and the run level that was "untouched" before.
struct Answer
{
    bool alive;
    QString runLevel;
};

bool operator==(const Answer& a, const Answer& b)
{
    return a.alive == b.alive && a.runLevel == b.runLevel;
}

std::ostream& operator<<(std::ostream& out, const Answer& answer)
{
    return out << (answer.alive ? "alive, " : "dead, ") << answer.runLevel.toStdString();
}

QVariant status(std::int32_t code = 0)
{
    return QVariant::fromValue(ErrorStatus(code));
}

/// A service object and its peer on the bus.
template <typename Service>
struct Supervised
{
    explicit Supervised(const char* busName) : peer(QLatin1String(busName)) {}

    Answer ping()
    {
        QString runLevel = kUntouched;
        const bool alive = service.isAlive(runLevel);
        return {alive, runLevel};
    }

    Answer pingAnsweredWith(const QVariantList& values)
    {
        peer.answersWith(values);
        return ping();
    }

    test::SimulatedService peer;
    Service service{QStringLiteral("name"), QStringLiteral("/script")};
};

long timesThisThreadHasSlept()
{
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

const Answer kUp{true, QStringLiteral("up")};
const Answer kDead{false, kUntouched};

} // namespace

TEST(CorvaneService, HasItsNameScriptAndTimeout)
{
    const CorvaneService service(QStringLiteral("corvane"), QStringLiteral("/init.d/40_corvane"));
    EXPECT_EQ(QStringLiteral("corvane"), service.name());
    EXPECT_EQ(QStringLiteral("/init.d/40_corvane"), service.initScript());
    EXPECT_EQ(2200, service.pingTimeout());
}

TEST(PictorService, HasItsNameScriptAndTimeout)
{
    const PictorService service(QStringLiteral("pictor"), QStringLiteral("/init.d/30_pictor"));
    EXPECT_EQ(QStringLiteral("pictor"), service.name());
    EXPECT_EQ(QStringLiteral("/init.d/30_pictor"), service.initScript());
    EXPECT_EQ(1000, service.pingTimeout());
}

TEST(WIRLService, HasItsNameScriptAndTimeout)
{
    const WIRLService service(QStringLiteral("wirl"), QStringLiteral("/init.d/10_wirl"));
    EXPECT_EQ(QStringLiteral("wirl"), service.name());
    EXPECT_EQ(QStringLiteral("/init.d/10_wirl"), service.initScript());
    EXPECT_EQ(1000, service.pingTimeout());
}

TEST(CorvaneService, PingsVistor)
{
    Supervised<CorvaneService> corvane(kVistorBusName);
    EXPECT_EQ(kUp, corvane.ping());
    EXPECT_EQ(1, corvane.peer.pings());
}

TEST(PictorService, PingsPictor)
{
    Supervised<PictorService> pictor(kPictorBusName);
    EXPECT_EQ(kUp, pictor.ping());
    EXPECT_EQ(1, pictor.peer.pings());
}

TEST(WIRLService, PingsWirl)
{
    Supervised<WIRLService> wirl(kWirlBusName);
    EXPECT_EQ(kUp, wirl.ping());
    EXPECT_EQ(1, wirl.peer.pings());
}

TEST(CorvaneService, IsAliveWhenTheAnswerTakes1500Ms)
{
    Supervised<CorvaneService> corvane(kVistorBusName);
    corvane.peer.answersAfter(1500);
    EXPECT_EQ(kUp, corvane.ping());
}

TEST(CorvaneService, IsDeadWhenTheAnswerTakesLongerThan2200Ms)
{
    Supervised<CorvaneService> corvane(kVistorBusName);
    corvane.peer.answersAfter(2700);
    EXPECT_EQ(kDead, corvane.ping());
}

TEST(PictorService, IsDeadWhenTheAnswerTakes1500Ms)
{
    Supervised<PictorService> pictor(kPictorBusName);
    pictor.peer.answersAfter(1500);
    EXPECT_EQ(kDead, pictor.ping());
}

// The bus library rounds its time-outs by up to a twentieth to half seconds of its clock: those
// that begin soon after one end early.
TEST(PictorService, IsGivenItsWholeTimeToAnswer)
{
    Supervised<PictorService> pictor(kPictorBusName);
    pictor.peer.staysSilent();
    for (int ping = 0; ping < 2; ++ping)
    {
        QElapsedTimer clock;
        clock.start();
        ASSERT_TRUE(test::eventually(
            [&]
            {
                const qint64 afterHalfSecond =
                    (clock.msecsSinceReference() + clock.elapsed()) % 500;
                return afterHalfSecond >= 60 && afterHalfSecond < 120;
            }));
        QElapsedTimer sinceThePing;
        sinceThePing.start();
        EXPECT_EQ(kDead, pictor.ping());
        EXPECT_LE(pictor.service.pingTimeout(), sinceThePing.elapsed());
    }
}

// The thread that waits has real-time priority: each time it wakes it holds up the camera.
TEST(PictorService, LeavesTheProcessorAloneWhileNoAnswerComes)
{
    Supervised<PictorService> pictor(kPictorBusName);
    pictor.peer.staysSilent();
    const long before = timesThisThreadHasSlept();
    EXPECT_EQ(kDead, pictor.ping());
    EXPECT_GT(300, timesThisThreadHasSlept() - before);
}

TEST(WIRLService, IsDeadWhenTheAnswerTakes1500Ms)
{
    Supervised<WIRLService> wirl(kWirlBusName);
    wirl.peer.answersAfter(1500);
    EXPECT_EQ(kDead, wirl.ping());
}

TEST(PictorService, IsDeadWhileItIsNotOnTheBus)
{
    Supervised<PictorService> pictor(kPictorBusName);
    pictor.peer.leavesTheBus();
    EXPECT_EQ(kDead, pictor.ping());
    pictor.peer.returnsToTheBus();
    EXPECT_EQ(kUp, pictor.ping());
}

TEST(PictorService, IsDeadWhenItAnswersAnError)
{
    Supervised<PictorService> pictor(kPictorBusName);
    pictor.peer.answersWithError(QStringLiteral("com.orvo.Error.Broken"));
    EXPECT_EQ(kDead, pictor.ping());
}

TEST(PictorService, ReportsTheRunLevelThatTheServiceTells)
{
    Supervised<PictorService> pictor(kPictorBusName);
    for (const char* runLevel : {"up", "starting", "down", "", "anything else"})
    {
        pictor.peer.answers(QLatin1String(runLevel));
        EXPECT_EQ((Answer{true, QLatin1String(runLevel)}), pictor.ping());
    }
}

TEST(PictorService, IsAliveWhateverErrorCodeItReports)
{
    Supervised<PictorService> pictor(kPictorBusName);
    EXPECT_EQ((Answer{true, QStringLiteral("starting")}),
              pictor.pingAnsweredWith({status(101052), QStringLiteral("starting")}));
}

TEST(PictorService, IsDeadWhenTheAnswerHasNoValues)
{
    Supervised<PictorService> pictor(kPictorBusName);
    EXPECT_EQ(kDead, pictor.pingAnsweredWith({}));
}

TEST(PictorService, IsAliveWithoutARunLevelWhenTheAnswerIsAStatusAlone)
{
    Supervised<PictorService> pictor(kPictorBusName);
    EXPECT_EQ((Answer{true, kUntouched}), pictor.pingAnsweredWith({status()}));
}

TEST(PictorService, IsAliveWithoutARunLevelWhenTheAnswerHasThreeValues)
{
    Supervised<PictorService> pictor(kPictorBusName);
    EXPECT_EQ((Answer{true, kUntouched}),
              pictor.pingAnsweredWith({status(), QStringLiteral("up"), QStringLiteral("up")}));
}

TEST(PictorService, IsDeadWhenTheFirstValueIsNoStatus)
{
    Supervised<PictorService> pictor(kPictorBusName);
    const QString up = QStringLiteral("up");
    const Answer deadWithText{false, up};
    EXPECT_EQ(deadWithText, pictor.pingAnsweredWith({0, up}));
    EXPECT_EQ(deadWithText, pictor.pingAnsweredWith({QStringLiteral("ok"), up}));
    EXPECT_EQ(deadWithText,
              pictor.pingAnsweredWith({QVariant::fromValue(QDBusVariant(status())), up}));
    EXPECT_EQ(deadWithText,
              pictor.pingAnsweredWith({QVariant::fromValue(QVector<uint>{1, 2}), up}));
    EXPECT_EQ(deadWithText, pictor.pingAnsweredWith({QVariantMap{{up, 1}}, up}));
}

TEST(PictorService, IsDeadWhenStatusAndRunLevelChangePlaces)
{
    Supervised<PictorService> pictor(kPictorBusName);
    EXPECT_FALSE(pictor.pingAnsweredWith({QStringLiteral("up"), status()}).alive);
}

TEST(PictorService, TakesAnEmptyRunLevelFromAValueThatIsNoText)
{
    Supervised<PictorService> pictor(kPictorBusName);
    const Answer alive{true, QString()};
    const QVariant up = QStringLiteral("up");
    EXPECT_EQ(alive, pictor.pingAnsweredWith({status(), QVariant::fromValue(QDBusVariant(up))}));
    EXPECT_EQ(alive, pictor.pingAnsweredWith({status(), status(101052)}));
    EXPECT_EQ(alive, pictor.pingAnsweredWith({status(), QVariant::fromValue(QVector<uint>{7})}));
    EXPECT_EQ(alive, pictor.pingAnsweredWith({status(), QVariantMap{{QStringLiteral("up"), 1}}}));
}

TEST(PictorService, TakesTheNumberThatStandsInPlaceOfTheRunLevel)
{
    Supervised<PictorService> pictor(kPictorBusName);
    EXPECT_EQ((Answer{true, QStringLiteral("42")}), pictor.pingAnsweredWith({status(), 42}));
}

TEST(PictorService, SurvivesAnAnswerOfOneMegabyte)
{
    Supervised<PictorService> pictor(kPictorBusName);
    const QString huge(1 << 20, QLatin1Char('u'));
    EXPECT_EQ((Answer{true, huge}), pictor.pingAnsweredWith({status(), huge}));
}

TEST(ServiceObjects, AreDestroyedByADeleterThatKnowsTheirType)
{
    for (auto make : {&ServiceInfo::makeService<CorvaneService, QString, QString>,
                      &ServiceInfo::makeService<PictorService, QString, QString>,
                      &ServiceInfo::makeService<WIRLService, QString, QString>})
    {
        ServiceInfo::ServicePtr service = make(QStringLiteral("name"), QStringLiteral("/script"));
        EXPECT_EQ(QStringLiteral("name"), service->name());
        service.reset();
        EXPECT_EQ(nullptr, service);
    }
}

TEST(ServiceObjects, OutliveTheApplicationObjectInTheServiceTable)
{
    // The table is older than main and its services end with the process, when the application
    // object and the bus have gone: what is shown is that the program ends in order after this.
    const test::SimulatedService pictor{QLatin1String(kPictorBusName)};
    ServiceInfo::addService(QLatin1String(kPictorBusName),
                            ServiceInfo::makeService<PictorService>(QStringLiteral("pictor"),
                                                                    QStringLiteral("/script")));
    ServiceInfo registry(nullptr, false);
    QString runLevel;
    EXPECT_TRUE(registry.isAlive(QLatin1String(kPictorBusName), runLevel));
    EXPECT_EQ(QStringLiteral("up"), runLevel);
}

} // namespace orvo
