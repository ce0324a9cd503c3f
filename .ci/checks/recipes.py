#!/usr/bin/python3
"""The recipes for other systems (packaging/yocto, packaging/buildroot) against the tree.

They cannot be built here. What can be known without: version and licence, the files that they take
from the tree, the options that they set, and that they install the same paths as the Debian package.
Prints one line per breach and exits with 1 when there is any.
"""

import hashlib
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BITBAKE = ROOT / "packaging/yocto/meta-wardex/recipes-core/wardex"
BUILDROOT = ROOT / "packaging/buildroot/package/wardex"
FOLDERS = {
    "sysconfdir": "/etc",
    "sbindir": "/usr/sbin",
    "bindir": "/usr/bin",
    "datadir": "/usr/share",
    "systemd_system_unitdir": "/lib/systemd/system",
}
# By packaging/CMakeLists.txt and cmake/WardexInstall.cmake; papers and completions are Debian's own.
DAEMON = {
    "/usr/sbin/wardex",
    "/usr/share/dbus-1/system.d/com.orvo.wardex.conf",
    "/etc/init.d/wardex",
    "/etc/default/wardex",
    "/lib/systemd/system/wardex.service",
}
TOOLS = {"/usr/bin/wardexctl", "/etc/lnav/formats/wardex/wardex_log.json"}
# Everything of the kind in the packages must be in one of the two.
PACKAGED = re.compile(r"^/(usr/s?bin/|etc/|lib/systemd/|usr/share/dbus-1/)")
breaches: list[str] = []


def claim(holds: bool, text: str) -> None:
    if not holds:
        breaches.append(text)


def plain(text: str) -> str:
    """A bitbake text with the folders' names in it filled in, and lines joined."""
    text = text.replace("\\\n", " ")
    for name, folder in FOLDERS.items():
        text = text.replace(f"${{{name}}}", folder)
    return text


def bitbake(version: str) -> None:
    recipes = sorted(BITBAKE.glob("*.bb"))
    claim([path.name for path in recipes] == [f"wardex_{version}.bb"], f"recipe of {version}")
    text = plain(recipes[0].read_text(encoding="utf-8"))
    licence = hashlib.md5((ROOT / "LICENSE").read_bytes()).hexdigest()
    claim(f"file://LICENSE;md5={licence}" in text, "yocto: the licence's checksum")
    for line in re.findall(r"^    install -D -m \d+ (.*)$", text, re.M):
        source, target = line.split()
        claim((ROOT / source.removeprefix("${S}/")).is_file(), f"yocto: {source}")
        target = target.removeprefix("${D}")
        claim(target in DAEMON | TOOLS, f"yocto: {target} is not what Debian installs")
        claim(target in text.split("PACKAGES =+")[1], f"yocto: {target} is in no package")
    for name, expected in (("FILES:${PN}", DAEMON), ("FILES:${PN}-tools", TOOLS)):
        found = re.search(rf'^{re.escape(name)} \+?= "(.*)"$', text, re.M)
        claim(found is not None and set(found[1].split()) == expected, f"yocto: {name}")
    options(text, "yocto")


def buildroot(version: str) -> None:
    text = (BUILDROOT / "wardex.mk").read_text(encoding="utf-8").replace("\\\n", " ")
    claim(f"WARDEX_VERSION = {version}\n" in text, "buildroot: the version")
    for source in re.findall(r"\$\(@D\)/(packaging/\S+)", text):
        claim((ROOT / source).is_file(), f"buildroot: {source}")
    for source in re.findall(r"\$\(WARDEX_PKGDIR\)/(\S+)", text):
        claim((BUILDROOT / source).is_file(), f"buildroot: {source}")
    for target in re.findall(r"\$\(TARGET_DIR\)(/\S+)", text):
        known = target.replace("/usr/lib/systemd", "/lib/systemd").replace("S90wardex", "wardex")
        claim(known in DAEMON, f"buildroot: {target} is not what Debian installs")
    # Its own functions are none of ours: all that is asked is that make understands the file.
    made = subprocess.run(
        ["make", "-n", "-f", "-", "nothing"],
        input=f"cmake-package =\nBR2_EXTERNAL_WARDEX_PATH = {BUILDROOT.parents[1]}\n"
        f"include {BUILDROOT.parents[1]}/external.mk\nnothing:\n",
        capture_output=True,
        text=True,
    )
    claim(made.returncode == 0, f"buildroot: make says {made.stderr.strip()}")
    script = subprocess.run(["sh", "-n", BUILDROOT / "S90wardex"], capture_output=True, text=True)
    claim(script.returncode == 0, f"buildroot: S90wardex: {script.stderr.strip()}")
    for name in ("external.desc", "external.mk", "Config.in"):
        claim((BUILDROOT.parents[1] / name).is_file(), f"buildroot: {name}")
    options(text, "buildroot")


def options(text: str, system: str) -> None:
    """An option that CMake does not know would be passed over in silence."""
    sources = "".join(
        path.read_text(encoding="utf-8")
        for path in (ROOT / "CMakeLists.txt", *sorted((ROOT / "cmake").glob("*.cmake")))
    )
    for name in re.findall(r"-D(WARDEX_\w+)=", text):
        claim(f"option({name} " in sources, f"{system}: CMake has no option {name}")


def packages() -> int:
    """Compares with the Debian packages where they are built; answers how many there are."""
    found = sorted(ROOT.glob("build/*/packages/*.deb"))
    for package in found:
        listing = subprocess.run(
            ["dpkg-deb", "-c", package], check=True, capture_output=True, text=True
        ).stdout.splitlines()
        paths = {line.split()[5].removeprefix(".") for line in listing if not line.startswith("d")}
        expected = TOOLS if package.name.startswith("wardex-tools") else DAEMON
        installed = {path for path in paths if PACKAGED.match(path)}
        claim(installed == expected, f"{package.name}: {sorted(installed ^ expected)}")
    return len(found)


def main() -> int:
    sources = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    found = re.search(r"project\(wardex VERSION (\S+)", sources)
    assert found is not None
    bitbake(found[1])
    buildroot(found[1])
    compared = packages()
    for breach in breaches:
        print(breach)
    print(f"recipes: compared with {compared} Debian packages, {len(breaches)} breaches")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
