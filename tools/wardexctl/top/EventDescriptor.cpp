#include "top/EventDescriptor.h"

#include <sys/eventfd.h>

namespace orvo::ctl
{

EventDescriptor::EventDescriptor() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")
{
}

void EventDescriptor::set()
{
    (void)eventfd_write(m_descriptor.get(), 1);
}

void EventDescriptor::clear()
{
    eventfd_t count = 0;
    (void)eventfd_read(m_descriptor.get(), &count);
}

} // namespace orvo::ctl
