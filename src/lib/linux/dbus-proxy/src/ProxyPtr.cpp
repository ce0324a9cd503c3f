#include "dbus-proxy/ProxyPtr.h"

#include <QCoreApplication>
#include <QObject>

#include <vector>

namespace orvo
{

void ProxyRelease::operator()(QObject* proxy) const
{
    if (QCoreApplication::instance() != nullptr)
    {
        delete proxy;
        return;
    }
    // Never destroyed: services are, after the last of the statics that could own it.
    static auto* leftAlone = new std::vector<QObject*>;
    leftAlone->push_back(proxy);
}

} // namespace orvo
