#pragma once

#include "common/Descriptor.h"

#include <string>

namespace orvo::simulator
{

/// A text file that peers append whole lines to, readable while it grows.
///
/// Shape:   each line is one write(2) to a file opened for appending, so that several processes
///          may share a journal and no reader ever sees half a line of a local file system.
/// Threads: any number, also of several processes.
/// Errors:  a file that cannot be opened or written is complained about on standard error (a
///          failed write only once); the peer goes on without its journal.
class Journal
{
public:
    /// Creates the file when it is missing; its folder must exist.
    explicit Journal(const std::string& path);

    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }

    /// Appends "<monotonic s.6> TEXT".
    void note(const std::string& text);

    /// Appends the line as it is; it must not hold a line feed.
    void append(const std::string& line);

private:
    std::string m_path;
    Descriptor m_file;
    bool m_complained{false};
};

} // namespace orvo::simulator
