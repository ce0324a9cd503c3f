#include "LibraryFaults.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <dlfcn.h>
#include <sys/socket.h>

namespace orvo::test
{

LibraryFaults& libraryFaults()
{
    static LibraryFaults faults;
    return faults;
}

namespace
{

bool isInterrupted()
{
    LibraryFaults& faults = libraryFaults();
    if (faults.bytesPerCall == 0 && !faults.interruptions)
    {
        return false;
    }
    ++faults.calls;
    if (faults.interruptions && faults.calls % 2 == 1)
    {
        errno = EINTR;
        return true;
    }
    return false;
}

std::size_t limited(std::size_t size)
{
    const std::size_t limit = libraryFaults().bytesPerCall;
    return limit == 0 ? size : std::min(size, limit);
}

} // namespace

} // namespace orvo::test

extern "C" int connect(int socket, const sockaddr* address, socklen_t length)
{
    using Connect = int (*)(int, const sockaddr*, socklen_t);
    static auto original = reinterpret_cast<Connect>(dlsym(RTLD_NEXT, "connect"));
    const int result = original(socket, address, length);
    const auto& afterConnect = orvo::test::libraryFaults().afterConnect;
    if (result == 0 && afterConnect)
    {
        afterConnect();
    }
    return result;
}

extern "C" ssize_t send(int socket, const void* data, size_t size, int flags)
{
    return orvo::test::isInterrupted()
               ? -1
               : sendto(socket, data, orvo::test::limited(size), flags, nullptr, 0);
}

extern "C" ssize_t recv(int socket, void* data, size_t size, int flags)
{
    return orvo::test::isInterrupted()
               ? -1
               : recvfrom(socket, data, orvo::test::limited(size), flags, nullptr, nullptr);
}

extern "C" char* strndup(const char* text, size_t size) noexcept
{
    using Strndup = char* (*)(const char*, size_t);
    static auto original = reinterpret_cast<Strndup>(dlsym(RTLD_NEXT, "strndup"));
    if (orvo::test::libraryFaults().noMemoryForTexts)
    {
        errno = ENOMEM;
        return nullptr;
    }
    return original(text, size);
}
