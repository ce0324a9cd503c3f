"""The operator's command on the device: what it shows, and how it ends, in each situation."""

import json
import re

import pytest
from camera import PICTOR, VISTOR, WIRL

UP, FAILED, NOT_UP, UNKNOWN, SILENT, NO_LOG, WRONG = 0, 1, 3, 4, 5, 6, 64
DEAD = f"Service {PICTOR} considered dead, restarting"
HEADER = "SERVICE  RUN LEVEL  PROCESS       AVAILABLE             STRIKES  LAST SCRIPT"
# Only verbs that neither change something nor wait.
LOOKS = (["status"], ["list"], ["is-up", "pictor"], ["log"], ["loglevel"], ["why"], ["doctor"])


def ctl(camera, *words):
    """Runs the command: its exit status and the lines of its text."""
    status, output = camera.run("wardexctl", *words, bound=60.0)
    return status, output.splitlines()


def ask(camera, *words):
    """Runs the command: its exit status and its only JSON object."""
    status, output = camera.run("wardexctl", *words, "--json", bound=60.0)
    objects = [json.loads(line) for line in output.splitlines() if line.startswith("{")]
    return status, objects[-1]


def service(answer, name):
    """One of the services of an answer."""
    return next(each for each in answer["services"] if each["name"] == name)


def is_screen(lines):
    """Whether a serial console shows it whole."""
    return len(lines) <= 24 and all(len(line) < 80 for line in lines)


@pytest.fixture
def hung(stable):
    """A camera whose pictor has just been found dead, and hangs on."""
    stable.order("pictor", "hang")
    stable.await_text(DEAD)
    return stable


# A healthy device.


def test_status_of_a_healthy_device_is_one_screen(stable):
    status, lines = ctl(stable)
    assert status == UP
    assert is_screen(lines)
    assert re.fullmatch(r"stable +family ZK4XX, supervisor answers, started .* ago", lines[0])
    assert lines[2] == HEADER
    assert re.fullmatch(r"corvane  up         runs          up for .* s +0 of 3   -", lines[3])
    assert lines[5:7] == [
        "wirl     -          runs          not judged            -        -",
        "quorl    -          runs          not judged            -        -",
    ]
    assert lines[8:10] == [
        "Restarts  0 of 3 package restarts in 300 s; need number 4 in that time reboots",
        "Next      nothing, while both judged services answer",
    ]
    assert len(lines) == 20
    assert lines[-1].endswith("TRACE wardex SuprStableSystem::entry")


def test_status_of_a_healthy_device_for_programs(stable):
    status, answer = ask(stable, "status")
    assert status == UP
    assert (answer["schema"], answer["verb"], answer["verdict"]) == (1, "status", "stable")
    assert (answer["family"], answer["developer"], answer["trace"]) == ("ZK4XX", False, True)
    assert answer["restarts"] == {"used": 0, "limit": 3, "windowSeconds": 300, "freeSeconds": None}
    assert answer["next"] == []
    pictor = service(answer, PICTOR)
    assert (pictor["state"], pictor["runLevel"], pictor["available"]) == ("SuprUp", "up", True)
    assert (pictor["strikes"], pictor["threshold"], pictor["scripts"]) == (0, 3, 0)
    assert len(answer["records"]) == 10


def test_services_are_listed_and_up(stable):
    assert ctl(stable, "list") == (
        UP,
        [
            "com.orvo.vistor  corvane  runs          available",
            "com.orvo.pictor  pictor   runs          available",
            "com.orvo.wirl    wirl     runs          not judged",
            "com.orvo.quorl   quorl    runs          not judged",
        ],
    )
    assert ctl(stable, "is-up", "pictor") == (UP, ["pictor is up"])
    assert ask(stable, "is-up", "wirl")[1]["up"]
    assert ctl(stable, "is-up", "com.orvo.other")[0] == UNKNOWN


def test_deeds_are_done_and_told(stable):
    status, lines = ctl(stable, "restart", "wirl")
    assert (status, len(lines)) == (UP, 2)
    assert stable.calls() == [
        *("10_wirl stop begin", "10_wirl stop end 0"),
        *("10_wirl restart begin", "10_wirl restart end 0"),
    ]
    stable.knob("10_wirl", "restart", "fail 1")
    assert ask(stable, "stop", "wirl")[1]["steps"][0]["code"] == 0
    assert ctl(stable, "is-up", "wirl")[0] == NOT_UP
    status, lines = ctl(stable, "start", "wirl")
    assert status == NOT_UP
    assert re.search(
        r"wirl: was not started, .* status 400006 \(Unknown error for code %d\)", lines[0]
    )


def test_long_script_shows_that_it_is_waited_for(stable):
    stable.knob("10_wirl", "stop", "delay 1500")
    status, lines = ctl(stable, "stop", "wirl")
    assert (status, lines[0]) == (UP, "waiting for the script of wirl ...")
    assert re.fullmatch(r"wirl was stopped, [1-9].* s, status 0", lines[1])


def test_script_that_is_not_waited_for_goes_on(stable):
    stable.knob("10_wirl", "stop", "delay 2000")
    assert ctl(stable, "stop", "wirl", "--no-wait") == (UP, ["asked to stop wirl"])
    assert stable.calls() == ["10_wirl stop begin"]
    stable.await_true(lambda: "10_wirl stop end 0" in stable.calls(), "the script's end")
    assert ask(stable, "start", "wirl", "--no-wait")[1]["done"] is None
    stable.await_true(lambda: "10_wirl restart end 0" in stable.calls(), "the script's end")


def test_deed_that_is_not_waited_for_needs_a_supervisor_that_answers(boot):
    camera = boot(developer=True)
    camera.await_stable()
    camera.supervisor("stop")
    status, lines = ctl(camera, "start", "wirl", "--no-wait")
    assert (status, lines[0]) == (SILENT, "waiting for the supervisor ...")
    assert lines[1] == "wardexctl: com.orvo.wardex: the supervisor does not answer in time"
    assert lines[2] == "  It hangs, or waits for a script: wardexctl log shows its last records."


def test_grace_holds_the_next_ping_back(stable):
    before = len(stable.pings("pictor"))
    status, lines = ctl(stable, "grace", "pictor", "10m")
    assert (status, lines[0]) == (UP, "pictor was given time.")
    stable.await_feeds(3)
    assert len(stable.pings("pictor")) <= before + 1
    assert ctl(stable, "grace", "wirl", "30s")[0] == UNKNOWN


def test_monitor_waits_for_a_service(stable):
    stable.order("pictor", "down")
    status, lines = ctl(stable, "monitor", "--until", "pictor=down", "--timeout", "30s")
    assert status == UP
    assert [line.split()[1:] for line in lines] == [
        ["corvane", "up"],
        ["pictor", "up"],
        ["pictor", "down"],
    ]


def test_doctor_finds_a_healthy_device_healthy(stable):
    status, answer = ask(stable, "doctor")
    assert (status, answer["healthy"]) == (UP, True)
    grades = {each["object"]: each["grade"] for each in answer["findings"]}
    assert grades.pop("/dev/watchdog") == "note"
    assert set(grades.values()) == {"fine"}


def test_nothing_opens_the_watchdog(stable):
    for words in LOOKS:
        ctl(stable, *words)
    assert stable.watchdog().count("open") == 1


# A service that hangs.


def test_status_tells_that_a_service_hangs_and_what_comes(hung):
    status, answer = ask(hung, "status")
    assert (status, answer["verdict"]) == (NOT_UP, "unstable")
    pictor = service(answer, PICTOR)
    assert (pictor["running"], pictor["available"], pictor["runLevel"]) == (True, False, "none")
    assert pictor["scripts"] == 1
    assert "the whole software package is restarted" in [each["text"] for each in answer["next"]]
    assert is_screen(ctl(hung, "status")[1])


def test_process_alone_does_not_make_a_service_up(hung):
    assert ctl(hung, "is-up", "pictor") == (
        NOT_UP,
        ["pictor is not up (its process runs, not available)"],
    )


def test_why_tells_the_chain_behind_a_restart(hung):
    status, answer = ask(hung, "why", "pictor")
    assert (status, answer["happened"], answer["whole"]) == (UP, "pictor was restarted", True)
    steps = [step["what"] for step in answer["steps"]]
    assert steps.count("pictor did not answer its ping") == 4
    assert steps[-1] == "pictor is considered dead: its script stops and starts it"
    assert ctl(hung, "why", "corvane")[1][0] == "The log knows of no restart of corvane."


# A device that is not to be saved.


def test_why_tells_the_restarts_behind_a_reboot(boot):
    camera = boot(developer=True)
    camera.await_stable()
    with camera.connect_redis() as cache:
        for time in (1, 60, 120):
            cache.command("RPUSH", "LOG:ENTRIES", restart_record(time))
        cache.command("RPUSH", "LOG:ENTRIES", reboot_record(180))
    status, lines = ctl(camera, "why")
    assert status == UP
    assert lines[0].startswith("the device was rebooted, ")
    assert len([line for line in lines if "package is restarted" in line]) == 3


def restart_record(time):
    """What the supervisor writes before it restarts the package."""
    text = "SUPERVISOR PING timeout retry exceeding threshold: restarting mf-optware"
    return f'{{"T":"{time}.0000", "P":"99", "C":"FATAL", "S":"wardex", "M":"{text}"}}'


def reboot_record(time):
    """What it writes before it reboots the device."""
    text = "Too many restarts(3) detected in last 5 minutes: rebooting whole system ..."
    return f'{{"T":"{time}.0000", "P":"99", "C":"EMERG", "S":"wardex", "M":"{text}"}}'


# Developer mode.


def test_developer_mode_is_said_first(boot):
    camera = boot(developer=True)
    camera.await_stable()
    lines = ctl(camera)[1]
    assert lines[1] == "DEVELOPER MODE: nothing is restarted or rebooted"
    assert ask(camera, "status")[1]["developer"]
    status, answer = ask(camera, "doctor")
    assert (status, answer["healthy"]) == (UP, True)
    assert "/etc/mirrorfin_develop" in [each["object"] for each in answer["findings"]]


# Without the supervisor.


def test_supervisor_that_is_gone_is_told_by_every_verb(boot):
    camera = boot(developer=True)
    camera.await_stable()
    camera.supervisor("kill")
    camera.await_true(lambda: camera.process() == 0, "the supervisor's end")
    for words in (
        ["list"],
        ["is-up", "pictor"],
        ["start", "wirl"],
        ["stop", "wirl"],
        ["restart", "wirl"],
    ):
        status, lines = ctl(camera, *words)
        assert (status, lines[0]) == (
            SILENT,
            "wardexctl: com.orvo.wardex: nobody owns this name on the system bus",
        )
    assert ctl(camera, "grace", "pictor", "30s")[0] == SILENT
    assert ctl(camera, "monitor")[0] == SILENT
    status, answer = ask(camera, "doctor")
    assert (status, answer["healthy"]) == (SILENT, False)
    status, answer = ask(camera, "status")
    assert (status, answer["verdict"]) == (SILENT, "supervisor silent")
    assert service(answer, VISTOR)["state"] == "SuprUp"
    assert ctl(camera, "log", "-n", "1")[0] == UP
    assert ctl(camera, "why")[0] == UP


def test_supervisor_that_hangs_is_silent(boot):
    camera = boot(developer=True)
    camera.await_stable()
    camera.supervisor("stop")
    status, lines = ctl(camera, "status")
    assert (status, lines[0]) == (SILENT, "waiting for the supervisor ...")
    assert lines[1].startswith("supervisor silent  family ZK4XX, supervisor does not answer")


def test_bus_that_is_gone_is_told_before_the_records(boot):
    camera = boot(developer=True)
    camera.await_stable()
    camera.bus("stop")
    status, lines = ctl(camera)
    assert status == SILENT
    assert lines[0].startswith("wardexctl: system bus: cannot be reached (")
    assert lines[2].startswith("supervisor silent  family ZK4XX, supervisor does not answer")
    assert "Next      not known while the system bus cannot be reached" in lines


# What is unknown.


def test_unknown_service_ends_each_verb_alike(stable):
    name = ("other", "no service is called so")
    bus_name = ("com.orvo.other", "this device does not run such a service")
    for words in (
        *(["status"], ["why"], ["is-up"], ["start"], ["stop"], ["restart"], ["grace"]),
        ["monitor", "--until"],
    ):
        for asked, cause in (name, bus_name):
            state = "=up" if words[0] == "monitor" else ""
            rest = ["30s"] if words == ["grace"] else []
            status, lines = ctl(stable, *words, asked + state, *rest)
            assert status == UNKNOWN, words
            if rest == [] or asked == "other":
                assert lines[0] == f"wardexctl: {asked}: {cause}", words


def test_service_of_another_family_is_not_waited_for(boot):
    camera = boot(family="ZM7xx", developer=True)
    camera.await_true(lambda: ctl(camera, "list")[0] == UP, "the supervisor")
    assert ctl(camera, "monitor", "--until", "pictor=up") == (
        UNKNOWN,
        [
            "wardexctl: com.orvo.pictor: this device does not run such a service",
            "  wardexctl list shows those it runs.",
        ],
    )


def test_wrong_words_are_told_with_the_verb_and_to_programs(stable):
    assert ctl(stable, "start") == (
        WRONG,
        ["wardexctl: start: NAME is required", "  See wardexctl start --help."],
    )
    assert ctl(stable, "log", "-n", "-3") == (
        WRONG,
        [
            "wardexctl: log: --newest: '-3' is no number of records: say 20",
            "  See wardexctl log --help.",
        ],
    )
    assert ask(stable, "frob") == (
        WRONG,
        {
            "error": {
                "object": "command line",
                "cause": "The following argument was not expected: frob",
                "remedy": "See wardexctl --help.",
            }
        },
    )


# Without Redis.


def test_without_redis_the_bus_still_tells(stable):
    stable.redis("stop")
    status, lines = ctl(stable)
    assert status == NO_LOG
    assert lines[0].startswith("wardexctl: /tmp/redis-cache.sock: Redis does not answer (")
    assert lines[2].startswith("stable ")
    assert "The log does not answer: states are not known." in lines
    assert ctl(stable, "is-up", "pictor") == (UP, ["pictor is up"])
    for verb in ("log", "why", "loglevel"):
        assert ctl(stable, verb)[0] == NO_LOG
    status, answer = ask(stable, "doctor")
    assert status == FAILED
    troubles = [each["object"] for each in answer["findings"] if each["grade"] == "trouble"]
    assert troubles == ["/tmp/redis-cache.sock", "/tmp/redis.sock"]


# The log.


def test_masked_states_are_said_to_be_masked(stable):
    ctl(stable, "loglevel", "wardex", "default")
    stable.await_true(lambda: not ask(stable, "status")[1]["trace"], "the mask")
    status, lines = ctl(stable)
    assert (status, lines[0].split()[0]) == (UP, "stable")
    assert "  wardexctl loglevel wardex +TRACE" in lines
    assert ctl(stable, "loglevel", "wardex", "+TRACE")[0] == UP


def test_ten_thousand_records_are_read_in_a_moment(stable):
    with stable.connect_redis() as cache:
        for number in range(10000):
            text = f'{{"T":"1.0000", "P":"1", "C":"WARN", "S":"test", "M":"{number}"}}'
            cache.command("RPUSH", "LOG:ENTRIES", text)
    status, lines = ctl(stable, "log", "--source", "test")
    assert (status, len(lines)) == (UP, 10000)
    assert lines[-1].endswith(" WARN  test[1] 9999")
    status, answer = ask(stable, "status")
    assert (status, answer["verdict"]) == (UP, "stable")
    assert service(answer, WIRL)["running"]


# Wrong words.


@pytest.mark.parametrize("words", [["frob"], ["start"], ["grace", "pictor"], ["list", "x"]])
def test_wrong_words_have_a_status_of_their_own(put_on_desk, words):
    camera = put_on_desk(developer=True)
    camera.power_on()
    assert ctl(camera, *words)[0] == 64
