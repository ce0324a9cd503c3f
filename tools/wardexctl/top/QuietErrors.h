#pragma once

#include "top/OwnedDescriptor.h"

#include <optional>

namespace orvo::ctl
{

/// Keeps what libraries complain about on standard error off the screen, as long as it exists.
/// Standard error that goes elsewhere is left alone.
///
/// Errors: the constructor throws std::system_error when the system gives no more descriptors.
class QuietErrors
{
public:
    QuietErrors();
    ~QuietErrors();
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    std::optional<OwnedDescriptor> m_former;
};

} // namespace orvo::ctl
