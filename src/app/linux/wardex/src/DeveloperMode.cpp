#include "DeveloperMode.h"

#include "DevicePaths.h"
#include "FileDescriptor.h"

#include <fcntl.h>

namespace orvo
{

namespace
{

bool canBeRead(const char* path)
{
    // Not blocking: whatever lies there, start-up must not wait for it.
    return FileDescriptor(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)).isOpen();
}

} // namespace

bool isDeveloperDevice()
{
    return canBeRead(kDeveloperMarker) || canBeRead(kPersistentDeveloperMarker);
}

} // namespace orvo
