#include "SyslogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <syslog.h>

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

} // namespace orvo::test
