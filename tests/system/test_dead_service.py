"""A service that stays down is restarted by its script, whatever that script is worth."""

import pytest
from camera import PICTOR

DEAD = f"Service {PICTOR} considered dead, restarting"
SCRIPT = "/opt/orvo/etc/init.d/30_pictor"


def judge_dead(camera):
    """Lets pictor stay down until the machine has restarted it, as it thinks."""
    camera.order("pictor", "down")
    camera.await_text(DEAD)
    camera.await_text(f"SuprStarting::entry ({PICTOR})", times=2)


def test_dead_service_is_stopped_and_started_and_comes_up_again(stable):
    before = stable.instance.read("/run/pictor.pid")
    # Time enough to change the order before the fresh process reads it.
    stable.knob("30_pictor", "restart", "delay 1500")
    stable.order("pictor", "down")
    stable.await_text(DEAD)
    stable.order("pictor", "up")
    stable.await_text("SuprStableSystem::entry", times=2)
    assert stable.calls() == [
        *("30_pictor stop begin", "30_pictor stop end 0"),
        *("30_pictor restart begin", "30_pictor restart end 0"),
    ]
    assert stable.instance.read("/run/pictor.pid") not in ("", before)
    assert stable.path(PICTOR) == [
        *("SuprStarting", "SuprUp", "SuprDown", "SuprStarting", "SuprUp")
    ]
    assert stable.path("system") == [
        *("SuprStartingSystem", "SuprStableSystem", "SuprUnstableSystem", "SuprStableSystem")
    ]
    stable.await_true(lambda: len(stable.availability()) == 4, "four signals")
    assert [services["pictor"] for services in stable.availability()] == ["up", "up", "down", "up"]
    assert [text for text in stable.texts("WARN") if text == DEAD] == [DEAD]


def test_service_whose_stop_fails_is_left_running(stable):
    before = stable.instance.read("/run/pictor.pid")
    stable.knob("30_pictor", "stop", "fail 3")
    judge_dead(stable)
    assert stable.calls() == ["30_pictor stop begin", "30_pictor stop end 3"]
    assert stable.instance.read("/run/pictor.pid") == before
    stable.await_feeds(1)


def test_service_whose_start_fails_is_given_its_time_nevertheless(stable):
    stable.knob("30_pictor", "restart", "fail 1")
    judge_dead(stable)
    assert stable.calls() == [
        *("30_pictor stop begin", "30_pictor stop end 0"),
        *("30_pictor restart begin", "30_pictor restart end 1"),
    ]
    assert "pictor" not in stable.listed()
    stable.await_feeds(1)


def test_service_without_its_script_is_given_its_time_nevertheless(stable):
    stable.instance.remove(SCRIPT)
    judge_dead(stable)
    assert stable.calls() == []
    assert "pictor" in stable.listed()
    stable.await_feeds(1)


@pytest.mark.parametrize("action", ["stop", "restart"])
def test_script_that_hangs_ends_in_the_reset_of_the_device(boot, action):
    camera = boot(watchdog_ms=3000)
    camera.await_stable()
    camera.knob("30_pictor", action, "delay 600000")
    camera.order("pictor", "down")
    camera.await_true(lambda: len(camera.boots()) == 2, "the reset")
    assert [boot.reason for boot in camera.boots()] == ["power-on", "watchdog"]
    begun = [line.split(" ", 1)[1] for line in camera.lines("scripts")]
    assert f"30_pictor {action} begin" in begun
    assert f"30_pictor {action} end 0" not in begun


def test_service_whose_process_is_gone_is_only_started(stable):
    # Nobody may start it in between: the machine finds it gone at its next ping.
    stable.signal("pictor", "kill")
    stable.await_text("SuprStableSystem::entry", times=2)
    assert f"Service {PICTOR} not registered anymore?! Going down." in stable.texts()
    assert stable.calls() == ["30_pictor restart begin", "30_pictor restart end 0"]
    assert stable.path(PICTOR) == [
        *("SuprStarting", "SuprUp", "SuprDown", "SuprStarting", "SuprUp")
    ]
