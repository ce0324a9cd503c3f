#pragma once

#include <QDBusArgument>
#include <QMetaType>
#include <QString>

#include <cstdint>

namespace orvo
{

/// An event of the diagnostic controller, as wirl sends it with its signals.
///
/// Shape:   on the bus (is): INT32 code, STRING text, the same as an ErrorStatus.
/// Units:   the codes belong to the controller; 30000 is the one of an event nobody has set.
struct DiagCtlEvent
{
    std::int32_t code{30000};
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& argument, const DiagCtlEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, DiagCtlEvent& event);

} // namespace orvo

Q_DECLARE_METATYPE(orvo::DiagCtlEvent)
