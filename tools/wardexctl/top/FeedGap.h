#pragma once

#include "doctor/WatchdogFacts.h"
#include "log-reading/ReadRecord.h"
#include "model/ScriptRuns.h"
#include "output/StyledLine.h"

#include <QJsonObject>

#include <optional>
#include <vector>

namespace orvo::ctl
{

/// The time between two feeds of the watchdog, as far as it can be told without opening that.
///
/// Shape:   where the driver tells the time that is left, what it tells; else the longest script
///          run in the records, during which nobody feeds; else unknown.
/// Units:   seconds.
/// Threads: one.
class FeedGap
{
public:
    /// To be called once per period, with what the kernel tells now.
    void look(const WatchdogFacts& facts);
    /// Records of the supervisor and others, in their order.
    void add(const std::vector<ReadRecord>& records);
    /// The records begin anew.
    void forgetRecords();

    [[nodiscard]] StyledLine line(bool isDeveloper) const;
    [[nodiscard]] QJsonObject json() const;

private:
    WatchdogFacts m_facts;
    std::optional<double> m_current;
    double m_longest{0}; ///< as seen in the kernel's facts
    std::optional<ScriptRun> m_run;
    bool m_hasRecords{false};
    std::vector<ReadRecord> m_last; ///< the supervisor's last one: a run may end with the next
};

} // namespace orvo::ctl
