#pragma once

namespace orvo::ctl
{

/// Takes the words apart, carries the verb out, and answers the program's exit status. The
/// application object must exist.
int runCommandLine(int argc, char** argv);

} // namespace orvo::ctl
