"""What the operator's command says, without what differs from run to run."""

import json
import re

# Members whose number or text is another one in every run.
PASSING = {
    *("time", "age", "monotonic", "pid", "seconds", "freeSeconds", "stateSeconds"),
    *("availableSeconds", "lastScriptSeconds", "supervisorSeconds", "fallBackPid"),
}
PASSING_TEXTS = (
    (re.compile(r"\d\d:\d\d:\d\d\.\d{3}"), "HH:MM:SS.mmm"),
    (re.compile(r"(?<=mmm) +\d+ (?:s|min|h|d)\b"), " AGE"),
    (re.compile(r"\b\d+(?:\.\d+)? (?:s|ms|min|h)\b(?: \d+ s\b)?(?! package|;)"), "N s"),
    (re.compile(r"(?<=wardex\[)\d+"), "PID"),
    (re.compile(r"\bkill \d+"), "kill PID"),
)
# Says only that the machine is busy.
WAITING = re.compile(r"waiting for .* \.\.\.")


def console(*commands):
    """A shell's words that run commands one after the other, each with its exit status behind."""
    return "; ".join(
        f"echo '$ {command}'; {command} 2>&1; echo \"[status $?]\"" for command in commands
    )


def console_at_once(*commands):
    """The same of commands that run side by side, for those which wait long."""
    each = [
        f"{{ {console(command)}; }} >/tmp/said.{place} &" for place, command in enumerate(commands)
    ]
    return " ".join([*each, "wait;", "cat", *(f"/tmp/said.{place}" for place in range(len(each)))])


def steady(text):
    """The lines of a console that are the same in every run in the same situation."""
    lines = [_steady_line(line) for line in text.splitlines() if not WAITING.fullmatch(line)]
    return "\n".join("\n".join(lines).splitlines()) + "\n"


def _steady_line(line):
    if line.startswith("{"):
        return _steady_json(json.loads(line))
    for passing, instead in PASSING_TEXTS:
        line = passing.sub(instead, line)
    # Columns are as wide as what is gone now.
    return re.sub(r"(?<=\S) {2,}", "  ", line)


def _steady_json(value):
    """One line for each member of an answer, one for each object of an array; a line of a stream
    stays one."""
    value = _steady_value(value)
    if "schema" not in value:
        return json.dumps(value)
    lines = []
    for name, member in value.items():
        if isinstance(member, list) and member:
            inner = ",\n".join(f"    {json.dumps(each)}" for each in member)
            lines.append(f'  "{name}": [\n{inner}\n  ]')
        else:
            lines.append(f'  "{name}": {json.dumps(member)}')
    return "{\n" + ",\n".join(lines) + "\n}"


def _steady_value(value):
    if isinstance(value, dict):
        return {
            name: ".." if name in PASSING and member is not None else _steady_value(member)
            for name, member in value.items()
        }
    if isinstance(value, list):
        return [_steady_value(each) for each in value]
    return _steady_line(value) if isinstance(value, str) else value
