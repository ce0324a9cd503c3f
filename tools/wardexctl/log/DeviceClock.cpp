#include "log/DeviceClock.h"

#include "model/Periods.h"

#include <QDateTime>

#include <cmath>
#include <ctime>

namespace orvo::ctl
{

namespace
{
constexpr double kNanoseconds = 1e9;
} // namespace

DeviceClock DeviceClock::now()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return {static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / kNanoseconds,
            QDateTime::currentMSecsSinceEpoch()};
}

std::int64_t DeviceClock::wallMsOf(double monotonicTime) const
{
    return wallMs - std::llround(age(monotonicTime) * kMsPerSecond);
}

std::string DeviceClock::timeText(double monotonicTime) const
{
    return QDateTime::fromMSecsSinceEpoch(wallMsOf(monotonicTime))
        .toString(QStringLiteral("HH:mm:ss.zzz"))
        .toStdString();
}

std::string DeviceClock::isoText(double monotonicTime) const
{
    return QDateTime::fromMSecsSinceEpoch(wallMsOf(monotonicTime), Qt::UTC)
        .toString(Qt::ISODateWithMs)
        .toStdString();
}

} // namespace orvo::ctl
