"""The board's scenarios by name."""

from __future__ import annotations

from wardex_board.scenario import Scenario
from wardex_board.scenarios_identity import IDENTITY
from wardex_board.scenarios_last_resort import BOOT_LOOP, ESCALATE, HANG
from wardex_board.scenarios_quiet import DEVELOPER, REAL_TIME, SUPERVISE

SCENARIOS: dict[str, Scenario] = {
    scenario.name: scenario
    for scenario in (IDENTITY, SUPERVISE, ESCALATE, HANG, DEVELOPER, REAL_TIME, BOOT_LOOP)
}
