#pragma once

#include "ServiceAction.h"
#include "ServiceInfo.h"

#include "LoggedDevice.h"
#include "ScriptJournal.h"
#include "StubService.h"
#include "SyslogCapture.h"

#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

namespace orvo::test
{

/// The supervisor's actions with real scripts, processes, log and syslog around them.
class ActingSupervisor : public testing::Test
{
protected:
    int m_argc{0};
    QCoreApplication m_application{m_argc, nullptr};
    LoggedDevice m_device;
    ScriptJournal m_journal;
    SyslogCapture m_syslog;
    Logger::RedisLogger m_logger{"wardex", Logger::kLogSocket, Logger::kLogList, true};
    ServiceInfo m_info{&m_logger, false};
    ServiceAction m_action{&m_info, &m_logger};
};

} // namespace orvo::test
