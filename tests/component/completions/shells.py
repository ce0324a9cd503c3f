"""Shells on a terminal, with the completions and with a wardexctl that only notes its words."""

import os
import pty
import select
import subprocess
import time
from pathlib import Path

COMPLETIONS = Path(__file__).resolve().parents[3] / "packaging/completions"
# Ends only a claim that fails.
BOUND = 30.0

# Two services and a source that no real device has: what is offered must be what it tells.
NOTING = """#!/bin/sh
case "$*" in
    list) printf 'com.orvo.vistor  corvane  runs\\ncom.orvo.other  other  runs\\n' ;;
    loglevel) printf 'wardex    WARN (default)\\nother   all (stored)\\n' ;;
    *) printf '%s\\n' "$*" >>FOLDER/calls ;;
esac
"""

BASH_READY = """PS1='> '; bind 'set bell-style none'
source {place}/wardexctl
"""

# Whatever is added to the offers is noted as well.
ZSH_READY = """PS1='> '; setopt no_beep; LISTMAX=1000
fpath=({place} $fpath); autoload -U compinit; compinit -u -D
compadd() {{
    if [[ ${{@[1,(i)(-|--)]}} != *-[OAD]\\ * ]]; then
        local -a offered; builtin compadd -A offered "$@"; print -rl -- $offered >>{folder}/offers
    fi
    builtin compadd "$@"
}}
"""


class Shell:
    """An interactive shell; words are typed, and what it calls is read."""

    def __init__(self, folder, *words, ready):
        self.folder = folder
        self.calls = folder / "calls"
        self.calls.write_text("")
        program = folder / "wardexctl"
        program.write_text(NOTING.replace("FOLDER", str(folder)))
        program.chmod(0o755)
        self.terminal, inner = pty.openpty()
        environment = {"PATH": f"{folder}:/usr/bin:/bin", "TERM": "dumb", "LANG": "C.UTF-8"}
        self.process = subprocess.Popen(
            words,
            stdin=inner,
            stdout=inner,
            stderr=inner,
            start_new_session=True,
            cwd=folder,
            env={**environment, "HOME": str(folder)},
        )
        os.close(inner)
        self.type(ready.format(place=COMPLETIONS, folder=folder))
        self.call("wardexctl ready")

    def type(self, text):
        """As from a keyboard."""
        os.write(self.terminal, text.encode())

    def call(self, keys):
        """Types a line, and answers the words with which it called the program."""
        before = len(self.calls.read_text().splitlines())
        self.type(keys + "\n")
        end = time.monotonic() + BOUND
        shown = b""
        while time.monotonic() < end:
            calls = self.calls.read_text().splitlines()
            if len(calls) > before:
                return calls[before]
            if select.select([self.terminal], [], [], 0.05)[0]:
                shown += os.read(self.terminal, 65536)
        raise AssertionError(f"'{keys}' called nothing:\n{shown.decode(errors='replace')}")

    def offers(self, line):
        """What the shell offers for the last word of a line."""
        offers = self.folder / "offers"
        offers.write_text("")
        # Two words more, so that the program only notes the call.
        self.call(line + "\t x y")
        return sorted(set(offers.read_text().split()))

    def close(self):
        """Ends the shell."""
        self.process.kill()
        self.process.wait()
        os.close(self.terminal)


def bash(folder):
    """bash with the completion in it."""
    return Shell(folder, "bash", "--norc", "--noprofile", "-i", ready=BASH_READY)


def zsh(folder):
    """zsh with the completion in its path, noting what is offered."""
    return Shell(folder, "zsh", "-f", "-i", ready=ZSH_READY)


def bash_offers(folder, *words):
    """What the completion for bash offers for the last of the words, as bash has parted them."""
    script = (
        'source "$1/wardexctl"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _wardexctl; '
        'printf "%s\\n" "${COMPREPLY[@]}"'
    )
    outcome = subprocess.run(
        ("bash", "--norc", "-c", script, "bash", COMPLETIONS, *words),
        capture_output=True,
        text=True,
        check=True,
        env={"PATH": f"{folder}:/usr/bin:/bin"},
    )
    assert outcome.stderr == ""
    return sorted(outcome.stdout.split())
