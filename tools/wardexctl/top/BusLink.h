#pragma once

#include "bus/SupervisorClient.h"

#include <QDBusConnection>
#include <QObject>

#include <cstdint>
#include <functional>
#include <map>

namespace orvo::ctl
{

/// Calls the supervisor and never waits for it: what was answered is handed over later.
///
/// Shape:   each call has exactly one outcome. A bus that went away fails all open calls, and is
///          looked for again with each look().
/// Owns:    a connection of its own to the system bus.
/// Threads: the one of the application object.
class BusLink : public QObject
{
    Q_OBJECT

public:
    using Taker = std::function<void(const BusAnswer&)>;

    BusLink();
    ~BusLink() override;

    void call(const char* method, const QVariantList& arguments, int timeoutMs, Taker taker);

    /// To be called once per period: the bus library does not tell that the bus has gone.
    void look();

Q_SIGNALS:
    /// The supervisor came or went, or told that a service did.
    void moved();

private:
    void connect();
    void failOpenCalls();
    void hand(std::uint64_t number, BusAnswer answer);

    struct OpenCall
    {
        Taker taker;
        std::int64_t beginMs{0};
    };

    QDBusConnection m_bus;
    QString m_name;
    int m_attempts{0};
    std::uint64_t m_calls{0};
    std::map<std::uint64_t, OpenCall> m_open;
};

} // namespace orvo::ctl
