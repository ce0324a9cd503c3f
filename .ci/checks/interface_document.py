#!/usr/bin/python3
"""docs/dbus-interface.md is made from the interface's description, its explanations and the policy.

    interface_document.py          says whether the document is up to date; 1 when it is not
    interface_document.py --fix    writes it
"""

import difflib
import sys
import tomllib
from dataclasses import dataclass
from pathlib import Path
from xml.etree import ElementTree

ROOT = Path(__file__).resolve().parents[2]
XML = ROOT / "src/lib/linux/dbus-proxy/xml/com.orvo.wardex.xml"
EXPLANATIONS = XML.with_suffix(".toml")
POLICY = ROOT / "packaging/dbus/com.orvo.wardex.conf"
FRAME = ROOT / "docs/dbus-interface.in"
DOCUMENT = ROOT / "docs/dbus-interface.md"
STATUS = "(is)"


@dataclass(frozen=True)
class Argument:
    """A value of a call, in the order of the description."""

    name: str
    type: str
    inward: bool


@dataclass(frozen=True)
class Member:
    """A method or signal."""

    kind: str
    name: str
    arguments: tuple[Argument, ...]


def members() -> list[Member]:
    """What the description has, in its order."""
    found = []
    for node in ElementTree.parse(XML).getroot().iter():
        if node.tag in ("method", "signal"):
            arguments = tuple(
                Argument(each.attrib["name"], each.attrib["type"], each.get("direction") == "in")
                for each in node.iter("arg")
            )
            found.append(Member(node.tag, node.attrib["name"], arguments))
    return found


def callers(method: str) -> str:
    """Whom the policy lets call a method."""

    def is_let(policy: ElementTree.Element) -> bool:
        wanted = (None, method)
        rules = [rule for rule in policy if "send_destination" in rule.attrib]
        decisions = [rule.tag for rule in rules if rule.get("send_member") in wanted]
        return bool(decisions) and decisions[-1] == "allow"

    for policy in ElementTree.parse(POLICY).getroot().iter("policy"):
        if is_let(policy):
            if policy.get("context") == "default":
                return "everybody"
            return f"root, group {policy.attrib['group']}" if policy.get("group") else "root"
    return "nobody"


def explained(arguments: list[Argument], values: dict[str, str]) -> str:
    """The cell of some arguments."""
    return "; ".join(f"`{each.type}` {each.name}: {values[each.name]}" for each in arguments)


def tables() -> str:
    """One row per member; fails when a member or a value has no explanation, or one has no member."""
    explanations = tomllib.loads(EXPLANATIONS.read_text(encoding="utf-8"))
    common = explanations.pop("values")
    described = members()
    if set(explanations) != {member.name for member in described}:
        raise SystemExit(f"{EXPLANATIONS.name} and {XML.name} have different members")
    methods = [
        "| Method | Does | In | Out, behind the status | Status | Who may call |",
        "|---|---|---|---|---|---|",
    ]
    signals = ["| Signal | When | Values |", "|---|---|---|"]
    for member in described:
        text = explanations[member.name]
        values = common | text.get("values", {})
        if member.kind == "signal":
            carried = explained(list(member.arguments), values)
            signals.append(f"| `{member.name}` | {text['does']} | {carried} |")
            continue
        status, *rest = (each for each in member.arguments if not each.inward)
        if status.type != STATUS:
            raise SystemExit(f"{XML.name}: {member.name} does not return its status first")
        inward = explained([each for each in member.arguments if each.inward], values)
        cells = (text["does"], inward, explained(rest, values), text["status"])
        methods.append(f"| `{member.name}` | {' | '.join(cells)} | {callers(member.name)} |")
    return "\n".join([*methods, "", *signals])


def main() -> int:
    """Writes or compares."""
    made = FRAME.read_text(encoding="utf-8").replace("@MEMBERS@", tables())
    if sys.argv[1:] == ["--fix"]:
        DOCUMENT.write_text(made, encoding="utf-8")
        return 0
    present = DOCUMENT.read_text(encoding="utf-8").splitlines()
    difference = list(difflib.unified_diff(present, made.splitlines(), "present", "made", n=0))
    print(*difference, sep="\n", end="\n" if difference else "")
    print(f"interface: {'interface_document.py --fix writes it' if difference else 'up to date'}")
    return 1 if difference else 0


if __name__ == "__main__":
    sys.exit(main())
