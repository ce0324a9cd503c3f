"""The board tells by its modules' EEPROMs which device it is: scenario `identity`."""

from __future__ import annotations

from collections.abc import Mapping

from wardex_board import claims
from wardex_board.machine import POWER_OFF, RESET
from wardex_board.report import Life
from wardex_board.scenario import Lives, Part, Scenario, eeproms_of
from wardex_desk import judge_texts as texts
from wardex_desk.eeprom import RECORD_SIZE, damaged
from wardex_desk.judge import Verdict

# Where the device looks for modules.
PLACES = (0x50, 0x52, 0x53, 0x54, 0x55)
EMPTY = bytes([0xFF]) * RECORD_SIZE
STARTED = ("WARN", texts.STARTS)
NOTHING = (STARTED, ("WARN", texts.NO_FAMILY), ("FATAL", texts.GIVES_UP))


def _modules(family: str) -> dict[int, bytes]:
    """Every place is fitted; those that the family has no module for are blank."""
    return {place: eeproms_of(family).get(place, EMPTY) for place in PLACES}


def _with_damage() -> dict[int, bytes]:
    """The modules of ZK4XX, each with one wrong bit in its checksum."""
    return {
        place: damaged(record, "crc") if record != EMPTY else record
        for place, record in _modules("ZK4XX").items()
    }


# In this order, each written by the board itself in the life before; the first is what it leaves
# the factory with. The family without judged services is last, as it needs no time to settle.
STEPS: Mapping[str, dict[int, bytes]] = {
    "ZK4XX": _modules("ZK4XX"),
    "damaged": _with_damage(),
    "ZQ9XX": _modules("ZQ9XX"),
    "blank": {place: EMPTY for place in PLACES},
    "ZM7xx": _modules("ZM7xx"),
}


def _files() -> dict[str, bytes]:
    files = {"board/records/order": "".join(f"{step}\n" for step in STEPS).encode()}
    for step, modules in STEPS.items():
        for place, content in modules.items():
            files[f"board/records/{step}/{place:02x}"] = content
    return files


def _judge_step(verdict: Verdict, life: Life, step: str) -> None:
    verdict.equal(f"boot {life.number} is the one with {step}", step, life.text("step"))
    if step in ("ZK4XX", "ZQ9XX"):
        claims.complaints(verdict, life, STARTED, ("WARN", texts.FAMILY[step]))
        claims.path(verdict, life, claims.STARTING, claims.STABLE)
        verdict.equal(f"{step}: the watchdog is open", "active", life.text("watchdog"))
    elif step == "ZM7xx":
        first = life.complaints()[:2]
        started = ("WARN", texts.STARTS_AS_DEVELOPER)
        verdict.equal(
            f"{step}: the first two records, to the byte",
            [started, ("WARN", texts.FAMILY[step])],
            first,
        )
    else:
        claims.complaints(verdict, life, *NOTHING)
        verdict.equal(f"{step}: the supervisor has ended", "gone", life.text("supervisor"))
        verdict.equal(f"{step}: the watchdog was never opened", "inactive", life.text("watchdog"))


def _judge(verdict: Verdict, told: Lives) -> None:
    written = told["written"]
    claims.ends(verdict, written, *[RESET] * (len(STEPS) - 1), POWER_OFF)
    for life, step in zip(written, STEPS):
        _judge_step(verdict, life, step)
    verdict.equal(
        "every module is a device of the at24 driver",
        {f"2-00{place:02x} at24" for place in PLACES},
        {text for life in written for text in life.texts("module") if "2-0056" not in text},
    )
    missing = told["missing"]
    claims.ends(verdict, missing, POWER_OFF)
    for life in missing:
        claims.complaints(verdict, life, *NOTHING)
        verdict.claim(
            "an EEPROM that is not fitted has no driver",
            set(life.texts("module")) >= {f"2-00{place:02x} none" for place in PLACES},
            life.texts("module"),
        )


IDENTITY = Scenario(
    "identity",
    "each family from real EEPROMs; missing, damaged, rewritten on the board and read again",
    {
        "written": Part("identity", len(STEPS), 900, STEPS["ZK4XX"], files=_files()),
        "missing": Part("identity", 1, 400, {}, files={"board/records/order": b"missing\n"}),
    },
    _judge,
)
