#pragma once

#include "log-reading/ReadRecord.h"
#include "log-reading/RecordFilter.h"

#include <QRegularExpression>

#include <optional>
#include <string>

namespace orvo::ctl
{

/// Which records a person wants to see, as said on the command line.
struct LogWords
{
    std::string level;
    std::string source;
    std::string since; ///< "10m": so long ago; "05:30", "05:30:10": the last time it was so late
    std::string regex;
    int newest{-1}; ///< at most so many of the stored ones; -1: all
};

/// The same, understood. Level, source and time can be judged by the server; the regular
/// expression only here, for nothing that somebody typed may become code there.
class LogQuery
{
public:
    /// Empty and complaint set when a word is not understood.
    static std::optional<LogQuery> of(const LogWords& words, double monotonicNow,
                                      std::int64_t wallNowMs, std::string& complaint);

    [[nodiscard]] const RecordFilter& serverFilter() const { return m_filter; }
    /// Whether a record passes all of it.
    [[nodiscard]] bool passes(const ReadRecord& record) const;

private:
    RecordFilter m_filter;
    std::optional<QRegularExpression> m_regex;
};

} // namespace orvo::ctl
