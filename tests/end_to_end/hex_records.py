"""Writes Intel HEX records in many styles; the lines are kept apart so that a caller can damage them."""

from dataclasses import dataclass, field
from random import Random

from halfkay_model import DATA_RECORD, END_RECORD, LINEAR_RECORD, SEGMENT_RECORD

HIGHEST_SEGMENT_ADDRESS = 0xFFFF * 16 + 0xFFFF
"""The highest address that a type 2 record can bring into reach."""

_NEEDLESS_MOVE = 0.02
"""Share of data records before which the address is set anew although it is in reach."""


@dataclass(frozen=True)
class Style:
    """The looks of one file. Where there are several choices, one is drawn for each record."""

    line_ends: tuple[bytes, ...] = (b"\n",)
    letters: str = "upper"
    """"upper", "lower" or "mixed"."""
    record_sizes: tuple[int, ...] = (16,)
    moves: tuple[int, ...] = (LINEAR_RECORD,)
    """Record types that set the address. Type 4 steps in where type 2 doesn't reach."""
    base: int = 0
    """Added to each address of the picture."""


def draw_style(random: Random, base: int = 0, large: bool = False) -> Style:
    """A style by chance. A large file gets long records, to stay within about 1 MB."""
    sizes = [(16,), (32,), (255,), (16, 32, 64), tuple(range(16, 256))]
    if not large:
        sizes += [(16,), (16,), (32,), tuple(range(256)), tuple(range(1, 9)), (0, 16), (1, 255), (8, 7)]
    return Style(
        line_ends=random.choice([(b"\n",), (b"\r\n",), (b"\r\n",), (b"\n", b"\r\n")]),
        letters=random.choice(["upper", "upper", "lower", "mixed"]),
        record_sizes=random.choice(sizes),
        moves=random.choice([(LINEAR_RECORD,), (LINEAR_RECORD,), (SEGMENT_RECORD,), (LINEAR_RECORD, SEGMENT_RECORD)]),
        base=base,
    )


@dataclass
class HexWriter:
    """Collects the lines of one file, each with its line end."""

    random: Random
    style: Style
    lines: list[bytes] = field(default_factory=list)
    offset: int = 0
    """The extended address in force, as the file gives it: `Style.base` is part of it."""

    def record(self, kind: int, address: int, payload: bytes = b"", checksum_error: int = 0, tail: bytes = b"") -> None:
        """One record of any type; `tail` goes between its checksum and its line end."""
        body = bytes((len(payload), address >> 8, address & 0xFF, kind)) + payload
        checksum = (checksum_error - sum(body)) & 0xFF
        digits = self._spelled((body + bytes((checksum,))).hex())
        self.lines.append(b":" + digits + tail + self.random.choice(self.style.line_ends))

    def store(self, address: int, payload: bytes) -> None:
        """Data records for the bytes from `address` of the picture on."""
        position = 0
        while position < len(payload):
            size = self.random.choice(self.style.record_sizes)
            target = self.style.base + address + position
            if not 0 <= target - self.offset <= 0xFFFF or self.random.random() < _NEEDLESS_MOVE:
                self.move_to(target)
            self.record(DATA_RECORD, target - self.offset, payload[position:position + size])
            position += size

    def move_to(self, target: int) -> None:
        """Bring `target`, an address as the file gives it, into the reach of a record's 16 bits."""
        if self.random.choice(self.style.moves) == SEGMENT_RECORD and target <= HIGHEST_SEGMENT_ADDRESS:
            lowest = max(0, (target - 0xFFFF + 15) // 16)
            highest = min(target // 16, 0xFFFF)
            self.set_segment(self.random.choice([lowest, highest, self.random.randint(lowest, highest)]))
        else:
            self.set_linear(target >> 16)

    def set_segment(self, value: int) -> None:
        self.record(SEGMENT_RECORD, 0, value.to_bytes(2, "big"))
        self.offset = value * 16

    def set_linear(self, value: int) -> None:
        self.record(LINEAR_RECORD, 0, value.to_bytes(2, "big"))
        self.offset = value << 16

    def end(self) -> None:
        self.record(END_RECORD, 0)

    def _spelled(self, digits: str) -> bytes:
        if self.style.letters == "upper":
            digits = digits.upper()
        elif self.style.letters == "mixed":
            digits = "".join(self.random.choice((digit, digit.upper())) for digit in digits)
        return digits.encode("ascii")
