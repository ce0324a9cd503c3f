#pragma once

#include "SuprState.h"

namespace orvo
{

/// The service has been started and is given time to come up. Nothing is reported to the system
/// machine: whatever it believed of the service before still holds.
///
/// | Event | Condition                                       | Action         | Next     |
/// |-------|-------------------------------------------------|----------------|----------|
/// | ping  | answered "up"                                   | up()           | (up)     |
/// | ping  | answered "down"                                 | down()         | (down)   |
/// | ping  | failed or another level, 6th in a row at most   | count          | same     |
/// | ping  | failed or another level, 7th in a row           | count 0, down()| (down)   |
/// | up    |                                                 |                | SuprUp   |
/// | down  |                                                 |                | SuprDown |
class SuprStarting : public SuprState
{
    Q_OBJECT

public:
    SuprStarting(const SupervisionContext* context, SuprSM* machine, SuprSMSystem* system,
                 const QString& serviceName);

    [[nodiscard]] QString name() const override;
    void up() override;
    void down() override;

public Q_SLOTS:
    void ping() override;
};

} // namespace orvo
