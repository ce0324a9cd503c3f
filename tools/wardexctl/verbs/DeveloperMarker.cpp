#include "verbs/DeveloperMarker.h"

#include "DevicePaths.h"

#include <QFile>

namespace orvo::ctl
{

bool isDeveloperMarked()
{
    return QFile::exists(QLatin1String(kDeveloperMarker)) ||
           QFile::exists(QLatin1String(kPersistentDeveloperMarker));
}

} // namespace orvo::ctl
