#pragma once

#include <unistd.h>

namespace orvo
{

/// An open file of this room, closed with its owner; -1 = not open.
class FileDescriptor
{
public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor()
    {
        if (isOpen())
        {
            (void)close(m_descriptor);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace orvo
