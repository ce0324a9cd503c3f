#pragma once

#include <string>

namespace orvo::test
{

/// A Unix stream socket that others can connect to.
///
/// Owns:    the descriptor and the socket file.
/// Errors:  std::runtime_error when the path cannot be listened on.
class UnixListener
{
public:
    /// backlog: connections that may wait unaccepted; with 0 it is one, and a further one that does
    /// not want to wait is refused.
    UnixListener(std::string path, int backlog);
    ~UnixListener();
    UnixListener(const UnixListener&) = delete;
    UnixListener& operator=(const UnixListener&) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    std::string m_path;
    int m_descriptor;
};

} // namespace orvo::test
