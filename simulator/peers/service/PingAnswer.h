#pragma once

#include "common/Order.h"

#include <QString>
#include <QVariantList>

namespace orvo::simulator
{

/// What a simulated service does at one `doPing`, worked out from one order.
///
/// Shape: a healthy reply is (is)s, the status {0, ""} and the run level. The orders:
///        `up`, `starting`, `down`   that run level, at once
///        `delay MS [LEVEL]`         the run level (`up`) after MS milliseconds
///        `error`                    a D-Bus error instead of a reply
///        `hang`                     no reply, ever
///        `crash`                    the process ends by SIGABRT, no reply
///        `garbage [FORM]`           a reply of the wrong form; see below, `none` when not said
///        Forms of garbage: `none` no value; `one` only the status; `three` the status, "up" and a
///        text more; `int` a number for the run level; `variant` the run level "up" wrapped in a
///        variant; `swap` run level before status; `struct` the run level "up" in a structure;
///        `huge` a run level of 1 MiB, `giant` one of 10 MiB.
/// Errors: an order that is none of these is complained about on standard error and answered like
///         `error`, so that a misspelt order never looks like a healthy service.
struct PingAnswer
{
    enum class Kind
    {
        Reply,
        Error,
        Silence,
        Crash
    };

    Kind kind{Kind::Reply};
    int delayMs{0};
    QVariantList values;
    /// Of Kind::Error only.
    QString errorText;

    static PingAnswer to(const Order& order);
};

} // namespace orvo::simulator
