#include "dbus-proxy/DiagCtlEvent.h"

namespace orvo
{

QDBusArgument& operator<<(QDBusArgument& argument, const DiagCtlEvent& event)
{
    argument.beginStructure();
    argument << event.code << event.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DiagCtlEvent& event)
{
    argument.beginStructure();
    argument >> event.code >> event.text;
    argument.endStructure();
    return argument;
}

} // namespace orvo
