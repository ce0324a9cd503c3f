"""The claims that the stories' verdicts are made of. Each takes the verdict to speak to and a life.

Times are seconds. Lower bounds follow from the rules alone, since no timer of the daemon fires more
than 5 % early; upper bounds leave a busy machine LATE_S.
"""

from __future__ import annotations

from collections.abc import Sequence, Set
from itertools import groupby

from wardex_desk import judge_texts as texts
from wardex_desk.events import Record, Unreadable
from wardex_desk.judge import Verdict
from wardex_desk.judge_evidence import SYSTEM, Call, Life
from wardex_desk.sources_parse import SCRIPT_STAMP_STEP_S

EARLY = 0.95
LATE_S = 1.05

Complaint = tuple[str, str]

# The system's states.
STARTING, STABLE, UNSTABLE, REBOOT = (
    f"Supr{word}System" for word in ("Starting", "Stable", "Unstable", "Reboot")
)


def show(life: Life, records: Sequence[Record]) -> list[str]:
    """Records as evidence."""
    return [f"{life.clock(record.at)}  {record.level:<5} {record.text}" for record in records]


def readable(verdict: Verdict, lives: Sequence[Life]) -> None:
    """Every line of every journal could be read."""
    strays = [e for life in lives for e in life.events if isinstance(e, Unreadable)]
    verdict.claim(
        "every journal can be read from end to end",
        not strays,
        [f"{stray.journal}: {stray.text}" for stray in strays],
    )


def boots(verdict: Verdict, lives: Sequence[Life], *reasons: str) -> bool:
    """The device booted for exactly these reasons, one after the other."""
    count = "once" if len(reasons) == 1 else f"{len(reasons)} times"
    words = ", then ".join(reasons)
    return verdict.equal(
        f"the device boots {count}: {words}", list(reasons), [life.reason for life in lives]
    )


def complaints(verdict: Verdict, life: Life, *expected: Complaint) -> bool:
    """These records of WARN or worse, in this order, and no other. Runs of one text count as one."""
    seen = [
        complaint
        for complaint, _ in groupby((record.level, record.text) for record in life.complaints)
    ]
    noted = verdict.claim(
        "records of WARN or worse: these in this order, and no other",
        seen == list(expected),
        show(life, life.complaints) or ["none"],
        [f"{level:<5} {text}" for level, text in expected],
    )
    if life.refusals:
        verdict.skip("real-time duties", "; ".join(sorted(set(life.refusals))))
    return noted


def said(verdict: Verdict, life: Life, text: str, times: int) -> bool:
    """A record with exactly this text was written so many times."""
    found = life.said(text)
    count = {0: "never", 1: "once"}.get(times, f"{times} times")
    evidence = [f"seen {len(found)} times"] + show(life, found)
    return verdict.claim(f'it writes {count}: "{text}"', len(found) == times, evidence)


def path(verdict: Verdict, life: Life, actor: str, *states: str) -> bool:
    """A machine went through exactly these states."""
    seen = life.path(actor)
    return verdict.claim(
        f"{actor} goes {' -> '.join(states)}",
        seen == list(states),
        [f"seen: {' -> '.join(seen) or 'nothing'}"],
    )


def signals(verdict: Verdict, life: Life, *expected: str) -> bool:
    """The availability signals, each written as "corvane up, pictor down"."""
    seen = [", ".join(f"{name} {state}" for name, state in s.items()) for s in life.signals]
    return verdict.claim(
        f"availability is announced {len(expected)} times",
        seen == list(expected),
        [f"seen: {signal}" for signal in seen] or ["no signal"],
        expected,
    )


def show_calls(life: Life, calls: Sequence[Call]) -> list[str]:
    """Calls as evidence."""
    return [f"{life.clock(call.begin)}  {call.words} (status {call.status})" for call in calls]


def calls(verdict: Verdict, life: Life, *expected: str) -> bool:
    """The supervisor called exactly these scripts and commands, in this order."""
    words = ", then ".join(expected) if expected else "nothing"
    return verdict.claim(
        f"the supervisor calls {words}",
        [call.words for call in life.calls] == list(expected),
        show_calls(life, life.calls) or ["no call"],
    )


def spaced(verdict: Verdict, life: Life, text: str, seconds: float, reason: str) -> bool:
    """Two records of this text are at least so far apart."""
    found = life.said(text)
    pairs = [(a, b) for a, b in zip(found, found[1:]) if b.at - a.at < seconds]
    return verdict.claim(
        f'{reason}: "{text}" comes at most every {seconds:.2f} s',
        not pairs,
        [f"{life.clock(a.at)} and {b.at - a.at:.2f} s later" for a, b in pairs],
    )


def lasts(verdict: Verdict, life: Life, state: str, seconds: float) -> bool:
    """The system stayed in a state at least so long each time, for devices that are not fed."""
    spans = [span for span in life.spans(SYSTEM) if span.state == state and span.end is not None]
    seen = [span.end - span.begin for span in spans if span.end is not None]
    shortest = seconds * EARLY
    return verdict.claim(
        f"{state} lasts {seconds:.0f} s each time",
        bool(seen) and all(shortest <= time <= seconds + 2 * LATE_S for time in seen),
        [f"seen: {', '.join(f'{time:.2f} s' for time in seen) or 'never'}"],
    )


def syslog(verdict: Verdict, life: Life, *expected: str) -> bool:
    """The system log has exactly these lines, all of them critical (user facility, severity 2)."""
    critical = 8 + 2
    return verdict.claim(
        "lines in the system log: these in this order, all critical",
        life.syslog == [(critical, text) for text in expected],
        [f"<{priority}> {text}" for priority, text in life.syslog] or ["none"],
        expected,
    )


def patience(
    verdict: Verdict, life: Life, actor: str, seconds: float, state: str = "SuprDown"
) -> bool:
    """The first time in a state is not shorter than its pings take."""
    spans = [span for span in life.spans(actor) if span.state == state and span.end is not None]
    times = [span.end - span.begin for span in spans if span.end is not None]
    return verdict.claim(
        f"{actor} is given {seconds:.0f} s in {state}",
        bool(times) and times[0] >= EARLY * seconds,
        [f"seen: {', '.join(f'{time:.2f} s' for time in times) or 'never'}"],
    )


def in_order(verdict: Verdict, life: Life, *marks: str) -> bool:
    """Records and calls come in this order, the first of each that can follow the one before."""
    facts = sorted(
        [(record.at, record.at, record.text) for record in life.records]
        # The scripts' journal is not finer than this.
        + [(call.begin, call.begin - SCRIPT_STAMP_STEP_S, call.words) for call in life.calls]
    )
    missing: list[str] = []
    now = 0.0
    for mark in marks:
        fact = next((fact for fact in facts if fact[2] == mark and fact[0] >= now), None)
        if fact is None:
            missing.append(mark)
        else:
            now = max(now, fact[1])
    return verdict.claim(
        "one after the other",
        not missing,
        [f'not seen in its place: "{mark}"' for mark in missing],
        marks,
    )


def ends_up(verdict: Verdict, life: Life, *actors: str) -> bool:
    """In the end these services are up and the last announcement says so."""
    states = {actor: (life.path(actor) or ["nothing"])[-1] for actor in actors}
    last = life.signals[-1] if life.signals else {}
    return verdict.claim(
        f"in the end {' and '.join(actors)} are up",
        all(states[actor] == "SuprUp" and last.get(actor) == "up" for actor in actors),
        [f"{actor} is in {state}" for actor, state in states.items()]
        + [f"last announcement: {last}"],
    )


def never_up(verdict: Verdict, life: Life, actor: str) -> bool:
    """A service is announced as down whenever anything is announced, and never gets to SuprUp."""
    announced = [signal for signal in life.signals if signal.get(actor) != "down"]
    return verdict.claim(
        f"{actor} is never up, and every announcement says so",
        bool(life.signals) and not announced and "SuprUp" not in life.path(actor),
        [f"announced: {signal}" for signal in announced]
        + [f"states: {' -> '.join(life.path(actor)[:40])}"],
    )


def calls_per_round(
    verdict: Verdict, life: Life, single: Sequence[str], closing: Sequence[str]
) -> bool:
    """Each of the closing calls comes after single restarts: one or more, each of them whole."""
    left = [call.words for call in life.calls]
    whole = True
    for last in closing:
        rounds = 0
        while left[: len(single)] == list(single):
            del left[: len(single)]
            rounds += 1
        whole = whole and rounds > 0 and left[:1] == [last]
        del left[:1]
    return verdict.claim(
        f"the supervisor calls {', '.join(single)} (once or more) before each of: "
        + ", ".join(closing),
        whole and not left,
        show_calls(life, life.calls) or ["no call"],
    )


def only_in(verdict: Verdict, life: Life, state: str, text: str) -> bool:
    """A record is written in one state of the system only."""
    spans = [span for span in life.spans(SYSTEM) if span.state == state]
    strays = [
        record
        for record in life.said(text)
        if not any(s.begin < record.at and (s.end is None or record.at < s.end) for s in spans)
    ]
    return verdict.claim(f'"{text}" comes in {state} only', not strays, show(life, strays))


def complaints_among(
    verdict: Verdict, life: Life, required: Set[Complaint], allowed: Set[Complaint]
) -> bool:
    """Each required record of WARN or worse is there, and none but those and the allowed ones."""
    seen = {(record.level, record.text) for record in life.complaints}
    missing, strays = required - seen, seen - required - allowed
    return verdict.claim(
        "records of WARN or worse: with each of these texts, and with no other",
        not missing and not strays,
        [f"missing: {level} {text}" for level, text in sorted(missing)]
        + [f"unexpected: {level} {text}" for level, text in sorted(strays)],
        [f"{level:<5} {text}" for level, text in sorted(required)],
    )


def ever_said(verdict: Verdict, life: Life, text: str) -> bool:
    """A record with exactly this text is there, once or more."""
    return verdict.claim(f'it writes: "{text}"', bool(life.said(text)), ["never seen"])


def starts(verdict: Verdict, life: Life, first: str = texts.STARTS) -> bool:
    """The supervisor's first record, and its name on the bus."""
    record = life.records[0].text if life.records else "nothing"
    return verdict.claim(
        f'the supervisor starts with "{first}" and takes its name on the bus',
        record == first and life.owned("com.orvo.wardex")[:1] == [True],
        [f"first record: {record}", f"com.orvo.wardex on the bus: {life.owned('com.orvo.wardex')}"],
    )
