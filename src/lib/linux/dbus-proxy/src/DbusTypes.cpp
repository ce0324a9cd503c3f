#include "dbus-proxy/DbusTypes.h"

#include <QDBusMetaType>

namespace orvo
{

namespace
{

template <typename T>
void registerType(const char* name)
{
    qRegisterMetaType<T>(name);
    qDBusRegisterMetaType<T>();
}

} // namespace

void registerDbusTypes()
{
    // Qt ends the program when one name stands for types of different size.
    static_assert(sizeof(ErrorStatus) == sizeof(DiagCtlEvent));

    // The alias comes before the type of that name: both names then share the meta-type of
    // ErrorStatus, which the device's programs have always done. The wire form is the same.
    qRegisterMetaType<ErrorStatus>("orvo::ErrorStatus");
    qRegisterMetaType<ErrorStatus>("orvo::DiagCtlEvent");

    registerType<DiagCtlEvent>("orvo::DiagCtlEvent");
    registerType<ErrorStatus>("orvo::ErrorStatus");
    registerType<VariantMapList>("orvo::VariantMapList");
    registerType<VariantMapMap>("orvo::VariantMapMap");
    registerType<QVector<uint>>("QVector<uint>");
}

} // namespace orvo
