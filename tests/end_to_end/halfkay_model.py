"""How a firmware file becomes a stream of HID output reports, worked out a second time.

This model shares no code with the program and exists to be compared with it: it takes the bytes of an
Intel HEX file and a microcontroller, and gives the result text, the last load status, the reader's result
and every output report that a board in its bootloader has to receive, the boot report last.

Everything here is pure: no file is opened, nothing is kept between two calls.
"""

from collections.abc import Iterator
from dataclasses import dataclass
import string

HIGHEST_RECORD_END = 0xFFFFFF
"""Offset + address + length of a record may reach this and no more."""

READ_LIMIT = 1023
"""Characters that one read of the line reader takes at most: a buffer of 1024 less its closing NUL."""

REMAP_BASE = 0x60000000
"""Where the flash of the large targets stands in their own address space."""

REMAP_CODE_SIZE_ABOVE = 0x100000
REMAP_BLOCK_SIZE_FROM = 1024

BLANK = 0xFF

DATA_RECORD = 0
END_RECORD = 1
SEGMENT_RECORD = 2
LINEAR_RECORD = 4

MINIMUM_LINE = 11
"""Colon, length, address, type and checksum of a record without data."""

RESULT_SUCCESS = "Success"
RESULT_UNREADABLE = "Error: Could not read file"

STATUS_SUCCESS = 7
STATUS_IMPORT_FILE_ERROR = 9

READ_NOT_OPENED = -1
READ_PARSE_ERROR = -2

EXIT_LOADED = 0
EXIT_FAILED = 3

_HEX_DIGITS = frozenset(string.hexdigits.encode())


@dataclass(frozen=True)
class Mcu:
    """One supported microcontroller; both sizes are in bytes."""

    name: str
    code_size: int
    block_size: int

    @property
    def remaps(self) -> bool:
        """Whether files for this target may be addressed at `REMAP_BASE`."""
        return self.code_size > REMAP_CODE_SIZE_ABOVE and self.block_size >= REMAP_BLOCK_SIZE_FROM


MCUS = (
    Mcu("at90usb162", 15_872, 128),
    Mcu("atmega32u4", 32_256, 128),
    Mcu("at90usb646", 64_512, 256),
    Mcu("at90usb1286", 130_048, 256),
    Mcu("mkl26z64", 63_488, 512),
    Mcu("mk20dx128", 131_072, 1024),
    Mcu("mk20dx256", 262_144, 1024),
    Mcu("mk66fx1m0", 1_048_576, 1024),
    Mcu("mk64fx512", 524_288, 1024),
    Mcu("imxrt1062", 2_031_616, 1024),
    Mcu("TEENSY2", 32_256, 128),
    Mcu("TEENSY2PP", 130_048, 256),
    Mcu("TEENSYLC", 63_488, 512),
    Mcu("TEENSY30", 131_072, 1024),
    Mcu("TEENSY31", 262_144, 1024),
    Mcu("TEENSY32", 262_144, 1024),
    Mcu("TEENSY35", 524_288, 1024),
    Mcu("TEENSY36", 1_048_576, 1024),
    Mcu("TEENSY40", 2_031_616, 1024),
    Mcu("TEENSY41", 8_126_464, 1024),
    Mcu("TEENSY_MICROMOD", 16_515_072, 1024),
)


def find_mcu(name: str) -> Mcu | None:
    """The first microcontroller of that name, whatever the case of its letters."""
    return next((mcu for mcu in MCUS if mcu.name.lower() == name.lower()), None)


class Picture:
    """Flash memory of a target as one file describes it."""

    def __init__(self) -> None:
        self.cells: dict[int, int] = {}
        """The bytes that the file wrote, by address. All others are blank."""
        self.byte_count = 0
        """Sum of the length fields of all data records: a byte that was stored twice counts twice."""

    def store(self, address: int, payload: bytes) -> None:
        self.cells.update(zip(range(address, address + len(payload)), payload))

    def block(self, address: int, length: int) -> bytes:
        """The range as it has to stand in the flash."""
        return bytes(self.cells.get(cell, BLANK) for cell in range(address, address + length))

    def used_blocks(self, size: int) -> list[int]:
        """Addresses of the blocks in which the file wrote something else than blank bytes, in ascending order."""
        return sorted({cell // size * size for cell, value in self.cells.items() if value != BLANK})


@dataclass(frozen=True)
class ReadFailure:
    """Why there is no picture."""

    result: int
    """`READ_NOT_OPENED` or `READ_PARSE_ERROR`."""
    line: int | None = None
    """Number of the line that failed to parse, counted from 1."""


class _ParseError(Exception):
    """The line in work stops the reading."""


class _UnreadableField(_ParseError):
    """A field of the line holds something else than hexadecimal digits."""


def split_reads(data: bytes) -> Iterator[bytes]:
    """Cut a file into what the line reader finds in its buffer: to a line end, or to `READ_LIMIT` characters."""
    start = 0
    while start < len(data):
        line_feed = data.find(b"\n", start, start + READ_LIMIT)
        end = start + READ_LIMIT if line_feed < 0 else line_feed + 1
        yield data[start:end]
        start = end


def _hex_field(line: bytes, column: int, digits: int) -> int:
    field = line[column:column + digits]
    if len(field) != digits or not _HEX_DIGITS.issuperset(field):
        raise _UnreadableField
    return int(field, 16)


class _Reader:
    """State of one reading."""

    def __init__(self, mcu: Mcu) -> None:
        self._mcu = mcu
        self._offset = 0
        self.picture = Picture()
        self.ended = False

    def parse(self, line: bytes) -> None:
        """Take in one line; raises `_ParseError` where the line stops the reading."""
        if not line.startswith(b":") or len(line) < MINIMUM_LINE:
            raise _ParseError
        length = _hex_field(line, 1, 2)
        if length * 2 + MINIMUM_LINE > len(line):
            raise _ParseError
        address = _hex_field(line, 3, 4)
        kind = _hex_field(line, 7, 2)
        if self._offset + address + length > HIGHEST_RECORD_END:
            raise _ParseError
        header_sum = length + (address & 0xFF) + (address >> 8) + kind
        if kind == DATA_RECORD:
            self._store(line, length, address, header_sum)
        elif kind == END_RECORD:
            self.ended = True
        elif kind in (SEGMENT_RECORD, LINEAR_RECORD) and length == 2:
            self._extend(line, kind, header_sum)

    def _store(self, line: bytes, length: int, address: int, header_sum: int) -> None:
        self.picture.byte_count += length
        digits = line[9:9 + 2 * length]
        if not _HEX_DIGITS.issuperset(digits):
            raise _UnreadableField
        payload = bytes.fromhex(digits.decode("ascii"))
        self.picture.store(self._offset + address, payload)
        checksum = _hex_field(line, 9 + 2 * length, 2)
        if (header_sum + sum(payload) + checksum) % 256 != 0:
            raise _ParseError

    def _extend(self, line: bytes, kind: int, header_sum: int) -> None:
        try:
            value = _hex_field(line, 9, 4)
            checksum = _hex_field(line, 13, 2)
        except _UnreadableField:
            return
        if ((value & 0xFF) + (value >> 8) + header_sum + checksum) % 256 != 0:
            return
        if kind == SEGMENT_RECORD:
            self._offset = value * 16
            return
        self._offset = value * 65536
        if self._mcu.remaps and REMAP_BASE <= self._offset < REMAP_BASE + self._mcu.code_size:
            self._offset -= REMAP_BASE


def read_intel_hex(data: bytes, mcu: Mcu) -> Picture | ReadFailure:
    """Read the bytes of a file for one target."""
    reader = _Reader(mcu)
    for number, buffer in enumerate(split_reads(data), start=1):
        line = buffer.partition(b"\0")[0]
        if not line:
            continue
        try:
            reader.parse(line)
        except _ParseError:
            return ReadFailure(READ_PARSE_ERROR, number)
        if reader.ended:
            break
    return reader.picture


def report_length(mcu: Mcu) -> int:
    """Bytes in every report of a load for that target, the boot report included."""
    return mcu.block_size + (64 if mcu.block_size in (512, 1024) else 2)


def block_header(mcu: Mcu, address: int) -> bytes:
    """What stands before the data of the block at `address`."""
    if mcu.code_size < 0x10000 and mcu.block_size <= 256:
        return address.to_bytes(2, "little")
    if mcu.block_size in (512, 1024):
        return address.to_bytes(3, "little") + bytes(61)
    if mcu.block_size == 256:
        return (address >> 8).to_bytes(2, "little")
    raise ValueError(f"no report layout for {mcu}")


def boot_report(mcu: Mcu) -> bytes:
    """The report that makes the board start its firmware."""
    return b"\xff\xff\xff" + bytes(report_length(mcu) - 3)


def report_stream(picture: Picture, mcu: Mcu) -> list[bytes]:
    """Every report of a load in its order: the first block, each later block that holds something, the boot report."""
    size = mcu.block_size
    later = [address for address in picture.used_blocks(size) if 0 < address < mcu.code_size]
    blocks = [block_header(mcu, address) + picture.block(address, size) for address in [0, *later]]
    return [*blocks, boot_report(mcu)]


@dataclass(frozen=True)
class Outcome:
    """What a load with a board that takes every report has to come to."""

    result: str
    load_status: int
    bytes_read: int
    warning_line: int | None
    """Number of the line that the reader's warning names."""
    stream: tuple[bytes, ...]

    @property
    def loaded(self) -> bool:
        return self.load_status == STATUS_SUCCESS

    @property
    def block_reports(self) -> int:
        """Reports without the boot report."""
        return max(0, len(self.stream) - 1)

    @property
    def exit_status(self) -> int:
        return EXIT_LOADED if self.loaded else EXIT_FAILED


def load(data: bytes | None, mcu: Mcu) -> Outcome:
    """The whole load of a file's bytes; None stands for a file that can't be opened."""
    picture = ReadFailure(READ_NOT_OPENED) if data is None else read_intel_hex(data, mcu)
    if isinstance(picture, ReadFailure):
        return Outcome(RESULT_UNREADABLE, STATUS_IMPORT_FILE_ERROR, picture.result, picture.line, ())
    stream = tuple(report_stream(picture, mcu))
    return Outcome(RESULT_SUCCESS, STATUS_SUCCESS, picture.byte_count, None, stream)
