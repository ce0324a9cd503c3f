#pragma once

#include <memory>
#include <string>
#include <vector>

struct redisContext;
struct redisReply;

namespace orvo::test
{

/// What Redis answered to a command of a test.
struct RedisAnswer
{
    /// False when the server could not be asked.
    bool isAnswered{false};
    /// A string, a status or an error message.
    std::string text;
    long long number{0};
    std::vector<RedisAnswer> elements;
};

/// A test's own connection to a Redis server.
///
/// Threads: one at a time.
class RedisClient
{
public:
    explicit RedisClient(const std::string& socketPath);
    ~RedisClient();
    RedisClient(const RedisClient&) = delete;
    RedisClient& operator=(const RedisClient&) = delete;

    RedisAnswer command(const std::vector<std::string>& words);

    /// Sends SUBSCRIBE and waits for its confirmation.
    void subscribe(const std::string& channel);
    /// The next message that was published on a subscribed channel; waits for it at most 10 s.
    std::string nextMessage();

    /// Publishes a text once somebody listens (10 s at most); how many got it.
    long long publishToListeners(const std::string& channel, const std::string& text);

private:
    struct Deleter
    {
        void operator()(redisContext* context) const;
    };
    std::unique_ptr<redisContext, Deleter> m_context;
};

} // namespace orvo::test
