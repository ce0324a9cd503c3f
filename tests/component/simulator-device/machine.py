"""The machine under the box, as its own root sees it."""

import os


def processes_in(namespace):
    """The processes of a pid namespace, given as readlink of /proc/PID/ns/pid says it."""

    def is_inside(process):
        try:
            return os.readlink(f"/proc/{process}/ns/pid") == namespace
        except OSError:
            return False

    return [name for name in os.listdir("/proc") if name.isdigit() and is_inside(name)]
