"""Runs `karvex-rig program` and gives what it left behind; and the frame for a list of named checks."""

from collections.abc import Callable, Iterable
from dataclasses import dataclass
import json
import os
from pathlib import Path
import subprocess
import sys
import tempfile
import threading
from typing import Any

RUN_LIMIT_SECONDS = 120
"""A run in fast time takes a fraction of a second; what takes longer than this hangs."""

LOG_PREFIXES = ("> KARVEX", ">>> KARVEX")


def split_reports(data: bytes) -> list[bytes]:
    """The reports in a file of reports: each a length of 32 bits, little-endian, and its bytes."""
    reports = []
    position = 0
    while position < len(data):
        end = position + 4 + int.from_bytes(data[position:position + 4], "little")
        if position + 4 > len(data) or end > len(data):
            raise ValueError(f"the file of reports breaks off behind report {len(reports)}")
        reports.append(data[position + 4:end])
        position = end
    return reports


@dataclass(frozen=True)
class Run:
    """One finished run of the program."""

    exit_status: int
    """Negative where a signal ended the program, and -9 where it was stopped because it hung."""
    stdout: str
    stderr: str
    report: dict[str, Any]
    """The program's report, empty where it wrote none."""
    stream: list[bytes]
    """The output reports that reached the board."""
    peak_memory: int
    """Largest resident size in bytes. The system counts the starting process in, so that one has to be small."""

    @property
    def output_lines(self) -> list[str]:
        return self.stdout.split("\n")


class Rig:
    """The program under test, with a place for what it writes. One run at a time."""

    def __init__(self, program: Path, directory: Path) -> None:
        self.program = program
        self._directory = directory
        self._stream = directory / "reports.bin"
        self._report = directory / "report.json"

    def load(self, file: str | Path, mcu_name: str, *options: str) -> Run:
        """Program a board from a file, in fast time."""
        return self.run(str(file), "--mcu", mcu_name, "--time", "fast", *options)

    def run(self, *arguments: str) -> Run:
        """`karvex-rig program` with these arguments, and with both files of results.

        Raises ValueError where the program left a file of results that isn't whole.
        """
        return self.run_plainly(*arguments, "--reports", str(self._stream), "--report", str(self._report))

    def run_plainly(self, *arguments: str) -> Run:
        """`karvex-rig program` with these arguments and no other. Raises ValueError as run() does."""
        stdout, stderr = self._directory / "stdout", self._directory / "stderr"
        stream, report = self._stream, self._report
        for file in (stream, report):
            file.unlink(missing_ok=True)
        command = [str(self.program), "program", *arguments]
        with stdout.open("wb") as output, stderr.open("wb") as errors:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=errors)
            watchdog = threading.Timer(RUN_LIMIT_SECONDS, process.kill)
            watchdog.start()
            _, status, usage = os.wait4(process.pid, 0)
            watchdog.cancel()
            process.returncode = os.waitstatus_to_exitcode(status)
        log = stderr.read_text(errors="surrogateescape")
        try:
            return Run(
                exit_status=process.returncode,
                stdout=stdout.read_text(errors="surrogateescape"),
                stderr=log,
                report=json.loads(report.read_bytes()) if report.exists() else {},
                stream=split_reports(stream.read_bytes()) if stream.exists() else [],
                peak_memory=usage.ru_maxrss * 1024,
            )
        except ValueError as error:
            raise ValueError(f"exit status {process.returncode}, and its results can't be read ({error}); "
                             f"standard error ends with {log[-200:]!r}") from error


class Skipped(Exception):
    """The check can't be made here; the text says why."""


def require(condition: bool, text: str) -> None:
    """End the check in work as failed, with that text, unless the condition holds."""
    if not condition:
        raise AssertionError(text)


def require_equal(name: str, value: object, expected: object) -> None:
    require(value == expected, f"{name} is {value!r}, expected {expected!r}")


def run_checks(program: Path, checks: Iterable[Callable[[Rig, Path], None]]) -> int:
    """Make every check, each with a directory of its own. One line for a failed check, one line in the end.

    A check takes the rig and its directory. Returns the exit status: 0 when none failed.
    """
    passed, failed, skipped = 0, 0, []
    for check in checks:
        name = check.__name__.replace("_", " ")
        with tempfile.TemporaryDirectory(prefix="karvex-") as directory:
            results = Path(directory, "results")
            results.mkdir()
            try:
                check(Rig(program, results), Path(directory))
                passed += 1
            except Skipped as reason:
                skipped.append(f"{name}: {reason}")
            except (AssertionError, KeyError, OSError, ValueError) as error:
                failed += 1
                print(f"FAILED {name}: {type(error).__name__}: {error}")
    reasons = f", {len(skipped)} skipped ({'; '.join(skipped)})" if skipped else ""
    print(f"{Path(sys.argv[0]).name}: {passed} passed, {failed} failed{reasons}")
    return 1 if failed else 0
