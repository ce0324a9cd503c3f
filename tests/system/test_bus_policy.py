"""Who may own the supervisor's name, call what and listen, by the product's policy file.

The callers are real users outside the box, who connect to the device's bus through its socket.
"""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest
from camera import PICTOR, number, text

from wardex_desk.places import REPOSITORY

POLICY = REPOSITORY / "packaging/dbus/com.orvo.wardex.conf"
BUS_CONFIGURATION = "/opt/orvo/etc/dbus-1/system.conf"
BUS_SOCKET = "/run/dbus/system_bus_socket"
# Handed over as a text: other users cannot read a clone in root's closed home.
BARE_CALL = Path(__file__).with_name("bare_call.py").read_text(encoding="utf-8")
# Users of the device; their numbers are nobody's on this machine.
STRANGER = 61234
MEMBER = 61235
GROUP = 990
OTHER_GROUP = 991
DENIED = "org.freedesktop.DBus.Error.AccessDenied"

GETTERS = (
    ("doPing",),
    ("getServiceList",),
    ("getServiceStatus", text(PICTOR)),
)
DEEDS = (
    ("doStartService", text("com.orvo.nobody")),
    ("doStopService", text("com.orvo.nobody")),
    ("setServicePingTimeoutOneShot", text("com.orvo.nobody"), number(100)),
)


class Caller:
    """A user at the device's bus."""

    def __init__(self, camera, user, groups="0"):
        self.socket = camera.instance.path(BUS_SOCKET)
        self.address = f"unix:path={self.socket}"
        self.become = ("setpriv", f"--reuid={user}", f"--regid={user}", f"--groups={groups}")

    def run(self, *words):
        """What a program says on both outputs."""
        outcome = subprocess.run(
            (*self.become, *words), capture_output=True, text=True, check=False
        )
        return outcome.stdout + outcome.stderr

    def ctl(self, program, *words):
        """The operator's command: its exit status, and the lines of both outputs."""
        bus = f"DBUS_SYSTEM_BUS_ADDRESS={self.address}"
        outcome = subprocess.run(
            (*self.become, "env", bus, program, *words), capture_output=True, text=True, check=False
        )
        return outcome.returncode, (outcome.stdout + outcome.stderr).splitlines()

    def send(self, destination, path, method, *arguments):
        """Calls any object's method."""
        words = ("--print-reply", f"--dest={destination}", path, method, *arguments)
        return self.run("dbus-send", f"--bus={self.address}", *words)

    def call(self, method, *arguments, interface="com.orvo.wardex"):
        """Calls a method of the supervisor."""
        return self.send("com.orvo.wardex", "/", f"{interface}.{method}", *arguments)

    def call_without_interface(self, method, *arguments):
        """Calls a method of the supervisor by nothing but its name."""
        values = [word.split(":", 1)[1] for word in arguments]
        words = ("com.orvo.wardex", "/", method, *values)
        return self.run(sys.executable, "-c", BARE_CALL, self.socket, *words).strip()

    def own(self, name):
        """The bus's answer to the wish for a name."""
        bus = "org.freedesktop.DBus"
        path = "/org/freedesktop/DBus"
        return self.send(bus, path, f"{bus}.RequestName", text(name), "uint32:4")


def closed_by_default(configuration):
    """A bus on which nobody even hears what no rule lets him."""
    return configuration.replace(
        '<allow receive_type="signal"/>',
        '<deny receive_type="signal"/><allow receive_sender="org.freedesktop.DBus"/>',
    )


def open_by_default(configuration):
    """A bus on which nothing is refused unless a rule says so."""
    return re.sub(
        r'<deny own="\*"/>\s*<deny send_type="method_call"/>',
        '<allow own="*"/><allow send_type="method_call"/>',
        configuration,
    )


def add_users(camera):
    """A stranger, and a member of the group that may act."""
    with camera.instance.path("/etc/passwd").open("a", encoding="utf-8") as users:
        users.write(f"stranger:x:{STRANGER}:{STRANGER}::/:/bin/sh\n")
        users.write(f"member:x:{MEMBER}:{MEMBER}::/:/bin/sh\n")
    place = camera.instance.path("/etc/group")
    groups = place.read_text(encoding="utf-8")
    assert f"wardex:x:{GROUP}:\n" in groups
    groups = groups.replace(f"wardex:x:{GROUP}:\n", f"wardex:x:{GROUP}:member\n")
    place.write_text(f"{groups}others:x:{OTHER_GROUP}:stranger,member\n", encoding="utf-8")


@pytest.fixture(params=[closed_by_default, open_by_default], ids=["closed", "open"])
def device(request, put_on_desk):
    """A supervised device whose bus is closed, or open, by default."""
    if os.geteuid() != 0:
        pytest.skip("only root can call as another user")
    camera = put_on_desk(developer=True)
    add_users(camera)
    place = camera.instance.path(BUS_CONFIGURATION)
    configuration = place.read_text(encoding="utf-8")
    changed = request.param(configuration)
    assert changed != configuration
    place.write_text(changed, encoding="utf-8")
    camera.power_on()
    camera.await_bus_name()
    return camera


def is_answer(said):
    """Whether the supervisor itself has answered."""
    return DENIED not in said and "int32" in said


def test_everybody_asks_and_only_root_and_the_group_act(device):
    stranger = Caller(device, STRANGER, OTHER_GROUP)
    member = Caller(device, MEMBER, f"{OTHER_GROUP},{GROUP}")
    root = Caller(device, 0)
    for caller in (stranger, member, root):
        for method, *arguments in GETTERS:
            said = caller.call(method, *arguments)
            assert is_answer(said), (caller.become, method, said)
    for method, *arguments in DEEDS:
        assert DENIED in stranger.call(method, *arguments), method
        for caller in (member, root):
            said = caller.call(method, *arguments)
            assert is_answer(said), (caller.become, method, said)
    deeds = [line for line in device.texts("WARN") if "restartTimer(com.orvo.nobody" in line]
    assert len(deeds) == 2


def test_call_that_names_no_interface_is_judged_alike(device):
    stranger = Caller(device, STRANGER, OTHER_GROUP)
    member = Caller(device, MEMBER, f"{OTHER_GROUP},{GROUP}")
    for method in ("doStartService", "doStopService"):
        nobody = text("com.orvo.nobody")
        assert stranger.call_without_interface(method, nobody) == DENIED
        assert member.call_without_interface(method, nobody) == "answered"
    assert stranger.call_without_interface("setServicePingTimeoutOneShot") == DENIED
    assert stranger.call_without_interface("doPing") == "answered"


def test_everybody_sees_the_interface_and_nobody_else_reaches_other_objects(device):
    stranger = Caller(device, STRANGER, OTHER_GROUP)
    said = stranger.call("Introspect", interface="org.freedesktop.DBus.Introspectable")
    assert "signalServiceAvailability" in said
    assert DENIED in stranger.send("com.orvo.wardex", "/other", "com.orvo.wardex.doPing")


def test_operators_command_tells_who_may_not_act(device):
    # Other users cannot run what lies in root's closed home.
    program = device.instance.folder.parent / "wardexctl"
    shutil.copy(f"{os.environ['WARDEX_BIN']}/wardexctl", program)
    stranger = Caller(device, STRANGER, OTHER_GROUP)
    device.await_stable()
    assert stranger.ctl(program, "is-up", "wirl") == (0, ["wirl is up"])
    for words in (
        *(("start", "wirl"), ("stop", "wirl"), ("restart", "wirl"), ("grace", "pictor", "30s")),
        *(("start", "wirl", "--no-wait"), ("restart", "wirl", "--no-wait")),
    ):
        status, lines = stranger.ctl(program, *words)
        assert status == 1
        assert lines[0].startswith("wardexctl: com.orvo.wardex: the call was refused (")
        assert lines[1:] == ["  Be root, or see the bus policy: wardexctl doctor tells."]
    assert device.calls() == []
    member = Caller(device, MEMBER, f"{OTHER_GROUP},{GROUP}")
    assert member.ctl(program, "stop", "wirl")[0] == 0
    assert device.calls() == ["10_wirl stop begin", "10_wirl stop end 0"]


def test_only_root_owns_the_name(device):
    # A device without its supervisor: the name is free.
    device.signal("wardex", "kill")
    device.await_true(lambda: "wardex" not in device.listed(), "the supervisor's end")
    member = Caller(device, MEMBER, f"{OTHER_GROUP},{GROUP}")
    said = member.own("com.orvo.wardex")
    assert DENIED in said and "com.orvo.wardex" in said
    assert "uint32 1" in Caller(device, 0).own("com.orvo.wardex")


def test_everybody_hears_of_availability(device, tmp_path):
    device.await_stable()
    caller = Caller(device, STRANGER, OTHER_GROUP)
    words = ("monitor", f"--address={caller.address}", "--dest=com.orvo.wardex", "--object-path=/")
    heard = tmp_path / "heard"
    with heard.open("w", encoding="utf-8") as output:
        listener = subprocess.Popen((*caller.become, "gdbus", *words), stdout=output)
    try:
        device.await_true(lambda: "is owned by" in heard.read_text(), "the listener")
        device.order("pictor", "down")
        signal = "com.orvo.wardex.signalServiceAvailability"
        device.await_true(lambda: signal in heard.read_text(), "the signal")
    finally:
        listener.terminate()
        listener.wait()
    assert "'com.orvo.pictor': <'down'>" in heard.read_text()


def test_rules_name_their_destination_or_sender():
    rules = re.findall(r"<(?:allow|deny)\s+([^>]*)/>", POLICY.read_text(encoding="utf-8"))
    assert len(rules) == 13
    for rule in rules:
        assert re.search(r'(?:own|send_destination|receive_sender)="com\.orvo\.wardex"', rule), rule
