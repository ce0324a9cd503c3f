"""What the verdict on each scenario makes of boards that are well, and of those that are not."""

import made_up
import pytest

from wardex_board.figures import FIGURES
from wardex_board.scenarios import SCENARIOS
from wardex_desk import judge_texts as texts
from wardex_desk.judge import Verdict

STORIES = {**SCENARIOS, FIGURES.name: FIGURES}


def failures(name, boards):
    verdict = Verdict()
    STORIES[name].judge(verdict, made_up.told(name, boards))
    assert verdict.findings
    return [finding.claim for finding in verdict.findings if finding.holds is False]


def spoilt(name, part, number, old, new):
    """The good boards, with one text in one life replaced; None takes the line away."""
    boards = made_up.GOOD[name]()
    life = boards[part][number - 1]
    hit = [line for line in life if old in line]
    assert hit, f"no line says {old}"
    boards[part][number - 1] = [
        line.replace(old, new or "") for line in life if new is not None or old not in line
    ]
    return boards


@pytest.mark.parametrize("name", made_up.GOOD)
def test_board_that_is_well_passes(name):
    assert failures(name, made_up.GOOD[name]()) == []


@pytest.mark.parametrize("name", STORIES)
def test_board_that_only_boots_and_ends_well_fails(name):
    boards = {part: [[] for _ in ends] for part, ends in made_up.ENDS[name].items()}
    assert failures(name, boards)


DEAD = "supervisor runs over an hour"
STABLE = "becomes stable when the service comes up"
UNKNOWN_PICTOR = texts.unknown_service("com.orvo.pictor")

SPOILT = [
    # A supervisor that died is not quiet; it is dead.
    ("developer", "hour", 1, "supervisor 150", "supervisor", DEAD),
    ("developer", "hour", 1, "3610 supervisor 150", "3610 supervisor 151", DEAD),
    ("developer", "hour", 1, "3610 supervisor 150", "3610 supervisor", DEAD),
    ("developer", "hour", 1, "3610 supervisor 150", None, DEAD),
    ("developer", "hour", 1, "3610 supervisor 150", "3600 supervisor 150", DEAD),
    ("developer", "hour", 1, '"3612.0000"', '"3600.0000"', STABLE),
    ("developer", "hour", 1, "SuprStableSystem::entry", "SuprStarting::entry", STABLE),
    ("developer", "hour", 1, "descriptors 0", "descriptors 1", "holds the watchdog open"),
    # The whole of what a ZM7xx says, and that it goes on.
    ("identity", "written", 5, UNKNOWN_PICTOR, None, "boot 5: 6 records at WARN"),
    ("identity", "written", 5, "SuprStartingSystem", "SuprStableSystem", "boot 5: SuprStarting"),
    ("identity", "written", 5, "supervisor runs", "supervisor gone", "ZM7xx: the supervisor"),
    ("identity", "written", 5, "watchdog inactive", "watchdog active", "ZM7xx: the watchdog"),
    # Each life has its own parts.
    ("identity", "written", 1, "2-0054 at24", "2-0054 none", "boot 1: the at24 driver"),
    ("identity", "written", 5, "2-0050 at24", None, "boot 5: the at24 driver"),
    ("identity", "imager", 1, "2-0053 none", "2-0053 at24", "boot 1: the at24 driver"),
    ("identity", "imager", 1, "ZK4XX family", "ZQ9XX family", "boot 1: 2 records at WARN"),
    ("identity", "missing", 1, "2-0054 none", "2-0054 at24", "boot 1: the at24 driver"),
    ("identity", "missing", 1, "supervisor gone", "supervisor runs", "the supervisor has ended"),
    # The watchdog neither bites early nor late.
    ("escalate", "refused", 1, "98.5 alive", "95.9 alive", "not before and not after its 10 s"),
    ("escalate", "refused", 1, "98.5 alive", "99.1 alive", "not before and not after its 10 s"),
    ("escalate", "refused", 1, "89 refused", None, "refuses, once"),
    ("escalate", "reboot", 1, "init is down", None, "takes the board down through init"),
    ("hang", "signals", 2, "20 signal KILL", None, "gets SIGKILL"),
    ("hang", "signals", 1, "79.5 without", "76.9 without", "boot 1: the watchdog resets"),
    ("hang", "signals", 3, "79.5 without", "80.1 without", "boot 3: the watchdog resets"),
    # Feeding beside package restarts.
    ("escalate", "reboot", 1, "feed 20.0", None, "fed at each of 68 ticks"),
    ("escalate", "reboot", 1, "feed", "food", "fed at each of 68 ticks"),
    ("escalate", "reboot", 1, "feed 10.0", "feed 4.0", "fed at each of 68 ticks"),
    ("boot-loop", "fault", 3, "feed 20.0", None, "boot 3: fed at each of 68 ticks"),
    (
        "escalate",
        "refused",
        1,
        "mf-optware restart end",
        "mf-optware pause end",
        "every script ends",
    ),
    (
        "escalate",
        "reboot",
        1,
        "29.00 mf-optware restart end",
        "33.00 mf-optware restart end",
        "every",
    ),
    ("boot-loop", "fault", 2, "record", "recall", "boot 2 recorded"),
    # Beside hogs that really took what there is.
    ("real-time", "hogs", 1, "faults-before", None, "no page fault"),
    ("real-time", "hogs", 1, "faults-after 500 3", "faults-after 501 3", "no page fault"),
    ("real-time", "hogs", 1, "-before 500 3", "-before ", "no page fault"),
    ("real-time", "hogs", 1, "faults-", "faulty-", "no page fault"),
    (
        "real-time",
        "hogs",
        1,
        "supervisor 150 150",
        "supervisor 150 ",
        "one and the same supervisor",
    ),
    ("real-time", "hogs", 1, "supervisor 150 150", "supervisor 150 151", "one and the same"),
    ("real-time", "hogs", 1, "hog-s 400", "hog-s 99", "the processor's hog"),
    ("real-time", "hogs", 1, "hog-s 400", None, "the processor's hog"),
    ("real-time", "hogs", 1, "least 3000", "least 38000", "the memory's hog"),
    ("real-time", "hogs", 1, "8 available", "8 unknown", "the memory's hog"),
    ("real-time", "hogs", 1, "oom_kill 9", "oom_kill 7", "programs waited for memory"),
    ("real-time", "hogs", 1, "vm-after", "vm-later", "programs waited for memory"),
    # What the table needs is there, and is no failed program's.
    ("figures", "board", 2, "ping 200 30 4200 300", "ping 200 30 4200 30", "ping is measured"),
    ("figures", "board", 2, "ping 200 30 4200 300", "ping 200  4200 ", "ping is measured"),
    ("figures", "board", 2, "9 tick", "9 tack", "tick is measured"),
    ("figures", "board", 1, "start-ns 180000000", "start-ns 0", "start-ns is measured"),
    ("figures", "board", 1, "idle-ns", "idle", "idle-ns is measured"),
    ("figures", "board", 1, "stable-at 6.4", "stable-at", "stable-at is measured"),
    ("figures", "board", 1, "RssAnon", "RssFile", "the memory is measured"),
    ("figures", "board", 1, "feed", "food", "the first feed is measured"),
    # Who hangs is replaced, in time.
    ("supervise", "hang", 1, "process-after 180", "process-after 140", "pictor has a new process"),
    ("supervise", "hang", 1, "process-after 180", "process-after", "pictor has a new process"),
    ("supervise", "hang", 1, "process-before 140", None, "pictor has a new process"),
    ("supervise", "hang", 1, "12.5 hang", "14.4 hang", "four missed pings"),
    ("supervise", "hang", 1, "hang", None, "four missed pings"),
    ("supervise", "hang", 1, "20.30 30_pictor", "21.60 30_pictor", "four missed pings"),
]


@pytest.mark.parametrize(("name", "part", "number", "old", "new", "claim"), SPOILT)
def test_board_that_is_not_as_it_should_be_fails(name, part, number, old, new, claim):
    found = failures(name, spoilt(name, part, number, old, new))
    assert any(claim in each for each in found), found


def test_family_that_is_played_as_a_developers_says_why():
    verdict = Verdict()
    SCENARIOS["identity"].judge(verdict, made_up.told("identity", made_up.GOOD["identity"]()))
    (skipped,) = [finding.claim for finding in verdict.findings if finding.holds is None]
    assert "ZM7xx without the developer marker" in skipped and "ticks without a pause" in skipped
