"""Checks the waits of one good load in virtual time, from the timeline that the program reports.

Run: python3 test_timing.py --program PATH
"""

import argparse
from pathlib import Path
from random import Random
import sys

from hex_records import HexWriter, Style
from rig_runner import Rig, require, require_equal, run_checks

MCU_NAME = "TEENSY32"
TWO_BLOCKS = bytes(range(256)) * 8

OPEN_MS = 2500
"""500 ms at the start of the load, 2000 ms before the first attempt to open the board."""
FIRST_BLOCK_LIMIT_MS = 5000
"""How long the board may refuse the first block while it erases its flash."""
AFTER_REPORT_MS = 10
BEFORE_BOOT_MS = 1000

Timeline = list[tuple[float, str]]


def two_block_timeline(rig: Rig, directory: Path) -> Timeline:
    """What happened when, in milliseconds since the start, in a load of two blocks."""
    writer = HexWriter(Random(0), Style())
    writer.store(0, TWO_BLOCKS)
    writer.end()
    file = directory / "two.hex"
    file.write_bytes(b"".join(writer.lines))
    run = rig.load(file, MCU_NAME)
    require_equal("exit status", run.exit_status, 0)
    require_equal("failed_opens", run.report["failed_opens"], 0)
    timeline = [(entry["at_ms"], entry["event"]) for entry in run.report["timeline"]]
    require_equal("order of times", [at for at, _ in timeline], sorted(at for at, _ in timeline))
    return timeline


def times(timeline: Timeline, event: str) -> list[float]:
    return [at for at, name in timeline if name == event]


def the_only(timeline: Timeline, event: str) -> float:
    """The time of an event that has to happen once."""
    found = times(timeline, event)
    require(len(found) == 1, f"{len(found)} events {event!r} in {timeline}")
    return found[0]


def waits_of_a_good_load(rig: Rig, directory: Path) -> None:
    timeline = two_block_timeline(rig, directory)
    statuses = [name for _, name in timeline if name.startswith("status ")]
    require_equal("statuses", statuses, ["status 2", "status 5", "status 6", "status 7"])
    require_equal("time of status 2", the_only(timeline, "status 2"), 0)
    require_equal("time of the open", times(timeline, "open")[:1], [OPEN_MS])
    require_equal("time of status 5", the_only(timeline, "status 5"), OPEN_MS)
    reports = [at for at, name in timeline if name.startswith("report ")]
    require_equal("number of reports", len(reports), 2)
    first = the_only(timeline, "report 0")
    require(OPEN_MS <= first <= OPEN_MS + FIRST_BLOCK_LIMIT_MS, f"the first report went out at {first} ms")
    rebooting = first + 2 * AFTER_REPORT_MS
    boot = rebooting + BEFORE_BOOT_MS
    require_equal("time of the second report", reports[1], first + AFTER_REPORT_MS)
    require_equal("time of status 6", the_only(timeline, "status 6"), rebooting)
    require_equal("time of the boot report", the_only(timeline, "boot"), boot)
    require_equal("time of the close", the_only(timeline, "close"), boot + AFTER_REPORT_MS)
    require_equal("time of status 7", the_only(timeline, "status 7"), boot + AFTER_REPORT_MS)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description="Check the waits of a load by karvex-rig in virtual time.")
    parser.add_argument("--program", type=Path, required=True, help="the karvex-rig to test")
    sys.exit(run_checks(parser.parse_args().program.resolve(strict=True), [waits_of_a_good_load]))
