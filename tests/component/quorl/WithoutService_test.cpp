#include "quorl/Quorl.h"

#include "SyslogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <syslog.h>

namespace orvo
{

/// Neither the service nor Redis runs.
TEST(QuorlWithoutServiceAndLog, FailsWithTheReasonAndTurnsTheLogToSyslog)
{
    using Message = test::SyslogCapture::Message;
    test::SyslogCapture syslog;
    testing::internal::CaptureStderr();
    char* value = nullptr;
    EXPECT_EQ(-1, quorl_getConfig("Bind-Address", &value));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("connect: No such file or directory\n"));
    EXPECT_EQ(nullptr, value);
    EXPECT_THAT(syslog.messages(),
                testing::ElementsAre(Message{LOG_WARNING, "Logger failure: Switching to syslog."},
                                     Message{LOG_DEBUG, "quorl_getConfig(): rpc call failed "}));
}

} // namespace orvo
