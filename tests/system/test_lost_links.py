"""The bus and Redis lost while the daemon runs: what is told where, and that supervision goes on."""

import re

import pytest
from camera import PICTOR, VISTOR, number, text

NOT_CONNECTED = "REDIS NOT CONNECTED !n"
DEAD = f"Service {PICTOR} considered dead, restarting"


def warn(camera):
    """Makes the supervisor log at WARN; answers whether it did as a method should."""
    answer = camera.call("setServicePingTimeoutOneShot", text("nobody"), number(5))
    return answer.code == 400004


def test_lost_bus_makes_every_ping_fail_and_the_services_are_restarted(stable):
    stable.bus("stop")
    stable.await_text(DEAD)
    stable.await_text(f"SuprStarting::entry ({PICTOR})", times=2)
    assert stable.texts().count(f"Ping {PICTOR} failed") == 4
    assert stable.path(PICTOR) == ["SuprStarting", "SuprUp", "SuprDown", "SuprStarting"]
    assert stable.path("system")[:3] == [
        *("SuprStartingSystem", "SuprStableSystem", "SuprUnstableSystem")
    ]
    # Nobody tells that the names are gone.
    assert not [line for line in stable.texts() if "unavailable" in line]
    # The services of this device end with their bus, so there is nothing to stop.
    assert stable.calls()[:1] == ["30_pictor restart begin"]
    stable.await_feeds(1)
    assert stable.watchdog().count("open") == 1


def test_bus_that_comes_back_is_not_used_again(stable):
    stable.bus("restart")
    stable.await_text(f"SuprDown::entry ({PICTOR})")
    assert stable.owned_names().count("com.orvo.wardex") == 1
    code, output = stable.run(
        *("dbus-send", "--system", "--print-reply", "--dest=com.orvo.wardex", "/"),
        "com.orvo.wardex.doPing",
    )
    assert code == 1 and "ServiceUnknown" in output
    assert stable.process()
    stable.await_feeds(1)


def test_lost_redis_is_told_on_standard_error_and_supervision_goes_on(stable):
    stable.redis("stop", ["redis-cache"])
    assert warn(stable) and warn(stable) and warn(stable)
    errors = stable.instance.read("/log/wardex.err")
    # No line end: that belongs to the text.
    assert errors.count(NOT_CONNECTED) >= 2 and f"{NOT_CONNECTED}\n" not in errors
    failures = re.findall(r"^redisPushLog: failed with err: \(\d+:.+\)$", errors, re.MULTILINE)
    assert len(failures) == 1
    assert errors.index(failures[0]) < errors.index(NOT_CONNECTED)
    stable.order("pictor", "down")
    stable.await_true(lambda: stable.availability()[-1]["pictor"] == "down", "pictor down")
    stable.await_feeds(2)
    assert stable.call("doPing").values == ("up",)


def test_redis_that_comes_back_gets_no_records(stable):
    stable.redis("stop", ["redis-cache"])
    assert warn(stable)
    stable.redis("start", ["redis-cache"])
    written = stable.instance.read("/log/wardex.err").count(NOT_CONNECTED)
    assert warn(stable) and warn(stable)
    with stable.connect_redis() as cache:
        assert cache.command("EXISTS", "LOG:ENTRIES") == 0
        assert cache.command("PUBSUB", "NUMSUB", "LOGGER:CFG") == [b"LOGGER:CFG", 0]
    assert stable.instance.read("/log/wardex.err").count(NOT_CONNECTED) >= written + 2


def test_redis_that_is_back_before_the_next_record_gets_none_either(stable):
    stable.redis("restart", ["redis-cache"])
    assert warn(stable) and warn(stable)
    assert stable.instance.read("/log/wardex.err").count("redisPushLog: failed with err: (") == 1
    with stable.connect_redis() as cache:
        assert cache.command("EXISTS", "LOG:ENTRIES") == 0


def test_redis_that_hangs_is_waited_for_once_and_supervision_goes_on(stable):
    stable.redis("hang", ["redis-cache"])
    stable.order("pictor", "down")
    stable.await_true(lambda: stable.availability()[-1]["pictor"] == "down", "pictor down")
    stable.await_feeds(2)
    errors = stable.instance.read("/log/wardex.err")
    failures = re.findall(r"^redisPushLog: failed with err: \(1:.+\)$", errors, re.MULTILINE)
    assert len(failures) == 1 and NOT_CONNECTED in errors
    assert len(stable.boots()) == 1


def test_settings_server_may_go_away(stable):
    stable.redis("stop", ["redis-store"])
    assert warn(stable)
    stable.await_text("setServicePingTimeoutOneShot: restartTimer(nobody, 5) failed !")
    assert "REDIS" not in stable.instance.read("/log/wardex.err")
    stable.await_feeds(1)


@pytest.mark.parametrize("action", ["kill", "stop"])
def test_service_that_is_not_supervised_may_go_away(stable, action):
    stable.signal("wirl", action)
    stable.signal("quorl", action)
    pings = len(stable.pings("corvane"))
    stable.await_true(lambda: len(stable.pings("corvane")) >= pings + 2, "two pings of corvane")
    assert stable.path("system") == ["SuprStartingSystem", "SuprStableSystem"]
    assert stable.path(VISTOR) == ["SuprStarting", "SuprUp"]
    assert stable.calls() == []
