"""Runs the examples of the MIDI layer: test_examples.py PROGRAMS SOURCES"""

import re
import subprocess
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

PROGRAMS, SOURCES = (Path(path) for path in sys.argv[1:3])


def run(program: str, *arguments: str, data: bytes = b"", code: int = 0) -> bytes:
    done = subprocess.run([PROGRAMS / program, *arguments], input=data, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=20, check=False)
    assert done.returncode == code, (done.returncode, done.stderr)
    return done.stdout


class DecodeSysEx(unittest.TestCase):
    # An identity request, junk, a dump with a clock in it, a message that another cuts off, and one with half an ID.
    DUMP = bytes.fromhex("F07E7F0601F7" "903C40" "F000210901F802F7" "F0417F" "F0002FF7")
    TEXT = (
        "0: nonRealTime, device 127, 06 01, 0 bytes: \n"
        "9: 0x00 0x21 0x09 (Native Instruments), 2 bytes: 01 02\n"
        "17: 0x41 (Roland Corporation), 1 bytes: 7F\n"
        "20: Malformed.\n"
    )

    def test_standard_input(self):
        self.assertEqual(run("decode_sysex", data=self.DUMP).decode(), self.TEXT)

    def test_file(self):
        with tempfile.TemporaryDirectory() as folder:
            dump = Path(folder, "dump.syx")
            dump.write_bytes(self.DUMP)
            self.assertEqual(run("decode_sysex", str(dump)).decode(), self.TEXT)
            run("decode_sysex", str(dump) + "x", code=1)


class TranslateMIDI(unittest.TestCase):
    # A note-on, running status, a controller, a clock inside of a message, a program, a bend, a dump.
    BYTES = bytes.fromhex("903C40" "3E7F" "B207F801" "C305" "E00040" "F041010203040506F7")
    PACKETS = (
        "40903C00 80000000\n"
        "40903E00 FFFF0000\n"
        "10F80000\n"
        "40B20700 02000000\n"
        "40C30000 05000000\n"
        "40E00000 80000000\n"
        "30164101 02030405\n"
        "30310600 00000000\n"
    )

    def test_there(self):
        self.assertEqual(run("translate_midi", "to-ump", data=self.BYTES).decode(), self.PACKETS)

    def test_and_back(self):
        # Without running status, and the clock ahead of the message that it interrupts.
        back = bytes.fromhex("903C40" "903E7F" "F8" "B20701" "C305" "E00040" "F041010203040506F7")
        self.assertEqual(run("translate_midi", "to-bytes", data=self.PACKETS.encode()), back)

    def test_failures(self):
        run("translate_midi", "to-bytes", data=b"40903C0G\n", code=1)
        run("translate_midi", code=2)


class TransposeMIDI(unittest.TestCase):
    def test_filters_and_transposes(self):
        # Beside two notes: active sensing, drums, a controller, and a note that leaves the range.
        stream = bytes.fromhex("FE" "903C40" "993C40" "B04040" "907E40" "803C00")
        self.assertEqual(run("transpose_midi", "7", data=stream), bytes.fromhex("904340" "B04040" "804300"))
        self.assertEqual(run("transpose_midi", "-60", data=stream),
                         bytes.fromhex("900040" "B04040" "904240" "800000"))

    def test_failures(self):
        for text in ("", "seven", "7x", "128"):
            run("transpose_midi", text, code=2)


class Documentation(unittest.TestCase):
    def test_quotes_the_examples_as_they_are(self):
        text = (SOURCES / "docs" / "midi-layer.md").read_text(encoding="utf-8")
        quotes = re.findall(r"`(examples/\w+\.[ch]pp)`[^\n]*:\n\n((?: {4}[^\n]*\n|\n)+)", text)
        self.assertEqual({name for name, _ in quotes},
                         {f"examples/{name}" for name in ("DecodeSysEx.cpp", "TranslateMIDI.cpp", "TransposeMIDI.cpp", "Transposition.hpp")})
        for name, quote in quotes:
            source = (SOURCES / name).read_text(encoding="utf-8")
            lines = textwrap.dedent(quote).strip("\n") + "\n"
            self.assertTrue(any(textwrap.indent(lines, "  " * depth) in source for depth in range(3)), quote)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
