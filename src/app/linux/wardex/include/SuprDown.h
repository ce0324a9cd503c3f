#pragma once

#include "SuprState.h"

namespace orvo
{

/// The service does not work. Entering is reported to the system machine; the service gets one more
/// chance before its init script stops and starts it, which blocks the event loop meanwhile.
///
/// | Event | Condition                                         | Action           | Next         |
/// |-------|---------------------------------------------------|------------------|--------------|
/// | entry |                                                   | serviceIsDown    | same         |
/// | up    |                                                   |                  | SuprStarting |
/// | down  |                                                   | log              | same         |
/// | ping  | system machine starting, not in developer mode    | up(), no ping    | (up)         |
/// | ping  | answered "up" or "starting"                       | up()             | (up)         |
/// | ping  | failed or another level, 1st in a row             | count            | same         |
/// | ping  | failed or another level, 2nd in a row             | count 0, WARN,   | SuprStarting |
/// |       |                                                   | stop, start      |              |
/// | ping  | the same, in developer mode                       | count 0, WARN    | same         |
/// |       |                                                   | once per service |              |
class SuprDown : public SuprState
{
    Q_OBJECT

public:
    SuprDown(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
             const QString& serviceName);

    [[nodiscard]] QString name() const override;
    void entry() override;
    void up() override;

public Q_SLOTS:
    void ping() override;

private:
    void revive();
};

} // namespace orvo
