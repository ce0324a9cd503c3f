#pragma once

#include "LibraryFaults.h"
#include "LogRecords.h"
#include "LoggedDevice.h"
#include "QuorlServer.h"

#include <gtest/gtest.h>

namespace orvo::test
{

/// The client between the log and the service, both real.
class QuorlFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        // As long as the test program, for the log facade connects once.
        static LoggedDevice device;
        m_log.clear();
    }
    void TearDown() override { libraryFaults() = LibraryFaults(); }

    const LogRecords m_log;
    QuorlServer m_server;
};

} // namespace orvo::test
