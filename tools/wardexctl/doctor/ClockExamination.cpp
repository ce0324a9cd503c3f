#include "doctor/Examinations.h"
#include "doctor/WallClock.h"
#include "model/Duration.h"

#include <cmath>

namespace orvo::ctl
{

void examineClock(Findings& findings)
{
    const auto measured = wallClockStep();
    if (!measured)
    {
        findings.push_back(
            {Finding::Grade::Note, "wall clock", "cannot be judged without Redis", ""});
        return;
    }
    const double step = *measured;
    if (std::abs(step) < kWallClockSlack)
    {
        findings.push_back({Finding::Grade::Fine, "wall clock", "runs evenly", ""});
        return;
    }
    findings.push_back({Finding::Grade::Note, "wall clock",
                        "was set " + std::string(step > 0 ? "forward" : "back") + " by " +
                            durationText(std::abs(step)) + " since the log's server started",
                        step > 0 ? "Package restarts before that may no longer count; times of "
                                   "older records are shown as of the new clock."
                                 : "Package restarts before that count for longer; times of older "
                                   "records are shown as of the new clock."});
}

} // namespace orvo::ctl
