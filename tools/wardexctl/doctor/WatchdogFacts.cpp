#include "doctor/WatchdogFacts.h"

#include "doctor/DoctorPaths.h"

#include <QFile>

namespace orvo::ctl
{

namespace
{

std::optional<double> numberIn(const char* path)
{
    QFile file(QLatin1String{path});
    bool isNumber = false;
    const double number =
        file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toDouble(&isNumber) : 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

} // namespace

WatchdogFacts WatchdogFacts::read()
{
    return {numberIn(kWatchdogTimeoutFile), numberIn(kWatchdogTimeLeftFile)};
}

} // namespace orvo::ctl
