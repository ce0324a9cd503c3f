#pragma once

#include "log-reading/ReadRecord.h"

#include <memory>
#include <vector>

namespace orvo::ctl
{

/// What came from the log since it was asked last.
struct LogNews
{
    bool answers{true};
    bool isAnew{false}; ///< the records are all that are stored, and some of them may be known
    std::vector<ReadRecord> records;
};

/// Follows the log's Redis server in a thread of its own, so that a server that hangs, goes away
/// and comes back holds nobody up.
///
/// Owns:    the thread; one that waits for a hanging server at the end is left behind.
/// Threads: take() and descriptor() any one thread.
class LogFeed
{
public:
    LogFeed();
    ~LogFeed();
    LogFeed(const LogFeed&) = delete;
    LogFeed& operator=(const LogFeed&) = delete;

    /// Readable when there is something to take.
    [[nodiscard]] int descriptor() const;
    LogNews take();

private:
    class Follower;

    std::shared_ptr<Follower> m_follower;
};

} // namespace orvo::ctl
