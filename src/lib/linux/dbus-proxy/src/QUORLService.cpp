#include "dbus-proxy/QUORLService.h"

#include "dbus-proxy/PingLimits.h"

#include "quorl/Quorl.h"

#include <cstdlib>
#include <memory>

namespace orvo
{

namespace
{

constexpr char kPingItem[] = "Bind-Address";

struct FreeText
{
    void operator()(char* text) const { std::free(text); }
};

} // namespace

QUORLService::QUORLService(const QString& shortName, const QString& initScript)
    : Service(shortName, kQuorlPingIntervalMs, initScript)
{
}

bool QUORLService::isAlive(QString& runLevel)
{
    char* value = nullptr;
    const int count = quorl_getConfig(kPingItem, &value);
    // A negative count may come with a text, too.
    const std::unique_ptr<char, FreeText> owned(value);
    if (count < 1)
    {
        return false;
    }
    runLevel = QStringLiteral("up");
    return true;
}

} // namespace orvo
