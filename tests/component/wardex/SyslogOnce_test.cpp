#include "ServiceAction.h"

#include "OwnProcess.h"
#include "SyslogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <syslog.h>

namespace orvo
{

namespace
{

using testing::ElementsAre;
using Message = test::SyslogCapture::Message;

constexpr std::size_t kLongest = 511;

/// Neither the registry nor the log takes part.
class SyslogOnce : public testing::Test
{
protected:
    static void inOwnProcess(const std::function<void(ServiceAction&)>& claim)
    {
        test::inOwnProcess(
            [&]
            {
                ServiceAction action(nullptr, nullptr);
                claim(action);
            });
    }

    test::SyslogCapture m_syslog;
};

} // namespace

TEST_F(SyslogOnce, SendsATextOnce)
{
    inOwnProcess(
        [](ServiceAction& action)
        {
            action.syslogOnce(LOG_CRIT, "%s is %d", "this", 1);
            action.syslogOnce(LOG_CRIT, "%s is %d", "this", 1);
            action.syslogOnce(LOG_WARNING, "this is 1");
        });
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, "this is 1"}));
}

TEST_F(SyslogOnce, SendsEachTextWithItsPriority)
{
    inOwnProcess(
        [](ServiceAction& action)
        {
            action.syslogOnce(LOG_CRIT, "number %d", 1);
            action.syslogOnce(LOG_INFO, "number %d", 2);
        });
    EXPECT_THAT(m_syslog.messages(),
                ElementsAre(Message{LOG_CRIT, "number 1"}, Message{LOG_INFO, "number 2"}));
}

TEST_F(SyslogOnce, SendsATextOnceForAllObjectsOfTheProcess)
{
    inOwnProcess(
        [](ServiceAction& action)
        {
            ServiceAction other(nullptr, nullptr);
            action.syslogOnce(LOG_CRIT, "the same");
            other.syslogOnce(LOG_CRIT, "the same");
        });
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, "the same"}));
}

TEST_F(SyslogOnce, DoesNotReadTheTextAsAFormat)
{
    inOwnProcess([](ServiceAction& action) { action.syslogOnce(LOG_CRIT, "%s", "100%s %n"); });
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, "100%s %n"}));
}

TEST_F(SyslogOnce, SendsTheLongestTextWhole)
{
    const std::string text(kLongest, 'x');
    inOwnProcess([&](ServiceAction& action) { action.syslogOnce(LOG_CRIT, "%s", text.c_str()); });
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, text}));
}

TEST_F(SyslogOnce, CutsALongerText)
{
    const std::string text(kLongest, 'x');
    inOwnProcess([&](ServiceAction& action) { action.syslogOnce(LOG_CRIT, "%sy", text.c_str()); });
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, text}));
}

TEST_F(SyslogOnce, TakesTextsForTheSameThatDifferBehindTheCut)
{
    const std::string text(kLongest, 'x');
    inOwnProcess(
        [&](ServiceAction& action)
        {
            action.syslogOnce(LOG_CRIT, "%sy", text.c_str());
            action.syslogOnce(LOG_CRIT, "%sz", text.c_str());
        });
    EXPECT_THAT(m_syslog.messages(), ElementsAre(Message{LOG_CRIT, text}));
}

} // namespace orvo
