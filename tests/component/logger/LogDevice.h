#pragma once

#include "LogRecords.h"
#include "RedisClient.h"
#include "RedisServer.h"
#include "logger/LogDefaults.h"
#include "logger/RedisLogger.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvo::Logger
{

/// A device whose log server runs; nothing is stored about configurations.
class LogDevice : public testing::Test
{
protected:
    /// Publishes a configuration and waits until the loggers that take it have announced it.
    void configure(const std::string& text);
    /// Enables all levels in the running loggers.
    void enableAllLevels();
    /// Messages of the log that are no announcements of a configuration.
    [[nodiscard]] std::vector<std::string> messages() const;
    [[nodiscard]] std::vector<std::string> announcements() const;

    test::RedisServer m_cache{kLogSocket};
    test::RedisClient m_client{kLogSocket};
    test::LogRecords m_records;
};

/// As above, with one logger that has its defaults.
class LoggerOnDevice : public LogDevice
{
protected:
    /// Until the configuration thread has told of it, so that it does not tell amid a claim.
    void killRedis();

    RedisLogger m_logger{"wardex", kLogSocket, kLogList, false};
};

} // namespace orvo::Logger
