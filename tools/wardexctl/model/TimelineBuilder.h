#pragma once

#include "model/DeviceModel.h"
#include "model/Timeline.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// Follows the device through its supervisor's records and keeps what it was like at each time.
///
/// Shape:   add() all records, oldest first and of one life of the device, then finish() once.
/// Threads: one.
class TimelineBuilder
{
public:
    explicit TimelineBuilder(const TimelineWindow& window);

    void add(const ReadRecord& record);
    Timeline finish();

private:
    void replaceSupervisor();
    void endScript(double time);
    void noteBus(const SupervisorEvent& event, double time);
    void noteAction(const SupervisorEvent& event, double time, std::size_t restartsBefore);
    void push(TimelineAction::Kind kind, double time, const std::string& name, bool isNoted,
              bool runsScript);
    void sampleAll(double time);
    void sample(TimelineLane& lane, Health health, const std::string& why, double time);
    void forget(TimelineLane& lane, const std::string& why);
    TimelineLane& laneOf(const std::string& name);
    [[nodiscard]] bool isMasked() const;
    [[nodiscard]] bool isDeveloper() const;
    [[nodiscard]] Health deviceHealth() const;
    void cut(TimelineLane& lane, double begin) const;

    TimelineWindow m_window;
    DeviceModel m_model;
    Timeline m_timeline;
    std::optional<std::size_t> m_script; ///< the action whose script runs
    std::optional<double> m_scriptEnd;   ///< of the last one
    std::string m_scriptName;            ///< of whom; empty: of the package
    double m_first{0};
    double m_last{0};
    std::optional<double> m_lastUnfed;
    bool m_isBegun{false};
};

} // namespace orvo::ctl
