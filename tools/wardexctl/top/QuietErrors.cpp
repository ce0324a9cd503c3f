#include "top/QuietErrors.h"

#include <fcntl.h>
#include <paths.h>

namespace orvo::ctl
{

QuietErrors::QuietErrors()
{
    if (isatty(STDERR_FILENO) == 0)
    {
        return;
    }
    const OwnedDescriptor nowhere(open(_PATH_DEVNULL, O_WRONLY | O_CLOEXEC), _PATH_DEVNULL);
    m_former.emplace(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0), "standard error");
    (void)dup2(nowhere.get(), STDERR_FILENO);
}

QuietErrors::~QuietErrors()
{
    if (m_former)
    {
        (void)dup2(m_former->get(), STDERR_FILENO);
    }
}

} // namespace orvo::ctl
