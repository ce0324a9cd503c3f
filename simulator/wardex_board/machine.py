"""The emulated board while it runs: one process of the emulator, watched from outside.

The emulator counts instructions instead of time: the board's clock advances by a fixed step per
instruction, and jumps over idle time. A run is therefore the same on a busy machine, an hour of a
quiet board passes in a minute, and only the host can bound how long a run may take.
"""

import subprocess
from contextlib import suppress
from dataclasses import dataclass, field
from pathlib import Path
from threading import Event
from typing import Any, Callable, Mapping, Optional

from wardex_board.images import Images
from wardex_board.kernel import EEPROM_BYTES, NOTEBOOK
from wardex_board.qmp import Qmp, QmpError
from wardex_desk.waiting import now

MEMORY_MIB = 512
# The emulated parts have 512 bytes; a module's record takes the first 128.
BACKING_BYTES = 512
# Nanoseconds of the board per instruction, as a power of two: 250 million instructions a second.
SHIFT = 2
LOOK_S = 0.2
END_BOUND_S = 10.0
# A device has neither: Debian's kernel tests each cipher of its own, and reads the certificates of
# those who may sign modules. That would be half of the way to init.
LEFT_OUT = "cryptomgr.notests initcall_blacklist=load_system_certificate_list"

# How a life of the board can end; one that ends otherwise is named as the emulator names it. A panic
# resets, too: only the console tells it from a reboot.
WATCHDOG, RESET, POWER_OFF, OUT_OF_TIME = "watchdog", "reset", "power-off", "out of time"
OWN_ENDS = {"RESET": ("guest-reset", RESET), "SHUTDOWN": ("guest-shutdown", POWER_OFF)}
PANIC = "Kernel panic"


@dataclass
class Plan:
    """One run of the board.

    eeproms: address on I2C bus 2 -> the record in it; one that is not here is not fitted.
    lives: after how many ends the board is switched off.
    limit_s: what the run may take of this machine's time.
    words: for the kernel's command line.
    """

    eeproms: Mapping[int, bytes]
    lives: int = 1
    limit_s: float = 240.0
    shift: int = SHIFT
    words: Mapping[str, str] = field(default_factory=dict)


@dataclass
class Run:
    """What could be seen from outside: how each life ended, in order."""

    folder: Path
    ends: list[str] = field(default_factory=list)

    @property
    def report(self) -> str:
        """What came over the second serial line."""
        return self._said("report")

    @property
    def console(self) -> list[str]:
        """What came over the first serial line."""
        return self._said("console").splitlines()

    @property
    def emulator(self) -> list[str]:
        """What the emulator itself had to say."""
        return self._said("emulator").splitlines()

    def eeprom(self, address: int) -> bytes:
        """The first bytes of a part, as they are now."""
        return (self.folder / f"eeprom-{address:02x}").read_bytes()[:EEPROM_BYTES]

    def _said(self, name: str) -> str:
        """Empty when the run did not come so far."""
        try:
            return (self.folder / name).read_text(encoding="utf-8", errors="replace")
        except FileNotFoundError:
            return ""


def command(folder: Path, images: Images, plan: Plan, console: str) -> list[str]:
    """The emulator's command line for a run in a folder."""
    words = " ".join(f"{name}={value}" for name, value in plan.words.items())
    line = [
        # Without the command that started it nobody would bound it.
        *("setpriv", "--pdeathsig", "KILL"),
        *("qemu-system-arm", "-M", "mcimx6ul-evk", "-smp", "1", "-m", str(MEMORY_MIB)),
        *("-icount", f"shift={plan.shift},sleep=off", "-nodefaults", "-display", "none"),
        *("-kernel", str(images.kernel), "-dtb", str(images.device_tree)),
        *("-initrd", str(folder / "root.cpio")),
        *("-append", f"console=ttymxc0,115200 rdinit=/init quiet {LEFT_OUT} {words}"),
        *("-serial", console),
        *("-chardev", f"file,id=report,path={folder}/report", "-serial", "chardev:report"),
        *("-qmp", f"unix:{folder}/qmp,server=on,wait=off"),
    ]
    for address in plan.eeproms:
        name = f"eeprom-{address:02x}"
        line += ["-drive", f"if=none,id={name},format=raw,file={folder}/{name}"]
        line += [
            "-device",
            f"at24c-eeprom,bus=i2c-bus.2,address=0x{address:02x},"
            f"rom-size={BACKING_BYTES},drive={name}",
        ]
    return line


def prepare(folder: Path, images: Images, plan: Plan, archives: list[Path]) -> None:
    """Fills a run's folder: the parts' content, and the root with what goes over it."""
    with open(folder / "root.cpio", "wb") as root:
        for archive in (images.root, *archives):
            root.write(archive.read_bytes())
    for address, content in plan.eeproms.items():
        (folder / f"eeprom-{address:02x}").write_bytes(content.ljust(BACKING_BYTES, b"\xff"))
    (folder / "report").touch()


def notebook() -> dict[int, bytes]:
    """The part in which the board counts its boots, blank."""
    return {NOTEBOOK: b" 0"}


def play(folder: Path, images: Images, plan: Plan, tell: Callable[[str], None], over: Event) -> Run:
    """Runs the board until its lives are over; `tell` gets each line of the report as it comes.

    Whoever sets `over` ends it before.
    """
    run = Run(folder)
    deadline = now() + plan.limit_s
    with open(folder / "emulator", "wb") as words:
        emulator = subprocess.Popen(
            command(folder, images, plan, f"file:{folder}/console"),
            stdin=subprocess.DEVNULL,
            stdout=words,
            stderr=words,
        )
    qmp: Optional[Qmp] = None
    try:
        qmp = Qmp(folder / "qmp")
        _follow(run, emulator, qmp, plan.lives, deadline, tell, over)
        qmp.quit()
        with suppress(subprocess.TimeoutExpired):
            emulator.wait(END_BOUND_S)
    except OSError as error:
        raise QmpError(f"the emulator failed: {error}") from error
    finally:
        if qmp is not None:
            qmp.close()
        if emulator.poll() is None:
            emulator.kill()
            emulator.wait()
        (folder / "root.cpio").unlink(missing_ok=True)
    return run


def _follow(
    run: Run,
    emulator: "subprocess.Popen[bytes]",
    qmp: Qmp,
    lives: int,
    deadline: float,
    tell: Callable[[str], None],
    over: Event,
) -> None:
    by_watchdog = False
    told = 0
    while len(run.ends) < lives and not over.is_set():
        event = qmp.event(LOOK_S)
        lines = run.report.split("\n")[:-1]
        for line in lines[told:]:
            tell(line)
        told = len(lines)
        name = event["event"] if event else ""
        if name == "WATCHDOG":
            by_watchdog = True
        elif event is not None and name in OWN_ENDS:
            end = _end(event)
            run.ends.append(WATCHDOG if by_watchdog and end == RESET else end)
            by_watchdog = False
            if name == "SHUTDOWN":
                return
        elif event is None and emulator.poll() is not None:
            raise QmpError("the emulator ended by itself")
        if now() > deadline:
            run.ends.append(OUT_OF_TIME)
            return


def _end(event: Mapping[str, Any]) -> str:
    """What the board did by itself, or whatever else made an end of it."""
    reason = event.get("data", {}).get("reason", "no reason")
    own, end = OWN_ENDS[event["event"]]
    return end if reason == own else f"{event['event'].lower()} by {reason}"
