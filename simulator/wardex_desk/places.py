"""Where things are on the simulated device, and who runs there.

Every path is the one that programs on the device see. From outside the same file lies under the
instance folder: see `Instance.path`.
"""

from dataclasses import dataclass
from pathlib import Path

SIMULATOR = Path(__file__).resolve().parent.parent
REPOSITORY = SIMULATOR.parent
DEVICE_FILES = SIMULATOR / "device"

# Seen by the daemon and by the peers.
BUS_SOCKET = "/run/dbus/system_bus_socket"
CACHE_SOCKET = "/tmp/redis-cache.sock"
STORE_SOCKET = "/tmp/redis.sock"
WATCHDOG_NODE = "/dev/watchdog"
PANIC_SETTING = "/proc/sys/kernel/panic"
SYSLOG_SOCKET = "/dev/log"
DEVELOPER_MARKERS = ("/etc/mirrorfin_develop", "/etc/sysdata/mirrorfin_develop")
PACKAGE_SCRIPT = "/etc/init.d/mf-optware"
SERVICE_SCRIPTS = "/opt/orvo/etc/init.d"
PROGRAMS = "/opt/orvo/bin"

# The desk's own: how a person or a scenario reaches into the device.
DESK = "/desk"
ORDERS = "/run/orders"
KNOBS = "/run/knobs"
DESK_STATE = "/run/desk"
CONTROL_SOCKET = "/run/desk/control"
BOOT_PLAN = "/run/desk/plan.json"
POWER_SWITCH = "/run/desk/power"
UP_MARK = "/run/desk/up"
LOGS = "/log"
CONSOLE = "/log/console"
SHORT_PATH = f"{DESK}/simulator/device/stubs:/usr/sbin:/usr/bin:/sbin:/bin:{PROGRAMS}"

# How the device's boot program says why the device went down (its exit status).
ENDED_POWER_OFF = 0
ENDED_REFUSED = 64
ENDED_REBOOT = 65
ENDED_WATCHDOG = 70
# The words for them at the power switch, a pipe that waits for one; "reboot" leads to "down".
ENDINGS = {"off": ENDED_POWER_OFF, "down": ENDED_REBOOT, "reset": ENDED_WATCHDOG}


@dataclass(frozen=True)
class Service:
    """A supervised service: its process name, bus name (or socket) and init script."""

    name: str
    bus_name: str
    script: str
    peer: str


SERVICES = {
    service.name: service
    for service in (
        Service("corvane", "com.orvo.vistor", "40_corvane", "simulated-service"),
        Service("pictor", "com.orvo.pictor", "30_pictor", "simulated-service"),
        Service("wirl", "com.orvo.wirl", "10_wirl", "simulated-service"),
        Service("quorl", "com.orvo.quorl", "20_quorl", "simulated-quorl"),
    )
}
SCRIPTS = tuple(service.script for service in SERVICES.values()) + ("mf-optware",)
PEERS = (
    "simulated-service",
    "simulated-quorl",
    "watchdog-guard",
    "device-observer",
    "record-reader",
    "wardexctl",
)
READER = f"{DESK}/bin/record-reader"
