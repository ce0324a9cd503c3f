"""Every fault that a device plays, in the order of the report."""

from __future__ import annotations

from wardex_desk import (
    faults_bus,
    faults_hardware,
    faults_process,
    faults_redis,
    faults_scripts,
    faults_services,
)
from wardex_desk.scenarios_types import Scenario

SCENARIOS: tuple[Scenario, ...] = tuple(
    fault.scenario()
    for room in (
        faults_redis,
        faults_bus,
        faults_services,
        faults_scripts,
        faults_hardware,
        faults_process,
    )
    for fault in room.FAULTS
)

# Too long for every run of the tests.
SOAKS: tuple[Scenario, ...] = tuple(fault.scenario() for fault in faults_process.SOAKS)
