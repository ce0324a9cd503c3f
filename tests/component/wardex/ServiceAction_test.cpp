#include "ServiceAction.h"

#include "ActingSupervisor.h"
#include "NamedProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char kScript[] = "/opt/orvo/etc/init.d/30_pictor";

class ServiceActions : public test::ActingSupervisor
{
protected:
    QString m_pictor{test::addScriptedService(QStringLiteral("pictor"), kScript)};
    QString m_unknown{test::freshBusName(QStringLiteral("unknown"))};
    QString m_unmappable{test::addScriptedService({}, kScript)};
};

} // namespace

TEST_F(ServiceActions, StartAServiceByARestartOfItsScript)
{
    m_journal.install(kScript);
    EXPECT_TRUE(m_action.doStartService(m_pictor));
    EXPECT_THAT(m_journal.calls(), ElementsAre(std::string(kScript) + " restart"));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceActions, LeaveARunningServiceAloneWhenItIsToBeStarted)
{
    m_journal.install(kScript);
    const test::NamedProcess pictor("pictor");
    EXPECT_TRUE(m_action.doStartService(m_pictor));
    EXPECT_THAT(m_journal.calls(), IsEmpty());
}

TEST_F(ServiceActions, FailToStartWhenTheScriptFails)
{
    m_journal.install(kScript, 1);
    EXPECT_FALSE(m_action.doStartService(m_pictor));
    EXPECT_THAT(m_journal.calls(), ElementsAre(std::string(kScript) + " restart"));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceActions, FailToStartWhenTheScriptIsMissing)
{
    EXPECT_FALSE(m_action.doStartService(m_pictor));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceActions, StopARunningServiceByItsScript)
{
    m_journal.install(kScript);
    const test::NamedProcess pictor("pictor");
    EXPECT_TRUE(m_action.doStopService(m_pictor));
    EXPECT_THAT(m_journal.calls(), ElementsAre(std::string(kScript) + " stop"));
}

TEST_F(ServiceActions, FailToStopWhenTheScriptFails)
{
    m_journal.install(kScript, 1);
    const test::NamedProcess pictor("pictor");
    EXPECT_FALSE(m_action.doStopService(m_pictor));
    EXPECT_THAT(m_journal.calls(), ElementsAre(std::string(kScript) + " stop"));
}

TEST_F(ServiceActions, FailToStopWhatDoesNotRunAndRunNoScript)
{
    m_journal.install(kScript);
    EXPECT_FALSE(m_action.doStopService(m_pictor));
    EXPECT_THAT(m_journal.calls(), IsEmpty());
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceActions, RefuseAnUnknownServiceSilently)
{
    EXPECT_FALSE(m_action.doStartService(m_unknown));
    EXPECT_FALSE(m_action.doStopService(m_unknown));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceActions, ReportAServiceWithoutAProcessNameWhenItIsToBeStarted)
{
    m_journal.install(kScript);
    EXPECT_FALSE(m_action.doStartService(m_unmappable));
    EXPECT_THAT(m_journal.calls(), IsEmpty());
    EXPECT_THAT(m_device.lines(),
                ElementsAre("ERROR doStartService: Internal Error: service " +
                            m_unmappable.toStdString() + " known but not mappable ?!"));
}

TEST_F(ServiceActions, ReportAServiceWithoutAProcessNameWhenItIsToBeStopped)
{
    m_journal.install(kScript);
    EXPECT_FALSE(m_action.doStopService(m_unmappable));
    EXPECT_THAT(m_journal.calls(), IsEmpty());
    EXPECT_THAT(m_device.lines(),
                ElementsAre("ERROR doStopService: Internal Error: service " +
                            m_unmappable.toStdString() + " known but not mappable ?!"));
}

TEST_F(ServiceActions, RunAScriptWithTheWordForWhatIsWanted)
{
    m_journal.install(kScript);
    EXPECT_TRUE(m_action.runInitScript(m_pictor, true));
    EXPECT_TRUE(m_action.runInitScript(m_pictor, false));
    EXPECT_THAT(m_journal.calls(),
                ElementsAre(std::string(kScript) + " restart", std::string(kScript) + " stop"));
}

TEST_F(ServiceActions, RunNoScriptForAServiceWithoutOne)
{
    const QString scriptless = test::addScriptedService(QStringLiteral("pictor"), {});
    EXPECT_FALSE(m_action.runInitScript(scriptless, true));
    EXPECT_FALSE(m_action.runInitScript(m_unknown, false));
    EXPECT_THAT(m_device.lines(), IsEmpty());
}

TEST_F(ServiceActions, DropWhatAScriptWrites)
{
    m_journal.install(kScript, 0, "echo out; echo err >&2");
    EXPECT_TRUE(m_action.doStartService(m_pictor));
    EXPECT_THAT(m_device.lines(), IsEmpty());
    EXPECT_THAT(m_syslog.messages(), IsEmpty());
}

} // namespace orvo
