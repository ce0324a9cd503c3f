"""What the operator's command costs the operator: the time until its answer is there."""

import time

from wardex_desk.device import Device
from wardex_desk.places import PROGRAMS

from wardex_bench import camera, timing
from wardex_bench.row import Context, Goal, Result, Row

# The log is as long as it gets.
RECORDS = 10_000
RECORD = '{{"T":"{0}.0000", "P":"1", "C":"WARN", "S":"other", "M":"record number {0}"}}'
ANSWERS_PER_ROUND = 10
LIMIT_MS = 200.0
RATIO_LIMIT = 1.20

STATUS = f"{PROGRAMS}/wardexctl status --json"
# The same questions by hand.
CALL = "dbus-send --system --print-reply --dest=com.orvo.wardex / com.orvo.wardex."
BY_HAND = "; ".join(
    (
        f"{CALL}getServiceList",
        *(
            f"{CALL}getServiceStatus string:com.orvo.{name}"
            for name in ("vistor", "pictor", "wirl", "quorl")
        ),
        "redis-cli -s /tmp/redis-cache.sock LRANGE LOG:ENTRIES 0 -1",
    )
)


def _fill_log(device: Device) -> None:
    with device.connect_redis() as log:
        for number in range(RECORDS):
            log.command("LPUSH", "LOG:ENTRIES", RECORD.format(number))


def _milliseconds(device: Device, command: str) -> float:
    """Of one answer, on the device."""
    count = ANSWERS_PER_ROUND
    again = f"for again in $(seq {count}); do {{ {command}; }} >/dev/null; done"
    begin = time.monotonic()
    camera.run(device, "sh", "-c", again)
    return (time.monotonic() - begin) * 1000 / count


def status(context: Context) -> Result:
    """The screen of a stable device whose log is full, against asking the same by hand."""
    with camera.camera(context) as device:
        device.power_on()
        camera.await_pings(device, 3)
        _fill_log(device)
        # Ends with 0 only when there is an answer, and it is "stable".
        camera.run(device, "sh", "-c", STATUS)
        comparison = timing.compare(
            context,
            lambda: _milliseconds(device, STATUS),
            lambda: _milliseconds(device, BY_HAND),
        )
    return comparison.result(f"{RECORDS} records in the log")


def _is_quick(result: Result) -> bool:
    return (
        result.ours is not None
        and result.ratio is not None
        and result.ours <= LIMIT_MS
        and result.ratio <= RATIO_LIMIT
    )


ROWS: list[Row] = [
    Row(
        "wardexctl status against dbus-send and redis-cli",
        "ms",
        Goal(f"<= {RATIO_LIMIT:.2f}x, <= {LIMIT_MS:g}", _is_quick),
        status,
    ),
]
