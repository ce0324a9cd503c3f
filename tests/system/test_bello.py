"""The hardware watchdog: armed once, fed while all is well, and never disarmed."""

import pytest

DEAD = "Bello is dead!!!"


def test_watchdog_is_opened_once_and_then_only_fed(stable):
    stable.order("pictor", "down")
    stable.await_text("SuprUnstableSystem::entry")
    stable.await_feeds(1)
    opened, asked, *fed = stable.watchdog()
    assert (opened, asked, set(fed)) == ("open", "gettimeout", {"feed"})
    assert DEAD not in stable.texts()


def test_watchdog_is_fed_once_a_second(boot):
    camera = boot()
    camera.await_true(lambda: len(camera.feeds()) >= 6, "six feeds")
    feeds = camera.feeds()[:6]
    # A late feed shortens the gap to the next one, so it is the whole that counts.
    assert 3.5 < feeds[-1] - feeds[0] < 9.0


def test_missing_watchdog_is_lamented_at_each_tick_and_supervision_goes_on(boot):
    camera = boot(without={"watchdog"})
    camera.await_stable()
    camera.await_text(DEAD, times=4)
    lamented = [record for record in camera.records("WARN") if record.text == DEAD]
    assert 0.5 < (lamented[3].at - lamented[0].at) / 3 < 2.0
    assert camera.watchdog() == []
    assert camera.path("system") == ["SuprStartingSystem", "SuprStableSystem"]
    assert camera.call("doPing").values == ("up",)


@pytest.mark.parametrize("word, status", [("TERM", 143), ("KILL", 137)])
def test_watchdog_counts_on_after_the_supervisor_has_gone(boot, word, status):
    camera = boot(watchdog_ms=1500)
    camera.await_feeds(1)
    camera.run("sh", "-c", f"kill -{word} {camera.process()}")
    camera.await_true(lambda: len(camera.boots()) == 2, "the reset")
    assert [boot.reason for boot in camera.boots()] == ["power-on", "watchdog"]
    first_life = camera.watchdog()[: camera.watchdog().index("reset") + 1]
    # Nothing was written before the node was closed, so nothing disarmed the countdown.
    assert [word for word in first_life if word != "feed"] == [
        *("open", "gettimeout", "close", "exit", "reset")
    ]
    assert camera.await_end() == status


def test_hung_supervisor_is_ended_by_the_reset(boot):
    camera = boot(watchdog_ms=1500)
    camera.await_feeds(1)
    camera.supervisor("stop")
    camera.await_true(lambda: len(camera.boots()) == 2, "the reset")
    assert "write" not in camera.watchdog()
    camera.await_true(lambda: camera.is_up() and camera.watchdog().count("open") == 2, "a new life")


def test_supervisor_that_waits_for_a_slow_service_feeds_in_between(put_on_desk):
    camera = put_on_desk(watchdog_ms=6000)
    camera.order("corvane", "delay 1500")
    camera.power_on()
    camera.await_stable()
    camera.await_feeds(3)
    assert len(camera.boots()) == 1
