"""Checks how the application on the rig ends, in each of its fronts: when it is asked to, and when it must.

Run: python3 test_endings.py --program PATH
"""

from collections.abc import Iterator
from contextlib import ExitStack, contextmanager
import re
import signal
import sys
import time

from runner import Front, Lines, Rig, Terminal, Window, main, require, require_equal

REPORT_TAKES = 2.0
"""Seconds that the slow service lets the last report wait."""

NEXT_REQUEST = 0.7
"""Seconds behind which a second signal is a second request."""

HELD_BACK = "Karvex closes when it is over"

RUN = ("--upgrade", "1", "--boards", "1")
IN_THE_MIDDLE = "Halfkay mode request Sent"
"""The log's line when the run has reached the board."""


def require_in_order(front: Front) -> None:
    """What a process must not leave behind, however it ended."""
    left = [file.name for file in front.temporary.iterdir()]
    require(not left, f"{type(front).__name__}: it leaves {left}")
    if isinstance(front, Terminal):
        front.require_given_back()


def require_ended(front: Front, status: int) -> None:
    require_equal(f"exit status of {type(front).__name__}", front.end(), status)
    require_in_order(front)


def require_upgraded(front: Front) -> None:
    board = front.report()["boards"][0]
    require(board["flash_matches"] and board["boot_report"] and board["reported"], f"board: {board}")


@contextmanager
def each_front(rig: Rig, *arguments: str) -> Iterator[list[Front]]:
    """The application in all of its fronts at once."""
    with ExitStack() as stack:
        yield [stack.enter_context(kind(rig.program, *arguments)) for kind in (Lines, Terminal, Window)]


def an_unknown_MCU_ends_the_process(rig: Rig) -> None:
    complaint = 'Unknown MCU type "TEENSY99"'
    with each_front(rig, *RUN, "--service", "unknown-mcu") as fronts:
        for front in fronts:
            require_ended(front, 1)
            require(complaint in front.errors(), f"{type(front).__name__}: {front.last_words()!r}")
            require_equal("boards in the report", len(front.report()["boards"]), 1)


def what_went_wrong_is_told_behind_the_page(rig: Rig) -> None:
    with Terminal(rig.program, *RUN, "--service", "unknown-mcu", has_errors=True) as terminal:
        require_ended(terminal, 1)
        behind = terminal.screen.split("\x1b[?1049l")[-1]
        require('Unknown MCU type "TEENSY99"' in behind, f"behind the page stands {behind!r}")
        require(behind.endswith("0 of 1 devices upgraded.\r\n"), f"behind the page stands {behind!r}")


def a_signal_ends_an_idle_program(rig: Rig) -> None:
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        with each_front(rig, "--service", "silent@list") as fronts:
            for front in fronts:
                front.wait_for("its temporary files", lambda: any(front.temporary.iterdir()))
            time.sleep(0.3)  # Until the fronts are there; ahead of them, a signal ends the program as any other.
            for front in fronts:
                front.process.send_signal(number)
                require_ended(front, 0)


def a_signal_waits_for_the_run(rig: Rig) -> None:
    """A process and its group are often signalled one right behind the other; that is one request."""
    with each_front(rig, *RUN) as fronts:
        for front in fronts:
            front.wait_for_log(IN_THE_MIDDLE)
        for number in (signal.SIGTERM, signal.SIGTERM, signal.SIGHUP):
            for front in fronts:
                front.process.send_signal(number)
            time.sleep(0.02)
        for front in fronts:
            if isinstance(front, Terminal):
                front.see(HELD_BACK)
            if isinstance(front, Lines):
                front.wait_for("the reason", lambda: HELD_BACK in front.output())
        for front in fronts:
            require_ended(front, 0)
            require_upgraded(front)


def a_second_signal_ends_at_once(rig: Rig) -> None:
    with each_front(rig, *RUN, "--board", "1:enters-late=9000") as fronts:
        for front in fronts:
            front.wait_for_log(IN_THE_MIDDLE)
        for number in (signal.SIGHUP, signal.SIGINT, signal.SIGHUP, signal.SIGTERM):
            for front in fronts:
                require(front.process.poll() is None, f"{type(front).__name__}: it ended too early")
                front.process.send_signal(number)
            time.sleep(NEXT_REQUEST)
        for front in fronts:
            require_ended(front, 128 + signal.SIGTERM)


def leaving_by_key_waits_for_the_run_and_its_report(rig: Rig) -> None:
    slowly = f"slow@complete={int(REPORT_TAKES * 1000)}"
    with Terminal(rig.program, "--boards", "1", "--service", slowly) as terminal:
        terminal.see("1 - ")
        terminal.press("j")
        terminal.see("u: Upload Firmware")
        terminal.press("uq")  # The run isn't known to be going yet.
        terminal.see(HELD_BACK)
        terminal.see("Success")
        success = time.monotonic()
        require_ended(terminal, 0)
        waited = time.monotonic() - success
        require(waited > REPORT_TAKES / 2, f"it ended {waited:.2f} s after the run, ahead of the service's answer")
        require_upgraded(terminal)


def leaving_by_key_shows_a_failure_first(rig: Rig) -> None:
    with Terminal(rig.program, "--boards", "1", "--board", "1:port-snatched") as terminal:
        terminal.see("1 - ")
        terminal.press("j")
        terminal.see("u: Upload Firmware")
        terminal.press("uq")
        terminal.see("Could not switch device to programming mode")
        time.sleep(0.3)
        require(terminal.process.poll() is None, "the failure is gone before anybody has read it")
        terminal.press("q")
        require_ended(terminal, 0)


def page_of(terminal: Terminal) -> str:
    """What has been drawn of the newest page."""
    return terminal.screen.rpartition("\x1b[H")[2]


def is_narrow_page(page: str) -> bool:
    return "then click on 'Upload\x1b[K" in page and "q: quit" in page


def a_new_size_is_drawn_at_once(rig: Rig) -> None:
    with Terminal(rig.program, "--boards", "1") as terminal:
        terminal.see("q: quit")
        terminal.resize(20, 60)
        terminal.process.send_signal(signal.SIGWINCH)  # From whoever owns the terminal.
        # Pages of the old size may still come first.
        terminal.wait_for("the narrow page", lambda: is_narrow_page(page_of(terminal)))
        lines = re.sub(r"\x1b\[[?\d;]*[A-Za-z]", "", page_of(terminal)).split("\r\r\n")
        require(all(len(line) <= 60 for line in lines), f"lines: {lines}")
        terminal.press("q")
        require_ended(terminal, 0)


CHECKS = (an_unknown_MCU_ends_the_process, what_went_wrong_is_told_behind_the_page, a_signal_ends_an_idle_program,
          a_signal_waits_for_the_run, a_second_signal_ends_at_once, leaving_by_key_waits_for_the_run_and_its_report,
          leaving_by_key_shows_a_failure_first, a_new_size_is_drawn_at_once)

if __name__ == "__main__":
    sys.exit(main("Check how the application on the rig ends.", CHECKS))
