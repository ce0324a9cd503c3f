#pragma once

#include "log-reading/RedisHandles.h"

#include <string>
#include <vector>

namespace orvo
{

/// Hears every record from the moment it is published, once subscribe() has answered true.
///
/// Owns:    its connection.
/// Threads: one; subscribe() blocks for kTimeoutMs at most, take() not at all.
/// Errors:  a server that goes away is told by isLost(); what is published until subscribe() has
///          answered true again is not heard.
class LogSubscription
{
public:
    static constexpr int kTimeoutMs = 2000;

    explicit LogSubscription(std::string socketPath);
    ~LogSubscription();
    LogSubscription(const LogSubscription&) = delete;
    LogSubscription& operator=(const LogSubscription&) = delete;

    /// True once the server has confirmed.
    bool subscribe();

    /// Readable when there is something to take; -1 while there is no connection.
    [[nodiscard]] int descriptor() const;

    /// What arrived meanwhile, in its order.
    std::vector<std::string> take();

    [[nodiscard]] bool isLost() const;
    /// Why, in the system's words.
    [[nodiscard]] std::string complaint() const;

private:
    std::string m_socketPath;
    RedisContextPtr m_context;
};

} // namespace orvo
