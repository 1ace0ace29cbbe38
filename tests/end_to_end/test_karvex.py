"""Checks the desktop application's way into a session: URLs, a second start, and what a killed one leaves behind.

It runs on this machine's own platform, with whatever equipment, sequencer and network there is or isn't.

Run: python3 test_karvex.py --program PATH
"""

from collections.abc import Iterator
from contextlib import contextmanager
import os
from pathlib import Path
import signal
import subprocess
import sys
import time

from runner import Rig, main, require, require_equal

LIMIT_SECONDS = 60.0
"""For what takes well under a second on a machine with nothing else to do."""


class Desktop:
    """A session of a user of its own, where the program is started."""

    def __init__(self, program: Path, directory: Path) -> None:
        self._program = program
        self._output = directory / "output"
        runtime = directory / "runtime"
        runtime.mkdir(mode=0o700)
        self._environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": str(directory),
                             "TMPDIR": str(directory), "XDG_RUNTIME_DIR": str(runtime)}

    @contextmanager
    def first(self, *arguments: str) -> Iterator[subprocess.Popen[bytes]]:
        with self._output.open("wb") as output:
            process = subprocess.Popen([str(self._program), *arguments], stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=subprocess.DEVNULL, env=self._environment)
        try:
            yield process
        finally:
            process.kill()
            process.wait()

    def start_again(self, *arguments: str) -> subprocess.CompletedProcess[bytes]:
        return subprocess.run([str(self._program), *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                              env=self._environment, timeout=LIMIT_SECONDS, check=False)

    def printed_urls(self) -> list[str]:
        lines = self._output.read_text(encoding="utf-8").splitlines()
        return [line for line in lines if line.startswith("URL")]

    def wait_for_urls(self, count: int) -> list[str]:
        deadline = time.monotonic() + LIMIT_SECONDS
        while len(self.printed_urls()) < count and time.monotonic() < deadline:
            time.sleep(0.01)
        return self.printed_urls()


def urls_of_later_starts_reach_the_first(rig: Rig) -> None:
    desktop = Desktop(rig.program, rig.directory)
    expected = ["URL reçue : karvex://from-the-desktop"]
    with desktop.first("karvex://from-the-desktop") as first:
        require_equal("the first start's own URL", desktop.wait_for_urls(1), expected)
        # Whatever the desktop hands over is a URL, also what looks like an option of a toolkit.
        urls = {"karvex://é/ü?x=%41": "karvex://é/ü?x=%41", "other:thing": "other:thing", "-style": "-style",
                "karvex://\x1b[2J\n": "karvex://%1B[2J%0A", "karvex://" + "x" * 100_000: "karvex://" + "x" * 100_000}
        for url, printed in urls.items():
            later = desktop.start_again(url)
            require_equal(f"a later start with {url[:40]}", (later.returncode, later.stdout), (0, b""))
            expected.append(f"URL reçue : {printed}")
        require_equal("a later start without a URL", desktop.start_again().returncode, 0)
        require_equal("the URLs that the first start printed", desktop.wait_for_urls(len(expected)), expected)
        require(first.poll() is None, "the first start ended because of a later one")


def without_a_display_it_names_the_other_front(rig: Rig) -> None:
    away = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
    for environment in (away, {**away, "DISPLAY": ":4711"}):
        ended = subprocess.run([str(rig.program)], capture_output=True, timeout=LIMIT_SECONDS, check=False,
                               env={**environment, "QT_QPA_PLATFORM": "xcb"})
        require_equal("status without a display", ended.returncode, 1)
        require_equal("lines without a display", ended.stderr.count(b"\n"), 1)
        require(b"use karvex-console" in ended.stderr, f"without a display: {ended.stderr!r}")


def a_killed_one_is_in_nobodys_way(rig: Rig) -> None:
    desktop = Desktop(rig.program, rig.directory)
    with desktop.first("karvex://killed"):
        desktop.wait_for_urls(1)
    with desktop.first("karvex://next"):
        require_equal("the start behind a killed one", desktop.wait_for_urls(1), ["URL reçue : karvex://next"])
        require_equal("the start behind that", desktop.start_again("karvex://later").returncode, 0)
        require_equal("URLs printed by the start behind a killed one", len(desktop.wait_for_urls(2)), 2)


def the_session_can_end_it(rig: Rig) -> None:
    desktop = Desktop(rig.program, rig.directory)
    with desktop.first("karvex://ended") as first:
        desktop.wait_for_urls(1)
        first.send_signal(signal.SIGTERM)
        require_equal("the exit status of a program that the session ends", first.wait(LIMIT_SECONDS), 0)


CHECKS = (urls_of_later_starts_reach_the_first, without_a_display_it_names_the_other_front,
          a_killed_one_is_in_nobodys_way, the_session_can_end_it)

if __name__ == "__main__":
    sys.exit(main("Check the desktop application's way into a session.", CHECKS))
