"""What the operator's command draws of a device: as text, as JSON, and as a picture."""

import json
import re
import xml.etree.ElementTree as ElementTree

import pytest
import situations
from camera import PICTOR, VISTOR
from console import steady

from wardex_desk.waiting import now

OK, FAILED, NO_LOG, WRONG_WORDS = 0, 1, 6, 64
DEAD = f"Service {PICTOR} considered dead, restarting"
PACKAGE = "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware"
SVG = "{http://www.w3.org/2000/svg}"
PICTURE = "/root/timeline.svg"
# Shorter times depend on how busy the machine is.
SHORT_S = 0.3
WORDS = {
    **{"SuprStarting": "starting", "SuprUp": "up", "SuprDown": "down"},
    **{"SuprStartingSystem": "starting", "SuprStableSystem": "stable"},
    **{"SuprUnstableSystem": "unstable", "SuprRebootSystem": "rebooting"},
}


def ask(camera, *words):
    """The command's answer for programs."""
    status, output = camera.run("wardexctl", "timeline", "--json", *words, bound=60.0)
    assert status == OK, output
    return json.loads(output.splitlines()[-1])


def text(camera, *words):
    """The lines of the command's text, in plain characters."""
    status, output = camera.run("env", "LC_ALL=C", "wardexctl", "timeline", *words, bound=60.0)
    assert status == OK, output
    lines = output.splitlines()
    assert len(lines) <= 24 and all(len(line) < 80 for line in lines), output
    return lines


def spans(answer, name):
    """The spans of the device's or a service's lane."""
    return next(lane["spans"] for lane in answer["lanes"] if lane["name"] == name)


def states(answer, name):
    """What it was, one after the other."""
    return [span["state"] for span in spans(answer, name) if span["state"] != "unknown"]


def done(answer):
    """What was done to whom, one after the other."""
    return [(action["what"], action["service"]) for action in answer["actions"]]


def without_times(lines):
    """The actions of a text, without their times and lengths."""
    found = [re.fullmatch(r"\d\d:\d\d:\d\d\.\d{3}  (.*?)(, \d.*)?", line) for line in lines]
    return [match[1] for match in found if match]


def picture(camera, name=PICTURE):
    """A fresh picture's root element."""
    status, output = camera.run("wardexctl", "timeline", "-o", name, bound=60.0)
    assert status == OK, output
    return ElementTree.fromstring(camera.instance.read(name))


def bars(root):
    """The bars by rows from above: style, left edge and right edge of each."""
    rows = {}
    for rect in root.iter(f"{SVG}rect"):
        if rect.find(f"{SVG}title") is not None and rect.get("class") != "script":
            left, width = float(rect.get("x")), float(rect.get("width"))
            rows.setdefault(float(rect.get("y")), []).append(
                (rect.get("class"), left, left + width)
            )
    return [rows[y] for y in sorted(rows)]


def labels(root):
    """The labels of what was done."""
    return [each.text for each in root.iter(f"{SVG}text") if each.get("class") == "label"]


def assert_drawn(camera):
    """The bars of a picture are the spans of the answer of the same moment, to a pixel."""
    answer = ask(camera, "-o", PICTURE)
    root = ElementTree.fromstring(camera.instance.read(PICTURE))
    styles = {"stable": "up", "unstable": "down"}
    left, right = 110, 1050
    for lane, row in zip(answer["lanes"], bars(root)):
        longest = [span for span in lane["spans"] if span["seconds"] > SHORT_S]
        wide = [
            bar for bar in row if bar[2] - bar[1] > SHORT_S / answer["seconds"] * (right - left)
        ]
        assert [styles.get(span["state"], span["state"]) for span in longest] == [
            style for style, _, _ in wide
        ]
        for span, (_, begin, _) in zip(longest, wide):
            age = span["age"] / answer["seconds"]
            assert abs(right - age * (right - left) - begin) < 1


def test_healthy_device_is_stable_after_its_start(stable):
    stable.await_feeds(3)
    answer = ask(stable)
    assert (answer["schema"], answer["verb"], answer["wallStep"]) == (1, "timeline", None)
    assert (answer["developer"], answer["trace"], answer["earlier"]) == (False, True, 0)
    assert states(answer, "device") == ["starting", "stable"]
    assert states(answer, VISTOR) == states(answer, PICTOR) == ["starting", "up"]
    assert ("supervisor start", None) in done(answer)
    lines = text(stable)
    assert re.fullmatch(r"device stable for .* s", lines[0])
    assert re.fullmatch(r"device   \.?=+#+", next(line for line in lines if "device  " in line))
    assert "the supervisor started" in without_times(lines)
    root = picture(stable)
    assert [[style for style, _, _ in row if style != "unknown"] for row in bars(root)] == [
        ["starting", "up"]
    ] * 3
    assert_drawn(stable)


def test_hung_service_is_down_and_restarted(stable):
    stable.order("pictor", "hang")
    stable.await_text(DEAD)
    stable.await_text(f"SuprStarting::entry ({PICTOR})", times=2)
    answer = ask(stable)
    assert states(answer, "device") == ["starting", "stable", "unstable"]
    assert states(answer, PICTOR)[:4] == ["starting", "up", "down", "starting"]
    assert states(answer, VISTOR) == ["starting", "up"]
    assert done(answer).count(("service restart", PICTOR)) == 1
    action = next(each for each in answer["actions"] if each["what"] == "service restart")
    assert action["seconds"] > 0
    assert not action["noted"]
    assert "pictor was restarted by its script" in without_times(text(stable))
    assert "restart" in labels(picture(stable))


def test_states_are_those_that_the_machines_entered(stable):
    flap = ("down", "down", "starting", "starting", "starting", "up", "up")
    stable.order("pictor", *flap * 4)
    stable.await_text(PACKAGE)
    stable.order("pictor", "up")
    stable.await_true(lambda: stable.path("system")[-1] == "SuprStableSystem", "health")
    stable.await_feeds(2)
    answer = ask(stable)
    assert states(answer, "device") == [WORDS[state] for state in stable.path("system")]
    assert states(answer, PICTOR) == [WORDS[state] for state in stable.path(PICTOR)]
    assert done(answer).count(("package restart", None)) == 1
    root = picture(stable)
    assert_drawn(stable)
    assert "package restart" in labels(root)


def test_dead_device_is_told_on_its_way_to_the_reboot(put_on_desk):
    camera = put_on_desk(watchdog_ms=600_000)
    camera.order("pictor", "down")
    camera.power_on()
    # A reboot takes its time; here, more than the looks at it.
    camera.instance.remove("/run/desk/power")
    for times in (1, 2, 3):
        camera.await_text(PACKAGE, times)
    camera.await_text("wardex: SUPERVISOR RESTARTING SYSTEM via /dev/watchdog ...")
    answer = ask(camera)
    assert states(answer, "device") == [*["starting", "unstable"] * 4, "rebooting"]
    assert set(states(answer, PICTOR)) == {"starting", "down"}
    assert spans(answer, PICTOR)[-1]["why"].startswith("the supervisor does not answer")
    assert [what for what, name in done(answer) if name is None] == [
        *("supervisor start", "package restart", "package restart", "package restart", "reboot")
    ]
    lines = text(camera)
    assert re.match(
        r"device rebooting for .* s; 1 reboot, 3 package restarts, \d+ service", lines[0]
    )
    assert without_times(lines)[-1] == "too many package restarts: the device is rebooted"
    root = picture(camera)
    assert_drawn(camera)
    assert labels(root)[:5] == [
        *("supervisor started", "package restart", "package restart", "package restart", "reboot")
    ]
    assert_explained(camera)
    seen = steady(situations.rebooting(camera))
    assert seen.splitlines() == situations.expected("rebooting").read_text().splitlines()


def assert_explained(camera):
    """The other verbs' answers on the way to the reboot."""
    status, output = camera.run("wardexctl", "status")
    lines = output.splitlines()
    assert (status, lines[0]) == (
        5,
        "rebooting          family ZK4XX, supervisor does not answer",
    )
    assert "Next      in about 0.0 s: the device reboots, or its watchdog resets it" in lines
    assert len(lines) <= 24 and all(len(line) < 80 for line in lines)
    status, output = camera.run("wardexctl", "why", "--json")
    why = json.loads(output)
    assert (status, why["happened"], why["whole"]) == (OK, "the device was rebooted", True)
    steps = [step["what"] for step in why["steps"]]
    assert steps.count("the whole software package is restarted") == 3
    assert steps[-3:] == [
        *("too many package restarts", "the device is to reboot", "the device is rebooted")
    ]
    assert len(steps) < 40
    dead = [each for each in why["steps"] if "considered dead" in each["what"]]
    assert [each["times"] > 1 for each in dead] == [True] * 4
    status, output = camera.run("wardexctl", "log", "--level", "FATAL")
    assert (status, len(output.splitlines())) == (OK, 5)
    assert output.splitlines()[-1].endswith("SUPERVISOR RESTARTING SYSTEM via /dev/watchdog ...")


def test_developer_mode_is_noted_only(boot):
    camera = boot(developer=True)
    camera.await_stable()
    camera.order("pictor", "down")
    camera.await_text(f"{DEAD} .... (disabled)")
    answer = ask(camera)
    assert answer["developer"]
    restarts = [each for each in answer["actions"] if each["what"] == "service restart"]
    assert [(each["service"], each["noted"]) for each in restarts] == [(PICTOR, True)]
    lines = text(camera)
    assert lines[1].endswith("DEVELOPER MODE: nothing is restarted or rebooted")
    assert lines[0].endswith("; noted 1 service restart")
    assert without_times(lines)[-1] == "pictor: restart only noted: developer mode"
    assert labels(picture(camera))[-1] == "would restart"


def test_masked_states_are_unknown_and_say_how_to_see_them(stable):
    stable.run("wardexctl", "loglevel", "wardex", "default")
    stable.await_true(lambda: not ask(stable)["trace"], "the mask")
    assert spans(ask(stable), "device")[-1]["why"] == "TRACE was masked"
    lines = text(stable)
    assert lines[0] == "device unknown"
    assert lines[-1] == "  wardexctl loglevel wardex +TRACE"


def test_without_the_supervisor_nothing_is_known_since_its_last_record(boot):
    camera = boot(developer=True)
    camera.await_stable()
    camera.supervisor("kill")
    camera.await_true(lambda: camera.process() == 0, "the supervisor's end")
    last = spans(ask(camera), "device")[-1]
    assert last["why"] == "the supervisor does not answer; 'stable' was told last"
    assert text(camera)[-1] == "The supervisor does not answer: unknown since its last record."
    camera.supervisor("start")
    camera.await_text("SuprStableSystem::entry", times=2)
    answer = ask(camera)
    # Of the first one's health there is no record but its first.
    assert states(answer, "device") == ["starting", "starting", "stable"]
    assert done(answer).count(("supervisor start", None)) == 2
    assert "the supervisor was replaced; 'stable' was told last" in [
        span["why"] for span in spans(answer, "device")
    ]


def test_restart_by_an_operator_is_seen_on_the_bus(stable):
    stable.run("wardexctl", "restart", "pictor")
    stable.await_true(
        lambda: any("pictor" in (name or "") and "bus" in what for what, name in done(ask(stable))),
        "the change on the bus",
    )
    assert states(ask(stable), "device")[:2] == ["starting", "stable"]


def test_without_redis_there_is_no_timeline(stable):
    stable.redis("stop")
    for words in ([], ["-o", PICTURE]):
        status, output = stable.run("wardexctl", "timeline", *words)
        assert status == NO_LOG
        assert output.startswith("wardexctl: /tmp/redis-cache.sock: Redis does not answer (")
    assert stable.instance.read(PICTURE) == ""


def test_ten_thousand_records_are_drawn(stable):
    with stable.connect_redis() as cache:
        begin = max(now() - 600, 1)
        for number in reversed(range(5000)):
            time = f"{begin + number / 10:.4f}"
            for state in ("Stable", "Unstable"):
                record = f'"P":"7", "C":"TRACE", "S":"wardex", "M":"Supr{state}System::entry"'
                cache.command("LPUSH", "LOG:ENTRIES", f'{{"T":"{time}", {record}}}')
    answer = ask(stable)
    assert len(answer["lanes"]) == 3
    text(stable)
    root = picture(stable)
    assert len(list(root.iter(f"{SVG}rect"))) < 2500


@pytest.mark.parametrize("suffix", [".svg", ".html"])
def test_existing_picture_is_replaced(stable, suffix):
    name = f"/root/picture{suffix}"
    stable.instance.write(name, "old")
    status, output = stable.run("wardexctl", "timeline", "-o", name)
    assert status == OK
    assert re.fullmatch(rf"{name}: device stable for .*; .* to .* \(.*\)\n", output)
    assert "<svg" in stable.instance.read(name)
    assert [path.name for path in stable.instance.path("/root").iterdir()] == [name[6:]]


def test_wrong_files_are_refused_with_a_remedy(stable):
    status, output = stable.run("wardexctl", "timeline", "-o", "/root/t.png")
    assert (status, output.splitlines()) == (
        WRONG_WORDS,
        [
            "wardexctl: /root/t.png: its name ends neither in .svg nor in .html",
            "  Say which picture is wanted: -o timeline.svg or -o timeline.html.",
        ],
    )
    status, output = stable.run("wardexctl", "timeline", "-o", "/nowhere/t.svg")
    assert (status, output.splitlines()[0]) == (
        FAILED,
        "wardexctl: /nowhere/t.svg: cannot be written (No such file or directory)",
    )
    assert stable.run("wardexctl", "timeline", "--since", "noon")[0] == WRONG_WORDS
