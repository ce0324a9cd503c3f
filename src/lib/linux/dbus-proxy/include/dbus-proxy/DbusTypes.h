#pragma once

#include "dbus-proxy/DiagCtlEvent.h"
#include "dbus-proxy/ErrorStatus.h"

#include <QList>
#include <QMap>
#include <QMetaType>
#include <QVariantMap>
#include <QVector>

namespace orvo
{

/// On the bus aa{sv}.
using VariantMapList = QList<QVariantMap>;

/// On the bus a{sa{sv}}.
using VariantMapMap = QMap<QString, QVariantMap>;

/// Makes the device's bus types known to Qt: ErrorStatus, DiagCtlEvent, VariantMapList,
/// VariantMapMap and QVector<uint> (on the bus au), each under exactly that name.
///
/// The two names "orvo::ErrorStatus" and "orvo::DiagCtlEvent" share one meta-type, the one of
/// ErrorStatus, so a DiagCtlEvent made through the meta-type system holds code 0.
///
/// Threads: once at start-up, before an object is exported or a proxy is used, and before anything
///          else asks Qt for the meta-type of DiagCtlEvent. Calling it again changes nothing.
void registerDbusTypes();

} // namespace orvo

Q_DECLARE_METATYPE(orvo::VariantMapList)
Q_DECLARE_METATYPE(orvo::VariantMapMap)
