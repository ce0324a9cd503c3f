#pragma once

#include "log-reading/RecordTail.h"

#include <memory>
#include <string>
#include <vector>

namespace orvo::Logger
{
class RedisLogger;
}

namespace orvo
{

/// The device's log, read through the logger's own retrieval, and never written to.
///
/// Owns:    its loggers.
/// Threads: one; a call blocks while Redis answers.
/// Errors:  the constructor throws std::runtime_error when the log's server cannot be reached. One
///          that goes away later is looked for again with each call; its new list begins anew.
class DeviceLog
{
public:
    /// condition: of RecordFilter.
    explicit DeviceLog(std::string condition);
    ~DeviceLog();
    DeviceLog(const DeviceLog&) = delete;
    DeviceLog& operator=(const DeviceLog&) = delete;

    /// The records that pass the condition and were not answered before, oldest first: with the
    /// first call all that are kept.
    std::vector<std::string> news();

    /// Whether the last news() may lack records: the list was trimmed or cleared in between.
    /// Known only without a condition.
    [[nodiscard]] bool isGapped() const { return m_isGapped; }

private:
    int count();
    std::vector<std::string> newest(int first);
    std::vector<std::string> since(int count);

    std::string m_condition;
    std::unique_ptr<Logger::RedisLogger> m_deaf;
    std::unique_ptr<Logger::RedisLogger> m_log;
    RecordTail m_tail;
    int m_lastCount{0};
    std::vector<std::string> m_lastRecord;
    bool m_isGapped{false};
};

} // namespace orvo
