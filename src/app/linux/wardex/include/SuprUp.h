#pragma once

#include "SuprState.h"

namespace orvo
{

/// The service works and its users may rely on it. Entering is reported to the system machine.
///
/// | Event | Condition                                       | Action           | Next         |
/// |-------|-------------------------------------------------|------------------|--------------|
/// | entry |                                                 | serviceIsUp      | same         |
/// | down  |                                                 |                  | SuprDown     |
/// | up    |                                                 | log              | same         |
/// | ping  | failed, name not registered any more            | down()           | (down)       |
/// | ping  | answered "down"                                 | down()           | (down)       |
/// | ping  | answered "starting"                             |                  | SuprStarting |
/// | ping  | answered any other level                        | count 0,         | same         |
/// |       |                                                 | register if not  |              |
/// | ping  | failed, registered, 3rd in a row at most        | count            | same         |
/// | ping  | failed, registered, 4th in a row                | count, down()    | (down)       |
class SuprUp : public SuprState
{
    Q_OBJECT

public:
    SuprUp(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
           const QString& serviceName);

    [[nodiscard]] QString name() const override;
    void entry() override;
    void down() override;

public Q_SLOTS:
    void ping() override;

private:
    void judgeFailure();
    void judgeAnswer();
};

} // namespace orvo
