"""The board goes down, as it should: scenarios `escalate`, `hang` and `boot-loop`."""

from __future__ import annotations

from wardex_board import claims
from wardex_board.claims import REBOOT, STABLE, STARTED, STARTING, UNSTABLE
from wardex_board.machine import POWER_OFF, RESET, WATCHDOG
from wardex_board.report import Life
from wardex_board.scenario import Lives, Part, Scenario, eeproms_of
from wardex_desk import judge_texts as texts
from wardex_desk.judge import Verdict

ROUNDS = 4
# Of SuprStartingSystem and SuprUnstableSystem, in each round.
TICKS = ROUNDS * (6 + 11)
TIMEOUT_S = 10.0
# Of the watchdog's driver when nobody says otherwise.
LONG_TIMEOUT_S = 60.0
MODULES = eeproms_of("ZK4XX")
RESTART = ("FATAL", texts.RESTARTS_PACKAGE)
END = (("EMERG", texts.TOO_MANY_RESTARTS), ("EMERG", texts.RESTARTS_SYSTEM))


def _judge_round(verdict: Verdict, life: Life, service: str, script: str) -> None:
    """Three package restarts and the decision to reboot, for one service that is down.

    In each round its script is tried again and again, as often as the round's ticks allow.
    """
    dead = ("WARN", texts.considered_dead(service))
    found = life.complaints()
    verdict.equal(
        f"boot {life.number}: records at WARN and above, to the byte",
        [*STARTED, *(dead, RESTART) * (ROUNDS - 1), dead, *END],
        [record for at, record in enumerate(found) if record != dead or found[at - 1] != dead],
    )
    claims.path(verdict, life, *(STARTING, UNSTABLE) * ROUNDS, REBOOT)
    calls = [call for call in claims.calls(life) if call.startswith("mf-optware")]
    verdict.equal(
        f"boot {life.number}: the package is restarted three times",
        ["mf-optware restart"] * (ROUNDS - 1),
        calls,
    )
    verdict.equal(
        f"boot {life.number}: {script} is restarted each time that its service is considered dead",
        found.count(dead),
        claims.calls(life).count(f"{script} restart"),
    )
    lasted, endless = _lasting(life)
    verdict.claim(
        f"boot {life.number}: every script ends, and none holds the feeding up for long",
        bool(lasted) and not endless and max(lasted)[0] < TIMEOUT_S / 2,
        [f"{name} does not end" for name in endless] + _told(lasted),
        _told(lasted)[:1],
    )
    claims.feeds_beside_restarts(verdict, life, TICKS, TIMEOUT_S)


def _lasting(life: Life) -> tuple[list[tuple[float, str]], list[str]]:
    """The calls of scripts that ended, with their seconds, and those that did not."""
    begun: dict[str, float] = {}
    lasted = []
    for text in life.texts("script"):
        at, name, action, word = text.split()[:4]
        if word == "begin":
            begun[f"{name} {action}"] = float(at)
        elif f"{name} {action}" in begun:
            lasted.append((float(at) - begun.pop(f"{name} {action}"), f"{name} {action}"))
    return lasted, list(begun)


def _told(lasted: list[tuple[float, str]]) -> list[str]:
    return [f"{name} takes {seconds:.2f} s" for seconds, name in sorted(lasted, reverse=True)]


def _judge_well(verdict: Verdict, life: Life) -> None:
    claims.complaints(verdict, life, *STARTED)
    claims.path(verdict, life, STARTING, STABLE)
    verdict.equal(f"boot {life.number}: no script is called", [], claims.calls(life))


def _judge_escalate(verdict: Verdict, told: Lives) -> None:
    lives = told["reboot"]
    if claims.ends(verdict, lives, RESET, POWER_OFF):
        _judge_round(verdict, lives[0], "com.orvo.pictor", "30_pictor")
        verdict.claim(
            "the reboot command takes the board down through init",
            lives[0].texts("init") == ["goes down", "is down"],
            lives[0].texts("init"),
        )
        _judge_well(verdict, lives[1])
    lives = told["refused"]
    if claims.ends(verdict, lives, WATCHDOG, POWER_OFF):
        life = lives[0]
        _judge_round(verdict, life, "com.orvo.pictor", "30_pictor")
        verdict.equal("the reboot command refuses, once", 1, len(life.texts("refused")))
        claims.falls(verdict, life, "refused", TIMEOUT_S)
        _judge_well(verdict, lives[1])


def _judge_hang(verdict: Verdict, told: Lives) -> None:
    lives = told["signals"]
    if not claims.ends(verdict, lives, WATCHDOG, WATCHDOG, WATCHDOG, POWER_OFF):
        return
    for life, signal in zip(lives, ("STOP", "KILL", "TERM")):
        verdict.equal(
            f"boot {life.number}: the supervisor gets SIG{signal}", signal, life.text("signal")
        )
        claims.falls(verdict, life, "signal", LONG_TIMEOUT_S)
    last = lives[3]
    verdict.equal("the watchdog's time-out", LONG_TIMEOUT_S, last.number_of("timeout"))
    claims.feeds(verdict, last, 600, LONG_TIMEOUT_S)
    _judge_well(verdict, last)


def _judge_boot_loop(verdict: Verdict, told: Lives) -> None:
    lives = told["fault"]
    claims.ends(verdict, lives, RESET, RESET, RESET)
    for life in lives:
        _judge_round(verdict, life, "com.orvo.vistor", "40_corvane")
        verdict.claim(
            f"boot {life.number} recorded:",
            bool(life.complaints()),
            details=[f"{level:<6}{text}" for level, text in life.complaints()],
        )


ESCALATE = Scenario(
    "escalate",
    "three package restarts, then the reboot command or, where that fails, the watchdog",
    {
        "reboot": Part("escalate", 2, 500, MODULES),
        "refused": Part("reboot-fails", 2, 500, MODULES),
    },
    _judge_escalate,
)
HANG = Scenario(
    "hang",
    "stopped, killed, ended: the watchdog resets the board; ten minutes of feeding measured",
    {"signals": Part("hang", 4, 900, MODULES, watchdog="timeout=60")},
    _judge_hang,
)
BOOT_LOOP = Scenario(
    "boot-loop",
    "a fault for good: the board reboots again and again, and what each boot recorded",
    {"fault": Part("boot-loop", 3, 900, MODULES)},
    _judge_boot_loop,
)
