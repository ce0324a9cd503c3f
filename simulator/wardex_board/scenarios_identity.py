"""The board tells by its modules' EEPROMs which device it is: scenario `identity`."""

from __future__ import annotations

from collections.abc import Iterable, Mapping

from wardex_board import claims
from wardex_board.kernel import NOTEBOOK
from wardex_board.machine import POWER_OFF, RESET
from wardex_board.report import Life
from wardex_board.scenario import Lives, Part, Scenario, eeproms_of
from wardex_desk import judge_texts as texts
from wardex_desk.eeprom import RECORD_SIZE, damaged
from wardex_desk.judge import Verdict

# Where the device looks for modules.
PLACES = (0x50, 0x52, 0x53, 0x54, 0x55)
IMAGER = 0x54
JUDGED = ("com.orvo.vistor", "com.orvo.pictor")
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
        _judge_zm7xx(verdict, life)
    else:
        claims.complaints(verdict, life, *NOTHING)
        verdict.equal(f"{step}: the supervisor has ended", "gone", life.text("supervisor"))
        verdict.equal(f"{step}: the watchdog was never opened", "inactive", life.text("watchdog"))


def _judge_zm7xx(verdict: Verdict, life: Life) -> None:
    """Both judged services are unknown to this family, and so are dead within its first moments."""
    claims.complaints(
        verdict,
        life,
        ("WARN", texts.STARTS_AS_DEVELOPER),
        ("WARN", texts.FAMILY["ZM7xx"]),
        *(("ERROR", texts.unknown_service(service)) for service in JUDGED),
        *(("WARN", texts.considered_dead_as_developer(service)) for service in JUDGED),
    )
    claims.path(verdict, life, claims.STARTING)
    verdict.equal("ZM7xx: the supervisor goes on", "runs", life.text("supervisor"))
    verdict.equal("ZM7xx: the watchdog was never opened", "inactive", life.text("watchdog"))
    verdict.skip(
        "ZM7xx without the developer marker",
        "its supervisor ticks without a pause at real-time priority and leaves nothing of the one "
        "processor; ./run family-zm7xx plays it",
    )


def _judge_modules(verdict: Verdict, life: Life, fitted: Iterable[int]) -> None:
    """Which addresses of I2C bus 2 have a part behind them, as the kernel found them."""
    drivers = {place: "at24" if place in fitted else "none" for place in PLACES}
    drivers[NOTEBOOK] = "at24"
    verdict.equal(
        f"boot {life.number}: the at24 driver has those EEPROMs that are fitted, and no other",
        [f"2-00{place:02x} {drivers[place]}" for place in sorted(drivers)],
        life.texts("module"),
    )


def _judge(verdict: Verdict, told: Lives) -> None:
    written = told["written"]
    claims.ends(verdict, written, *[RESET] * (len(STEPS) - 1), POWER_OFF)
    for life, step in zip(written, STEPS):
        _judge_step(verdict, life, step)
        _judge_modules(verdict, life, PLACES)
    single: Mapping[str, tuple[str, tuple[int, ...]]] = {
        "imager": ("ZK4XX", (IMAGER,)),
        "missing": ("missing", ()),
    }
    for part, (step, fitted) in single.items():
        claims.ends(verdict, told[part], POWER_OFF)
        for life in told[part]:
            _judge_step(verdict, life, step)
            _judge_modules(verdict, life, fitted)


IDENTITY = Scenario(
    "identity",
    "each family from real EEPROMs (ZM7xx as a developer's); missing, damaged, rewritten, read again",
    {
        "written": Part(
            "identity",
            len(STEPS),
            900,
            STEPS["ZK4XX"],
            files=_files(),
            writes=STEPS["ZM7xx"],
        ),
        # The imager's record decides before the main board's is looked for.
        "imager": Part(
            "identity",
            1,
            400,
            {IMAGER: STEPS["ZK4XX"][IMAGER]},
            files={"board/records/order": b"ZK4XX\n"},
        ),
        "missing": Part("identity", 1, 400, {}, files={"board/records/order": b"missing\n"}),
    },
    _judge,
)
