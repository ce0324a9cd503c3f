#pragma once

#include "log-reading/ReadRecord.h"
#include "log-reading/RecordFilter.h"
#include "output/Output.h"

#include <optional>
#include <string>
#include <vector>

namespace orvo::ctl
{

/// Reads the stored records once.
///
/// Threads: one; blocks while Redis answers, and gives up when it does not within two seconds.
/// Errors:  nothing when the server does not answer; problem() says why.
class StoredLog
{
public:
    /// Oldest first, as Redis has them.
    std::optional<std::vector<std::string>> read(const RecordFilter& filter = {});

    [[nodiscard]] const Problem& problem() const { return m_problem; }

private:
    Problem m_problem;
};

/// Takes each of them apart.
std::vector<ReadRecord> readRecords(const std::vector<std::string>& raws);

/// What it means that the server on a socket does not answer.
Problem redisProblem(const std::string& socket, const std::string& cause);

} // namespace orvo::ctl
