#pragma once

#include <unistd.h>

namespace orvo
{

/// Owns a file descriptor and closes it; -1 stands for a file that could not be opened.
class FileDescriptor
{
public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor()
    {
        if (isOpen())
        {
            ::close(m_descriptor);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] bool isOpen() const { return m_descriptor != -1; }
    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace orvo
