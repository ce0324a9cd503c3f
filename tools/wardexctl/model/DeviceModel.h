#pragma once

#include "model/DeviceFacts.h"
#include "model/SupervisorEvent.h"

namespace orvo::ctl
{

/// Follows the supervisor through its records, oldest first, and knows at each moment what they
/// tell about the device. Without I/O and without a clock of its own.
///
/// Shape:   a new process of the supervisor begins anew: its history died with its predecessor.
///          Most of the state is told at TRACE only; what no record told stays unset, and
///          what was told is forgotten once TRACE is masked, for it may have changed since.
/// Threads: one.
class DeviceModel
{
public:
    void add(const ReadRecord& record);

    [[nodiscard]] const DeviceFacts& facts() const { return m_facts; }

private:
    void begin(const ReadRecord& record);
    void apply(const SupervisorEvent& event, double time);
    void changeMask(std::uint32_t mask, double time);
    void applyService(const SupervisorEvent& event, double time);
    void enterSystem(const std::string& state, double time);
    void enterService(ServiceFacts& service, const std::string& state, double time);
    void giveGrace(const std::string& name, int milliseconds, double time);
    void notePingFailure(const std::string& name, double time);
    void restartPackage(double time);

    DeviceFacts m_facts;
    std::string m_reportedLevel; ///< told without the name; the next event has it
    bool m_isRestartNoted{false};
};

} // namespace orvo::ctl
