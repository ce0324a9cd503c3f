"""The hardware or what stands for it fails: watchdog, EEPROMs, markers."""

from __future__ import annotations

from collections.abc import Callable

from wardex_desk.faults_play import (
    TICK_GAP_S,
    goes_on,
    in_background,
    pinged,
    start_supervisor,
)
from wardex_desk.faults_redis import WITHOUT_SUPERVISOR
from wardex_desk.faults_types import Fault
from wardex_desk.firmware import Plan
from wardex_desk.judge_claims import Complaint
from wardex_desk.judge_texts import FAMILY, GIVES_UP, NO_FAMILY, STARTS, STARTS_AS_DEVELOPER
from wardex_desk.places import DEVELOPER_MARKERS, WATCHDOG_NODE
from wardex_desk.scenarios_stage import Stage, boots, feeds, resets, supervisor_ends, writes
from wardex_desk.scenarios_trouble import STARTED, until_stable

DEAD_DOG = ("WARN", "Bello is dead!!!")
AS_DEVELOPER = (("WARN", STARTS_AS_DEVELOPER), ("WARN", FAMILY["ZK4XX"]))
GIVEN_UP = (("WARN", STARTS), ("WARN", NO_FAMILY), ("FATAL", GIVES_UP))
WATCHDOG_MS = 2500
IMAGER = "2-0054"
SLOW_EEPROM_S = 3.0
MARKER = DEVELOPER_MARKERS[0]


def supervises_unfed(stage: Stage) -> None:
    """No watchdog: told at each tick, and supervised."""
    until_stable(stage)
    stage.await_sign("told at each tick", writes(DEAD_DOG[1]), 15.0, times=3)
    for service in ("pictor", "corvane"):
        stage.await_sign(f"{service} pinged", pinged(service), 15.0)


def play_busy(stage: Stage) -> None:
    """Another program holds the node when the supervisor starts."""
    # A program that runs cannot be opened for writing, as a watchdog in use cannot.
    node = stage.device.instance.path(WATCHDOG_NODE)
    stage.device.run("sh", "-c", f"cat /usr/bin/sleep >{WATCHDOG_NODE}")
    node.chmod(0o755)
    in_background(stage, WATCHDOG_NODE, "600")
    stage.device.wait_for(
        lambda: "sleep" not in stage.device.run("sh", "-c", f": >>{WATCHDOG_NODE}")[1]
        and stage.device.run("sh", "-c", f": >>{WATCHDOG_NODE}")[0] != 0,
        10.0,
        "the node in use",
    )
    start_supervisor(stage)
    supervises_unfed(stage)


def play_removed(stage: Stage) -> None:
    """The hardware does not hear any more; the node answers with an error."""
    until_stable(stage)
    stage.await_sign("the watchdog fed", feeds(), 8.0)
    stage.device.run("pkill", "-USR1", "-x", "watchdog-guard")
    stage.await_sign("the watchdog's reset", resets(), 15.0)
    stage.await_sign("the device booting again", boots("watchdog"), 20.0)
    until_stable(stage)
    goes_on(stage)


def gives_up(stage: Stage) -> None:
    """The supervisor ends."""
    stage.await_sign("the supervisor gone", supervisor_ends(), 15.0)


def with_eeprom(
    spoil: Callable[[Stage], None], then: Callable[[Stage], None]
) -> Callable[[Stage], None]:
    """A driver: the imager's EEPROM is spoilt before the supervisor starts."""

    def play(stage: Stage) -> None:
        spoil(stage)
        start_supervisor(stage)
        then(stage)

    return play


def damage(kind: str) -> Callable[[Stage], None]:
    """Spoils the imager's record."""
    return lambda stage: stage.device.damage_eeprom("F", kind)


def vanish(stage: Stage) -> None:
    """The device is on the bus, but its file has gone when it is opened."""
    stage.device.eeproms.put(IMAGER, None)


def make_slow(stage: Stage) -> None:
    """The imager's EEPROM takes its time, as on a bus that is disturbed."""
    image = stage.device.eeproms.content(IMAGER)
    assert image is not None
    place = stage.device.instance.path("/sys") / "bus/i2c/devices" / IMAGER / "eeprom"
    stage.device.instance.path("/tmp/image").write_bytes(image)
    place.unlink()
    status, output = stage.device.run("mkfifo", f"/sys/bus/i2c/devices/{IMAGER}/eeprom")
    stage.verdict.claim("the slow EEPROM is there", status == 0, output.splitlines())
    in_background(
        stage,
        f"sh -c '(sleep {SLOW_EEPROM_S:.0f}; cat /tmp/image) "
        f">/sys/bus/i2c/devices/{IMAGER}/eeprom'",
    )


def lives_on(stage: Stage) -> None:
    """The device is stable and stays so."""
    until_stable(stage, 20.0)
    goes_on(stage)


def lives_undisturbed(stage: Stage) -> None:
    """The device is a developer's: stable, and nobody touches the watchdog."""
    until_stable(stage, 20.0)
    for service in ("pictor", "corvane"):
        stage.await_sign(f"{service} pinged", pinged(service), 15.0)


def with_marker(make: Callable[[Stage], None]) -> Callable[[Stage], None]:
    """A driver: something lies where developer mode's marker would be."""

    def play(stage: Stage) -> None:
        make(stage)
        status, _ = stage.device.run("sh", "-c", f"exec 3<{MARKER}")
        start_supervisor(stage)
        if status == 0:
            lives_undisturbed(stage)
        else:
            lives_on(stage)

    return play


def folder(stage: Stage) -> None:
    """A folder can be opened for reading: it is a marker."""
    stage.device.instance.path(MARKER).mkdir()


def dangling(stage: Stage) -> None:
    """A link that leads nowhere is none."""
    stage.device.instance.path(MARKER).symlink_to("/nowhere/at/all")


def circular(stage: Stage) -> None:
    """Nor is one that leads to itself, which not even root can read."""
    stage.device.instance.path(MARKER).symlink_to(MARKER)


def _without_supervisor(
    name: str,
    summary: str,
    play: Callable[[Stage], None],
    begins: tuple[Complaint, ...] = STARTED,
    endings: tuple[int, ...] = (),
) -> Fault:
    plan = Plan(without=WITHOUT_SUPERVISOR)
    return Fault(name, summary, play, TICK_GAP_S, plan=plan, begins=begins, endings=endings)


FAULTS = (
    Fault(
        "watchdog-missing",
        "there is no watchdog: told at each tick, and supervised",
        supervises_unfed,
        TICK_GAP_S,
        plan=Plan(without=frozenset({"watchdog"})),
        repeats=(DEAD_DOG,),
    ),
    Fault(
        "watchdog-busy",
        "another program holds the watchdog: told at each tick, and supervised",
        play_busy,
        TICK_GAP_S,
        plan=Plan(without=WITHOUT_SUPERVISOR),
        repeats=(DEAD_DOG,),
    ),
    Fault(
        "watchdog-removed",
        "the watchdog hears no feed any more: it resets the device, which is well again",
        play_removed,
        TICK_GAP_S,
        plan=Plan(watchdog_ms=WATCHDOG_MS),
        boots=("power-on", "watchdog"),
    ),
    _without_supervisor(
        "eeprom-damaged",
        "the record that names the family is damaged: given up before anything is touched",
        with_eeprom(damage("crc"), gives_up),
        begins=GIVEN_UP,
        endings=(1,),
    ),
    _without_supervisor(
        "eeprom-short",
        "the record that names the family is a byte short: given up",
        with_eeprom(damage("short"), gives_up),
        begins=GIVEN_UP,
        endings=(1,),
    ),
    _without_supervisor(
        "eeprom-vanished",
        "the EEPROM is listed but gone when it is opened: given up",
        with_eeprom(vanish, gives_up),
        begins=GIVEN_UP,
        endings=(1,),
    ),
    _without_supervisor(
        "eeprom-slow",
        f"the EEPROM takes {SLOW_EEPROM_S:.0f} s: waited for, before the watchdog is armed",
        with_eeprom(make_slow, lives_on),
    ),
    _without_supervisor(
        "marker-folder",
        "developer mode's marker is a folder: it can be opened, so it counts",
        with_marker(folder),
        begins=AS_DEVELOPER,
    ),
    _without_supervisor(
        "marker-dangling",
        "developer mode's marker is a link that leads nowhere: supervised",
        with_marker(dangling),
    ),
    _without_supervisor(
        "marker-unreadable",
        "developer mode's marker cannot be opened, not even by root: supervised",
        with_marker(circular),
    ),
)
