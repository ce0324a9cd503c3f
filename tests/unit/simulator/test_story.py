"""The story's lines: one readable line for each kind of event."""

import io

import pytest

from wardex_desk.events import (
    Availability,
    Boot,
    Feed,
    NameChanged,
    ObserverState,
    PingAnswered,
    Record,
    ScriptBegan,
    ScriptEnded,
    StandardError,
    SupervisorEnded,
    Syslog,
    Unreadable,
    WatchdogEvent,
)
from wardex_desk.story import Line, Story
from wardex_desk.story_print import Printer, format_line, wants_colour


def record(text, level="TRACE", at=101.0, whole=True):
    return Record(at, level, "wardex", text, 7, whole)


def told(*events, finish=False):
    """Actor and text of the lines after the one of the power-on."""
    story = Story()
    story.tell(Boot(100.0, "power-on"))
    lines = [line for event in events for line in story.tell(event)]
    lines += story.finish() if finish else []
    return [(line.actor, line.text) for line in lines]


def test_time_counts_from_the_power_on():
    story = Story()
    assert story.tell(Boot(100.0, "power-on")) == [Line(0.0, "device", "is switched on", "good")]
    (line,) = story.tell(NameChanged(101.5, "com.orvo.pictor", True))
    assert line.at == 1.5
    (line,) = story.tell(Boot(190.0, "reboot"))
    assert (line.at, line.text) == (90.0, "boots again after the reboot (boot 2)")


@pytest.mark.parametrize(
    "event, line",
    [
        (NameChanged(101, "com.orvo.pictor", True), ("pictor", "is on the bus (com.orvo.pictor)")),
        (NameChanged(101, "com.orvo.vistor", False), ("corvane", "left the bus (com.orvo.vistor)")),
        (
            NameChanged(101, "com.orvo.other", True),
            ("com.orvo.other", "is on the bus (com.orvo.other)"),
        ),
        (
            Availability(101, {"com.orvo.vistor": "down", "com.orvo.pictor": "up"}),
            ("wardex", "says: pictor up, corvane down"),
        ),
        (PingAnswered(101, "pictor", "starting"), ("pictor", 'is pinged: answers "starting"')),
        (PingAnswered(101, "pictor", "hang"), ("pictor", "is pinged: no answer")),
        (PingAnswered(101, "pictor", "delay 1500"), ("pictor", "is pinged: delay 1500")),
        (record("as it is", "WARN"), ("wardex", "WARN  as it is")),
        (record("as it is", "ERROR"), ("wardex", "ERROR as it is")),
        (record("as it is", "EMERG"), ("wardex", "EMERG as it is")),
        (record("as it is", "UNKNOWN"), ("wardex", "UNKNOWN as it is")),
        (record("as it", "FATAL", whole=False), ("wardex", "FATAL as it [cut]")),
        (record("mask", "INFO"), ("wardex", "INFO  mask")),
        (record("SuprStarting::entry (com.orvo.vistor)"), ("corvane", "SuprStarting")),
        (record("SuprStartingSystem::entry"), ("system", "SuprStartingSystem")),
        (record("Ping com.orvo.pictor failed"), ("pictor", "ping failed, strike 1 of 4")),
        (ScriptBegan(101, "mf-optware", "restart", 101), ("scripts", "mf-optware restart ...")),
        (ScriptBegan(101, "reboot", "", 101), ("device", "is told to reboot")),
        (WatchdogEvent(101, "open"), ("watchdog", "is armed")),
        (WatchdogEvent(101, "close"), ("watchdog", "is let go, and counts on")),
        (SupervisorEnded(101, 1), ("wardex", "ends with status 1")),
        (SupervisorEnded(101, 137), ("wardex", "is killed by signal 9 (SIGKILL)")),
        (SupervisorEnded(101, 130), ("wardex", "is killed by signal 2")),
        (Syslog(101, 10, "wardex", "all lost"), ("syslog", "wardex: all lost")),
        (StandardError(101, "Error: gone"), ("wardex", "stderr: Error: gone")),
        (ObserverState(101, "bus", "lost"), ("desk", "lost sight of the bus")),
        (Unreadable(101, "pings", "?"), ("desk", "cannot read in pings: ?")),
    ],
    ids=lambda value: value[1] if isinstance(value, tuple) else type(value).__name__,
)
def test_an_event_becomes_one_line(event, line):
    assert told(event) == [line]


SILENT = [
    record("Ping interval of service com.orvo.pictor is 1000"),
    record("SuprUp::exit (com.orvo.pictor)"),
    record("SuprUp::up (com.orvo.pictor)"),
    record("SuprStableSystem::exit"),
    record("SuprStableSystem::serviceIsDown com.orvo.pictor"),
    record("Ping threshold exceeded. Going down"),
    WatchdogEvent(101, "gettimeout"),
    ObserverState(101, "bus", "listening"),
    ScriptBegan(101, "30_pictor", "stop", 101),
    Feed(101, 1),
]


def test_what_a_person_need_not_see_gives_no_line():
    for event in SILENT:
        assert told(event) == [], event


def test_a_script_is_told_with_its_duration_and_status():
    assert told(
        ScriptBegan(101.01, "30_pictor", "restart", 101.0),
        ScriptEnded(101.25, "30_pictor", "restart", 101.25, 0),
        ScriptBegan(102.01, "30_pictor", "stop", 102.0),
        ScriptEnded(103.5, "30_pictor", "stop", 103.5, 3),
    ) == [
        ("scripts", "30_pictor restart: done in 0.25 s"),
        ("scripts", "30_pictor stop: failed with status 3 after 1.50 s"),
    ]


def test_a_script_that_the_boot_cuts_off_is_told():
    assert told(
        ScriptBegan(101, "30_pictor", "stop", 101),
        ScriptBegan(102, "reboot", "", 102),
        Boot(103, "reboot"),
    )[1:] == [
        ("scripts", "30_pictor stop: cut off"),
        ("device", "boots again after the reboot (boot 2)"),
    ]


@pytest.mark.parametrize(
    "reason, words",
    [
        ("Ping threshold exceeded. Going down", "does not answer"),
        ("System run level is down. Going down.", 'run level "down"'),
        (
            "Service com.orvo.pictor not registered anymore?! Going down.",
            "gone from the bus",
        ),
    ],
)
def test_a_transition_names_both_states_and_the_reason(reason, words):
    assert told(
        record("SuprUp::entry (com.orvo.pictor)"),
        record(reason),
        record("SuprUp::down (com.orvo.pictor)"),
        record("SuprUp::exit (com.orvo.pictor)"),
        record("SuprDown::entry (com.orvo.pictor)"),
        record("SuprStarting::entry (com.orvo.pictor)"),
    ) == [
        ("pictor", "SuprUp"),
        ("pictor", f"SuprUp -> SuprDown  ({words})"),
        ("pictor", "SuprDown -> SuprStarting"),
    ]


def strikes(*events):
    return [text[-6:] for actor, text in told(*events) if "strike" in text]


FAILED = record("Ping com.orvo.pictor failed")
PINGED = PingAnswered(101.0, "pictor", "hang")


def test_strikes_of_a_silent_service_add_up():
    assert strikes(PINGED, FAILED, PINGED, FAILED, PINGED, FAILED, PINGED, FAILED) == [
        "1 of 4",
        "2 of 4",
        "3 of 4",
        "4 of 4",
    ]


def test_strikes_of_a_dead_service_add_up_without_pings():
    assert strikes(PINGED, FAILED, FAILED) == ["1 of 4", "2 of 4"]


def test_an_answered_ping_wipes_the_strikes_out():
    answered = PingAnswered(102.0, "pictor", "up")
    assert strikes(PINGED, FAILED, PINGED, FAILED, answered, PINGED, FAILED) == [
        "1 of 4",
        "2 of 4",
        "1 of 4",
    ]


def test_a_new_state_begins_without_strikes():
    entry = record("SuprUp::entry (com.orvo.pictor)")
    assert strikes(PINGED, FAILED, entry, PINGED, FAILED) == ["1 of 4", "1 of 4"]


def test_strikes_of_one_service_are_not_those_of_another():
    other = record("Ping com.orvo.vistor failed")
    assert strikes(FAILED, other, FAILED) == ["1 of 4", "1 of 4", "2 of 4"]


def test_a_ping_is_told_only_when_its_answer_changes():
    answers = ["up", "up", "starting", "starting", "up"]
    assert told(*(PingAnswered(101.0, "pictor", answer) for answer in answers)) == [
        ("pictor", 'is pinged: answers "up"'),
        ("pictor", 'is pinged: answers "starting"'),
        ("pictor", 'is pinged: answers "up"'),
    ]


def test_ten_feeds_are_summed_up_with_the_longest_gap():
    moments = [101.0, 102.02, 103.0, 104.0, 105.0, 106.0, 107.0, 108.0, 109.0, 110.0]
    feeds = [Feed(at, number) for number, at in enumerate(moments, 1)]
    assert told(*feeds[:9]) == []
    assert told(*feeds) == [("watchdog", "fed 10 times, longest gap 1.02 s")]


def test_a_long_gap_is_told_at_once():
    assert told(Feed(101.0, 1), Feed(103.4, 2)) == []
    assert told(Feed(101.0, 1), Feed(103.6, 2)) == [("watchdog", "fed 2 times, longest gap 2.60 s")]


def test_feeds_are_summed_up_before_the_end_and_not_twice():
    lines = told(Feed(101.0, 1), Feed(102.0, 2), SupervisorEnded(102.5, 137), finish=True)
    assert lines == [
        ("watchdog", "fed 2 times, longest gap 1.00 s"),
        ("wardex", "is killed by signal 9 (SIGKILL)"),
    ]
    assert told(Feed(101.0, 1), finish=True) == [("watchdog", "fed once")]


def test_a_reset_names_the_silence_before_it():
    assert told(Feed(101.0, 1), WatchdogEvent(105.04, "reset"))[-1] == (
        "watchdog",
        "not fed for 4.0 s: resets the device",
    )


def test_a_new_boot_forgets_states_and_feeds():
    lines = told(
        record("SuprStableSystem::entry"),
        Feed(101.0, 1),
        Boot(110.0, "watchdog"),
        record("SuprStartingSystem::entry", at=111.0),
        Feed(112.0, 1),
        finish=True,
    )
    assert lines == [
        ("system", "SuprStableSystem"),
        ("watchdog", "fed once"),
        ("device", "boots again after the watchdog (boot 2)"),
        ("system", "SuprStartingSystem"),
        ("watchdog", "fed once"),
    ]


def test_a_flood_of_equal_lines_is_counted():
    flood = [record("lost", "ERROR", at=101 + i / 1000) for i in range(2500)]
    lines = told(*flood, finish=True)
    assert lines[:5] == [("wardex", "ERROR lost")] * 5
    assert [text for _, text in lines[5:]] == [
        "995 times more: ERROR lost",
        "1000 times more: ERROR lost",
        "500 times more: ERROR lost",
    ]


def test_lines_that_come_now_and_then_are_no_flood():
    slow = [record("again", "WARN", at=101 + i) for i in range(20)]
    assert told(*slow, finish=True) == [("wardex", "WARN  again")] * 20


class Terminal(io.StringIO):
    def isatty(self):
        return True


@pytest.mark.parametrize(
    "stream, environment, colour",
    [
        (Terminal(), {}, True),
        (Terminal(), {"NO_COLOR": ""}, True),
        (Terminal(), {"NO_COLOR": "1"}, False),
        (Terminal(), {"TERM": "dumb"}, False),
        (io.StringIO(), {}, False),
    ],
)
def test_colour_is_for_terminals_whose_owner_does_not_object(stream, environment, colour):
    assert wants_colour(stream, environment) is colour


def test_columns_are_aligned():
    lines = [Line(0.0, "device", "a"), Line(12.345, "watchdog", "b"), Line(10000.0, "pictor", "c")]
    assert [format_line(line, colour=False) for line in lines] == [
        "    0.00 s  device    a",
        "   12.35 s  watchdog  b",
        "10000.00 s  pictor    c",
    ]


@pytest.mark.parametrize("tone, code", [("good", 32), ("attention", 33), ("bad", 31)])
def test_a_tone_has_its_colour(tone, code):
    assert f"\033[{code}mpictor" in format_line(Line(1.0, "pictor", "x", tone), colour=True)
    assert "\033" not in format_line(Line(1.0, "pictor", "x", tone), colour=False)


def test_nothing_from_the_device_reaches_the_terminal_as_a_command():
    text = "a\033[2Jb\tc\udcffd"
    assert format_line(Line(1.0, "wardex", text), colour=False).endswith("a?[2Jb?c?d")
    stream = io.StringIO()
    printer = Printer(stream, {})
    printer.verdict("FAIL", text)
    printer.remark(text)
    assert stream.getvalue() == "FAIL  a?[2Jb?c?d\n        a?[2Jb?c?d\n"
