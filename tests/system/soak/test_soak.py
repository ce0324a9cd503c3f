"""The supervisor for half an hour at five times the speed, with faults at random: it goes on.

    WARDEX_SOAK_MINUTES, WARDEX_SOAK_SEED   another span, the same faults again

The clock of the supervisor, and of what it starts, is mapped from outside (libfaketime), so that
every period of it is a fifth: its own ticks as well as the time-outs of its calls.
"""

import os
import random
import re
from pathlib import Path

import pytest
from camera import PICTOR, VISTOR, WARDEX, number, text

from wardex_desk.judge_texts import RESTARTS_PACKAGE, RESTARTS_SYSTEM_SYSLOG
from wardex_desk.waiting import now, pause

SPEED = 5
MINUTES = float(os.environ.get("WARDEX_SOAK_MINUTES", "30"))
SEED = int(os.environ.get("WARDEX_SOAK_SEED", str(random.SystemRandom().randrange(10**6))))
# In seconds of this machine, as everything below.
SAMPLE_EVERY = 60.0
WARM_UP = 120.0
NAMES = ("kilobytes", "descriptors", "threads")
SLACK = (256, 0, 0)
CLOCK = Path("/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1")
FASTER = f"""#!/bin/sh
export LD_PRELOAD={CLOCK} FAKETIME='+0 x{SPEED}'
exec /opt/orvo/sbin/wardex
"""
JUDGED = {"corvane": "40_corvane", "pictor": "30_pictor"}
ORDERS = (
    *("down", "starting", "error", "hang", "crash", "delay 150", "delay 900", "garbage none"),
    *("garbage one", "garbage three", "garbage int", "garbage variant", "garbage swap"),
    *("garbage struct", "garbage huge"),
)


class Trouble:
    """The faults of one run, drawn from a seed. Each ends with everything as it should be."""

    def __init__(self, camera, seed):
        self._camera = camera
        self._random = random.Random(seed)
        self.told = []

    def one(self):
        """Makes one fault, lets it last a while, and heals."""
        deed = self._random.choice(
            (
                *(self._answer_wrongly, self._answer_wrongly, self._spoil_script),
                *(self._kill_service, self._freeze_service, self._freeze_bus),
                *(self._restart_redis, self._freeze_redis, self._freeze_supervisor),
                *(self._configure, self._call),
            )
        )
        deed()
        self.heal()
        self._wait(1.0, 6.0)

    def heal(self):
        """Everything that is wrong is put right."""
        for service in JUDGED:
            self._camera.order(service, "up")
        for script in JUDGED.values():
            self._camera.knob(script, "stop")
            self._camera.knob(script, "restart")

    def _tell(self, what):
        self.told.append(what)

    def _wait(self, least, most):
        pause(self._random.uniform(least, most))

    def _service(self):
        return self._random.choice(sorted(JUDGED))

    def _answer_wrongly(self):
        service, order = self._service(), self._random.choice(ORDERS)
        self._tell(f"{service} {order}")
        self._camera.order(service, order)
        self._wait(0.2, 4.0)

    def _spoil_script(self):
        service = self._service()
        action = self._random.choice(("stop", "restart"))
        knob = self._random.choice(("fail 1", "delay 300"))
        self._tell(f"{service} down, {action} {knob}")
        self._camera.knob(JUDGED[service], action, knob)
        self._camera.order(service, "down")
        self._wait(1.0, 2.5)

    def _kill_service(self):
        service = self._service()
        self._tell(f"{service} killed")
        self._camera.signal(service, "kill")

    def _freeze(self, name, stop, go, least, most):
        self._tell(f"{name} frozen")
        stop()
        self._wait(least, most)
        go()

    def _freeze_service(self):
        service = self._service()
        # By process: the one that is started meanwhile runs.
        process = self._camera.instance.read(f"/run/{service}.pid").strip()
        self._freeze(
            service,
            lambda: self._camera.run("kill", "-STOP", process),
            lambda: self._camera.run("kill", "-CONT", process),
            *(0.1, 3.0),
        )

    def _freeze_bus(self):
        bus = self._camera.bus
        self._freeze("bus", lambda: bus("hang"), lambda: bus("continue"), 0.1, 1.0)

    def _freeze_redis(self):
        redis = self._camera.redis
        self._freeze("Redis", lambda: redis("hang"), lambda: redis("continue"), 0.1, 2.0)

    def _freeze_supervisor(self):
        supervisor = self._camera.supervisor
        self._freeze("wardex", lambda: supervisor("stop"), lambda: supervisor("continue"), 0.1, 2.0)

    def _restart_redis(self):
        self._tell("store restarted")
        self._camera.redis("restart", ["redis-store"])

    def _configure(self):
        content = self._random.choice(
            (
                "{",
                "[]",
                '{"source":"all","mask":255}',
                '{"source":"all","segvregex":"("}',
                "x" * 10**6,
            )
        )
        self._tell(f"configuration {content[:30]}")
        with self._camera.connect_redis() as redis:
            redis.command("PUBLISH", "LOGGER:CFG", content)

    def _call(self):
        self._tell("calls")
        for method in ("doPing", "getServiceList"):
            self._camera.send(method)
        self._camera.send("setServicePingTimeoutOneShot", text(VISTOR), number(700))
        self._camera.send("doStopService", text(self._random.choice((PICTOR, "nobody"))))


class Figures:
    """What the supervisor holds, sample by sample; a life begins with each start of it."""

    def __init__(self, camera):
        self._camera = camera
        self._begin = now()
        self.lives = {}

    def sample(self):
        """Adds one sample and prints it."""
        process = self._camera.process()
        status, output = self._camera.run(
            "sh", "-c", f"grep -E '^(VmRSS|Threads):' /proc/{process}/status; ls /proc/{process}/fd"
        )
        if status != 0:
            return
        rss = int(re.search(r"VmRSS:\s+(\d+)", output)[1])
        threads = int(re.search(r"Threads:\s+(\d+)", output)[1])
        descriptors = len(re.findall(r"^\d+$", output, re.MULTILINE))
        at = now() - self._begin
        print(f"{at:6.0f} s  {process:>6}  {rss:>6} kB  {descriptors:>3} fds  {threads} threads")
        life = (len(self._camera.boots()), process)
        self.lives.setdefault(life, []).append((at, rss, descriptors, threads))

    def judge(self):
        """Nothing grows once a life is warm; what a large message takes for a moment is no growth."""
        for life, samples in self.lives.items():
            warm = [sample[1:] for sample in samples if sample[0] >= samples[0][0] + WARM_UP]
            half = len(warm) // 2
            if half == 0:
                continue
            for name, slack, early, late in zip(
                NAMES, SLACK, least(warm[:half]), least(warm[half:])
            ):
                assert late <= early + slack, f"{name} of life {life}: {early} grew to {late}"


def least(samples):
    """The smallest of each figure."""
    return [min(figures) for figures in zip(*samples)]


@pytest.fixture
def fast(put_on_desk):
    """A camera with a supervisor whose clock runs fast, stable."""
    if not CLOCK.exists():
        pytest.skip("faketime is not installed")
    camera = put_on_desk(watchdog_ms=10_000)
    camera.instance.remove(WARDEX)
    camera.instance.path("/opt/orvo/sbin").mkdir()
    camera.instance.path("/opt/orvo/sbin/wardex").symlink_to("/desk/wardex")
    camera.instance.write(WARDEX, FASTER, mode=0o755)
    camera.power_on()
    camera.await_stable()
    return camera


def test_supervisor_outlives_random_faults_and_the_device_is_stable_in_the_end(fast):
    print(f"seed {SEED}, {MINUTES:g} minutes at {SPEED} times the speed")
    trouble = Trouble(fast, SEED)
    figures = Figures(fast)
    end = now() + MINUTES * 60.0
    due = 0.0
    while now() < end:
        if now() >= due:
            figures.sample()
            due = now() + SAMPLE_EVERY
        trouble.one()
    trouble.heal()
    fast.await_true(lambda: is_stable(fast), "a stable device")
    fast.await_feeds(SPEED)
    figures.sample()
    # Or else its clock was not a fast one.
    assert len(fast.feeds()) > 0.6 * SPEED * 60.0 * MINUTES
    reasons = [boot.reason for boot in fast.boots()]
    restarts = [line for line in fast.lines("scripts") if line.endswith("restart begin")]
    print(
        f"{len(trouble.told)} faults, {len(restarts)} restarts by script,"
        f" {len(fast.feeds())} feeds, boots: {reasons}"
    )
    assert "watchdog" not in reasons
    judge_reboots(fast, reasons.count("reboot"))
    figures.judge()


def judge_reboots(camera, count):
    """Each was ordered by the supervisor, after three restarts of the package in that life."""
    restarts = 0
    for line in camera.lines("syslog"):
        if RESTARTS_PACKAGE in line:
            restarts += 1
        elif RESTARTS_SYSTEM_SYSLOG in line:
            assert restarts >= 3, f"a reboot after {restarts} restarts"
            restarts = 0
            count -= 1
    assert count == 0, f"{count} reboots that nobody has ordered"


def is_stable(camera):
    """Whether the last state that the system machine has entered is the stable one."""
    path = camera.path("system")
    return bool(path) and path[-1] == "SuprStableSystem"
