"""The product as it is installed, and the services beside it, as an archive over the board's root."""

import fcntl
import io
import subprocess
import tarfile
from pathlib import Path
from typing import BinaryIO

from wardex_board.cpio import Archive
from wardex_board.places import BUILD
from wardex_desk.building import LAST_WORDS, BuildError
from wardex_desk.places import PROGRAMS, REPOSITORY, SERVICES

PEERS = tuple(sorted({service.peer for service in SERVICES.values()}))
MEASURES = ("log-writes", "is-alive", "quiet-tick")


def build(log: Path) -> list[Path]:
    """Builds the product's packages for the board, and the services; answers the packages."""
    BUILD.mkdir(parents=True, exist_ok=True)
    with open(BUILD / ".board-lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        with open(log, "wb") as output:
            for step in (
                ["packaging/build-packages", "--no-install", "--arch", "armhf"],
                ["cmake", "--build", "--preset", "armhf", "--target", *PEERS, *MEASURES],
            ):
                if subprocess.run(step, cwd=REPOSITORY, stdout=output, stderr=output).returncode:
                    words = log.read_text(errors="replace").splitlines()[-LAST_WORDS:]
                    raise BuildError("\n".join([*words, f"the build failed, see {log}"]))
    return sorted((BUILD / "packages").glob("*_armhf.deb"))


def write(stream: BinaryIO, packages: list[Path]) -> None:
    """What the packages install, in the places where they install it, and the services."""
    archive = Archive(stream)
    for package in packages:
        _unpack(archive, package)
    for peer in PEERS:
        archive.file(f"usr/lib/peers/{peer}", (BUILD / "bin" / peer).read_bytes(), 0o755)
    for name in MEASURES:
        content = (BUILD / "bin/bench" / name).read_bytes()
        archive.file(f"usr/lib/bench/{name}", content, 0o755)
    for service in SERVICES.values():
        name = f"{PROGRAMS.lstrip('/')}/{service.name}"
        archive.link(name, f"/usr/lib/peers/{service.peer}")
    archive.close()


def _unpack(archive: Archive, package: Path) -> None:
    done = subprocess.run(
        ["dpkg-deb", "--fsys-tarfile", str(package)], check=True, capture_output=True
    )
    with tarfile.open(fileobj=io.BytesIO(done.stdout)) as files:
        for member in files:
            # The board has its folders merged, as Debian has.
            name = member.name.removeprefix("./").rstrip("/")
            if name.startswith("lib/"):
                name = f"usr/{name}"
            if member.issym():
                archive.link(name, member.linkname)
            elif member.isfile():
                content = files.extractfile(member)
                assert content is not None
                archive.file(name, content.read(), member.mode)
