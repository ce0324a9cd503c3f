#pragma once

#include "output/Output.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QEventLoop;

namespace orvo::ctl
{

/// What monitor waits for.
struct MonitorOptions
{
    std::string until;   ///< "NAME=up" or "NAME=down"; empty: nothing
    std::string timeout; ///< a duration; empty: for ever
};

/// Shows what becomes of the services as the supervisor signals it, one line per change.
///
/// Threads: the one of the application object, whose event loop run() runs.
class Monitor : public QObject
{
    Q_OBJECT

public:
    explicit Monitor(const Output& output);

    /// Answers the exit status: kOk when what was waited for came, kNotUp when the time was up.
    int run(const MonitorOptions& options);

private Q_SLOTS:
    void availabilityChanged(const QVariantMap& services);
    void ownerChanged(const QString& name, const QString& before, const QString& now);

private:
    /// The status to end with at once when that is nothing to wait for.
    int setUntil(const std::string& until);
    void tell(const std::string& service, const std::string& state);
    void take(const std::string& busName, bool isUp);
    int begin();
    void endBegin();
    int wait(const std::string& timeout);

    const Output& m_output;
    std::map<std::string, bool> m_up;
    std::string m_untilName;
    bool m_untilUp{true};
    bool m_isReached{false};
    QEventLoop* m_loop{nullptr};
    bool m_isBegun{false};
    std::vector<std::function<void()>> m_meanwhile; ///< came while the list was asked for
};

} // namespace orvo::ctl
