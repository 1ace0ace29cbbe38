"""Checks what `karvex-rig midi` prints: the tree, properties, and the notifications of its scene.

Run: python3 test_midi.py --program PATH
"""

import re
import sys

from runner import Rig, main, require, require_equal

OBJECT_LINE = re.compile(r'( *)(device|entity|output|input) "(.*)"  ID (-?\d+)(  offline)?$')
EVENT_LINE = re.compile(r"\[ *(\d+\.\d{3})\] (\w+)")

DEVICE_PROPERTIES = 39
"""Of the 45 properties, those that a device can have."""


def lines_of(rig: Rig, *arguments: str) -> list[str]:
    """What a run that goes well prints."""
    run = rig.run_plainly("midi", *arguments, "--time", "fast")
    require_equal("exit status", run.exit_status, 0)
    require_equal("standard error", run.errors, "")
    return run.lines


def objects_in(lines: list[str]) -> list[re.Match[str]]:
    return [match for line in lines if (match := OBJECT_LINE.match(line))]


def properties_in(lines: list[str]) -> dict[str, str]:
    """The property lines by their labels; labels are shorter than their column, and no text begins with a blank."""
    pairs = (re.match(r" {4,}(\S.{29}) (.*)$", line) for line in lines if not OBJECT_LINE.match(line))
    return {pair[1].rstrip(): pair[2] for pair in pairs if pair}


def the_tree(rig: Rig) -> None:
    lines = lines_of(rig, "--boards", "2")
    found = objects_in(lines)
    require_equal("lines", len(lines), len(found))
    shape = [(len(match[1]), match[2]) for match in found]
    require_equal("tree", shape, 2 * [(0, "device"), (2, "entity"), (4, "output"), (4, "input")])
    require_equal("distinct unique IDs", len({match[4] for match in found}), len(found))
    require_equal("no boards", lines_of(rig, "--boards", "0"), [])


def properties_of_one_object(rig: Rig) -> None:
    name, unique_id = objects_in(lines_of(rig))[0].group(3, 4)
    lines = lines_of(rig, "--object", unique_id)
    properties = properties_in(lines)
    require_equal("number of properties", len(properties), DEVICE_PROPERTIES)
    for label, text in {"Name": name, "Unique ID": unique_id, "Is Offline": "No", "Manufacturer": "Virtual boards",
                        "Receive Channels": "0b00000000", "Image (File URL)": "-"}.items():
        require_equal(label, properties[label], text)
    everything = properties_in(lines_of(rig, "--object", unique_id, "--all-properties"))
    require_equal("number of all properties", len(everything), 45)
    by_name = lines_of(rig, "--object", name)
    require(len(by_name) > len(lines), "entity and endpoints have the device's name, too")


def an_object_that_is_not_there(rig: Rig) -> None:
    run = rig.run_plainly("midi", "--object", "nothing", "--follow", "--time", "fast")
    require_equal("exit status", run.exit_status, 2)
    require("nothing" in run.errors, f"standard error: {run.errors!r}")


def the_notifications_of_the_scene(rig: Rig) -> None:
    lines = lines_of(rig, "--follow")
    events = [match.groups() for line in lines if (match := EVENT_LINE.match(line))]
    comes = [("0.500", "added")] * 4 + [("0.500", "setupChanged")]
    leaves, returns = ([(at, "propertyChanged"), (at, "setupChanged")] for at in ("1.000", "4.300"))
    require_equal("events", events, [*comes, *leaves, *returns])
    counts = [line.strip() for line in lines if line.endswith(" offline") and not OBJECT_LINE.match(line)]
    require_equal("what the handler saw", counts,
                  [f"4 devices, {offline} of them offline" for offline in (0, 1, 0)])
    require_equal("a second run", lines_of(rig, "--follow"), lines)


def following_ends_when_it_is_told_to(rig: Rig) -> None:
    lines = lines_of(rig, "--follow", "--for", "2")
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


def what_is_sent_played_and_forwarded(rig: Rig) -> None:
    for arguments, lines in TRAFFIC.items():
        require_equal(" ".join(arguments), lines_of(rig, *arguments), lines)
    for arguments in (("send", "3C"), ("monitor", "90 3"), ("thru", "--boards", "1")):
        require_equal(f"exit status of {arguments}", rig.run_plainly("midi", *arguments).exit_status, 2)


CHECKS = (the_tree, properties_of_one_object, an_object_that_is_not_there, the_notifications_of_the_scene,
          following_ends_when_it_is_told_to, what_is_sent_played_and_forwarded)


if __name__ == "__main__":
    sys.exit(main("Check what karvex-rig midi prints.", CHECKS))
