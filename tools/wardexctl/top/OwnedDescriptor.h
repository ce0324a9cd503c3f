#pragma once

#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace orvo::ctl
{

/// Closes a file descriptor at its end.
///
/// Errors: the constructor throws std::system_error for a descriptor that the system did not give.
class OwnedDescriptor
{
public:
    OwnedDescriptor(int descriptor, const char* what) : m_descriptor(descriptor)
    {
        if (descriptor < 0)
        {
            throw std::system_error(errno, std::system_category(), what);
        }
    }
    ~OwnedDescriptor() { (void)close(m_descriptor); }
    OwnedDescriptor(const OwnedDescriptor&) = delete;
    OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;

    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace orvo::ctl
