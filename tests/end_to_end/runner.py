"""Runs a program of Karvex, plainly or behind one of its fronts, and returns what it left; and the frame for checks."""

import argparse
from collections.abc import Callable, Iterable
from dataclasses import dataclass
import fcntl
import json
import os
from pathlib import Path
import pty
import select
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time
from typing import Any

RUN_LIMIT_SECONDS = 120
"""A run in fast time takes a fraction of a second; what takes longer than this hangs."""

PATIENCE_SECONDS = 30.0
"""For what takes a few seconds on a machine with nothing else to do."""


class Skipped(Exception):
    """The check can't be made here; the text says why."""


def require(condition: bool, text: str) -> None:
    """End the check in work as failed, with that text, unless the condition holds."""
    if not condition:
        raise AssertionError(text)


def require_equal(name: str, value: object, expected: object) -> None:
    require(value == expected, f"{name} is {value!r}, expected {expected!r}")


@dataclass(frozen=True)
class Run:
    """One finished run of the program."""

    exit_status: int
    """Negative where a signal ended the program, and -9 where it was stopped because it hung."""
    lines: list[str]
    errors: str
    report: dict[str, Any]
    """The program's report, empty where it wrote none."""
    peak_memory: int
    """Largest resident size in bytes. The system counts the starting process in, so that one has to be small."""


class Rig:
    """karvex-rig, in fast time, with a directory for what it writes. One run at a time."""

    def __init__(self, program: Path, directory: Path) -> None:
        self.program = program
        self.directory = directory

    def run(self, *arguments: str) -> Run:
        """A run with a report."""
        return self.run_plainly(*arguments, "--time", "fast", "--report", str(self.directory / "report.json"))

    def run_plainly(self, *arguments: str) -> Run:
        stdout, stderr, report = (self.directory / name for name in ("stdout", "stderr", "report.json"))
        report.unlink(missing_ok=True)
        with stdout.open("wb") as output, stderr.open("wb") as errors:
            process = subprocess.Popen([str(self.program), *arguments], stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=errors)
            watchdog = threading.Timer(RUN_LIMIT_SECONDS, process.kill)
            watchdog.start()
            _, status, usage = os.wait4(process.pid, 0)
            watchdog.cancel()
            process.returncode = os.waitstatus_to_exitcode(status)
        content = report.read_bytes() if report.exists() else b""
        return Run(process.returncode, stdout.read_text(errors="surrogateescape").splitlines(),
                   stderr.read_text(errors="surrogateescape"), json.loads(content) if content else {},
                   usage.ru_maxrss * 1024)

    def upgrade(self, boards: int, *arguments: str) -> Run:
        return self.run("--upgrade", "1", "--boards", str(boards), *arguments)


class Front:
    """The application in real time, behind one of its fronts. Its temporary files have a place of their own."""

    def __init__(self, program: Path, *arguments: str, **streams: Any) -> None:
        self.arguments = arguments
        self._place = tempfile.TemporaryDirectory(prefix="karvex-")
        directory = Path(self._place.name)
        self.temporary, self._report, self._errors = (directory / name for name in ("tmp", "report.json", "errors"))
        self.temporary.mkdir()
        environment = {**os.environ, "TMPDIR": str(self.temporary), "TERM": "xterm-256color",
                       "QT_QPA_PLATFORM": "offscreen", "XDG_RUNTIME_DIR": str(directory)}
        command = [str(program), "--time", "real", *arguments, "--report", str(self._report)]
        with self._errors.open("wb") as errors:
            self.process = subprocess.Popen(command, **{"stderr": errors, **streams}, start_new_session=True,
                                            env=environment)

    def __enter__(self) -> "Front":
        return self

    def __exit__(self, *_: object) -> None:
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self._place.cleanup()

    def take_output(self, limit: float) -> None:
        """Wait that long, in seconds, for something new to look at."""
        time.sleep(limit)

    def last_words(self) -> str:
        return self.errors()[-600:]

    def errors(self) -> str:
        return self._errors.read_text(errors="replace")

    def report(self) -> dict[str, Any]:
        return json.loads(self._report.read_bytes())

    def wait_for(self, what: str, holds: Callable[[], bool]) -> None:
        deadline = time.monotonic() + PATIENCE_SECONDS
        while not holds():
            require(time.monotonic() < deadline,
                    f"{' '.join(self.arguments)}: {what} never comes; the last there is: {self.last_words()!r}")
            self.take_output(0.02)

    def wait_for_log(self, line: str) -> None:
        self.wait_for(line, lambda: line in self.errors())

    def end(self) -> int:
        """Wait for the end, and give the exit status."""
        self.wait_for("the end", lambda: self.process.poll() is not None)
        return self.process.returncode


class Lines(Front):
    """In plain lines, as in a pipe."""

    def __init__(self, program: Path, *arguments: str) -> None:
        with tempfile.TemporaryFile("wb") as output:
            self._output = os.dup(output.fileno())
            super().__init__(program, "--front", "console", *arguments, stdin=subprocess.DEVNULL, stdout=output)

    def __exit__(self, *_: object) -> None:
        super().__exit__()
        os.close(self._output)

    def output(self) -> str:
        return os.pread(self._output, 1 << 20, 0).decode(errors="replace")


class Window(Front):
    """In a window that nobody sees."""

    def __init__(self, program: Path, *arguments: str) -> None:
        super().__init__(program, "--front", "window", *arguments, stdin=subprocess.DEVNULL,
                         stdout=subprocess.DEVNULL)


class Terminal(Front):
    """On a pseudo-terminal."""

    def __init__(self, program: Path, *arguments: str, has_errors: bool = False) -> None:
        self._own, self._theirs = pty.openpty()
        self.resize(40, 130)
        self.mode_before = termios.tcgetattr(self._theirs)
        self.screen = ""
        errors = {"stderr": self._theirs} if has_errors else {}
        super().__init__(program, "--front", "console", *arguments, stdin=self._theirs, stdout=self._theirs, **errors)

    def __exit__(self, *_: object) -> None:
        super().__exit__()
        os.close(self._own)
        os.close(self._theirs)

    def resize(self, lines: int, columns: int) -> None:
        fcntl.ioctl(self._theirs, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))

    def mode(self) -> list[Any]:
        return termios.tcgetattr(self._theirs)

    def press(self, keys: str) -> None:
        os.write(self._own, keys.encode())

    def take_output(self, limit: float) -> None:
        if select.select([self._own], [], [], limit)[0]:
            self.screen += os.read(self._own, 1 << 16).decode(errors="replace")

    def last_words(self) -> str:
        return self.screen[-600:]

    def see(self, text: str) -> None:
        """Wait for a text that is drawn from now on."""
        self.screen = ""
        self.wait_for(text, lambda: text in self.screen)

    def end(self) -> int:
        status = super().end()
        while select.select([self._own], [], [], 0)[0]:
            self.take_output(0)
        return status

    def require_given_back(self) -> None:
        require("\x1b[?25h\x1b[?1049l" in self.screen, f"the screen isn't given back: {self.screen[-200:]!r}")
        require(self.mode() == self.mode_before, "the terminal has another mode than before")


def main(description: str, checks: Iterable[Callable[[Rig], None]]) -> int:
    """Make every check, each with a directory of its own, on the program that the command line names.

    One line for each check. Returns the exit status: 0 when none failed.
    """
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--program", type=Path, required=True, help="the program to test")
    program = parser.parse_args().program.resolve(strict=True)
    failed = 0
    for check in checks:
        start = time.monotonic()
        outcome = "passed"
        with tempfile.TemporaryDirectory(prefix="karvex-") as directory:
            try:
                check(Rig(program, Path(directory)))
            except Skipped as reason:
                outcome = f"skipped: {reason}"
            except (AssertionError, KeyError, IndexError, OSError, ValueError, subprocess.TimeoutExpired) as error:
                failed += 1
                outcome = f"FAILED: {type(error).__name__}: {error}"
        print(f"{check.__name__.replace('_', ' ')} ({time.monotonic() - start:.1f} s): {outcome}")
    return 1 if failed else 0
