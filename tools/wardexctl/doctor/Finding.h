#pragma once

#include <string>
#include <vector>

namespace orvo::ctl
{

/// One thing that was looked at.
struct Finding
{
    enum class Grade
    {
        Fine,
        Note,   ///< worth knowing
        Trouble ///< something does not work, or will not
    };

    Grade grade{Grade::Fine};
    std::string object;
    std::string text;
    std::string remedy; ///< what to do; empty when nothing is to be done
};

using Findings = std::vector<Finding>;

} // namespace orvo::ctl
