"""The stage: a driver waits for signs, each with a bound, and the story is told meanwhile."""

import io

import pytest

from wardex_desk import scenarios_stage as sign
from wardex_desk.controls import Controls, NotSeen
from wardex_desk.events import (
    Availability,
    Boot,
    Feed,
    NameChanged,
    PingAnswered,
    Record,
    ScriptBegan,
    SupervisorEnded,
    WatchdogEvent,
)
from wardex_desk.firmware import Plan
from wardex_desk.instance import Instance
from wardex_desk.scenarios_stage import Stage
from wardex_desk.sources import EventStream
from wardex_desk.story import Story
from wardex_desk.story_live import follow
from wardex_desk.story_print import Printer

AT_ONCE = 0.0


@pytest.fixture(name="watchdog_journal")
def journal(tmp_path):
    (tmp_path / "camera/log").mkdir(parents=True)
    return tmp_path / "camera/log/watchdog"


@pytest.fixture(name="output")
def told():
    return io.StringIO()


@pytest.fixture(name="stage")
def bare_stage(tmp_path, output):
    instance = Instance("camera", tmp_path)
    stream = EventStream(instance.folder)
    return Stage(Controls(instance), stream, Story(), Printer(output, {}))


def test_a_sign_that_was_given_ends_the_wait(stage, watchdog_journal):
    watchdog_journal.write_text("1.0 open\n2.0 feed 1\n")
    stage.await_sign("a feed", sign.feeds(), AT_ONCE)


def test_a_sign_that_does_not_come_is_named(stage):
    with pytest.raises(NotSeen, match="not seen within 0 s: the end of time"):
        stage.await_sign("the end of time", sign.feeds(), AT_ONCE)


def test_a_sign_counts_from_the_one_before(stage, watchdog_journal):
    watchdog_journal.write_text("1.0 feed 1\n2.0 reset\n")
    stage.await_sign("the reset", sign.resets(), AT_ONCE)
    with pytest.raises(NotSeen):
        stage.await_sign("a feed", sign.feeds(), AT_ONCE)


def test_a_sign_may_be_wanted_several_times(stage, watchdog_journal):
    watchdog_journal.write_text("1.0 feed 1\n2.0 feed 2\n3.0 feed 3\n")
    stage.await_sign("two feeds", sign.feeds(), AT_ONCE, times=2)
    with pytest.raises(NotSeen, match="a feed, seen 1 of 2 times"):
        stage.await_sign("a feed", sign.feeds(), AT_ONCE, times=2)


def test_the_story_is_told_while_waiting_and_to_its_end(stage, watchdog_journal, output):
    watchdog_journal.write_text("1.0 open\n2.0 feed 1\n")
    stage.look()
    assert output.getvalue() == "    0.00 s  watchdog  is armed\n"
    stage.close()
    assert output.getvalue().splitlines()[1:] == ["    1.00 s  watchdog  fed once"]


@pytest.mark.parametrize(
    "wanted, given, other",
    [
        (
            sign.enters("corvane", "SuprUp"),
            Record(1, "TRACE", "wardex", "SuprUp::entry (com.orvo.vistor)"),
            Record(1, "TRACE", "wardex", "SuprUp::entry (com.orvo.pictor)"),
        ),
        (
            sign.enters("system", "SuprStableSystem"),
            Record(1, "TRACE", "wardex", "SuprStableSystem::entry"),
            Record(1, "TRACE", "wardex", "SuprStableSystem::exit"),
        ),
        (
            sign.calls("30_pictor stop"),
            ScriptBegan(1, "30_pictor", "stop", 1),
            ScriptBegan(1, "30_pictor", "restart", 1),
        ),
        (
            sign.answers("pictor", "up"),
            PingAnswered(1, "pictor", "up"),
            PingAnswered(1, "pictor", "down"),
        ),
        (
            sign.leaves_the_bus("pictor"),
            NameChanged(1, "com.orvo.pictor", False),
            NameChanged(1, "com.orvo.pictor", True),
        ),
        (sign.feeds(), Feed(1, 1), WatchdogEvent(1, "open")),
        (sign.resets(), WatchdogEvent(1, "reset"), WatchdogEvent(1, "open")),
        (sign.boots("reboot"), Boot(1, "reboot"), Boot(1, "watchdog")),
        (sign.supervisor_ends(), SupervisorEnded(1, 0), Boot(1, "reboot")),
    ],
    ids="enters enters-system calls answers leaves-the-bus feeds resets boots ends".split(),
)
def test_a_sign_is_known_from_its_like(wanted, given, other):
    assert wanted(given)
    assert not wanted(other)
    assert not wanted(Availability(1, {}))


class Passing:
    """Stands in for a device that is on for a few looks and then off."""

    plan = Plan(family="ZQ9XX")

    def __init__(self, instance, looks):
        self.instance = instance
        self._looks = looks

    def is_on(self):
        self._looks -= 1
        return self._looks >= 0


def test_a_live_story_is_told_until_the_device_is_off(tmp_path, watchdog_journal, output):
    watchdog_journal.write_text("1.0 open\n2.0 feed 1\n")
    follow(Passing(Instance("camera", tmp_path), 2), output, lambda: False)
    assert output.getvalue().splitlines()[2:] == [
        "    0.00 s  watchdog  is armed",
        "    1.00 s  watchdog  fed once",
    ]
    assert "ZQ9XX" in output.getvalue().splitlines()[0]


def test_a_live_story_ends_when_it_is_told_to(tmp_path, watchdog_journal, output):
    follow(Passing(Instance("camera", tmp_path), 10**9), output, lambda: True)
    assert watchdog_journal.parent.is_dir()
    assert len(output.getvalue().splitlines()) == 2


def test_a_live_story_is_told_to_its_end_when_the_person_ends_it(
    tmp_path, watchdog_journal, output
):
    def interrupt():
        watchdog_journal.write_text("1.0 open\n")
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        follow(Passing(Instance("camera", tmp_path), 10**9), output, interrupt)
    assert output.getvalue().splitlines()[2:] == ["    0.00 s  watchdog  is armed"]
