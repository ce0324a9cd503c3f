"""What the supervisor makes of each answer to doPing, right or wrong, at once, late or never."""

import pytest
from camera import PICTOR, VISTOR

FAILED = f"Ping {PICTOR} failed"
LEVEL_DOWN = "System run level is down. Going down."
THRESHOLD = "Ping threshold exceeded. Going down"
WRONG_SIGNATURE = ("garbage none", "garbage swap", "error", "delay 1500", "hang")
NO_RUN_LEVEL = ("garbage one", "garbage three", "down")
OTHER_RUN_LEVEL = (
    *("garbage int", "garbage variant", "garbage struct", "garbage huge"),
    *("delay 0 asleep", "delay 0 UP", "delay 700"),
)


@pytest.fixture
def answering(put_on_desk):
    """Boots a camera whose pictor answers so, ping by ping, the last one for ever."""

    def make(*steps, **plan):
        camera = put_on_desk(**plan)
        camera.order("pictor", *steps)
        camera.power_on()
        return camera

    return make


def await_pings(camera, count, service="pictor"):
    """Waits until the machine has judged so many answers: the next ping has come."""
    camera.await_true(lambda: len(camera.pings(service)) > count, f"{count} answers of {service}")


@pytest.mark.parametrize("answer", WRONG_SIGNATURE)
def test_answer_that_is_none_is_a_strike_against_a_service_that_is_up(answering, answer):
    camera = answering("up", answer, "up")
    await_pings(camera, 3)
    camera.await_text(FAILED)
    assert camera.texts().count(FAILED) == 1
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp"]
    assert LEVEL_DOWN not in camera.texts()


@pytest.mark.parametrize("answer", NO_RUN_LEVEL)
def test_answer_without_a_run_level_counts_as_down(answering, answer):
    camera = answering("up", answer, developer=True)
    camera.await_text(f"SuprDown::entry ({PICTOR})")
    assert LEVEL_DOWN in camera.texts()
    assert FAILED not in camera.texts()
    assert camera.pings("pictor")[:2] == ["up", answer.split()[0]]
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp", "SuprDown"]


@pytest.mark.parametrize("answer", OTHER_RUN_LEVEL)
def test_any_other_run_level_leaves_a_service_up(answering, answer):
    camera = answering("up", answer)
    await_pings(camera, 3)
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp"]
    assert not {FAILED, LEVEL_DOWN} & set(camera.texts())


def test_fourth_strike_takes_a_service_down(answering):
    camera = answering("up", "error", developer=True)
    camera.await_text(f"SuprDown::entry ({PICTOR})")
    assert camera.texts().count(FAILED) == 4
    assert camera.texts().count(THRESHOLD) == 1
    assert camera.pings("pictor")[:5] == ["up", *["error"] * 4]


def test_three_strikes_are_forgotten_when_the_service_answers(answering):
    camera = answering("up", "error", "error", "error", "up", "error", "up")
    await_pings(camera, 7)
    assert camera.texts().count(FAILED) == 4
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp"]
    assert THRESHOLD not in camera.texts()


def test_late_answer_is_not_taken_for_the_next_one(answering):
    # The answer to the second ping, "down", arrives while the third is on its way.
    camera = answering("up", "delay 1300 down", "delay 800", "up")
    await_pings(camera, 4)
    assert camera.texts().count(FAILED) == 1
    assert LEVEL_DOWN not in camera.texts()
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp"]


def test_corvane_has_more_time_than_pictor(put_on_desk):
    camera = put_on_desk()
    camera.order("corvane", "up", "delay 1500", "delay 3500", "up")
    camera.power_on()
    await_pings(camera, 4, "corvane")
    camera.await_text(f"Ping {VISTOR} failed")
    assert camera.texts().count(f"Ping {VISTOR} failed") == 1
    assert camera.path(VISTOR) == ["SuprStarting", "SuprUp"]


def test_service_that_starts_again_is_not_reported_down(answering):
    camera = answering("up", "starting", "up")
    camera.await_text(f"SuprUp::entry ({PICTOR})", times=2)
    camera.await_stable()
    assert "System run level STARTING. Going starting" in camera.texts()
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp", "SuprStarting", "SuprUp"]
    assert "SuprUnstableSystem::entry" not in camera.texts()
    assert {"pictor": "down", "vistor": "up"} not in camera.availability()


@pytest.mark.parametrize("answer", NO_RUN_LEVEL)
def test_service_without_a_run_level_at_its_start_gets_a_fresh_start(answering, answer):
    camera = answering(answer, "up")
    camera.await_text(f"SuprUp::entry ({PICTOR})")
    assert camera.path(PICTOR) == ["SuprStarting", "SuprDown", "SuprStarting", "SuprUp"]
    # The machine of a device that still starts does not ping a service that is down.
    assert camera.pings("pictor")[:2] == [answer.split()[0], "up"]


@pytest.mark.parametrize("answer", ["garbage int", "garbage none", "error", "starting"])
def test_service_that_is_not_yet_up_at_its_start_is_asked_again(answering, answer):
    camera = answering(answer, answer, "up")
    camera.await_text(f"SuprUp::entry ({PICTOR})")
    assert camera.pings("pictor")[:3] == [answer.split()[0]] * 2 + ["up"]
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp"]


@pytest.mark.parametrize("answer", ["up", "starting"])
def test_service_that_is_down_starts_again_when_it_answers(answering, answer):
    # In developer mode one that is down is pinged, whatever state the device is in.
    camera = answering("down", "garbage three", answer, "up", developer=True)
    camera.await_text(f"SuprUp::entry ({PICTOR})")
    assert camera.pings("pictor")[:4] == ["down", "garbage", answer, "up"]
    assert camera.path(PICTOR) == ["SuprStarting", "SuprDown", "SuprStarting", "SuprUp"]
