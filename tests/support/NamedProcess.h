#pragma once

#include "ChildProcess.h"

#include <string>

namespace orvo::test
{

/// A process that the process list shows under a name of the test's choice. It does nothing, and
/// ends with its owner. On return from the constructor the list shows it.
///
/// Meant for programs that run in a box: the executed file is /tmp/NAME.
class NamedProcess
{
public:
    /// name: at most 15 bytes, as the list shows no more.
    explicit NamedProcess(const std::string& name);

    [[nodiscard]] ChildProcess& process() { return m_process; }

private:
    ChildProcess m_process;
};

} // namespace orvo::test
