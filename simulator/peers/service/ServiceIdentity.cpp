#include "service/ServiceIdentity.h"

namespace orvo::simulator
{

ServiceIdentity ServiceIdentity::ofExecutable(const std::string& path)
{
    ServiceIdentity identity;
    identity.shortName = path.substr(path.find_last_of('/') + 1);
    const QString busSuffix = identity.shortName == "corvane"
                                  ? QStringLiteral("vistor")
                                  : QString::fromStdString(identity.shortName);
    identity.busName = QStringLiteral("com.orvo.") + busSuffix;
    return identity;
}

} // namespace orvo::simulator
