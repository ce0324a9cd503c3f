"""The check of the recipes for other systems sees every line that is lost, foreign or wrong."""

import importlib.util
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

REPOSITORY = Path(__file__).resolve().parents[3]
SPEC = importlib.util.spec_from_file_location("recipes", REPOSITORY / ".ci/checks/recipes.py")
recipes = importlib.util.module_from_spec(SPEC)
sys.modules[SPEC.name] = recipes
SPEC.loader.exec_module(recipes)

YOCTO = next(path for path in (REPOSITORY / recipes.YOCTO).glob("*.bb"))
BITBAKE = f"{recipes.YOCTO}/{YOCTO.name}"
MAKE = "packaging/buildroot/package/wardex/wardex.mk"
MENU = "packaging/buildroot/package/wardex/Config.in"
DEPENDENCIES = "cmake/WardexDependencies.cmake"
RULES = "packaging/CMakeLists.txt"


DECLARED = recipes.Declared


class Tree:
    """A copy of what the check reads; changes are taken back after each claim."""

    def __init__(self, root: Path) -> None:
        self.root = root
        for part in ("packaging", "cmake"):
            shutil.copytree(REPOSITORY / part, root / part)
        for name in ("CMakeLists.txt", "LICENSE", ".gitignore", "logger/CMakeLists.txt"):
            (root / name).parent.mkdir(exist_ok=True)
            shutil.copy(REPOSITORY / name, root / name)
        self.before: dict[Path, bytes] = {}
        self.evaluated: dict[tuple[str, ...], object] = {}

    def change(self, name: str, old: str, new: str) -> None:
        path = self.root / name
        self.before.setdefault(path, path.read_bytes())
        text = path.read_text(encoding="utf-8")
        assert text.count(old) == 1, f"{old!r} stands {text.count(old)} times in {name}"
        path.write_text(text.replace(old, new), encoding="utf-8")

    def take_back(self) -> None:
        for path, content in self.before.items():
            path.write_bytes(content)
        self.before.clear()

    def breaches(self) -> list[str]:
        comparison = recipes.Comparison(self.root)
        comparison.compare()
        return comparison.breaches

    def declared(self, root: Path, options: list[str]) -> object:
        """Stands in for `Declared`: the same CMake files are evaluated once."""
        files = sorted([*root.rglob("CMakeLists.txt"), *root.glob("cmake/*.cmake")])
        key = (*options, *(path.read_text(encoding="utf-8") for path in files))
        if key not in self.evaluated:
            self.evaluated[key] = DECLARED(root, options)
        return self.evaluated[key]


@pytest.fixture(scope="module", name="whole")
def _whole(tmp_path_factory) -> Tree:
    return Tree(tmp_path_factory.mktemp("tree"))


@pytest.fixture(name="tree")
def _tree(whole, monkeypatch):
    monkeypatch.setattr(recipes, "Declared", whole.declared)
    yield whole
    whole.take_back()


def lines_of(name: str, pattern: str) -> list[str]:
    """Parts of a file that a claim takes away, one after the other."""
    found = re.findall(pattern, (REPOSITORY / name).read_text(encoding="utf-8"), re.M)
    assert found, f"{pattern} in {name}"
    return found


def test_tree_as_it_is_has_no_breach(tree):
    assert tree.breaches() == []


@pytest.mark.parametrize("line", lines_of(BITBAKE, r"^    install .*\n"))
def test_yocto_install_line_that_is_lost(tree, line):
    tree.change(BITBAKE, line, "")
    target = recipes.plain(line.split()[-1]).removeprefix("${D}")
    assert tree.breaches() == [f"yocto: lacks {target}"]


@pytest.mark.parametrize("line", lines_of(MAKE, r"^\t\$\(INSTALL\).*\\\n.*\n"))
def test_buildroot_install_line_that_is_lost(tree, line):
    tree.change(MAKE, line, "")
    target = line.split()[-1].removeprefix("$(TARGET_DIR)")
    name = (recipes.MOVED | recipes.OWN).get(target, target)
    assert tree.breaches() == [f"buildroot: lacks {name}"]


def test_buildroot_commands_that_nothing_calls(tree):
    tree.change(MAKE, "WARDEX_POST_INSTALL_TARGET_HOOKS += WARDEX_INSTALL_SETTINGS\n", "")
    assert tree.breaches() == [
        "buildroot: lacks /etc/default/wardex, /etc/lnav/formats/wardex/wardex_log.json"
    ]


def test_foreign_file(tree):
    tree.change(
        BITBAKE, "${sysconfdir}/init.d/wardex\n    install", "${sysconfdir}/other\n    install"
    )
    assert tree.breaches() == ["yocto: lacks /etc/init.d/wardex", "yocto: unexpected /etc/other"]


def test_wrong_permissions(tree):
    tree.change(BITBAKE, "0755", "0644")
    tree.change(MAKE, "0755", "0644")
    assert tree.breaches() == [
        "yocto: /etc/init.d/wardex has the mode 644",
        "buildroot: /etc/init.d/S90wardex has the mode 644",
    ]


def test_wrong_content(tree):
    tree.change(MAKE, "$(@D)/packaging/default/wardex", "$(@D)/packaging/init.d/wardex")
    assert tree.breaches() == ["buildroot: /etc/default/wardex is not wardex of the packages"]


def test_source_that_is_not_there(tree):
    tree.change(BITBAKE, "${S}/packaging/default/wardex", "${S}/packaging/defaults")
    assert [breach for breach in tree.breaches() if "/packaging/defaults" in breach]


def words_of(name: str, start: str, kind: str):
    """Each word behind the start of a line, with the whole line and what the check says of the word."""
    (line,) = lines_of(name, rf"^{re.escape(start)}(?:.*\\\n)*.*\n")
    words = line.removeprefix(start).replace('"', " ").replace("\\\n", " ").split()
    return [(name, line, word, f"{kind} {recipes.plain(word)}") for word in words]


WORDS = [
    *words_of(BITBAKE, "DEPENDS = ", "yocto: lacks DEPENDS"),
    *words_of(BITBAKE, "RDEPENDS:${PN} = ", "yocto: lacks RDEPENDS"),
    *words_of(BITBAKE, "inherit ", "yocto: lacks inherit"),
    *words_of(BITBAKE, "FILES:${PN} += ", "yocto: FILES:${PN}: lacks"),
    *words_of(BITBAKE, "FILES:${PN}-tools = ", "yocto: FILES:${PN}-tools: lacks"),
    *words_of(BITBAKE, "CONFFILES:${PN} = ", "yocto: CONFFILES: lacks"),
    *words_of(MAKE, "WARDEX_DEPENDENCIES = ", "buildroot: lacks DEPENDENCIES"),
]


@pytest.mark.parametrize(("name", "line", "word", "breach"), WORDS, ids=[each[3] for each in WORDS])
def test_word_that_is_lost(tree, name, line, word, breach):
    lost = re.sub(rf"(?<=[\s\"]){re.escape(word)}(?=[\s\"])", "", line, count=1)
    tree.change(name, line, lost)
    assert tree.breaches() == [breach]


@pytest.mark.parametrize(
    "line", lines_of(MENU.strip(), r"^\t(?:select|depends on) \w+(?: #.*)?\n")[:-1]
)
def test_buildroot_condition_or_choice_that_is_lost(tree, line):
    tree.change(MENU, line, "")
    asked = line.partition("#")[0].strip()
    said = tree.breaches()
    assert said[0] == f"buildroot: lacks {asked}"
    comment = [f"buildroot: comment: unexpected {asked.split()[-1]}"]
    assert said[1:] == (comment if asked.startswith("depends") else [])


def test_choice_that_depends_on_another(tree):
    tree.change(MENU, "select BR2_PACKAGE_CJSON", "select BR2_PACKAGE_CJSON if BR2_OTHER")
    assert tree.breaches() == [
        "buildroot: lacks select BR2_PACKAGE_CJSON",
        "buildroot: unexpected select BR2_PACKAGE_CJSON if BR2_OTHER",
    ]


def test_dependency_that_nothing_asks_for(tree):
    tree.change(BITBAKE, 'DEPENDS = "qtbase ', 'DEPENDS = "zlib qtbase ')
    tree.change(MAKE, "WARDEX_DEPENDENCIES = ", "WARDEX_DEPENDENCIES = zlib ")
    assert tree.breaches() == [
        "yocto: unexpected DEPENDS zlib",
        "buildroot: unexpected DEPENDENCIES zlib",
    ]


def test_new_dependency_of_the_tree(tree):
    tree.change(
        DEPENDENCIES, "find_package(Threads", "pkg_check_modules(Z zlib)\nfind_package(Threads"
    )
    assert tree.breaches() == ["table of names: lacks zlib"]


def test_dependency_that_the_tree_has_no_more(tree):
    tree.change(DEPENDENCIES, "pkg_check_modules(Ncurses REQUIRED IMPORTED_TARGET ncursesw)\n", "")
    assert tree.breaches() == [
        "table of names: unexpected ncursesw",
        "yocto: unexpected DEPENDS ncurses",
        "buildroot: unexpected DEPENDENCIES ncurses, depends on BR2_USE_WCHAR, "
        "select BR2_PACKAGE_NCURSES, select BR2_PACKAGE_NCURSES_WCHAR",
    ]


def test_new_dependency_of_the_debian_package(tree):
    tree.change(RULES, '"adduser, procps"', '"adduser, procps, kmod"')
    assert tree.breaches() == ["table of names: lacks kmod"]


def test_dependency_and_file_outside_the_common_places(tree):
    tree.change(
        "logger/CMakeLists.txt",
        "wardex_add_library(logger",
        "find_package(ZLIB)\nwardex_add_library(logger",
    )
    assert tree.breaches() == ["logger/CMakeLists.txt: find_package belongs into cmake/"]


def test_file_that_only_debian_gets(tree):
    tree.change(
        RULES,
        "install(FILES default/wardex",
        "install(FILES lnav/wardex_log.json DESTINATION /etc COMPONENT runtime)\n"
        "install(FILES default/wardex",
    )
    assert tree.breaches() == [
        "yocto: lacks /etc/wardex_log.json",
        "yocto: FILES:${PN}: lacks /etc/wardex_log.json",
        "buildroot: lacks /etc/wardex_log.json",
    ]


def test_files_that_debian_gets_no_more(tree):
    tree.change(
        RULES, "install(FILES default/wardex DESTINATION /etc/default COMPONENT runtime)\n", ""
    )
    assert tree.breaches() == [
        "yocto: unexpected /etc/default/wardex",
        "yocto: FILES:${PN}: unexpected /etc/default/wardex",
        "yocto: CONFFILES: unexpected /etc/default/wardex",
        "buildroot: unexpected /etc/default/wardex",
    ]


def test_option_that_cmake_does_not_know(tree):
    tree.change(MAKE, "-DWARDEX_WERROR=OFF", "-DWARDEX_WARNINGS=OFF")
    assert tree.breaches() == ["buildroot: CMake has no option WARDEX_WARNINGS"]


def test_other_version(tree):
    tree.change(
        "CMakeLists.txt", "project(wardex VERSION 0.4.1539", "project(wardex VERSION 0.4.1540"
    )
    assert tree.breaches() == [
        "yocto: recipe: lacks wardex_0.4.1540.bb",
        "yocto: recipe: unexpected wardex_0.4.1539.bb",
        "buildroot: the version",
    ]


def test_other_licence(tree):
    tree.change("LICENSE", "MIT License", "Other")
    assert tree.breaches() == ["yocto: the licence's checksum"]


def test_folder_of_builds_that_would_be_copied(tree):
    tree.change(MAKE, "\t--exclude /build/ \\\n", "")
    assert tree.breaches() == ["buildroot: left uncopied: lacks /build/"]


def test_recipe_that_make_does_not_understand(tree):
    tree.change(MAKE, "define WARDEX_INSTALL_INIT_SYSV", "define")
    assert any("empty variable name" in breach for breach in tree.breaches())


@pytest.mark.skipif(shutil.which("dpkg-deb") is None, reason="dpkg-deb makes the package")
def test_built_package_is_compared_unless_it_is_older_than_the_rules(tree, tmp_path):
    (tmp_path / "DEBIAN").mkdir()
    (tmp_path / "DEBIAN/control").write_text(
        "Package: wardex\nVersion: 0.4.1539-1\nArchitecture: all\nMaintainer: a <a@b>\n"
        "Description: a\n"
    )
    for path, file in recipes.Comparison(tree.root).debian.files.items():
        if file.component == "runtime" and path != "/usr/sbin/wardex":
            (tmp_path / path[1:]).parent.mkdir(parents=True, exist_ok=True)
            (tmp_path / path[1:]).touch()
    package = tree.root / "build/package/packages/wardex_0.4.1539-1_all.deb"
    package.parent.mkdir(parents=True)
    subprocess.run(["dpkg-deb", "-b", tmp_path, package], check=True, capture_output=True)
    comparison = recipes.Comparison(tree.root)
    assert comparison.packages() == 1
    assert comparison.breaches == [f"{package.name}: lacks /usr/sbin/wardex"]
    os.utime(package, (1, 1))
    assert comparison.packages() == 0
    shutil.rmtree(tree.root / "build")
