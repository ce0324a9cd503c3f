#pragma once

#include "SuprStateSystem.h"

namespace orvo
{

/// The camera works: every service that must be up is up.
///
/// | Event         | Condition        | Action                        | Next               |
/// |---------------|------------------|-------------------------------|--------------------|
/// | serviceIsUp   | all were up      | WARN suspicious, add, publish | same               |
/// | serviceIsUp   | otherwise        | add, publish                  | same               |
/// | serviceIsDown |                  | remove, publish               | SuprUnstableSystem |
/// | ping          |                  | feed the watchdog             | same               |
///
/// On the device: a service that went back to starting without being down and came up again is the
/// usual reason of the suspicious warning.
class SuprStableSystem : public SuprStateSystem
{
    Q_OBJECT

public:
    SuprStableSystem(SuprSMSystem* machine, const SupervisionContext* context);

    [[nodiscard]] QString name() const override;
    void serviceIsUp(const QString& service) override;
    void serviceIsDown(const QString& service) override;
};

} // namespace orvo
