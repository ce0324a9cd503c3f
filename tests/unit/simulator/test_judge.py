"""The claims of a verdict, each at its limits: the last that holds and the first that does not."""

import io

import pytest
from canned import Canned
from canned_stories import PICTOR, STORIES

from wardex_desk import judge_claims as claim
from wardex_desk import judge_texts as texts
from wardex_desk import judge_watchdog as watchdog
from wardex_desk.events import ScriptBegan, ScriptEnded, Unreadable
from wardex_desk.judge import EVIDENCE_LINES, Finding, Verdict
from wardex_desk.judge_claims import STABLE, STARTING, UNSTABLE
from wardex_desk.scenario import SCENARIOS, report
from wardex_desk.story_print import Printer

DEAD = texts.considered_dead(PICTOR)


@pytest.fixture(name="verdict")
def empty_verdict():
    return Verdict()


def awake():
    return Canned().supervisor_starts(100.5, texts.STARTS, "ZK4XX")


# The verdict itself.


def test_a_verdict_without_a_claim_does_not_hold(verdict):
    assert not verdict.holds
    verdict.skip("real-time duties", "refused")
    assert not verdict.holds


def test_one_failed_claim_spoils_the_verdict(verdict):
    assert verdict.claim("this", True)
    assert verdict.holds
    assert not verdict.claim("that", False, ["seen nothing"])
    assert not verdict.holds
    assert [finding.word for finding in verdict.findings] == ["PASS", "FAIL"]


def test_evidence_is_kept_for_failures_only_and_not_without_end(verdict):
    verdict.claim("this", True, ["all well"])
    verdict.claim("that", False, [str(i) for i in range(EVIDENCE_LINES + 3)])
    assert verdict.findings[0].evidence == ()
    assert verdict.findings[1].evidence[-2:] == (str(EVIDENCE_LINES - 1), "... and 3 more")


def test_two_things_that_differ_are_both_shown(verdict):
    assert verdict.equal("same", [1], [1])
    assert not verdict.equal("same", [1], [2])
    assert verdict.findings[1].evidence == ("expected: [1]", "seen:     [2]")


class Desk:
    """Stands in for a device in a report: only its folder counts."""

    class instance:
        folder = "/somewhere"


def test_a_report_shows_every_claim_and_the_evidence_against_it(verdict):
    verdict.claim("this", True, ["unseen"], ["one", "two"])
    verdict.claim("that", False, ["seen nothing"])
    verdict.skip("duties", "refused")
    stream = io.StringIO()
    assert report(SCENARIOS["hang"], verdict, Desk, Printer(stream, {})) == 1
    assert stream.getvalue().splitlines()[2:] == [
        "PASS  this",
        "        one",
        "        two",
        "FAIL  that",
        "        ! seen nothing",
        "SKIP  duties: refused",
        "FAIL  hang: 1 of 2 claims do not hold, 1 cannot be shown here",
        "        the device's journals are in /somewhere/log",
    ]


def test_a_report_of_a_device_that_did_well_ends_with_status_0(verdict):
    verdict.claim("this", True)
    stream = io.StringIO()
    assert report(SCENARIOS["hang"], verdict, Desk, Printer(stream, {})) == 0
    assert stream.getvalue().endswith("PASS  hang: all 1 claims hold\n")
    assert Finding("x", None).word == "SKIP"


# What counts as the supervisor's.


def test_calls_before_the_supervisor_and_within_a_script_are_not_its_own():
    device = Canned().call(100.1, "mf-optware", "start").supervisor_starts(100.5, texts.STARTS)
    device.add(ScriptBegan(110.0, "mf-optware", "restart", 110.0))
    device.call(110.1, "30_pictor", "stop").call(110.4, "30_pictor", "start")
    device.add(ScriptEnded(111.0, "mf-optware", "restart", 111.0, 0))
    device.call(112.0, "30_pictor", "stop", status=1)
    calls = device.life().calls
    assert [(call.words, call.status) for call in calls] == [
        ("mf-optware restart", 0),
        ("30_pictor stop", 1),
    ]


def test_a_call_that_never_comes_back_is_a_call():
    device = awake().add(ScriptBegan(110.0, "30_pictor", "stop", 110.0))
    (call,) = device.life().calls
    assert (call.words, call.end) == ("30_pictor stop", None)


def test_a_life_ends_where_the_next_boot_begins():
    first, second = STORIES["supervisor-killed"]().lives()
    assert (first.reason, second.reason) == ("power-on", "watchdog")
    assert first.feeds[-1] < second.feeds[0]
    assert second.clock(114.0).strip() == "14.00 s"


def test_states_have_a_begin_and_an_end():
    spans = STORIES["healthy"]().life().spans("system")
    assert [(s.state, s.begin, s.end) for s in spans] == [
        (STARTING, 101.0, 103.205),
        (STABLE, 103.205, None),
    ]


def test_an_unreadable_line_fails(verdict):
    assert claim.readable(verdict, awake().lives()) is None
    claim.readable(verdict, awake().add(Unreadable(101.0, "bus", "?")).lives())
    assert [finding.holds for finding in verdict.findings] == [True, False]


# Limits.


@pytest.mark.parametrize("gap, holds", [(1.0, True), (1.89, True), (1.91, False), (9.0, False)])
def test_a_gap_between_feeds_is_at_most_so_long(verdict, gap, holds):
    life = awake().feeds(102.0, 103.0, 103.0 + gap).life()
    assert watchdog.fed(verdict, life) is holds


@pytest.mark.parametrize("gap, holds", [(2.89, True), (2.91, False)])
def test_pings_may_hold_a_feed_up(verdict, gap, holds):
    life = awake().feeds(102.0, 102.0 + gap).life()
    assert watchdog.fed(verdict, life, held_up_s=1.0) is holds


@pytest.mark.parametrize("gap, holds", [(1.89, True), (1.91, False)])
def test_a_change_of_state_begins_the_second_anew(verdict, gap, holds):
    device = awake().feeds(102.0, 103.5 + gap)
    assert not watchdog.fed(verdict, device.life())
    assert watchdog.fed(verdict, device.enters(103.5, "system", STABLE).life()) is holds


@pytest.mark.parametrize("seconds, holds", [(3.15, True), (3.05, False)])
def test_the_time_of_a_call_is_no_gap(verdict, seconds, holds):
    life = awake().feeds(102.0, 107.0).call(103.0, "mf-optware", "restart", seconds).life()
    assert watchdog.fed(verdict, life) is holds


def test_too_few_feeds_fail(verdict):
    life = awake().feeds(102.0, 103.0).life()
    assert watchdog.fed(verdict, life, at_least=2)
    assert not watchdog.fed(verdict, life, at_least=3)
    assert not watchdog.fed(verdict, awake().life())


def test_a_feed_after_the_moment_fails(verdict):
    life = awake().feeds(102.0, 103.0).life()
    assert watchdog.not_fed_after(verdict, life, 103.0, "the end")
    assert not watchdog.not_fed_after(verdict, life, 102.9, "the end")
    assert not watchdog.not_fed_after(verdict, life, None, "the end")


@pytest.mark.parametrize("count, holds", [(5, False), (6, True), (7, False)])
def test_a_state_lasts_its_ticks(verdict, count, holds):
    device = awake().enters(101.0, "system", STARTING).enters(109.0, "system", UNSTABLE)
    life = device.feeds(*(102.0 + i for i in range(count))).life()
    assert watchdog.ticks(verdict, life, STARTING, 6) is holds


def test_a_state_that_never_was_has_no_ticks(verdict):
    assert not watchdog.ticks(verdict, awake().life(), UNSTABLE, 0)


@pytest.mark.parametrize("silence, holds", [(3.7, False), (3.9, True), (5.0, True), (5.2, False)])
def test_the_reset_comes_when_the_countdown_has_run_out(verdict, silence, holds):
    life = awake().feeds(102.0).reset(102.0 + silence).life()
    assert watchdog.reset_after(verdict, life, 4.0) is holds


@pytest.mark.parametrize("apart, holds", [(2.86, True), (2.84, False)])
def test_records_keep_their_distance(verdict, apart, holds):
    life = awake().record(110.0, "WARN", DEAD).record(110.0 + apart, "WARN", DEAD).life()
    assert claim.spaced(verdict, life, DEAD, 2.85, "patience") is holds


@pytest.mark.parametrize("seconds, holds", [(1.91, True), (1.89, False)])
def test_a_service_is_given_its_time(verdict, seconds, holds):
    device = awake().enters(110.0, "pictor", "SuprDown")
    life = device.enters(110.0 + seconds, "pictor", "SuprStarting").life()
    assert claim.patience(verdict, life, "pictor", 2.0) is holds


@pytest.mark.parametrize("seconds, holds", [(5.6, False), (5.8, True), (8.0, True), (8.2, False)])
def test_a_state_without_feeds_lasts_its_time(verdict, seconds, holds):
    device = awake().enters(101.0, "system", STARTING)
    life = device.enters(101.0 + seconds, "system", UNSTABLE).life()
    assert claim.lasts(verdict, life, STARTING, 6.0) is holds


# Order and completeness.


def test_records_in_another_order_fail(verdict):
    life = awake().record(110, "WARN", "a").record(111, "ERROR", "b").life()
    start = [(r.level, r.text) for r in life.complaints[:2]]
    assert claim.complaints(verdict, life, *start, ("WARN", "a"), ("ERROR", "b"))
    assert not claim.complaints(verdict, life, *start, ("ERROR", "b"), ("WARN", "a"))
    assert not claim.complaints(verdict, life, *start, ("WARN", "a"))


def test_the_level_of_a_record_counts(verdict):
    life = Canned().record(110, "WARN", "a").life()
    assert not claim.complaints(verdict, life, ("ERROR", "a"))


def test_a_run_of_one_record_counts_as_one(verdict):
    life = Canned().record(110, "WARN", "a").record(111, "WARN", "a").life()
    assert claim.complaints(verdict, life, ("WARN", "a"))
    assert not claim.said(verdict, life, "a", 1)
    assert claim.said(verdict, life, "a", 2)


def test_facts_out_of_order_fail(verdict):
    life = awake().record(110, "WARN", DEAD).call(111, "30_pictor", "stop").life()
    assert claim.in_order(verdict, life, DEAD, "30_pictor stop")
    assert not claim.in_order(verdict, life, "30_pictor stop", DEAD)
    assert not claim.in_order(verdict, life, DEAD, "30_pictor restart")


@pytest.mark.parametrize("after, holds", [(0.009, True), (0.011, False)])
def test_a_call_is_dated_to_ten_milliseconds(verdict, after, holds):
    life = awake().call(111, "30_pictor", "stop").record(111 - after, "WARN", DEAD).life()
    assert claim.in_order(verdict, life, "30_pictor stop", DEAD) is holds
    assert claim.in_order(verdict, life, DEAD, "30_pictor stop")


SINGLE = ("30_pictor stop", "30_pictor restart")


@pytest.mark.parametrize(
    "calls, holds",
    [
        ("stop restart package", True),
        ("stop restart stop restart package", True),
        ("package", False),
        ("stop package", False),
        ("restart stop package", False),
        ("stop restart", False),
        ("stop restart package stop", False),
        ("stop restart package package", False),
    ],
)
def test_single_restarts_are_whole_and_come_before_the_package(verdict, calls, holds):
    device = awake()
    for i, word in enumerate(calls.split()):
        script, action = ("mf-optware", "restart") if word == "package" else ("30_pictor", word)
        device.call(110.0 + i, script, action)
    assert claim.calls_per_round(verdict, device.life(), SINGLE, ("mf-optware restart",)) is holds


def test_a_record_in_the_wrong_state_fails(verdict):
    device = awake().enters(101, "system", STARTING).enters(107, "system", UNSTABLE)
    assert claim.only_in(verdict, device.copy().record(108, "WARN", DEAD).life(), UNSTABLE, DEAD)
    assert not claim.only_in(verdict, device.record(106, "WARN", DEAD).life(), UNSTABLE, DEAD)


def test_a_service_that_is_not_up_in_the_end_fails(verdict):
    assert claim.ends_up(verdict, STORIES["healthy"]().life(), "pictor", "corvane")
    late = STORIES["healthy"]().announces(120.0, "down", "up").life()
    assert not claim.ends_up(verdict, late, "pictor")
    down = STORIES["healthy"]().enters(120.0, "pictor", "SuprDown").life()
    assert not claim.ends_up(verdict, down, "pictor")


def test_lines_of_other_programs_in_the_system_log_do_not_count(verdict):
    device = awake().syslog(110, "a").syslog(111, "b", program="dbus-daemon")
    assert claim.syslog(verdict, device.life(), "a")
    assert not claim.syslog(verdict, device.syslog(112, "a").life(), "a")


def test_a_supervisor_without_its_name_on_the_bus_did_not_start(verdict):
    assert claim.starts(verdict, awake().life())
    nameless = Canned().supervisor_starts(100.5, texts.STARTS).life()
    assert not claim.starts(verdict, nameless)
    assert not claim.starts(verdict, awake().life(), texts.STARTS_AS_DEVELOPER)
