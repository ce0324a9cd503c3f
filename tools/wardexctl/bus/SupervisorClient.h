#pragma once

#include "dbus-proxy/ErrorStatus.h"
#include "output/Output.h"

#include <QDBusMessage>
#include <QString>
#include <QVariantList>

#include <optional>
#include <string>

namespace orvo::ctl
{

/// How a call of the supervisor went.
struct BusAnswer
{
    enum class Kind
    {
        Answered, ///< status and values are the supervisor's
        NoBus,
        NoSupervisor, ///< nobody owns its name
        TimedOut,
        Refused ///< by the bus policy, or by a supervisor that speaks otherwise
    };

    Kind kind{Kind::NoBus};
    ErrorStatus status;
    QVariantList values; ///< what follows the status
    std::string detail;  ///< the bus library's words
    double seconds{0};   ///< how long it took

    [[nodiscard]] bool isAnswered() const { return kind == Kind::Answered; }
};

/// Calls the supervisor's methods on the system bus.
///
/// Units:   time-outs in ms.
/// Threads: the one of the application object; a call runs the event loop until the answer or the
///          time-out, and shows its progress from the first second on.
/// Errors:  nothing is thrown; problemOf() says in words what a failed call means.
class SupervisorClient
{
public:
    /// Long enough for a supervisor that waits for two services which do not answer their pings.
    static constexpr int kTimeoutMs = 5000;
    /// A script may take minutes; the bus allows no call without a bound.
    static constexpr int kScriptTimeoutMs = 15 * 60 * 1000;

    /// The bus refuses at once; only what the supervisor does itself takes longer.
    static constexpr int kRefusalMs = 500;

    /// what: for the progress line.
    [[nodiscard]] static BusAnswer call(const QString& method, const QVariantList& arguments = {},
                                        int timeoutMs = kTimeoutMs,
                                        const std::string& what = "waiting for the supervisor");
    /// Sends a call and waits only for its refusal; one that lasts counts as answered, without
    /// values. It goes on when its caller has ended.
    [[nodiscard]] static BusAnswer send(const QString& method, const QVariantList& arguments);

    // For callers that wait in their own way.
    [[nodiscard]] static QDBusMessage message(const QString& method, const QVariantList& arguments);
    [[nodiscard]] static BusAnswer answerOf(const QDBusMessage& reply);

    /// What a call that was not answered means, and what to do.
    [[nodiscard]] static Problem problemOf(const BusAnswer& answer);
};

} // namespace orvo::ctl
