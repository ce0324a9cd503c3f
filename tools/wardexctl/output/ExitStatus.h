#pragma once

namespace orvo::ctl
{

/// How every verb ends. Scripts rely on the numbers; see docs/wardexctl.md.
enum ExitStatus : int
{
    kOk = 0,               ///< done, or up
    kFailed = 1,           ///< refused, or trouble found
    kNotUp = 3,            ///< the service is not up, or did not come up in time
    kUnknown = 4,          ///< no such service on this device
    kSupervisorSilent = 5, ///< the supervisor does not answer
    kLogSilent = 6,        ///< the log's Redis server does not answer
    kUsage = 64            ///< wrong words
};

} // namespace orvo::ctl
