"""Checks the whole application on the rig: runs without a hand, faults, a kill, a terminal, and its memory.

Run: python3 test_application.py --program PATH
"""

import argparse
from collections.abc import Callable
from dataclasses import dataclass
import fcntl
import json
import os
from pathlib import Path
import pty
from random import Random
import re
import select
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
from typing import Any

from rig_runner import RUN_LIMIT_SECONDS, require, require_equal

LIST, COMPLETE = "/services/loaderInfo.php", "/services/uploadComplete.php"
STATES = {(True, False, False), (False, False, False), (True, True, True)}
"""What the three flags of the controls may be together: at rest, armed, running."""

MEGABYTE = 1 << 20
FLASH_SIZES = {"TEENSY2": 32_256, "TEENSY2PP": 130_048, "TEENSYLC": 63_488, "TEENSY30": 131_072, "TEENSY31": 262_144,
               "TEENSY32": 262_144, "TEENSY35": 524_288, "TEENSY36": 1_048_576, "TEENSY40": 2_031_616,
               "TEENSY41": 8_126_464}
MEMORY_MARGIN = 6 * MEGABYTE
"""For what grows with the boards beside their flashes: records, timelines, the service's requests."""

REPORT_TAKES = 2.0
"""Seconds that the slow service lets the last report wait."""


@dataclass(frozen=True)
class Run:
    """One finished run of the application."""

    exit_status: int
    lines: list[str]
    report: dict[str, Any]
    peak_memory: int


class Application:
    """The program under test; one run at a time."""

    def __init__(self, program: Path, directory: Path) -> None:
        self.program = program
        self._output = directory / "output"
        self._report = directory / "report.json"

    def start(self, *arguments: str) -> subprocess.Popen[bytes]:
        self._report.unlink(missing_ok=True)
        command = [str(self.program), *arguments, "--report", str(self._report)]
        # What a killed run leaves behind goes with the check's directory.
        environment = {**os.environ, "TMPDIR": str(self._report.parent)}
        with self._output.open("wb") as output:
            return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.DEVNULL,
                                    env=environment)

    def run(self, *arguments: str) -> Run:
        process = self.start("--time", "fast", *arguments)
        deadline = time.monotonic() + RUN_LIMIT_SECONDS
        ended = 0
        while not ended and time.monotonic() < deadline:
            ended, status, usage = os.wait4(process.pid, os.WNOHANG)
            time.sleep(0.005)
        if not ended:
            process.kill()
            process.wait()
            raise AssertionError(f"{' '.join(arguments)}: the run hangs")
        process.returncode = os.waitstatus_to_exitcode(status)
        report = json.loads(self._report.read_bytes()) if self._report.exists() else {}
        return Run(process.returncode, self._output.read_text().splitlines(), report, usage.ru_maxrss * 1024)

    def upgrade(self, boards: int, *arguments: str) -> Run:
        return self.run("--upgrade", "1", "--boards", str(boards), *arguments)


def serials_of(report: dict[str, Any]) -> list[str]:
    return [board["serial"] for board in report["boards"]]


def require_upgraded(run: Run, boards: int) -> None:
    require_equal("exit status", run.exit_status, 0)
    require_equal("last line", run.lines[-1], f"{boards} of {boards} devices upgraded.")
    for board in run.report["boards"]:
        require(board["boot_report"] and board["flash_matches"] and board["reported"], f"board: {board}")


def a_run_without_a_hand(application: Application) -> None:
    run = application.upgrade(3)
    require_upgraded(run, 3)
    report = run.report
    serials = serials_of(report)
    require_equal("rows", [row["serial"] for row in report["rows"]], serials)
    for row in report["rows"]:
        statuses = [entry["status"] for entry in row["statuses"]]
        require_equal("statuses", [status for status in statuses if status != 2], [0, 4, 5, 6, 7])
        require_equal("last status", row["statuses"][-1]["text"], "Success")
        times = [entry["at_ms"] for entry in row["statuses"]]
        require_equal("order of times", times, sorted(times))
    requests = [(request["method"], request["path"]) for request in report["requests"]]
    lists = [request for request in requests if request[1] == LIST]
    require_equal("list requests", lists, [("POST", LIST)])
    bodies = [request["body"] for request in report["requests"] if request["path"] == COMPLETE]
    require_equal("completions", [body.split("&")[0] for body in bodies],
                  [f"DEVICE_SERIAL_NUMBER={serial}" for serial in serials])
    for place, body in enumerate(bodies):
        form = rf"[^&]+&DEVICE_FIRMWARE_NAME=[\w-]+&DEVICE_FIRMWARE_VERSION=2\.{place}"
        require(re.fullmatch(form, body) is not None, f"body: {body!r}")
    require_equal("dialogs", [(dialog["title"], dialog["message"]) for dialog in report["dialogs"]],
                  [("Upgrade Procedure Complete",
                    "All devices have been upgraded.\nYou can now close this application.")])
    flags = [tuple(controls[name] for name in ("isUploadButtonDisabled", "loadingInProgress", "actionButtonsDisabled"))
             for controls in report["controls"]]
    require_equal("states of the controls", {state for state in flags if state in STATES}, STATES)
    require_equal("controls at the end", flags[-1], (True, False, False))


def each_fault_is_told_with_its_device(application: Application) -> None:
    """The second of three boards, or the service, goes wrong: which boards are done, and the dialog."""
    done, not_done = "upgraded: ", "NOT UPGRADED: "
    stops_at_second = [done, not_done, not_done]
    for arguments, states, title in (
            (("--board", "2:never-enters-halfkay"), stops_at_second, "An error occurred during upload"),
            (("--board", "2:enters-late=40000"), stops_at_second, "An error occurred during upload"),
            (("--board", "2:port-busy"), stops_at_second, "Device Port currently in use! "),
            (("--board", "2:vanishes=1"), stops_at_second, None),
            (("--board", "2:refuses-for-good"), stops_at_second, None),
            (("--board", "2:returns-late=600"), [done] * 3, "Upgrade Procedure Complete"),
            (("--service", "not-found@firmware"), [not_done] * 3, "An error occurred during upload"),
            (("--service", "cut-off@firmware"), [not_done] * 3, "Could not download Firmware file"),
            (("--service", "wrong-certificate"), [not_done] * 3, None),
            (("--service", "missing-key=mcu"), [not_done] * 3, None),
    ):
        for answers in ((), ("--yes",)):
            run = application.upgrade(3, *arguments, *answers)
            name = " ".join(arguments + answers)
            expected = 0 if states == [done] * 3 else 3
            require_equal(f"{name}: exit status", run.exit_status, expected)
            for serial, state in zip(serials_of(run.report), states):
                require(any(f" {serial}: {state}" in line for line in run.lines), f"{name}: {run.lines[-5:]}")
            titles = [dialog["title"] for dialog in run.report["dialogs"]]
            require(title is None or titles[:1] == [title], f"{name}: dialogs {titles}")


def a_row_that_is_not_there(application: Application) -> None:
    require_equal("exit status", application.run("--upgrade", "4", "--boards", "3").exit_status, 3)
    require_equal("no board", application.run("--upgrade", "1", "--boards", "0").exit_status, 3)
    run = application.run("--upgrade", "3", "--boards", "3")
    require_equal("exit status from the last row on", run.exit_status, 0)
    require_equal("upgraded", [board["flash_matches"] for board in run.report["boards"]], [False, False, True])


def without_a_terminal_it_prints_the_table(application: Application) -> None:
    run = application.run()
    require_equal("exit status", run.exit_status, 0)
    require(re.match(r" *Device +Serial Number +Firmware Name +Current Version +Target Version +Status$",
                     run.lines[0]) is not None, f"titles: {run.lines[0]!r}")
    require_equal("rows", len(run.lines), 4)
    require(all(line.endswith("● Idle") for line in run.lines[1:]), f"rows: {run.lines[1:]}")


def killed_at_any_moment_and_started_again(application: Application) -> None:
    random = Random(5)
    for mode in ("fast", "fast", "fast", "real", "real"):
        process = application.start("--time", mode, "--upgrade", "1", "--boards", "3")
        time.sleep(random.uniform(0, 0.4 if mode == "fast" else 1.5))
        process.send_signal(signal.SIGKILL)
        process.wait()
        require_upgraded(application.upgrade(3), 3)


def memory_grows_with_the_flashes_alone(application: Application) -> None:
    if b"__asan_init" in application.program.read_bytes():
        print("memory: not measured, since the address sanitizer keeps what is freed")
        return
    few, many = application.upgrade(10), application.upgrade(100)
    require_upgraded(few, 10)
    require_upgraded(many, 100)
    flashes = [sum(FLASH_SIZES[board["mcu"]] for board in run.report["boards"]) for run in (few, many)]
    growth, allowed = many.peak_memory - few.peak_memory, flashes[1] - flashes[0] + MEMORY_MARGIN
    print(f"memory: {few.peak_memory / MEGABYTE:.1f} MB with 10 boards, {many.peak_memory / MEGABYTE:.1f} MB with 100, "
          f"of whose growth {(flashes[1] - flashes[0]) / MEGABYTE:.1f} MB are flashes")
    require(growth <= allowed, f"memory grows by {growth} bytes, {allowed} are allowed")


class Terminal:
    """The application on a pseudo-terminal, in real time."""

    def __init__(self, program: Path, *arguments: str) -> None:
        self._own, theirs = pty.openpty()
        fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 40, 130, 0, 0))
        self._theirs = theirs
        self.mode_before = termios.tcgetattr(theirs)
        self.screen = ""
        self.process = subprocess.Popen([str(program), "--time", "real", *arguments], stdin=theirs, stdout=theirs,
                                        stderr=subprocess.DEVNULL, start_new_session=True,
                                        env={**os.environ, "TERM": "xterm-256color"})

    def __enter__(self) -> "Terminal":
        return self

    def __exit__(self, *_: object) -> None:
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        os.close(self._own)
        os.close(self._theirs)

    def mode(self) -> list[Any]:
        return termios.tcgetattr(self._theirs)

    def press(self, keys: str) -> None:
        os.write(self._own, keys.encode())

    def wait_for(self, what: str, holds: Callable[[], bool], limit: float = 12) -> None:
        deadline = time.monotonic() + limit
        while not holds():
            require(time.monotonic() < deadline, f"{what} never comes; the terminal shows {self.screen[-600:]!r}")
            if select.select([self._own], [], [], 0.05)[0]:
                self.screen += os.read(self._own, 1 << 16).decode(errors="replace")

    def see(self, text: str, limit: float = 12) -> None:
        """Wait for a text that is drawn from now on."""
        self.screen = ""
        self.wait_for(text, lambda: text in self.screen, limit)

    def end(self) -> int:
        self.wait_for("the end", lambda: self.process.poll() is not None)
        while select.select([self._own], [], [], 0)[0]:
            self.screen += os.read(self._own, 1 << 16).decode(errors="replace")
        return self.process.returncode


def by_keys_on_a_terminal(application: Application) -> None:
    with Terminal(application.program, "--boards", "1") as terminal:
        terminal.see("1 - ")
        terminal.press("\x1b[B")
        terminal.see("u: Upload Firmware")
        terminal.press("u")
        terminal.see("Programming...")
        terminal.wait_for("the bar", lambda: re.search(r"\[#*\.+\] \d/7 blocks", terminal.screen) is not None)
        terminal.wait_for("the alert", lambda: "All devices have been upgraded." in terminal.screen)
        terminal.press("\r")
        terminal.see("up/down: select")
        terminal.press("q")
        require_equal("exit status", terminal.end(), 0)
        require("\x1b[?25h\x1b[?1049l" in terminal.screen, f"the screen isn't given back: {terminal.screen[-200:]!r}")
        require_equal("mode of the terminal", terminal.mode(), terminal.mode_before)


def leaving_waits_for_the_run_and_its_report(application: Application) -> None:
    with tempfile.TemporaryDirectory(prefix="karvex-") as directory:
        report = Path(directory, "report.json")
        slowly = f"slow@complete={int(REPORT_TAKES * 1000)}"
        with Terminal(application.program, "--boards", "1", "--service", slowly, "--report", str(report)) as terminal:
            terminal.see("1 - ")
            terminal.press("j")
            terminal.see("u: Upload Firmware")
            terminal.press("u")
            terminal.see("Programming...")
            terminal.press("q")
            terminal.see("Karvex ends when it is over")
            terminal.see("Success")
            success = time.monotonic()
            require_equal("exit status", terminal.end(), 0)
            waited = time.monotonic() - success
            require(waited > REPORT_TAKES / 2, f"it ended {waited:.2f} s after the run, ahead of the service's answer")
        results = json.loads(report.read_bytes())
        board = results["boards"][0]
        require(board["flash_matches"] and board["boot_report"] and board["reported"], f"board: {board}")


def a_signal_gives_the_terminal_back(application: Application) -> None:
    with Terminal(application.program, "--boards", "1") as terminal:
        terminal.see("1 - ")
        require(terminal.mode() != terminal.mode_before, "single keys are read")
        terminal.process.send_signal(signal.SIGTERM)
        require_equal("exit status", terminal.end(), -signal.SIGTERM)
        require("\x1b[?25h\x1b[?1049l" in terminal.screen, f"the screen isn't given back: {terminal.screen[-200:]!r}")
        require_equal("mode of the terminal", terminal.mode(), terminal.mode_before)


CHECKS = (a_run_without_a_hand, each_fault_is_told_with_its_device, a_row_that_is_not_there,
          without_a_terminal_it_prints_the_table, killed_at_any_moment_and_started_again,
          memory_grows_with_the_flashes_alone, by_keys_on_a_terminal, leaving_waits_for_the_run_and_its_report,
          a_signal_gives_the_terminal_back)


def main() -> int:
    parser = argparse.ArgumentParser(description="Check the whole application on the rig.")
    parser.add_argument("--program", type=Path, required=True, help="the karvex-rig to test")
    program = parser.parse_args().program.resolve(strict=True)
    failed = 0
    for check in CHECKS:
        start = time.monotonic()
        with tempfile.TemporaryDirectory(prefix="karvex-") as directory:
            try:
                check(Application(program, Path(directory)))
            except (AssertionError, KeyError, IndexError, OSError, ValueError) as error:
                failed += 1
                print(f"FAILED {check.__name__.replace('_', ' ')}: {type(error).__name__}: {error}")
        print(f"{check.__name__.replace('_', ' ')}: {time.monotonic() - start:.1f} s")
    print(f"test_application.py: {len(CHECKS) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
