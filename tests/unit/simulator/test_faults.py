"""What is claimed of a device with a fault: nothing missing, nothing twice, no gap too long."""

import pytest
from canned import Canned

from wardex_desk.faults_types import Fault
from wardex_desk.firmware import Plan
from wardex_desk.judge import Verdict
from wardex_desk.judge_watchdog import gap_of
from wardex_desk.scenarios_trouble import STARTED

ONCE = ("ERROR", "what is wrong")
OFTEN = ("WARN", "Bello is dead!!!")


def fault(**traits):
    return Fault("example", "an example", lambda stage: None, 2.5, plan=Plan(), **traits)


def device(*complaints):
    canned = Canned().armed(100.5).feeds(101.5, 102.5, 103.5)
    for number, (level, text) in enumerate((*STARTED, *complaints)):
        canned.record(100.4 + number / 10, level, text)
    return canned


def failures(example, canned):
    verdict = Verdict()
    example.scenario().judge(verdict, canned.lives())
    return [finding.claim for finding in verdict.findings if finding.holds is False]


def test_device_that_says_what_is_wrong_once_passes():
    assert failures(fault(says=(ONCE,)), device(ONCE)) == []


@pytest.mark.parametrize("complaints", [(), (ONCE, ONCE), (ONCE, OFTEN)])
def test_device_that_says_it_never_twice_or_more_fails(complaints):
    assert len(failures(fault(says=(ONCE,)), device(*complaints))) == 1


@pytest.mark.parametrize("times", [1, 3])
def test_what_may_be_repeated_may_come_as_often_as_it_likes(times):
    assert failures(fault(repeats=(OFTEN,)), device(*(OFTEN,) * times)) == []


def test_what_may_be_repeated_must_come_once():
    assert len(failures(fault(repeats=(OFTEN,)), device())) == 1


def test_device_that_boots_again_or_whose_supervisor_ends_fails():
    again = device()
    again.events.extend(Canned("watchdog", at=110.0).events)
    assert len(failures(fault(), again)) == 1
    assert len(failures(fault(), device().supervisor_ends(103.9, 137))) == 1
    assert failures(fault(endings=(137,)), device().supervisor_ends(103.9, 137)) == []


def test_gap_that_is_too_long_fails():
    assert failures(fault(), device().feeds(106.0)) == []
    assert len(failures(fault(), device().feeds(106.1))) == 1


def test_fault_that_did_not_hold_the_supervisor_up_fails():
    assert len(failures(fault(held_s=1.5), device())) == 1
    assert failures(fault(held_s=1.5), device().feeds(105.0)) == []


def test_gap_is_counted_from_the_opening_of_the_node():
    assert gap_of(Canned().armed(100.5).feeds(103.0, 104.0).lives()[0]) == 2.5
    assert gap_of(Canned().lives()[0]) is None


def test_another_claim_is_asked_for():
    def also(verdict, lives):
        verdict.claim("something else", False)

    assert failures(fault(also=also), device()) == ["something else"]
