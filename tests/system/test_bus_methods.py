"""The supervisor's own methods on the bus, and what they make of scripts and of ps."""

import subprocess

import pytest
from camera import PICTOR, QUORL, VISTOR, WIRL, Answer, number, text

DONE = Answer(0, "")
UNKNOWN_CODE = "Unknown error for code %d"
NOT_CHANGED = Answer(400004, UNKNOWN_CODE)
NOT_STARTED = Answer(400006, UNKNOWN_CODE)
NOT_STOPPED = Answer(400007, UNKNOWN_CODE)
PICTOR_SCRIPT = "/opt/orvo/etc/init.d/30_pictor"


@pytest.fixture
def developer(boot):
    """A device whose services nobody starts and stops but the claim."""
    camera = boot(developer=True)
    camera.await_bus_name()
    return camera


def status(camera, service):
    """What the supervisor says about a service."""
    answer = camera.call("getServiceStatus", text(service))
    assert (answer.code, answer.message) == (0, "")
    return answer.values


def test_ping_is_answered_up(developer):
    assert developer.call("doPing") == Answer(0, "", ("up",))


def test_service_list_grows_as_services_come_up_and_shrinks_as_they_leave(put_on_desk):
    camera = put_on_desk(developer=True)
    camera.order("pictor", "starting")
    camera.power_on()
    camera.await_text(f"SuprUp::entry ({VISTOR})")
    assert camera.call("getServiceList") == Answer(0, "", (VISTOR,))
    camera.order("pictor", "up")
    camera.await_stable()
    assert camera.call("getServiceList") == Answer(0, "", (PICTOR, VISTOR))
    camera.call("doStopService", text(PICTOR))
    camera.await_text(f"DBus Service {PICTOR} unavailable")
    assert camera.call("getServiceList") == Answer(0, "", (VISTOR,))
    camera.call("doStartService", text(PICTOR))
    camera.await_text(f"DBus service {PICTOR} available")
    assert camera.call("getServiceList") == Answer(0, "", (PICTOR, VISTOR))


def test_only_the_two_main_services_are_watched_on_the_bus(developer):
    assert developer.call("doStopService", text(WIRL)) == DONE
    assert developer.call("doStopService", text(PICTOR)) == DONE
    assert developer.call("doStopService", text(VISTOR)) == DONE
    developer.await_text(f"DBus Service {VISTOR} unavailable")
    changes = [line for line in developer.texts("TRACE") if line.startswith("DBus ")]
    assert changes == [
        f"DBus Service {PICTOR} unavailable",
        f"DBus Service {VISTOR} unavailable",
    ]


def test_status_is_up_while_the_process_runs_down_when_not_and_unknown_for_strangers(developer):
    for service in (VISTOR, PICTOR, WIRL, QUORL):
        assert status(developer, service) == ("up",)
    developer.signal("pictor", "kill")
    developer.await_true(lambda: "pictor" not in developer.listed(), "pictor's end")
    assert status(developer, PICTOR) == ("down",)
    for stranger in ("pictor", "com.orvo.wardex", "", "COM.ORVO.PICTOR"):
        assert status(developer, stranger) == ("unknown",)


@pytest.mark.parametrize(
    "service, script, process",
    [
        (VISTOR, "40_corvane", "corvane"),
        (PICTOR, "30_pictor", "pictor"),
        (WIRL, "10_wirl", "wirl"),
        (QUORL, "20_quorl", "quorl"),
    ],
)
def test_each_service_is_stopped_and_started_by_its_script(developer, service, script, process):
    assert developer.call("doStopService", text(service)) == DONE
    assert process not in developer.listed()
    assert developer.call("doStopService", text(service)) == NOT_STOPPED
    assert developer.call("doStartService", text(service)) == DONE
    assert developer.listed().count(process) == 1
    assert developer.call("doStartService", text(service)) == DONE
    assert developer.calls() == [
        f"{script} stop begin",
        f"{script} stop end 0",
        f"{script} restart begin",
        f"{script} restart end 0",
    ]


def test_strangers_are_neither_started_nor_stopped(developer):
    for stranger in ("com.orvo.wardex", "pictor", ""):
        assert developer.call("doStartService", text(stranger)) == NOT_STARTED
        assert developer.call("doStopService", text(stranger)) == NOT_STOPPED
    assert developer.calls() == []


def test_script_that_fails_is_told_by_the_status(developer):
    developer.knob("30_pictor", "stop", "fail 3")
    assert developer.call("doStopService", text(PICTOR)) == NOT_STOPPED
    assert status(developer, PICTOR) == ("up",)
    developer.knob("30_pictor", "stop")
    developer.knob("30_pictor", "restart", "fail 1")
    assert developer.call("doStopService", text(PICTOR)) == DONE
    assert developer.call("doStartService", text(PICTOR)) == NOT_STARTED
    assert status(developer, PICTOR) == ("down",)
    assert [call.split(" ", 1)[1] for call in developer.calls() if " end " in call] == [
        "stop end 3",
        "stop end 0",
        "restart end 1",
    ]


@pytest.mark.parametrize("fault", ["missing", "not executable", "killed"])
def test_script_that_cannot_run_to_its_end_is_told_by_the_status(developer, fault):
    place = developer.instance.path(PICTOR_SCRIPT)
    if fault == "missing":
        place.unlink()
    elif fault == "not executable":
        place.chmod(0o644)
    else:
        developer.instance.write(PICTOR_SCRIPT, "#!/bin/sh\nkill -9 $$\n", mode=0o755)
    assert developer.call("doStopService", text(PICTOR)) == NOT_STOPPED
    developer.signal("pictor", "kill")
    developer.await_true(lambda: "pictor" not in developer.listed(), "pictor's end")
    assert developer.call("doStartService", text(PICTOR)) == NOT_STARTED
    assert developer.call("doPing").values == ("up",)


def test_script_that_is_slow_delays_the_answer_and_nothing_is_lost(developer):
    developer.knob("30_pictor", "stop", "delay 2500")
    assert developer.call("doStopService", text(PICTOR)) == DONE
    assert developer.calls() == ["30_pictor stop begin", "30_pictor stop end 0"]
    assert developer.call("doPing").values == ("up",)


def test_script_that_hangs_leaves_the_watchdog_unfed_until_it_resets_the_device(boot):
    camera = boot(watchdog_ms=2500)
    camera.await_feeds(1)
    camera.knob("10_wirl", "stop", "delay 600000")
    camera.send("doStopService", text(WIRL))
    camera.await_true(lambda: len(camera.boots()) == 2, "the reset")
    assert [boot.reason for boot in camera.boots()] == ["power-on", "watchdog"]


def test_ps_that_fails_shows_no_process_and_is_told_each_time(boot):
    # The library that ps needs and the supervisor does not.
    linked = subprocess.run(["ldd", "/bin/ps"], capture_output=True, text=True, check=True).stdout
    library = next(word for word in linked.split() if word.startswith("libproc"))
    camera = boot(
        developer=True, without={"services"}, environment={"LD_LIBRARY_PATH": "/opt/broken"}
    )
    camera.await_bus_name()
    assert status(camera, PICTOR) == ("down",)
    assert camera.texts("ERROR") == []
    camera.instance.write(f"/opt/broken/{library}", "no library\n")
    said = "isProcessRunning: stderr: /bin/ps: error while loading shared libraries: "
    assert status(camera, PICTOR) == ("down",)
    assert camera.call("doStopService", text(PICTOR)) == NOT_STOPPED
    camera.await_true(lambda: len(camera.texts("ERROR")) == 2, "two complaints")
    assert all(line.startswith(said) for line in camera.texts("ERROR"))
    assert camera.call("doStartService", text(PICTOR)) == DONE
    assert "pictor" in camera.listed()
    assert status(camera, PICTOR) == ("down",)


def test_ping_interval_changes_once_until_the_state_is_left(stable):
    assert stable.call("setServicePingTimeoutOneShot", text(PICTOR), number(100)) == DONE
    stable.await_text(f"setServicePingTimeoutOneShot: restartTimer({PICTOR}, 100)")
    at = len(stable.pings("pictor"))
    stable.await_true(lambda: len(stable.pings("pictor")) >= at + 20, "twenty pings")
    assert duration(stable, at, at + 20) < 15.0
    stable.order("pictor", "starting")
    stable.await_text(f"SuprStarting::entry ({PICTOR})", times=2)
    at = len(stable.pings("pictor"))
    stable.await_true(lambda: len(stable.pings("pictor")) >= at + 3, "three pings")
    assert duration(stable, at, at + 3) > 1.0
    intervals = [line for line in stable.texts() if line.startswith("Ping interval of service ")]
    assert intervals[-1] == f"Ping interval of service {PICTOR} is 1000"


def duration(camera, first, end):
    """Seconds between two of pictor's pings."""
    lines = [line.split() for line in camera.lines("pings")]
    times = [float(words[0]) for words in lines if words[1] == "pictor"]
    return times[end - 1] - times[first]


def test_ping_interval_of_a_service_without_a_machine_cannot_change(developer):
    for service in (WIRL, QUORL, "com.orvo.nobody", ""):
        answer = developer.call("setServicePingTimeoutOneShot", text(service), number(500))
        assert answer == NOT_CHANGED
    developer.await_text("setServicePingTimeoutOneShot: restartTimer(, 500) failed !")
    assert [line for line in developer.texts("WARN") if "restartTimer" in line] == [
        f"setServicePingTimeoutOneShot: restartTimer({service}, 500) failed !"
        for service in (WIRL, QUORL, "com.orvo.nobody", "")
    ]


def test_call_with_wrong_arguments_is_refused_and_does_no_harm(developer):
    words = ("dbus-send", "--system", "--print-reply", "--dest=com.orvo.wardex", "/")
    for call in (
        ("doStopService",),
        ("doStopService", number(1)),
        ("doStopService", text(PICTOR), text(PICTOR)),
        ("doEverything",),
    ):
        code, output = developer.run(*words, f"com.orvo.wardex.{call[0]}", *call[1:])
        assert code == 1 and "org.freedesktop.DBus.Error.UnknownMethod" in output, call
    assert developer.call("doPing").values == ("up",)
    assert developer.calls() == []


def test_interface_describes_itself_on_the_bus(developer):
    words = ("dbus-send", "--system", "--print-reply=literal", "--dest=com.orvo.wardex", "/")
    description = developer.run(*words, "org.freedesktop.DBus.Introspectable.Introspect")[1]
    places = [
        description.index(f'name="{member}"')
        for member in (
            *("com.orvo.wardex", "getServiceStatus", "getServiceList"),
            *("setServicePingTimeoutOneShot", "doStartService", "doStopService", "doPing"),
            "signalServiceAvailability",
        )
    ]
    assert places == sorted(places)
