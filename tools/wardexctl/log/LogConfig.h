#pragma once

#include "log-reading/ReadRecord.h"
#include "output/Output.h"

#include <QJsonObject>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// Whose records a mask lets through, and how that is known.
struct SourceMask
{
    std::string source;
    std::uint32_t mask{0};
    std::string origin; ///< "announced", "stored" or "default"
};

/// The present masks, as far as anybody outside the programs can know: what a process announced
/// last, else what was stored when it started, else the default.
///
/// Threads: one; blocks for the time-outs of RedisLink at most.
class LogConfig
{
public:
    explicit LogConfig(const std::vector<ReadRecord>& records);

    [[nodiscard]] SourceMask maskOf(const std::string& source) const;
    /// Of all programs that are in the log, and the supervisor.
    [[nodiscard]] std::vector<SourceMask> all() const;

    /// The stored configuration of a source; empty when there is none.
    [[nodiscard]] static QJsonObject stored(const std::string& source);

    /// Publishes a mask; how many listened, nothing when the server did not answer.
    static std::optional<int> publish(const std::string& source, std::uint32_t mask);

    /// Stores a mask, and keeps what else is stored for the source. False when that failed.
    static bool save(const std::string& source, std::uint32_t mask);

private:
    const std::vector<ReadRecord>& m_records;
};

} // namespace orvo::ctl
