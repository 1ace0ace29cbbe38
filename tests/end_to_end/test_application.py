"""Checks what a transcript can't show of the application on the rig: its memory and a terminal.

Run: python3 test_application.py --program PATH
"""

import re
import sys

from runner import Rig, Run, Skipped, Terminal, main, require, require_equal

MEGABYTE = 1 << 20
FLASH_SIZES = {"TEENSY2": 32_256, "TEENSY2PP": 130_048, "TEENSYLC": 63_488, "TEENSY31": 262_144, "TEENSY40": 2_031_616,
               "TEENSY41": 8_126_464}
MEMORY_MARGIN = 6 * MEGABYTE
"""For what grows with the boards beside their flashes: records, timelines, the service's requests."""
LONG_LINE_MARGIN = 8 * MEGABYTE
"""What a load may need beyond that of a short file, whatever is in its file."""

RECORD = b":0400000001020304F2"


def load(rig: Rig) -> Run:
    return rig.run("program", str(rig.directory / "file.hex"), "--mcu", "TEENSY32")


def without_the_address_sanitizer(rig: Rig) -> None:
    if b"__asan_init" in rig.program.read_bytes():
        raise Skipped("the address sanitizer keeps what is freed")


def memory_on_a_line_of_100_MB(rig: Rig) -> None:
    """However long a line is, its pieces are read one by one. First of all checks, while this process is small."""
    without_the_address_sanitizer(rig)
    file = rig.directory / "file.hex"
    file.write_bytes(RECORD)
    usual = load(rig).peak_memory
    # The flash is compared by a stricter reading, which has no use for a file with NULs.
    for start, filler, status in ((RECORD, b"a", 9), (b"a", b"a", 9), (RECORD, b"\0", 7)):
        with file.open("wb") as output:
            output.write(start)
            for _ in range(100):
                output.write(filler * 1_000_000)
        run = load(rig)
        require_equal("load status", run.report["load_status"], status)
        growth = run.peak_memory - usual
        require(growth < LONG_LINE_MARGIN, f"peak memory grew by {growth / MEGABYTE:.1f} MiB")


def memory_grows_with_the_flashes_alone(rig: Rig) -> None:
    without_the_address_sanitizer(rig)
    few, many = rig.upgrade(10), rig.upgrade(100)
    require_equal("exit status", (few.exit_status, many.exit_status), (0, 0))
    flashes = [sum(FLASH_SIZES[board["mcu"]] for board in run.report["boards"]) for run in (few, many)]
    growth, allowed = many.peak_memory - few.peak_memory, flashes[1] - flashes[0] + MEMORY_MARGIN
    require(growth <= allowed, f"memory grows by {growth} bytes, {allowed} are allowed")


def by_keys_on_a_terminal(rig: Rig) -> None:
    with Terminal(rig.program, "--boards", "1") as terminal:
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
        terminal.require_given_back()


CHECKS = (memory_on_a_line_of_100_MB, memory_grows_with_the_flashes_alone, by_keys_on_a_terminal)


if __name__ == "__main__":
    sys.exit(main("Check what a transcript can't show.", CHECKS))
