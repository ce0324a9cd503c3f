#include "StreamCapture.h"

#include <stdexcept>

#include <cstdio>
#include <sys/mman.h>
#include <unistd.h>

namespace orvo::test
{

StreamCapture::StreamCapture(int descriptor)
    : m_descriptor(descriptor), m_former(dup(descriptor)), m_file(memfd_create("capture", 0))
{
    std::fflush(nullptr);
    if (m_former == -1 || m_file == -1 || dup2(m_file, m_descriptor) == -1)
    {
        throw std::runtime_error("cannot redirect a standard stream");
    }
}

StreamCapture::~StreamCapture()
{
    std::fflush(nullptr);
    dup2(m_former, m_descriptor);
    close(m_former);
    close(m_file);
}

std::string StreamCapture::text() const
{
    std::fflush(nullptr);
    std::string content;
    char block[4096];
    ssize_t length = 0;
    while ((length = pread(m_file, block, sizeof block, static_cast<off_t>(content.size()))) > 0)
    {
        content.append(block, static_cast<std::size_t>(length));
    }
    return content;
}

} // namespace orvo::test
