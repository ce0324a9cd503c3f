#include "dbus-proxy/WardexAdapterInterface.h"

namespace orvo
{

WardexAdapterInterface::WardexAdapterInterface(QObject* parent) : QObject(parent) {}

WardexAdapterInterface::~WardexAdapterInterface() = default;

} // namespace orvo
