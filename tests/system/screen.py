"""A person's terminal on the device: what stands on its screen, and the keys."""

import fcntl
import os
import pty
import select
import struct
import subprocess
import termios

import pyte
from camera import BOUND

from wardex_desk import control
from wardex_desk.shell import entering
from wardex_desk.waiting import now

READ_SIZE = 65536
# Between two looks at a screen on which nothing happens.
LOOK = 0.05

# As terminals send them to a program that has asked for its keypad.
UP, DOWN = "\x1bOA", "\x1bOB"
PAGE_UP, PAGE_DOWN = "\x1b[5~", "\x1b[6~"
ENTER, ESCAPE, BACKSPACE = "\r", "\x1b", "\x7f"
CTRL_C, CTRL_Z = "\x03", "\x1a"


class Screen:
    """A program on a pseudo-terminal whose other side is a terminal emulator.

    Owns: the program; it ends with close(). Every await_... fails the claim after BOUND seconds.
    """

    def __init__(self, camera, *words, term="xterm-256color", size=(24, 80), **variables):
        self._heard = b""
        self._screen = pyte.Screen(size[1], size[0])
        self._stream = pyte.ByteStream(self._screen)
        self._terminal, inside = pty.openpty()
        self.resize(*size)
        settings = [f"TERM={term}", *(f"{name}={value}" for name, value in variables.items())]
        # The session begins on the device, and takes the terminal there.
        command = ("env", *settings, "setsid", "--ctty", "--wait", *words)
        self.process = subprocess.Popen(
            entering(control.boot_program(camera.instance), command),
            stdin=inside,
            stdout=inside,
            stderr=inside,
            start_new_session=True,
        )
        os.close(inside)

    def close(self):
        """Ends the program and the terminal."""
        if self._terminal < 0:
            return
        os.close(self._terminal)
        self._terminal = -1
        try:
            self.process.wait(BOUND)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()

    def press(self, keys):
        """Types."""
        os.write(self._terminal, keys.encode())

    def resize(self, rows, columns):
        """Pulls at the window's corner."""
        self._screen.resize(rows, columns)
        fcntl.ioctl(self._terminal, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def heard(self):
        """All bytes that came."""
        self._read()
        return self._heard

    def lines(self):
        """What stands on the screen now, without blanks at the lines' ends."""
        self._read()
        return [line.rstrip() for line in self._screen.display]

    def line(self, start):
        """The first line that begins so; empty while none does."""
        return next((line for line in self.lines() if line.startswith(start)), "")

    def colour(self, row, column=0):
        """The colour of a character: "red", "default"."""
        return self._screen.buffer[row][column].fg

    def await_true(self, condition, what):
        """Waits for a condition about this screen; answers what it answers."""
        end = now() + BOUND
        answer = condition()
        while not answer:
            if now() > end:
                shown = "\n".join(self.lines())
                raise AssertionError(f"not seen within {BOUND} s: {what}\n{shown}")
            self._read(LOOK)
            answer = condition()
        return answer

    def await_line(self, start, part=""):
        """Waits for a line that begins so and has a part; answers it."""
        return self.await_true(
            lambda: next(
                (each for each in self.lines() if each.startswith(start) and part in each), None
            ),
            f"'{start}' ... '{part}'",
        )

    def await_claim(self, claim):
        """Waits until a claim about the lines asserts nothing false any more.

        A screen can be looked at while it is being drawn: what stands on another line than the one
        that was waited for must be waited for as well.
        """
        end = now() + BOUND
        while True:
            try:
                return claim(self.lines())
            except (AssertionError, IndexError):
                if now() > end:
                    raise
            self._read(LOOK)

    def await_end(self):
        """Waits for the program's end and answers its exit status."""
        self.await_true(lambda: self.process.poll() is not None, "the program's end")
        return self.process.returncode

    def _read(self, bound=0.0):
        while self._terminal >= 0 and select.select([self._terminal], [], [], bound)[0]:
            try:
                heard = os.read(self._terminal, READ_SIZE)
            except OSError:
                # Nobody has the other side open any more.
                return
            self._heard += heard
            self._stream.feed(heard)
            bound = 0.0
