"""Situations of a device, and what an operator asks in each; situations/NAME.txt has the answers."""

from dataclasses import dataclass, field
from pathlib import Path
from typing import Callable

from camera import PICTOR, VISTOR, WIRL
from console import console, console_at_once

EXPECTED = Path(__file__).with_name("situations")
MANY = 10_000
# What only looks, and ends by itself.
LOOKS = (
    *("status", "status pictor", "list", "is-up pictor", "is-up wirl", "log -n 3"),
    *("log --level WARN", "loglevel", "why", "doctor", "monitor --timeout 100ms"),
)
DEEDS = (
    *("grace corvane 10m", "stop wirl", "stop wirl", "start wirl", "restart wirl"),
    *("loglevel wardex default", "start wirl --no-wait"),
)


def _start(camera):
    """Lets the supervisor find services that have their names: their coming is no record then."""
    camera.power_on()
    camera.await_true(lambda: {VISTOR, PICTOR, WIRL} <= set(camera.owned_names()), "the services")
    camera.supervisor("start")
    camera.await_stable()


def _nothing(_):
    pass


def _hung(camera):
    camera.order("pictor", "hang")
    camera.await_text(f"Service {PICTOR} considered dead, restarting")
    camera.await_text(f"SuprStarting::registered ({PICTOR})")
    # Its pings would block the supervisor, and its machine would go on.
    camera.run("wardexctl", "grace", "pictor", "10m")


def _gone(camera):
    camera.supervisor("kill")
    camera.await_true(lambda: camera.process() == 0, "the supervisor's end")


def _without_log(camera):
    camera.redis("stop")


def _full_log(camera):
    with camera.connect_redis() as cache:
        for number in range(MANY):
            text = f'{{"T":"1.0000", "P":"1", "C":"INFO", "S":"other", "M":"{number}"}}'
            cache.command("RPUSH", "LOG:ENTRIES", text)


@dataclass(frozen=True)
class Situation:
    """A stable device of a plan, and what then happens to it."""

    arrange: Callable
    plan: dict = field(default_factory=dict)

    def console(self, camera):
        """What the operator of a device that is still off sees: each verb in words and as JSON."""
        _start(camera)
        self.arrange(camera)
        looks = [f"wardexctl {look}{form}" for look in LOOKS for form in ("", " --json")]
        deeds = [f"wardexctl {deed}{form}" for form in ("", " --json") for deed in DEEDS]
        status, output = camera.run("sh", "-c", console(*looks, *deeds), bound=60.0)
        assert status == 0, output
        return output


# Long enough for a device without a supervisor to be looked at.
_PATIENT = {"watchdog_ms": 600_000}

ALL = {
    "healthy": Situation(_nothing),
    "pictor-hung": Situation(_hung),
    "developer": Situation(_nothing, {"developer": True}),
    "supervisor-gone": Situation(_gone, _PATIENT),
    "redis-gone": Situation(_without_log),
    "full-log": Situation(_full_log),
}


# Of a dead device whose reboot hangs, whose supervisor answers nothing any more.
REBOOTING = (
    *("list", "is-up pictor", "is-up wirl", "start wirl", "stop wirl", "restart wirl --no-wait"),
    *("grace pictor 30s", "monitor --timeout 100ms", "log -n 1", "loglevel", "doctor"),
)


def rebooting(camera):
    """What the operator of that device sees; it takes a minute to come to that."""
    both = [f"wardexctl {words}{form}" for words in REBOOTING for form in ("", " --json")]
    status, output = camera.run("sh", "-c", console_at_once(*both), bound=60.0)
    assert status == 0, output
    return output


def expected(name):
    """The file with what is to be seen in a situation."""
    return EXPECTED / f"{name}.txt"
