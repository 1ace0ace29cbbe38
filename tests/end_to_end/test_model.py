"""Hand-worked cases for the model that the end-to-end tests compare the program with.

Run: python3 test_model.py
"""

import unittest

from halfkay_model import (
    EXIT_FAILED, MCUS, Outcome, Picture, ReadFailure, block_header, find_mcu, load, read_intel_hex, report_stream)

TEENSY32 = find_mcu("TEENSY32")
END = b":00000001FF\n"


def record(kind: int, address: int, payload: bytes = b"") -> bytes:
    body = bytes((len(payload), address >> 8, address & 0xFF, kind)) + payload
    return b":%s%02X\n" % (body.hex().upper().encode(), -sum(body) & 0xFF)


def firmware(payload: bytes, start: int = 0) -> bytes:
    return b"".join(
        record(0, start + index, payload[index:index + 16]) for index in range(0, len(payload), 16)) + END


def linear(value: int) -> bytes:
    return record(4, 0, value.to_bytes(2, "big"))


def outcome(data: bytes, mcu_name: str = "TEENSY32") -> Outcome:
    return load(data, find_mcu(mcu_name))


class Reader(unittest.TestCase):
    def cells(self, data: bytes, mcu_name: str = "TEENSY32") -> dict[int, int]:
        picture = read_intel_hex(data, find_mcu(mcu_name))
        self.assertIsInstance(picture, Picture, data[:80])
        return picture.cells

    def assertRefused(self, line: int, data: bytes, mcu_name: str = "TEENSY32") -> None:
        self.assertEqual(read_intel_hex(data, find_mcu(mcu_name)), ReadFailure(-2, line), data[:80])

    def test_files_that_give_an_empty_picture(self):
        for data in (b"", END, b":00000001\r\n", b"\0\n" + END, b"\0" * 3000, b":00000001FF"):
            self.assertEqual(self.cells(data), {}, data[:80])

    def test_lines_that_fail(self):
        good = record(0, 0, b"\1\2")
        for bad in (b"\n", b"\r\n", b" " + good, b":0000000\r\n", good[:-2] + b"\n", good[:12] + b"\n", b"x" + good[1:],
                    b":0Z000000FE\n", b":00 00000FE\n", b":000000+1FE\n", b":0200000001 2FB\n", b":020000000102GB\n",
                    b":020000000102FC\n", b":0000\x000001FF\n", b":02000000010\x002FB\n"):
            self.assertRefused(2, good + bad + END)

    def test_lines_without_effect(self):
        for odd in (record(3, 0, bytes(4)), record(5, 0, bytes(4)), record(0x77, 0), b":02000004000100\n",
                    b":02000004 + 1F9\n", b":020000020001FF\n", b":03000004000100F8\n", record(0, 0x200), b"\0junk\n",
                    b":04000005zzzzzzzzzz\n"):
            self.assertEqual(self.cells(odd + record(0, 1, b"\x55")), {1: 0x55}, odd)

    def test_nothing_behind_the_end_record_counts(self):
        self.assertEqual(self.cells(record(0, 1, b"\x55") + END + b"junk\n"), {1: 0x55})

    def test_extended_addresses(self):
        for extension, base in ((record(2, 0, b"\x12\x34"), 0x12340), (record(2, 0, b"\xff\xff"), 0xFFFF0),
                                (linear(0x0012), 0x120000), (linear(1) + linear(0), 0), (linear(1).lower(), 0x10000)):
            expected = {base + 0xFFFF: 7, base + 0x10000: 8}
            self.assertEqual(self.cells(extension + record(0, 0xFFFF, b"\7\x08")), expected)

    def test_a_later_record_wins_and_both_are_counted(self):
        picture = read_intel_hex(record(0, 0, b"\1\2\3") + record(0, 1, b"\7"), TEENSY32)
        self.assertEqual((picture.cells, picture.byte_count), ({0: 1, 1: 7, 2: 3}, 4))

    def test_the_limit(self):
        self.assertEqual(self.cells(linear(0xFF) + record(0, 0xFFFD, b"\1\2") + END), {0xFFFFFD: 1, 0xFFFFFE: 2})
        self.assertRefused(2, linear(0xFF) + record(0, 0xFFFE, b"\1\2"))
        self.assertRefused(2, linear(0xFF) + record(3, 0xFFFE, b"\1\2"))
        self.assertRefused(2, linear(0x100) + END)

    def test_the_window(self):
        byte = record(0, 4, b"\1")
        for mcu_name in ("imxrt1062", "teensy40", "TEENSY41", "Teensy_MicroMod"):
            end = (0x60000000 + find_mcu(mcu_name).code_size) >> 16
            self.assertEqual(self.cells(linear(0x6000) + byte, mcu_name), {4: 1})
            self.assertEqual(self.cells(linear(end - 1) + byte, mcu_name), {(end - 1 - 0x6000 << 16) + 4: 1})
            self.assertRefused(2, linear(end) + byte, mcu_name)
            self.assertRefused(2, linear(0x5FFF) + byte, mcu_name)
        self.assertEqual(self.cells(linear(0x601E) + byte, "TEENSY40"), {0x1E0004: 1})
        for mcu in MCUS:
            if mcu.name not in ("imxrt1062", "TEENSY40", "TEENSY41", "TEENSY_MICROMOD"):
                self.assertRefused(2, linear(0x6000) + byte, mcu.name)

    def test_long_lines_come_in_pieces(self):
        text = record(0, 0, b"\1")[:-1]
        self.assertEqual(self.cells(text.ljust(1022) + b"\n" + END), {0: 1})
        self.assertRefused(2, text.ljust(1023) + b"\n" + END)
        self.assertEqual(self.cells(text.ljust(1023) + record(0, 1, b"\2") + END), {0: 1, 1: 2})
        self.assertRefused(4, b"\0" * 3000 + b"\n" + b"junk")


class Stream(unittest.TestCase):
    def addresses(self, data: bytes, mcu_name: str = "TEENSY32") -> list[int]:
        return [int.from_bytes(report[:3], "little") for report in outcome(data, mcu_name).stream[:-1]]

    def test_five_thousand_bytes_are_five_reports(self):
        seen = outcome(firmware(bytes(5000)))
        self.assertEqual((seen.result, seen.load_status, seen.bytes_read), ("Success", 7, 5000))
        self.assertEqual((seen.block_reports, seen.exit_status), (5, 0))
        self.assertEqual(seen.stream[4], b"\x00\x10\x00" + bytes(61) + bytes(904) + b"\xff" * 120)
        self.assertEqual(seen.stream[5], b"\xff\xff\xff" + bytes(1085))

    def test_headers(self):
        self.assertEqual(block_header(find_mcu("mk20dx256"), 0x12400), b"\x00\x24\x01" + bytes(61))
        self.assertEqual(block_header(find_mcu("at90usb1286"), 0x1FB00), b"\xfb\x01")
        self.assertEqual(block_header(find_mcu("at90usb646"), 0xFB00), b"\x00\xfb")
        self.assertEqual(block_header(find_mcu("TEENSY2"), 0x7D80), b"\x80\x7d")

    def test_report_lengths(self):
        lengths = {128: 130, 256: 258, 512: 576, 1024: 1088}
        for mcu in MCUS:
            sizes = {len(report) for report in report_stream(Picture(), mcu)}
            self.assertEqual(sizes, {lengths[mcu.block_size]}, mcu.name)

    def test_the_first_block_is_always_sent(self):
        self.assertEqual(self.addresses(firmware(b"\1", 0x2000)), [0, 0x2000])
        self.assertEqual(outcome(firmware(b"\1", 0x2000)).stream[0], bytes(64) + b"\xff" * 1024)
        self.assertEqual(self.addresses(b""), [0])

    def test_blank_and_foreign_blocks_are_not_sent(self):
        blank = b"\xff" * 1024
        self.assertEqual(self.addresses(firmware(blank + blank + bytes(1) + blank)), [0, 0x800])
        self.assertEqual(outcome(firmware(b"\7", 0x7FF)).stream[1][64:], b"\xff" * 1023 + b"\7")
        self.assertEqual(self.addresses(record(0, 0x400, b"\1") + record(0, 0x400, b"\xff")), [0])
        self.assertEqual(self.addresses(linear(3) + record(0, 0xFFFF, b"\1\1")), [0, 0x3FC00])

    def test_a_refused_file_sends_nothing(self):
        seen = outcome(b"junk")
        self.assertEqual(seen, Outcome("Error: Could not read file", 9, -2, 1, ()))
        self.assertEqual((seen.exit_status, seen.block_reports), (EXIT_FAILED, 0))
        self.assertEqual(load(None, TEENSY32), Outcome("Error: Could not read file", 9, -1, None, ()))


class Table(unittest.TestCase):
    def test_rows(self):
        self.assertEqual(len(MCUS), 21)
        for first, second in (("imxrt1062", "teensy40"), ("mk64fx512", "TEENSY35"), ("ATMEGA32U4", "TEENSY2")):
            sizes = [(find_mcu(name).code_size, find_mcu(name).block_size) for name in (first, second)]
            self.assertEqual(sizes[0], sizes[1])
        self.assertEqual((find_mcu("TEENSY41").code_size, find_mcu("TEENSY_MICROMOD").code_size), (0x7C0000, 0xFC0000))
        self.assertTrue(all(mcu.code_size % mcu.block_size == 0 for mcu in MCUS))
        self.assertIsNone(find_mcu("TEENSY"))


if __name__ == "__main__":
    unittest.main()
