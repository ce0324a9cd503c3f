"""The verdict of each scenario: content with a device that keeps to the rules, and with no other."""

import pytest
from canned import Canned
from canned_stories import PICTOR, STORIES

from wardex_desk import faults
from wardex_desk import judge_texts as texts
from wardex_desk.events import (
    Availability,
    Boot,
    Feed,
    NameChanged,
    Record,
    ScriptBegan,
    SupervisorEnded,
    Syslog,
    WatchdogEvent,
)
from wardex_desk.judge import Verdict
from wardex_desk.scenario import SCENARIOS, catalogue

NAMES = (
    "healthy hang crash slow-start flapping dead supervisor-killed developer no-identity "
    "family-zk4xx family-zm7xx family-zq9xx"
).split()


FAULTS = [scenario.name for scenario in (*faults.SCENARIOS, *faults.SOAKS)]


def verdict_on(name, device):
    verdict = Verdict()
    SCENARIOS[name].judge(verdict, device.lives())
    return verdict


def failures(name, device):
    return [f.claim for f in verdict_on(name, device).findings if f.holds is False]


def test_every_story_of_the_device_is_offered_with_one_line_each():
    assert list(catalogue()) == NAMES + FAULTS
    assert all(line and "\n" not in line for line in catalogue().values())


@pytest.mark.parametrize("name", NAMES)
def test_a_device_that_keeps_to_the_rules_passes(name):
    verdict = verdict_on(name, STORIES[name]())
    assert failures(name, STORIES[name]()) == []
    assert verdict.holds


@pytest.mark.parametrize("name", NAMES)
def test_a_device_without_journals_fails(name):
    assert len(failures(name, Canned())) >= 3


@pytest.mark.parametrize("name", NAMES)
def test_a_device_that_plays_another_story_fails(name):
    twins = {"healthy", "family-zk4xx"}
    for other in NAMES:
        if other != name and {name, other} != twins:
            assert failures(name, STORIES[other]()), other


@pytest.mark.parametrize("name", NAMES)
def test_an_unexpected_record_fails(name):
    for level in ("WARN", "ERROR", "FATAL", "EMERG", "UNKNOWN"):
        device = STORIES[name]().record(102.5, level, "Bello is dead!!!")
        assert failures(name, device), level


@pytest.mark.parametrize("name", NAMES)
def test_a_record_of_another_program_is_no_business_of_the_verdict(name):
    device = STORIES[name]()
    device.record(102.5, "ERROR", "no picture", source="pictor")
    assert failures(name, device) == []


@pytest.mark.parametrize("name", NAMES)
def test_a_script_too_many_fails(name):
    assert failures(name, STORIES[name]().call(102.5, "40_corvane", "restart"))


@pytest.mark.parametrize("name", NAMES)
def test_a_boot_too_many_fails(name):
    assert failures(name, STORIES[name]().then(Canned("watchdog", 300.0)))


def picks(kind, **attributes):
    """Events of a kind with these attributes."""
    return lambda event: isinstance(event, kind) and all(
        getattr(event, key) == value for key, value in attributes.items()
    )


def first(unwanted):
    """Of what `unwanted` picks, the first only."""
    seen = []

    def pick(event):
        if not seen and unwanted(event):
            seen.append(event)
            return True
        return False

    return pick


MUST_HAVE = {
    "healthy": [
        picks(Record, text=texts.STARTS),
        picks(Record, text=texts.FAMILY["ZK4XX"]),
        picks(Record, text="SuprUp::entry (com.orvo.pictor)"),
        picks(Record, text="SuprUp::entry (com.orvo.vistor)"),
        picks(Record, text="SuprStableSystem::entry"),
        first(picks(Record, text=texts.ping_interval(PICTOR, 1000))),
        first(picks(Record, text=texts.ping_interval("com.orvo.vistor", 2200))),
        picks(Feed, number=6),
        first(picks(Availability)),
        picks(NameChanged),
    ],
    "hang": [
        first(picks(Record, text=texts.ping_failed(PICTOR))),
        picks(Record, text=texts.THRESHOLD),
        picks(Record, text=texts.considered_dead(PICTOR)),
        picks(ScriptBegan, action="stop"),
        picks(ScriptBegan, action="restart"),
        picks(Record, text="SuprUnstableSystem::entry"),
    ],
    "crash": [
        first(picks(Record, text=texts.ping_failed(PICTOR))),
        picks(Record, text=texts.not_registered(PICTOR)),
        picks(ScriptBegan, action="restart"),
    ],
    "slow-start": [
        picks(Record, text=texts.suspicious(PICTOR)),
        picks(Record, text=texts.RUN_LEVEL_STARTING),
        picks(Feed, number=3),
    ],
    "flapping": [
        first(picks(Record, text=texts.RUN_LEVEL_DOWN)),
        first(picks(Record, text=texts.ping_failed(PICTOR))),
        picks(Record, text=texts.RESTARTS_PACKAGE),
        picks(Syslog),
        picks(Feed, number=12),
        picks(ScriptBegan, call="mf-optware restart"),
    ],
    "dead": [
        first(picks(Record, text=texts.RESTARTS_PACKAGE)),
        first(picks(Syslog)),
        picks(Record, text=texts.TOO_MANY_RESTARTS),
        picks(Record, text=texts.RESTARTS_SYSTEM),
        picks(ScriptBegan, script="reboot"),
        first(picks(ScriptBegan, call="30_pictor stop")),
        first(picks(ScriptBegan, call="mf-optware restart")),
        picks(Feed, number=20),
        picks(Boot, reason="reboot"),
        picks(Record, text="SuprRebootSystem::entry"),
    ],
    "supervisor-killed": [
        picks(WatchdogEvent, what="reset"),
        picks(SupervisorEnded),
        picks(Boot, reason="watchdog"),
    ],
    "developer": [
        picks(Record, text=texts.considered_dead_as_developer(PICTOR)),
        picks(Record, text=texts.WOULD_RESTART_PACKAGE),
        picks(Record, text=texts.WOULD_RESTART_SYSTEM),
        first(picks(Syslog)),
        first(picks(Record, text="SuprUnstableSystem::entry")),
    ],
    "no-identity": [
        picks(Record, text=texts.NO_FAMILY),
        picks(Record, text=texts.GIVES_UP),
        picks(SupervisorEnded),
    ],
    "family-zm7xx": [
        picks(Record, text=texts.FAMILY["ZM7xx"]),
        picks(Record, text=texts.unknown_service(PICTOR)),
        picks(Record, text=texts.ping_interval(PICTOR, 0)),
        picks(Feed, number=4),
        picks(Availability),
    ],
    "family-zq9xx": [
        picks(Record, text=texts.FAMILY["ZQ9XX"]),
    ],
}


@pytest.mark.parametrize("name", MUST_HAVE)
def test_a_device_that_leaves_a_part_out_fails(name):
    for number, part in enumerate(MUST_HAVE[name]):
        assert failures(name, STORIES[name]().without(part)), number


TOO_MUCH = {
    "hang": [
        Record(115.0, "TRACE", "wardex", texts.ping_failed(PICTOR)),
        Record(116.3, "WARN", "wardex", texts.considered_dead(PICTOR)),
        Record(106.0, "TRACE", "wardex", "SuprDown::entry (com.orvo.vistor)"),
        Record(120.0, "TRACE", "wardex", "SuprStartingSystem::entry"),
    ],
    "slow-start": [
        Record(106.5, "TRACE", "wardex", "SuprDown::entry (com.orvo.pictor)"),
        Feed(106.5, 20),
    ],
    "flapping": [
        Feed(114.7, 40),
    ],
    "dead": [
        Feed(173.0, 80),
        Feed(110.5, 80),
        Record(104.5, "WARN", "wardex", texts.considered_dead(PICTOR)),
        Record(110.5, "WARN", "wardex", texts.considered_dead(PICTOR)),
        Availability(120.0, {PICTOR: "up", "com.orvo.vistor": "up"}),
        Syslog(120.0, 10, "wardex", texts.RESTARTS_PACKAGE),
    ],
    "supervisor-killed": [
        WatchdogEvent(112.0, "reset"),
    ],
    "developer": [
        WatchdogEvent(101.0, "open"),
        Record(107.0, "WARN", "wardex", texts.considered_dead_as_developer(PICTOR)),
        Record(117.95, "FATAL", "wardex", texts.WOULD_RESTART_PACKAGE),
        Record(169.5, "EMERG", "wardex", texts.WOULD_RESTART_SYSTEM),
        Syslog(150.0, 10, "wardex", texts.WOULD_RESTART_PACKAGE),
    ],
    "no-identity": [
        NameChanged(100.6, "com.orvo.wardex", True),
        WatchdogEvent(100.6, "open"),
        Record(100.65, "TRACE", "wardex", "SuprStartingSystem::entry"),
    ],
    "family-zm7xx": [
        Record(106.0, "TRACE", "wardex", "SuprUp::entry (com.orvo.pictor)"),
    ],
}


@pytest.mark.parametrize("name", TOO_MUCH)
def test_a_device_that_does_too_much_fails(name):
    for event in TOO_MUCH[name]:
        assert failures(name, STORIES[name]().add(event)), event


def test_what_a_flooding_device_does_after_its_first_unstable_second_is_another_story():
    device = STORIES["family-zm7xx"]().enters(120.0, "system", "SuprStartingSystem")
    device.record(119.9, "FATAL", texts.RESTARTS_PACKAGE).call(119.95, "mf-optware", "restart")
    assert failures("family-zm7xx", device) == []


def test_a_device_that_goes_down_at_once_shows_nothing_about_feeds():
    device = STORIES["dead"]()
    at_once = device.without(picks(Boot, reason="reboot")).add(Boot(172.2, "reboot"))
    assert failures("dead", at_once) == [
        "the device takes longer to go down than a feed would take to come"
    ]


def test_a_refused_duty_is_named_and_not_held_against_the_device():
    refusal = "sched_setscheduler() failed: (Operation not permitted)"
    device = STORIES["healthy"]().record(100.7, "WARN", refusal)
    verdict = verdict_on("healthy", device)
    assert verdict.holds
    assert [(f.word, f.claim) for f in verdict.findings if f.holds is None] == [
        ("SKIP", f"real-time duties: {refusal}")
    ]
