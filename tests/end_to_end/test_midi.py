"""Checks what `karvex-rig midi` prints: the tree, properties, and the notifications of its scene.

Run: python3 test_midi.py --program PATH
"""

import argparse
from pathlib import Path
import re
import subprocess
import sys

from rig_runner import RUN_LIMIT_SECONDS, require, require_equal

OBJECT_LINE = re.compile(r'( *)(device|entity|output|input) "(.*)"  ID (-?\d+)(  offline)?$')
EVENT_LINE = re.compile(r"\[ *(\d+\.\d{3})\] (\w+)")

DEVICE_PROPERTIES = 39
"""Of the 45 properties, those that a device can have."""


class Midi:
    """The command under test."""

    def __init__(self, program: Path) -> None:
        self._program = program

    def run(self, *arguments: str) -> subprocess.CompletedProcess[str]:
        command = [str(self._program), "midi", *arguments, "--time", "fast"]
        return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
                              timeout=RUN_LIMIT_SECONDS)

    def lines(self, *arguments: str) -> list[str]:
        """What a run that goes well prints."""
        run = self.run(*arguments)
        require_equal("exit status", run.returncode, 0)
        require_equal("standard error", run.stderr, "")
        return run.stdout.splitlines()


def objects_in(lines: list[str]) -> list[re.Match[str]]:
    return [match for line in lines if (match := OBJECT_LINE.match(line))]


def properties_in(lines: list[str]) -> dict[str, str]:
    """The property lines by their labels; labels are shorter than their column, and no text begins with a blank."""
    pairs = (re.match(r" {4,}(\S.{29}) (.*)$", line) for line in lines if not OBJECT_LINE.match(line))
    return {pair[1].rstrip(): pair[2] for pair in pairs if pair}


def the_tree(midi: Midi) -> None:
    lines = midi.lines("--boards", "2")
    found = objects_in(lines)
    require_equal("lines", len(lines), len(found))
    shape = [(len(match[1]), match[2]) for match in found]
    require_equal("tree", shape, 2 * [(0, "device"), (2, "entity"), (4, "output"), (4, "input")])
    require_equal("distinct unique IDs", len({match[4] for match in found}), len(found))
    require_equal("no boards", midi.lines("--boards", "0"), [])


def properties_of_one_object(midi: Midi) -> None:
    name, unique_id = objects_in(midi.lines())[0].group(3, 4)
    lines = midi.lines("--object", unique_id)
    properties = properties_in(lines)
    require_equal("number of properties", len(properties), DEVICE_PROPERTIES)
    for label, text in {"Name": name, "Unique ID": unique_id, "Is Offline": "No", "Manufacturer": "Virtual boards",
                        "Receive Channels": "0b00000000", "Image (File URL)": "-"}.items():
        require_equal(label, properties[label], text)
    everything = properties_in(midi.lines("--object", unique_id, "--all-properties"))
    require_equal("number of all properties", len(everything), 45)
    by_name = midi.lines("--object", name)
    require(len(by_name) > len(lines), "entity and endpoints have the device's name, too")


def an_object_that_is_not_there(midi: Midi) -> None:
    run = midi.run("--object", "nothing", "--follow")
    require_equal("exit status", run.returncode, 2)
    require("nothing" in run.stderr, f"standard error: {run.stderr!r}")


def the_notifications_of_the_scene(midi: Midi) -> None:
    lines = midi.lines("--follow")
    events = [match.groups() for line in lines if (match := EVENT_LINE.match(line))]
    comes = [("0.500", "added")] * 4 + [("0.500", "setupChanged")]
    leaves, returns = ([(at, "propertyChanged"), (at, "setupChanged")] for at in ("1.000", "4.300"))
    require_equal("events", events, [*comes, *leaves, *returns])
    counts = [line.strip() for line in lines if line.endswith(" offline") and not OBJECT_LINE.match(line)]
    require_equal("what the handler saw", counts,
                  [f"4 devices, {offline} of them offline" for offline in (0, 1, 0)])
    require_equal("a second run", midi.lines("--follow"), lines)


def following_ends_when_it_is_told_to(midi: Midi) -> None:
    lines = midi.lines("--follow", "--for", "2")
    require_equal("last line", lines[-1].strip(), "4 devices, 1 of them offline")


TRAFFIC = {
    # A rest of a message that its packet cuts off is nothing, and MIDI 1.0 values come out as they went in.
    ("send", "--boards", "2", "903C64", "F07E7F0601F7"): [
        '[  0.100] "TEENSY2 MIDI" gets 90 3C 64', '[  0.100] "TEENSY31 MIDI" gets 90 3C 64',
        '[  0.200] "TEENSY2 MIDI" gets F0 7E 7F 06 01 F7', '[  0.200] "TEENSY31 MIDI" gets F0 7E 7F 06 01 F7'],
    ("monitor", "--boards", "2", "903C40"): [
        f'[  0.{board}00] noteOn(0x3C, vel: midi2(32768), chan: 0x0, group: 0x0) timeStamp:{board}00000000 '
        f'source:"{name} MIDI"' for board, name in ((1, "TEENSY2"), (2, "TEENSY31"))],
    ("monitor", "--boards", "1", "--api", "legacy", "--raw", "903C40"): [
        '[  0.100] 90 3C 40 timeStamp:100000000 source:"TEENSY2 MIDI"'],
    ("thru", "--boards", "2", "--filter", "clock", "--filter", "controls", "F8", "B00740", "C005"): [
        '[  0.300] "TEENSY31 MIDI" gets C0 05'],
    # Here the program itself forwards, and nothing is left out.
    ("thru", "--boards", "2", "--platform", "12", "--filter", "clock", "F8"): ['[  0.100] "TEENSY31 MIDI" gets F8'],
}


def what_is_sent_played_and_forwarded(midi: Midi) -> None:
    for arguments, lines in TRAFFIC.items():
        require_equal(" ".join(arguments), midi.lines(*arguments), lines)
    for arguments in (("send", "3C"), ("monitor", "90 3"), ("thru", "--boards", "1")):
        require_equal(f"exit status of {arguments}", midi.run(*arguments).returncode, 2)


CHECKS = (the_tree, properties_of_one_object, an_object_that_is_not_there, the_notifications_of_the_scene,
          following_ends_when_it_is_told_to, what_is_sent_played_and_forwarded)


def main() -> int:
    parser = argparse.ArgumentParser(description="Check what karvex-rig midi prints.")
    parser.add_argument("--program", type=Path, required=True, help="the karvex-rig to test")
    midi = Midi(parser.parse_args().program.resolve(strict=True))
    failed = 0
    for check in CHECKS:
        try:
            check(midi)
        except (AssertionError, KeyError, IndexError, OSError, subprocess.TimeoutExpired) as error:
            failed += 1
            print(f"FAILED {check.__name__.replace('_', ' ')}: {type(error).__name__}: {error}")
    print(f"test_midi.py: {len(CHECKS) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
