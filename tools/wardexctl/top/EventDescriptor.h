#pragma once

#include "top/OwnedDescriptor.h"

namespace orvo::ctl
{

/// Something to wait for among other descriptors: readable from set() until clear().
///
/// Threads: any.
/// Errors:  the constructor throws std::system_error when the system gives no more descriptors.
class EventDescriptor
{
public:
    EventDescriptor();

    void set();
    void clear();
    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }

private:
    OwnedDescriptor m_descriptor;
};

} // namespace orvo::ctl
