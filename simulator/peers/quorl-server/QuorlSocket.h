#pragma once

#include "common/Descriptor.h"

#include <string>

#include <sys/types.h>

namespace orvo::simulator
{

/// The listening end of a Unix stream socket.
///
/// Owns:    the socket and, while listening or refusing, its name in the file system, which is
///          removed at the end unless another server has taken it over meanwhile.
/// Units:   the path holds at most 107 bytes.
/// Threads: one at a time.
class QuorlSocket
{
public:
    explicit QuorlSocket(const std::string& path) : m_path(path) {}
    ~QuorlSocket();
    QuorlSocket(const QuorlSocket&) = delete;
    QuorlSocket& operator=(const QuorlSocket&) = delete;

    /// Readable when a client waits; -1 while refusing.
    [[nodiscard]] int descriptor() const { return m_socket.get(); }

    /// Takes the name over from whoever had it. False after a complaint on standard error.
    bool listen();

    /// From now on clients get ECONNREFUSED, as from a server that has died.
    void refuse() { m_socket.reset(); }

    /// The client that waits; a closed descriptor when it has left.
    Descriptor accept() const;

private:
    [[nodiscard]] ino_t inode() const;

    std::string m_path;
    Descriptor m_socket;
    ino_t m_inode{0};
};

} // namespace orvo::simulator
