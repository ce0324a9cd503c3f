#include "SyslogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <syslog.h>
#include <unistd.h>

namespace orvo::test
{

TEST(SyslogCapture, TellsPriorityAndTextInOrder)
{
    SyslogCapture capture;
    EXPECT_THAT(capture.messages(), testing::IsEmpty());
    syslog(LOG_CRIT, "first: %d", 1);
    syslog(LOG_DEBUG | LOG_LOCAL1, "second");
    EXPECT_THAT(capture.messages(),
                testing::ElementsAre(SyslogCapture::Message{LOG_CRIT, "first: 1"},
                                     SyslogCapture::Message{LOG_DEBUG, "second"}));
}

TEST(SyslogCapture, TellsFacilityAndOrigin)
{
    SyslogCapture capture;
    openlog("camera", LOG_PID, LOG_LOCAL1);
    syslog(LOG_CRIT, "text");
    closelog();
    ASSERT_EQ(1U, capture.messages().size());
    EXPECT_EQ(LOG_LOCAL1, capture.messages()[0].facility);
    EXPECT_EQ("camera[" + std::to_string(getpid()) + "]", capture.messages()[0].origin);
}

} // namespace orvo::test
