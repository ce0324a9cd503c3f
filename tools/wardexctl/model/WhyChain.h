#pragma once

#include "log-reading/ReadRecord.h"

#include <string>
#include <vector>

namespace orvo::ctl
{

/// One step on the way to a restart or reboot.
struct WhyStep
{
    double time{0}; ///< seconds of the monotonic clock
    std::string what;
    std::string rule; ///< the rule of supervision that fired; empty for a mere observation
    int times{1};     ///< so often until the device's next step; of a reboot only
};

/// The chain of events behind the last restart of a service, package restart or reboot.
struct WhyChain
{
    std::string title; ///< what happened; empty: nothing of that kind is in the log
    std::string pid;   ///< the supervisor that did it
    std::vector<WhyStep> steps;
    bool isTraceSeen{false}; ///< without TRACE the steps in between are missing
    bool isWhole{true};      ///< false: the log no longer has the beginning
};

/// busName: only what concerns this service; empty for the device. Records oldest first.
WhyChain whyChain(const std::vector<ReadRecord>& records, const std::string& busName);

} // namespace orvo::ctl
