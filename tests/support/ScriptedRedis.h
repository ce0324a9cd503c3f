#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvo::test
{

/// What a scripted server does with one command: sends bytes, and then perhaps hangs up.
struct ScriptedAnswer
{
    std::string bytes;
    bool hangsUp{false};
};

/// A Redis server that answers as a test tells it: wrong, half or not at all.
///
/// Owns:    the socket file and a thread that serves all connections.
/// Threads: the script is called in the server's thread.
class ScriptedRedis
{
public:
    using Script = std::function<ScriptedAnswer(const std::vector<std::string>& command)>;

    ScriptedRedis(const std::string& socketPath, Script script);
    ~ScriptedRedis();
    ScriptedRedis(const ScriptedRedis&) = delete;
    ScriptedRedis& operator=(const ScriptedRedis&) = delete;

    /// The commands that came so far, SUBSCRIBE among them; words joined by blanks.
    [[nodiscard]] std::vector<std::string> commands() const;

private:
    class Loop;
    std::unique_ptr<Loop> m_loop;
};

} // namespace orvo::test
