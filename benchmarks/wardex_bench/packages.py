"""Daemons of Debian that serve as yardsticks, without installing them.

An installed watchdog daemon or monit would be started, and again at every boot, on the machine of
the person who only wanted to measure.
"""

import os
import shutil
import tempfile
from pathlib import Path

from wardex_bench import processes
from wardex_bench.building import REPOSITORY
from wardex_bench.row import Unmeasured

FOLDER = REPOSITORY / "build/bench-packages"


def unpacked(package: str) -> Path:
    """The root folder of a package's files, fetched and unpacked at the first call."""
    target = FOLDER / package
    if target.is_dir():
        return target
    FOLDER.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="wardex-bench-") as folder:
        # The user that apt fetches as must be able to write there.
        os.chmod(folder, 0o777)
        fetch = f"cd {folder} && apt-get -q download {package}"
        try:
            processes.run(("sh", "-c", f"{fetch} || {{ apt-get -q update && {fetch}; }}"))
        except Unmeasured as error:
            raise Unmeasured(
                f"the Debian package {package} cannot be fetched (as root: apt-get update): {error}"
            ) from None
        (file,) = Path(folder).glob("*.deb")
        content = Path(folder) / "content"
        processes.run(("dpkg-deb", "-x", file, content))
        beside = FOLDER / f"{package}.{os.getpid()}"
        shutil.move(content, beside)
        beside.rename(target)
    return target


def program(package: str, path: str) -> Path:
    """A package's program by its absolute path: the machine's own, or the unpacked one."""
    installed = Path(path)
    return installed if installed.is_file() else unpacked(package) / path.lstrip("/")
