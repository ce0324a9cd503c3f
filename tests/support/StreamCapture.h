#pragma once

#include <string>

namespace orvo::test
{

/// Takes what this process writes to a standard stream, from its construction on.
///
/// Owns:    the redirection; the destructor puts the stream back.
/// Threads: text() may be asked while others write; it sees whole writes.
class StreamCapture
{
public:
    /// descriptor: STDOUT_FILENO or STDERR_FILENO.
    explicit StreamCapture(int descriptor);
    ~StreamCapture();
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;

    /// Everything since the start.
    [[nodiscard]] std::string text() const;

private:
    int m_descriptor;
    int m_former;
    int m_file;
};

} // namespace orvo::test
