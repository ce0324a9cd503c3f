#pragma once

#include <string>
#include <vector>

namespace orvo::test
{

/// One record of the device's log, taken apart.
struct LogRecordFields
{
    std::string raw;     ///< all bytes, as in the list
    bool isWhole{false}; ///< false when it was cut and lacks its end
    std::string time;
    std::string pid;
    std::string level;
    std::string source;
    std::string message; ///< unescaped; of a cut record what is left of it
};

/// Takes a record apart; nothing but raw is set when it has not the form of a record.
LogRecordFields parseLogRecord(const std::string& raw);

/// The device's log as its readers see it: the list in Redis.
///
/// Threads: any; each question asks Redis anew.
class LogRecords
{
public:
    explicit LogRecords(std::string socketPath = "/tmp/redis-cache.sock",
                        std::string listKey = "LOG:ENTRIES");

    /// Oldest first.
    [[nodiscard]] std::vector<LogRecordFields> all() const;
    [[nodiscard]] std::vector<std::string> raw() const;
    /// Messages of one level ("WARN"), or of all levels when it is empty; oldest first.
    [[nodiscard]] std::vector<std::string> messages(const std::string& level = "") const;
    /// How many records have this level and exactly this message.
    [[nodiscard]] int count(const std::string& level, const std::string& message) const;
    /// True when there is exactly one such record; for EXPECT_TRUE. What else is there goes to
    /// standard error then.
    [[nodiscard]] bool expectOnce(const std::string& level, const std::string& message) const;
    /// Waits until there is such a record; false when there is none after boundMs.
    [[nodiscard]] bool waitFor(const std::string& level, const std::string& message,
                               int boundMs = 10000) const;
    void clear() const;

private:
    std::string m_socketPath;
    std::string m_listKey;
};

} // namespace orvo::test
