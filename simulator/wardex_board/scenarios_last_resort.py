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
    lasting = [float(line.split()[1]) for line in _lasting(life)]
    verdict.claim(
        f"boot {life.number}: no script holds the feeding up for long",
        bool(lasting) and max(lasting) < TIMEOUT_S / 2,
        _lasting(life),
        [f"the longest took {max(lasting, default=0):.2f} s: {', '.join(_lasting(life)[:3])}"],
    )


def _lasting(life: Life) -> list[str]:
    """The supervisor's own calls of scripts, `NAME SECONDS s`, the longest first."""
    begun: dict[str, float] = {}
    lasted = []
    for text in life.texts("script"):
        at, name, action, word = text.split()[:4]
        if word == "begin":
            begun[f"{name} {action}"] = float(at)
        elif f"{name} {action}" in begun:
            lasted.append((float(at) - begun.pop(f"{name} {action}"), f"{name}-{action}"))
    return [f"{name} {seconds:.2f} s" for seconds, name in sorted(lasted, reverse=True)]


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
            bool(lives[0].texts("reboot")),
        )
        _judge_well(verdict, lives[1])
    lives = told["refused"]
    if claims.ends(verdict, lives, WATCHDOG, POWER_OFF):
        life = lives[0]
        _judge_round(verdict, life, "com.orvo.pictor", "30_pictor")
        refused = next(line.at for line in life.lines if line.word == "refused")
        last = life.lines[-1].at
        verdict.claim(
            f"a reboot that fails is finished by the watchdog within its {TIMEOUT_S:.0f} s",
            0 < last - refused <= TIMEOUT_S,
            [f"refused at {refused} s, last sign of the board at {last} s"],
            [f"the board lived on for {last - refused:.1f} s"],
        )
        _judge_well(verdict, lives[1])


def _judge_hang(verdict: Verdict, told: Lives) -> None:
    lives = told["signals"]
    if not claims.ends(verdict, lives, WATCHDOG, WATCHDOG, WATCHDOG, POWER_OFF):
        return
    for life, signal in zip(lives, ("STOP", "KILL", "TERM")):
        begin = next(line.at for line in life.lines if line.word == "signal")
        alone = life.lines[-1].at - begin
        verdict.equal(
            f"boot {life.number}: the supervisor gets SIG{signal}", signal, life.text("signal")
        )
        # The last feed was up to a tick before the signal; the board tells a second's sign of life.
        verdict.claim(
            f"boot {life.number}: the watchdog resets the board, not before and not after its "
            f"{LONG_TIMEOUT_S:.0f} s",
            LONG_TIMEOUT_S - 3 <= alone <= LONG_TIMEOUT_S,
            [f"{alone:.2f} s without a supervisor"],
            [f"{alone:.2f} s without a supervisor"],
        )
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
            True,
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
