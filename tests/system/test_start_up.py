"""The road from the first record to a device that is stable, and what may be missing on it."""

import json
import re

from camera import PICTOR, SUPERVISES, VISTOR, is_refusal

FAMILY = "Registerinng services for the ZK4XX family of devices"
RECORD = re.compile(
    r'\{"T":"(\d+\.\d{4})", "P":"(\d+)", "C":"([A-Z]+)", "S":"wardex", "M":"(.*)"\}'
)
NO_NAME = "Could not register DBus service com.orvo.wardex"
NO_OBJECT = "Could not register DBus object"
NO_STORE = "loadConfig: Redis connection problem for connecting via /tmp/redis-cache.sock"


def test_healthy_device_is_built_in_order_and_complains_of_nothing(stable):
    assert [said for said in stable.texts() if not is_refusal(said)][:7] == [
        SUPERVISES,
        FAMILY,
        "SuprStartingSystem::entry",
        f"SuprStarting::entry ({VISTOR})",
        f"Ping interval of service {VISTOR} is 2200",
        f"SuprStarting::entry ({PICTOR})",
        f"Ping interval of service {PICTOR} is 1000",
    ]
    assert stable.complaints() == [("WARN", SUPERVISES), ("WARN", FAMILY)]
    assert stable.path("system") == ["SuprStartingSystem", "SuprStableSystem"]
    for service in (VISTOR, PICTOR):
        assert stable.path(service) == ["SuprStarting", "SuprUp"]
    assert stable.calls() == []
    assert stable.lines("syslog") == []
    assert stable.lines("wardex.out") == stable.lines("wardex.err") == []


def test_records_are_stored_as_they_are_published_and_carry_name_and_process(stable):
    stable.await_feeds(1)
    with stable.connect_redis() as cache:
        stored = [raw.decode() for raw in cache.command("LRANGE", "LOG:ENTRIES", "0", "-1")]
    heard = [json.loads(line).get("record") for line in stable.lines("records")][1:]
    assert heard == stored
    fields = [RECORD.fullmatch(raw).groups() for raw in stored]
    assert {process for _, process, _, _ in fields} == {str(stable.process())}
    times = [float(time) for time, _, _, _ in fields]
    assert times == sorted(times)
    assert stable.boots()[0].time < times[0]


def test_services_are_told_to_the_bus_as_they_come_up(stable):
    stable.await_true(lambda: len(stable.availability()) == 2, "two signals")
    assert stable.availability() == [
        {"pictor": "up", "vistor": "down"},
        {"pictor": "up", "vistor": "up"},
    ]
    assert {
        (json.loads(line)["path"], json.loads(line)["sender"][0])
        for line in stable.lines("bus")
        if '"availability"' in line
    } == {("/", ":")}


def test_service_that_starts_slowly_holds_the_device_in_its_start(put_on_desk):
    camera = put_on_desk()
    camera.order("pictor", "starting", "starting", "up")
    camera.power_on()
    camera.await_stable()
    assert camera.pings("pictor")[:3] == ["starting", "starting", "up"]
    assert camera.path(PICTOR) == ["SuprStarting", "SuprUp"]
    assert camera.path("system") == ["SuprStartingSystem", "SuprStableSystem"]
    camera.await_true(lambda: len(camera.availability()) == 2, "two signals")
    assert camera.availability() == [
        {"pictor": "down", "vistor": "up"},
        {"pictor": "up", "vistor": "up"},
    ]


def test_without_redis_the_supervisor_aborts_before_it_touches_anything(put_on_desk):
    camera = put_on_desk(without={"redis-cache"}, watchdog_ms=1500)
    camera.power_on()
    assert camera.await_end() == 134
    assert camera.lines("wardex.err") == [
        "terminate called after throwing an instance of 'std::runtime_error'",
        "  what():  No such file or directory",
    ]
    assert camera.watchdog() == ["exit"]
    assert "com.orvo.wardex" not in camera.owned_names()
    assert camera.instance.read("/proc/sys/kernel/panic") == "0\n"


def test_without_the_settings_server_the_defaults_hold_and_supervision_goes_on(boot):
    camera = boot(without={"redis-store"})
    camera.await_true(lambda: {"pictor": "up", "vistor": "up"} in camera.availability(), "all up")
    assert camera.lines("wardex.err") == [NO_STORE, NO_STORE]
    assert camera.complaints() == [("WARN", SUPERVISES), ("WARN", FAMILY)]
    assert {record.level for record in camera.records()} == {"WARN"}


def test_without_the_bus_supervision_goes_on_and_finds_nobody(boot):
    camera = boot(without={"bus"}, watchdog_ms=8000)
    camera.await_text(f"SuprDown::entry ({PICTOR})")
    assert camera.complaints() == [
        ("WARN", SUPERVISES),
        ("WARN", FAMILY),
        ("ERROR", NO_NAME),
        ("ERROR", NO_OBJECT),
    ]
    assert len(camera.feeds()) >= 5
    assert camera.process()


def test_second_supervisor_finds_the_name_taken_and_supervises_nevertheless(stable):
    first = stable.process()
    stable.supervisor("start")
    stable.await_true(lambda: stable.texts().count("SuprStableSystem::entry") == 2, "both stable")
    second = {record.pid for record in stable.records()} - {first}
    complaints = [(record.pid, record.text) for record in stable.records("ERROR", "FATAL", "EMERG")]
    assert complaints == [(second.pop(), NO_NAME)]
    assert stable.owned_names().count("com.orvo.wardex") == 1
    assert stable.call("doPing").values == ("up",)
