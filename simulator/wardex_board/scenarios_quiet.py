"""The board lives on: scenarios `supervise`, `developer` and `real-time`."""

from __future__ import annotations

from wardex_board import claims
from wardex_board.claims import REBOOT, STABLE, STARTED, STARTING, UNSTABLE
from wardex_board.machine import POWER_OFF
from wardex_board.report import Life
from wardex_board.scenario import Lives, Part, Scenario, eeproms_of
from wardex_desk import judge_texts as texts
from wardex_desk.judge import Verdict

PICTOR = "com.orvo.pictor"
MODULES = eeproms_of("ZK4XX")
HOUR_S = 3600.0
ROUNDS = 4
# Six pings fail after a second each, and up to a second passes before the first, and before the
# first of SuprDown; then the script stops the service.
HANG_S = (6.0, 9.0)
# Lets the hogs have their ten minutes within a few of this machine's: 15 million instructions a second.
SLOW = 6
WHILE_S = 600.0
TIMEOUT_S = 60.0
# Without swap, and with the root in memory, there is nothing that the kernel could scan.
PRESSURE = ("allocstall_normal", "oom_kill")


def _judge_supervise(verdict: Verdict, told: Lives) -> None:
    lives = told["hang"]
    if not claims.ends(verdict, lives, POWER_OFF):
        return
    life = lives[0]
    claims.complaints(verdict, life, *STARTED, ("WARN", texts.considered_dead(PICTOR)))
    verdict.equal(
        "pictor goes down on the fourth ping without an answer", "4", life.text("strikes")
    )
    verdict.equal(
        "pictor is stopped and restarted by its script, once",
        ["30_pictor stop", "30_pictor restart"],
        claims.calls(life),
    )
    before, after = life.text("process-before"), life.text("process-after")
    verdict.claim(
        "pictor has a new process",
        before.isdigit() and after.isdigit() and before != after,
        [f"process {before or 'none'} before, {after or 'none'} after"],
    )
    restart = claims.begin_of(life, "30_pictor restart") - life.at("hang")
    verdict.claim(
        "the restart comes after four missed pings and two more, and no later",
        HANG_S[0] <= restart <= HANG_S[1],
        [f"restarted {restart:.2f} s after the hang"],
        [f"{restart:.2f} s after the hang"],
    )
    verdict.equal(
        "the device was unstable and is stable again",
        [STARTING, STABLE, UNSTABLE, STABLE],
        life.states(),
    )
    verdict.equal("two changes of availability are published", "2", life.text("signals"))
    verdict.equal(
        "they say that pictor is down, and up again",
        f"{PICTOR} down com.orvo.vistor up {PICTOR} up com.orvo.vistor up",
        life.text("availability"),
    )
    verdict.claim(
        "the operator's command sees a stable device there",
        any(line.startswith("stable") for line in life.texts("status")),
        life.texts("status"),
        life.texts("status")[:1],
    )


def _judge_developer(verdict: Verdict, told: Lives) -> None:
    lives = told["hour"]
    if not claims.ends(verdict, lives, POWER_OFF):
        return
    life = lives[0]
    seen = [line for line in life.lines if line.word == "supervisor"]
    figures = [f"process {line.text or 'none'} at {line.at:.2f} s" for line in seen]
    verdict.claim(
        "one and the same supervisor runs over an hour of the board",
        len(seen) == 2
        and seen[0].text.isdigit()
        and seen[0].text == seen[1].text
        and seen[1].at - seen[0].at >= HOUR_S,
        figures,
        figures,
    )
    claims.complaints(
        verdict,
        life,
        ("WARN", texts.STARTS_AS_DEVELOPER),
        ("WARN", texts.FAMILY["ZK4XX"]),
        ("WARN", texts.considered_dead_as_developer(PICTOR)),
        ("FATAL", texts.WOULD_RESTART_PACKAGE),
        ("EMERG", texts.TOO_MANY_RESTARTS),
        ("EMERG", texts.WOULD_RESTART_SYSTEM),
    )
    claims.path(verdict, life, *(STARTING, UNSTABLE) * ROUNDS, REBOOT, STABLE)
    stable = [record.at for record in life.records if record.text == f"{STABLE}::entry"]
    verdict.claim(
        "the device becomes stable when the service comes up after that hour, and not before",
        bool(stable) and min(stable) > life.at("supervisor"),
        [f"the hour ends at {life.at('supervisor')} s, stable at {stable}"],
    )
    verdict.equal("nothing is restarted", [], claims.calls(life))
    verdict.equal("the watchdog is never fed", [], life.texts("feed"))
    verdict.equal("nobody holds the watchdog open", "0", life.text("descriptors"))
    verdict.equal("the watchdog's driver was never started", "inactive", life.text("watchdog"))
    verdict.equal("the kernel's panic setting is left alone", "0", life.text("panic"))


def _judge_real_time(verdict: Verdict, told: Lives) -> None:
    lives = told["hogs"]
    if not claims.ends(verdict, lives, POWER_OFF):
        return
    life = lives[0]
    policies = life.texts("policy")
    verdict.equal(
        "the main thread is SCHED_FIFO 1",
        ["main SCHED_FIFO 1"],
        [text.strip() for text in policies if text.startswith("main")],
    )
    others = [text.strip() for text in policies if text.startswith("other")]
    verdict.equal("the two other threads are ordinary ones", ["other SCHED_OTHER 0"] * 2, others)
    verdict.equal("a panic reboots after 60 s", "60", life.text("panic"))
    before, after = life.text("faults-before").split(), life.text("faults-after").split()
    verdict.claim(
        f"no page fault in {WHILE_S:.0f} s of supervision (minor, major)",
        len(before) == 2 and all(map(str.isdigit, before)) and before == after,
        [f"before: {' '.join(before)}", f"after:  {' '.join(after)}"],
    )
    pids = life.text("supervisor").split()
    verdict.claim(
        "one and the same supervisor runs all the time",
        len(pids) == 2 and pids[0].isdigit() and pids[0] == pids[1],
        pids,
    )
    _judge_hogs(verdict, life)
    sizes = dict(text.split(": ", 1) for text in life.texts("memory"))
    # Gaps between a library's parts count as locked there, and are never resident.
    locked, resident = (int(sizes.get(name, "0 kB").split()[0]) for name in ("VmLck", "VmRSS"))
    verdict.claim(
        "all that is resident is locked",
        0 < resident <= locked,
        life.texts("memory"),
        life.texts("memory"),
    )
    claims.feeds(verdict, life, WHILE_S, TIMEOUT_S)
    claims.complaints(verdict, life, *STARTED)


def _judge_hogs(verdict: Verdict, life: Life) -> None:
    """The hogs really took what they were to take."""
    worked = life.number_of("hog-s")
    verdict.claim(
        "the processor's hog had a sixth of the time, at least",
        worked >= WHILE_S / 6,
        [f"{worked:.0f} s"],
        [f"{worked:.0f} s of processor"],
    )
    free, least = life.number_of("available"), life.number_of("least")
    verdict.claim(
        "the memory's hog left less than a tenth of what was free",
        0 < least < free / 10,
        [f"{free:.0f} KiB were free, {least:.0f} KiB at least"],
        [f"{free:.0f} KiB were free, {least:.0f} KiB at least"],
    )
    more = {
        name: count - _counts(life, "vm-before").get(name, 0)
        for name, count in _counts(life, "vm-after").items()
    }
    figures = [f"{name} {count}" for name, count in more.items()]
    verdict.claim(
        "programs waited for memory, and who wanted more than there is was ended",
        all(more.get(name, 0) > 0 for name in PRESSURE),
        figures,
        figures,
    )


def _counts(life: Life, word: str) -> dict[str, int]:
    """The kernel's counters, `NAME NUMBER` each."""
    pairs = (text.split() for text in life.texts(word))
    return {pair[0]: int(pair[1]) for pair in pairs if len(pair) == 2 and pair[1].isdigit()}


SUPERVISE = Scenario(
    "supervise",
    "services over the board's own bus and Redis; a hang, its restart, and who hears of it",
    {"hang": Part("supervise", 1, 400, MODULES)},
    _judge_supervise,
)
DEVELOPER = Scenario(
    "developer",
    "an hour of a developer's device: the watchdog is never opened, nothing is restarted",
    {"hour": Part("developer", 1, 700, MODULES)},
    _judge_developer,
)
REAL_TIME = Scenario(
    "real-time",
    "ten minutes beside hogs of processor and memory: priority, locked memory, feeding",
    {"hogs": Part("real-time", 1, 1200, MODULES, shift=SLOW, watchdog="timeout=60")},
    _judge_real_time,
)
