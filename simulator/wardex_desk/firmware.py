"""Fills an instance folder with what a device has when it leaves the factory."""

import os
import shutil
from dataclasses import dataclass, field
from pathlib import Path
from typing import Mapping, Optional

from wardex_desk import families
from wardex_desk.families import Family
from wardex_desk.i2c_tree import I2cTree
from wardex_desk.instance import Instance
from wardex_desk.places import (
    DESK,
    DESK_STATE,
    DEVELOPER_MARKERS,
    DEVICE_FILES,
    KNOBS,
    LOGS,
    ORDERS,
    PANIC_SETTING,
    PROGRAMS,
    REPOSITORY,
    SERVICE_SCRIPTS,
    SERVICES,
    WATCHDOG_NODE,
)

BUS_POLICY = REPOSITORY / "packaging/dbus/com.orvo.wardex.conf"
FOLDERS = (
    "/dev",
    "/tmp",
    "/var",
    "/root",
    "/etc/sysdata",
    "/etc/alternatives",
    "/opt/orvo/var/redis",
)
ALL_LEVELS = '{"source":"all","mask":255}'

# Parts of the device that can be left out.
PARTS = ("bus", "redis-cache", "redis-store", "services", "supervisor", "watchdog", "observers")


@dataclass(frozen=True)
class Plan:
    """What is to stand on the desk.

    watchdog_ms: the hardware's countdown in milliseconds.
    stored_log_configuration: fields of LOG:PERM:CFG that the store holds when it is still new.
    without: parts (PARTS) that this device lacks.
    arguments, environment: for the supervisor.
    own_bin: a /bin whose programs can be taken away and replaced.
    """

    family: str = families.DEFAULT
    developer: bool = False
    watchdog_ms: int = 10_000
    stored_log_configuration: Mapping[str, str] = field(default_factory=lambda: {"all": ALL_LEVELS})
    without: frozenset[str] = frozenset()
    arguments: tuple[str, ...] = ()
    environment: Mapping[str, str] = field(default_factory=dict)
    own_bin: bool = False

    def __post_init__(self) -> None:
        unknown = sorted(self.without - set(PARTS))
        if unknown:
            raise ValueError(f"a device has no part '{unknown[0]}': use {', '.join(PARTS)}")


def install(instance: Instance, plan: Plan, bus_policy: Optional[Path] = BUS_POLICY) -> Family:
    """Writes the device's files into a claimed, empty instance folder; answers its family."""
    family = families.load(plan.family)
    shutil.copytree(DEVICE_FILES / "root", instance.folder, dirs_exist_ok=True, symlinks=True)
    for folder in (*FOLDERS, LOGS, ORDERS, KNOBS, DESK_STATE, PROGRAMS):
        instance.path(folder).mkdir(parents=True, exist_ok=True)
    instance.path("/tmp").chmod(0o1777)
    instance.path("/var/run").symlink_to("/run")
    instance.write(PANIC_SETTING, "0\n")
    if "watchdog" not in plan.without:
        instance.write(WATCHDOG_NODE, "")
    if plan.developer:
        instance.write(DEVELOPER_MARKERS[0], "")
    if bus_policy is not None:
        shutil.copy(bus_policy, instance.path("/opt/orvo/etc/dbus-1/system.d"))
    if plan.own_bin:
        _install_bin(instance)
    _install_programs(instance, family)
    _write_eeproms(instance, family)
    return family


def _install_programs(instance: Instance, family: Family) -> None:
    instance.path(f"{PROGRAMS}/wardex").symlink_to(f"{DESK}/wardex")
    instance.path(f"{PROGRAMS}/wardexctl").symlink_to(f"{DESK}/bin/wardexctl")
    for service in SERVICES.values():
        if service.name in family.services:
            instance.path(f"{PROGRAMS}/{service.name}").symlink_to(f"{DESK}/bin/{service.peer}")
        else:
            instance.remove(f"{SERVICE_SCRIPTS}/{service.script}")


def _install_bin(instance: Instance) -> None:
    instance.path("/bin").mkdir()
    for program in os.listdir("/usr/bin"):
        instance.path(f"/bin/{program}").symlink_to(f"/usr/bin/{program}")


def _write_eeproms(instance: Instance, family: Family) -> None:
    tree = I2cTree(instance.path("/sys"))
    tree.create()
    for record in family.records:
        tree.put(record.device, record.image())
