#!/usr/bin/python3
"""The recipes for other systems (packaging/yocto, packaging/buildroot) against the tree.

They cannot be built here. What can be known without: their install commands are carried out and must
put the same files on the device as the Debian packages do, what CMake asks for is held against the
names that it has there, and version, licence and options are those of the tree. Whether the other
systems know these names is known there only.
Prints one line per breach and exits with 1 when there is any.
"""

import hashlib
import re
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EVALUATOR = Path(__file__).with_name("declared.cmake")
YOCTO = "packaging/yocto/meta-wardex/recipes-core/wardex"
BUILDROOT = "packaging/buildroot"
FOLDERS = {
    "sysconfdir": "/etc",
    "sbindir": "/usr/sbin",
    "bindir": "/usr/bin",
    "datadir": "/usr/share",
    "systemd_system_unitdir": "/lib/systemd/system",
}
# In the Debian packages only: papers, and completions for shells that a device's image lacks.
LEFT_OUT = tuple(
    f"/usr/share/{folder}/" for folder in ("doc", "man", "lintian", "bash-completion", "zsh")
)
# Where Buildroot has a file of the packages; the second with a content of its own.
MOVED = {"/usr/lib/systemd/system/wardex.service": "/lib/systemd/system/wardex.service"}
OWN = {"/etc/init.d/S90wardex": "/etc/init.d/wardex"}

# What CMake and the Debian packages ask for, and every line by which a recipe asks for the same.
QT = ("DEPENDS qtbase", "DEPENDS qtbase-native", "inherit cmake_qt5")
BUS = ("depends on BR2_USE_MMU", "select BR2_PACKAGE_DBUS")
LIBEVENT = (("DEPENDS libevent",), ("DEPENDENCIES libevent", "select BR2_PACKAGE_LIBEVENT"))
NAMES: dict[str, tuple[tuple[str, ...], tuple[str, ...]]] = {
    "C++17": (
        (),
        ("depends on BR2_INSTALL_LIBSTDCPP", "depends on BR2_TOOLCHAIN_GCC_AT_LEAST_7"),
    ),
    "Threads": ((), ("depends on BR2_TOOLCHAIN_HAS_THREADS",)),
    "PkgConfig": (("inherit pkgconfig",), ("DEPENDENCIES host-pkgconf",)),
    "Qt5 Core": (QT, ("DEPENDENCIES qt5base", "depends on BR2_PACKAGE_QT5")),
    "Qt5 DBus": (QT, ("DEPENDENCIES qt5base", "select BR2_PACKAGE_QT5BASE_DBUS", *BUS)),
    "hiredis": (("DEPENDS hiredis",), ("DEPENDENCIES hiredis", "select BR2_PACKAGE_HIREDIS")),
    "libevent_core": LIBEVENT,
    "libevent_pthreads": LIBEVENT,
    "libudev": (("DEPENDS udev",), ("DEPENDENCIES udev", "depends on BR2_PACKAGE_HAS_UDEV")),
    "CLI11": (("DEPENDS cli11",), ("DEPENDENCIES cli11", "select BR2_PACKAGE_CLI11")),
    "ncursesw": (
        ("DEPENDS ncurses",),
        (
            "DEPENDENCIES ncurses",
            "depends on BR2_USE_WCHAR",
            "select BR2_PACKAGE_NCURSES",
            "select BR2_PACKAGE_NCURSES_WCHAR",
        ),
    ),
    "libcjson": (("DEPENDS cjson",), ("DEPENDENCIES cjson", "select BR2_PACKAGE_CJSON")),
    # On the device: the group, ps, and what the supervisor talks to.
    "adduser": (("inherit useradd",), ("USERS",)),
    "procps": (
        ("RDEPENDS procps",),
        # Without the second the first cannot be chosen: busybox would keep its own ps.
        ("select BR2_PACKAGE_PROCPS_NG", "select BR2_PACKAGE_BUSYBOX_SHOW_OTHERS"),
    ),
    "dbus": (("RDEPENDS dbus",), BUS),
    "redis-server": (("RDEPENDS redis",), ("select BR2_PACKAGE_REDIS",)),
    # The init script needs the whole start-stop-daemon. Buildroot has a script of its own.
    "start": (("inherit update-rc.d", "inherit systemd", "RDEPENDS dpkg-start-stop"), ()),
}


@dataclass(frozen=True)
class File:
    """A file on the device: its permissions, and where its content stands in the tree, if there."""

    component: str
    mode: str
    source: Path


class Declared:
    """What the tree's CMake files say with some options set."""

    def __init__(self, root: Path, options: list[str]) -> None:
        words = ["cmake", f"-DROOT={root}", *options, "-P", str(EVALUATOR)]
        done = subprocess.run(words, cwd=root, capture_output=True, text=True)
        if done.returncode != 0:
            raise OSError(f"{' '.join(words)}: {done.stderr.strip()}")
        told = [line[3:].split("|") for line in done.stdout.splitlines() if line[:3] == "-- "]
        self.version = next(words[1] for words in told if words[0] == "version")
        self.options = {words[1] for words in told if words[0] == "option"}
        self.needs = {words[1] for words in told if words[0] == "needs"}
        self.runs = {words[1] for words in told if words[0] == "runs"}
        self.files = {
            words[2]: File(words[1], words[3], Path(words[4]))
            for words in told
            if words[0] == "install"
        }


def plain(text: str) -> str:
    """A bitbake text with the folders' names in it filled in, and lines joined."""
    text = text.replace("\\\n", " ")
    for name, folder in FOLDERS.items():
        text = text.replace(f"${{{name}}}", folder)
    return text


def files_below(folder: Path) -> dict[str, Path]:
    return {f"/{path.relative_to(folder)}": path for path in folder.rglob("*") if not path.is_dir()}


class Comparison:
    """The recipes of a tree against the rest of it."""

    def __init__(self, root: Path) -> None:
        self.root = root
        self.breaches: list[str] = []
        self.debian = Declared(root, ["-DWARDEX_PACKAGES=ON"])
        self.on_device = {
            path: file for path, file in self.debian.files.items() if not path.startswith(LEFT_OUT)
        }

    def claim(self, holds: bool, text: str) -> None:
        if not holds:
            self.breaches.append(text)

    def equal(self, what: str, expected: set[str], found: set[str]) -> None:
        self.claim(not expected - found, f"{what}: lacks {', '.join(sorted(expected - found))}")
        self.claim(
            not found - expected, f"{what}: unexpected {', '.join(sorted(found - expected))}"
        )

    def compare(self) -> None:
        self.equal("install rules", {"runtime", "tools"}, self.components(self.debian.files))
        for folder in LEFT_OUT:
            self.claim(
                any(path.startswith(folder) for path in self.debian.files),
                f"{folder} is in no package",
            )
        self.equal("table of names", self.debian.needs | self.debian.runs | {"start"}, set(NAMES))
        self.rooms()
        self.yocto()
        self.buildroot()

    @staticmethod
    def components(files: dict[str, File]) -> set[str]:
        return {file.component for file in files.values()}

    def rooms(self) -> None:
        """Only where they are looked for may things be asked for or installed."""
        others = ("build", "tests", "simulator", "benchmarks", "packaging", "cmake")
        rooms = [path for path in self.root.glob("[!.]*/") if path.name not in others]
        for path in sorted(found for room in rooms for found in room.rglob("CMakeLists.txt")):
            name = str(path.relative_to(self.root))
            found = re.search(
                r"^\s*(install|find_package|pkg_\w+)\(", path.read_text(encoding="utf-8"), re.M
            )
            self.claim(found is None, f"{name}: {found and found[1]} belongs into cmake/")

    def options(self, system: str, words: list[str]) -> Declared:
        """What CMake does with a recipe's options; one that it does not know it would pass over."""
        declared = Declared(self.root, words)
        given = {word.removeprefix("-D").partition("=")[0] for word in words}
        self.claim(
            given <= declared.options,
            f"{system}: CMake has no option {', '.join(sorted(given - declared.options))}",
        )
        return declared

    def asked(self, system: str, index: int, declared: Declared, found: set[str]) -> None:
        wanted = declared.needs | self.debian.runs | {"start"}
        expected = {line for need in wanted & set(NAMES) for line in NAMES[need][index]}
        self.equal(system, expected, found)

    def placed(self, system: str, declared: Declared, folder: Path) -> None:
        """CMake's own files and those that the recipe's commands have put into a folder."""
        found = files_below(folder)
        names = {
            path: (MOVED | OWN if system == "buildroot" else {}).get(path, path) for path in found
        }
        self.equal(system, set(self.on_device), set(declared.files) | set(names.values()))
        for path, made in found.items():
            packaged = self.on_device.get(names[path])
            if packaged is None:
                continue
            mode = f"{made.stat().st_mode & 0o777:o}"
            self.claim(mode == packaged.mode, f"{system}: {path} has the mode {mode}")
            if path not in OWN:
                same = made.read_bytes() == packaged.source.read_bytes()
                self.claim(same, f"{system}: {path} is not {packaged.source.name} of the packages")

    def carried_out(self, system: str, words: list[str], commands: str) -> str:
        done = subprocess.run(words, input=commands, cwd="/", capture_output=True, text=True)
        self.claim(done.returncode == 0, f"{system}: {done.stderr.strip()}")
        return done.stdout

    def yocto(self) -> None:
        recipes = sorted((self.root / YOCTO).glob("*.bb"))
        names = {path.name for path in recipes}
        self.equal("yocto: recipe", {f"wardex_{self.debian.version}.bb"}, names)
        text = plain(recipes[0].read_text(encoding="utf-8"))
        licence = hashlib.md5((self.root / "LICENSE").read_bytes()).hexdigest()
        self.claim(f"file://LICENSE;md5={licence}" in text, "yocto: the licence's checksum")

        def words(name: str) -> list[str]:
            found = re.search(rf'^{re.escape(name)} \+?= "(.*)"$', text, re.M)
            return found[1].split() if found else []

        asked = {f"DEPENDS {word}" for word in words("DEPENDS")}
        asked |= {f"RDEPENDS {word}" for word in words("RDEPENDS:${PN}")}
        asked |= {
            f"inherit {word}" for word in re.findall(r"^inherit (.*)$", text, re.M)[0].split()
        }
        declared = self.options("yocto", words("EXTRA_OECMAKE"))
        self.asked("yocto", 0, declared, asked)
        body = re.search(r"^do_install:append\(\) \{\n(.*?)^\}", text, re.M | re.S)
        with tempfile.TemporaryDirectory() as folder:
            settings = f"S={self.root}\nD={folder}\n"
            self.carried_out("yocto", ["sh", "-eu"], settings + (body[1] if body else ""))
            self.placed("yocto", declared, Path(folder))
        for package, component in (("${PN}", "runtime"), ("${PN}-tools", "tools")):
            expected = {
                path for path, file in self.on_device.items() if file.component == component
            }
            self.equal(f"yocto: FILES:{package}", expected, set(words(f"FILES:{package}")))
        settings = {
            path for path in self.on_device if path.startswith(("/etc/default/", "/etc/init.d/"))
        }
        self.equal("yocto: CONFFILES", settings, set(words("CONFFILES:${PN}")))

    def buildroot(self) -> None:
        place = self.root / BUILDROOT
        package = place / "package/wardex"
        for name in ("external.desc", "external.mk", "Config.in"):
            self.claim((place / name).is_file(), f"buildroot: {name} is missing")
        with tempfile.TemporaryDirectory() as folder:
            told = self.carried_out("buildroot", ["make", "-s", "-f", "-"], self.makefile(folder))
            said = dict(line.split("=", 1) for line in told.splitlines() if "=" in line)
            declared = self.options("buildroot", said.get("CONF_OPTS", "").split())
            self.placed("buildroot", declared, Path(folder))
        self.claim(said.get("VERSION") == self.debian.version, "buildroot: the version")
        self.claim(
            Path(said.get("SITE", "")).resolve() == self.root, "buildroot: the place of the tree"
        )
        licence = said.get("LICENSE_FILES", "")
        self.claim((self.root / licence).is_file(), "buildroot: the licence")
        # Buildroot copies the place into its own folder; what is made here would be copied along.
        ignored = (self.root / ".gitignore").read_text(encoding="utf-8").split()
        excluded = said.get("OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS", "").replace("'", "").split()
        self.equal("buildroot: left uncopied", set(ignored), set(excluded) - {"--exclude"})
        asked = {f"DEPENDENCIES {word}" for word in said.get("DEPENDENCIES", "").split()}
        asked |= {"USERS"} if re.match(r"\s*- - wardex -1 ", said.get("USERS", "")) else set()
        menu = (package / "Config.in").read_text(encoding="utf-8").replace("\\\n", " ")
        own, _, comment = menu.partition("\ncomment ")
        lines = re.findall(r"^\t((?:depends on|select) [^#\n]*)", own, re.M)
        asked |= {line.strip() for line in lines}
        self.asked("buildroot", 1, declared, asked)
        # Whoever cannot choose the package is told why.
        conditions = {line.split()[2] for line in asked if line.startswith("depends on ")}
        self.equal("buildroot: comment", conditions, set(re.findall(r"\bBR2_\w+", comment)))
        self.carried_out("buildroot: S90wardex", ["sh", "-n", str(package / "S90wardex")], "")

    def makefile(self, folder: str) -> str:
        """As much of Buildroot's own as installs a package into a folder."""
        place = self.root / BUILDROOT
        return f"""
BR2_EXTERNAL_WARDEX_PATH = {place}
WARDEX_PKGDIR = {place}/package/wardex
TARGET_DIR = {folder}
INSTALL = install
cmake-package =
define sep


endef
include {place}/external.mk
$(foreach name,VERSION SITE LICENSE_FILES DEPENDENCIES CONF_OPTS USERS OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS,\
    $(info $(name)=$(WARDEX_$(name))))
.PHONY: {self.root}/installed
{self.root}/installed:
	@:
	$(foreach hook,$(WARDEX_POST_INSTALL_TARGET_HOOKS),$(call $(hook))$(sep))
	$(WARDEX_INSTALL_INIT_SYSV)
	$(WARDEX_INSTALL_INIT_SYSTEMD)
"""

    def packages(self) -> int:
        """Compares with the built Debian packages of this tree; answers how many there are."""
        rules = (self.root / "packaging/CMakeLists.txt", self.root / "cmake/WardexInstall.cmake")
        changed = max(path.stat().st_mtime for path in rules)
        pattern = f"build/*/packages/*_{self.debian.version}-*.deb"
        found = [path for path in self.root.glob(pattern) if path.stat().st_mtime > changed]
        for package in found:
            listing = subprocess.run(
                ["dpkg-deb", "-c", package], check=True, capture_output=True, text=True
            ).stdout.splitlines()
            installed = {line.split()[5].removeprefix(".") for line in listing if line[0] != "d"}
            component = "tools" if package.name.startswith("wardex-tools") else "runtime"
            expected = {
                path for path, file in self.debian.files.items() if file.component == component
            }
            self.equal(package.name, expected, installed)
        return len(found)


def main() -> int:
    comparison = Comparison(ROOT)
    comparison.compare()
    compared = comparison.packages()
    for breach in comparison.breaches:
        print(breach)
    print(
        f"recipes: {len(comparison.on_device)} files, {len(NAMES)} dependencies, "
        f"{compared} built Debian packages, {len(comparison.breaches)} breaches"
    )
    return 1 if comparison.breaches else 0


if __name__ == "__main__":
    sys.exit(main())
