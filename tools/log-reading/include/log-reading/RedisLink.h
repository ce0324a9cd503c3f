#pragma once

#include "log-reading/RedisHandles.h"

#include <optional>
#include <string>
#include <vector>

namespace orvo
{

/// A connection to one of the device's Redis servers that never waits long, for what the logger
/// does not offer: is the server there, publish, stored configurations.
///
/// Units:   time-outs in ms.
/// Owns:    the connection.
/// Threads: one; a call blocks for the time-out at most.
/// Errors:  nothing is thrown. A server that is absent, or too slow, is told by complaint(), and
///          every later command fails.
class RedisLink
{
public:
    static constexpr int kTimeoutMs = 2000;

    explicit RedisLink(const std::string& socketPath, int timeoutMs = kTimeoutMs);

    /// Connected and answering.
    [[nodiscard]] bool answers();
    /// Why not, in the system's words; empty while all is well.
    [[nodiscard]] std::string complaint() const;

    /// The text or number that a command answers, as a text; nothing for anything else. Words go
    /// over as they are, whatever bytes they hold.
    std::optional<std::string> command(const std::vector<std::string>& words);

private:
    RedisContextPtr m_context;
    std::string m_refusal;
};

} // namespace orvo
