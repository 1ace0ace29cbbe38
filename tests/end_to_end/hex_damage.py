"""Damage to the lines of an Intel HEX file, as transfers, editors and broken tools do it.

Each function takes the lines of a well-formed file, each with its line end and at least one a record, and
gives the bytes of the damaged file. A few kinds of damage are harmless by the reader's rules: the model tells which.
"""

from collections.abc import Callable, Sequence
from random import Random
import string

_FIELDS = {"length": (1, 2), "address": (3, 4), "type": (7, 2)}
_NEAR_DIGITS = b"GgxX+-_ \t.:/@`"
"""What lenient number readers accept beside digits, and the neighbours of the digits in ASCII."""


def _split(line: bytes) -> tuple[bytes, bytes]:
    """A line's text and its line end."""
    text = line.rstrip(b"\r\n")
    return text, line[len(text):]


def _pick(random: Random, lines: Sequence[bytes], kind: bytes | None = None) -> int:
    """Index of a record, of one type if there is such a record."""
    records = [index for index, line in enumerate(lines) if line.startswith(b":")]
    matching = [index for index in records if kind is None or lines[index][7:9] == kind]
    return random.choice(matching or records)


def _with_line(lines: Sequence[bytes], index: int, line: bytes) -> bytes:
    return b"".join([*lines[:index], line, *lines[index + 1:]])


def _with_text(lines: Sequence[bytes], index: int, change: Callable[[bytes], bytes]) -> bytes:
    text, line_end = _split(lines[index])
    return _with_line(lines, index, change(text) + line_end)


def flipped_character(random: Random, lines: Sequence[bytes]) -> bytes:
    index = _pick(random, lines)
    column = random.randrange(max(1, len(_split(lines[index])[0])))
    other = random.choice(string.printable.encode())
    return _with_text(lines, index, lambda text: text[:column] + bytes((other,)) + text[column + 1:])


def wrong_checksum(random: Random, lines: Sequence[bytes]) -> bytes:
    """Another checksum on a record of any type, so that each type gets its share."""
    index = _pick(random, lines, random.choice([b"00", b"00", b"01", b"02", b"04"]))
    text, line_end = _split(lines[index])
    end = 11 + 2 * int(text[1:3], 16)
    present = text[end - 2:end].upper()
    wrong = random.choice([pair for pair in (b"%02X" % value for value in range(256)) if pair != present])
    return _with_line(lines, index, text[:end - 2] + wrong + text[end:] + line_end)


def truncated_line(random: Random, lines: Sequence[bytes]) -> bytes:
    """A line loses its end, and sometimes its line end too."""
    index = _pick(random, lines)
    text, line_end = _split(lines[index])
    short = text[:random.randrange(max(1, len(text)))]
    return _with_line(lines, index, short + random.choice([line_end, line_end, b""]))


def truncated_file(random: Random, lines: Sequence[bytes]) -> bytes:
    data = b"".join(lines)
    return data[:random.randrange(max(1, len(data)))]


def blank_line(random: Random, lines: Sequence[bytes]) -> bytes:
    index = random.randint(0, len(lines) - 1)
    return _with_line(lines, index, random.choice([b"\n", b"\r\n", b"   \n"]) + lines[index])


def before_the_colon(random: Random, lines: Sequence[bytes]) -> bytes:
    """A blank, a byte order mark or a stray character before a record, or no colon at all."""
    index = random.choice([0, _pick(random, lines)])
    if random.random() < 0.2:
        return _with_line(lines, index, lines[index][1:])
    return _with_line(lines, index, random.choice([b" ", b" ", b"\t", b"\xef\xbb\xbf", b";"]) + lines[index])


def nul_byte(random: Random, lines: Sequence[bytes]) -> bytes:
    """A NUL in a line, in place of a character or beside it; a line that begins with one is passed over."""
    index = _pick(random, lines)
    line = lines[index]
    column = random.choice([0, random.randint(0, len(line)), len(_split(line)[0])])
    return _with_line(lines, index, line[:column] + b"\0" + line[column + random.randint(0, 1):])


def long_line(random: Random, lines: Sequence[bytes]) -> bytes:
    """A record padded up to, or beyond, what one read takes; what follows can again look like a record."""
    index = _pick(random, lines)
    text, line_end = _split(lines[index])
    width = random.choice([1020, 1021, 1022, 1023, 1024, 2045, 2046, 2047, 5000])
    padded = text.ljust(width, random.choice([b" ", b"0", b":", b"\0"]))
    follower = lines[random.randrange(len(lines))] if random.random() < 0.4 else line_end
    return _with_line(lines, index, padded + follower)


def wrong_length(random: Random, lines: Sequence[bytes]) -> bytes:
    index = _pick(random, lines)
    near = int(lines[index][1:3], 16) + random.choice([-2, -1, 1, 2])
    length = random.choice([near & 0xFF, random.randrange(256)])
    return _with_text(lines, index, lambda text: text[:1] + b"%02X" % length + text[3:])


def unreadable_field(random: Random, lines: Sequence[bytes]) -> bytes:
    """Something else than a digit in one of a record's fields, at any of the field's columns."""
    name = random.choice(["length", "address", "type", "data", "checksum"])
    index = _pick(random, lines, random.choice([None, b"00", b"02", b"04"]))
    text, _ = _split(lines[index])
    size = int(text[1:3], 16)
    start, width = _FIELDS.get(name, (9, 2 * size) if name == "data" and size else (9 + 2 * size, 2))
    column = start + random.choice([0, width - 1, random.randrange(width)])
    other = random.choice([random.choice(_NEAR_DIGITS), random.randrange(1, 256)])
    return _with_text(lines, index, lambda line: line[:column] + bytes((other,)) + line[column + 1:])


def leniently_readable_field(random: Random, lines: Sequence[bytes]) -> bytes:
    """A field without its leading zero, in a way that many number readers take for the same number."""
    index = _pick(random, lines)
    text, _ = _split(lines[index])
    starts = [start for start in (1, 3, 7, *range(9, len(text), 2)) if text[start:start + 1] == b"0"]
    if not starts:
        return _with_line(lines, index, b":" + lines[index])
    start = random.choice(starts)
    if text[3:5] == b"00" and random.random() < 0.4:
        return _with_text(lines, index, lambda line: line[:4] + random.choice([b"x", b"X"]) + line[5:])
    return _with_text(lines, index, lambda line: line[:start] + random.choice([b" ", b"+"]) + line[start + 1:])


def binary_junk(random: Random, lines: Sequence[bytes]) -> bytes:
    """Random bytes all over, in the middle or at the end."""
    junk = random.randbytes(random.choice([1, 16, 300, 3000]))
    index = random.randint(0, len(lines) - 1)
    return random.choice([junk, _with_line(lines, index, junk + lines[index]), b"".join(lines[:index]) + junk])


def broken_line(random: Random, lines: Sequence[bytes]) -> bytes:
    """A line end in the middle of a record, or two records on one line."""
    index = _pick(random, lines)
    text, line_end = _split(lines[index])
    if random.random() < 0.3:
        return _with_line(lines, index, text)
    column = random.randrange(max(1, len(text)))
    return _with_line(lines, index, text[:column] + line_end + text[column:] + line_end)


def carriage_returns_only(_random: Random, lines: Sequence[bytes]) -> bytes:
    """Line ends of an old system: to the reader the file is one line."""
    return b"\r".join(_split(line)[0] for line in lines) + b"\r"


def moved_line(random: Random, lines: Sequence[bytes]) -> bytes:
    """A line lost, doubled or in another place; the lines themselves stay sound."""
    changed = list(lines)
    line = changed[_pick(random, lines)]
    action = random.choice(["lose", "double", "move"])
    if action != "double":
        changed.remove(line)
    if action != "lose":
        changed.insert(random.randint(0, len(changed)), line)
    return b"".join(changed)


DAMAGES: tuple[tuple[Callable[[Random, Sequence[bytes]], bytes], int], ...] = (
    (flipped_character, 4),
    (wrong_checksum, 4),
    (truncated_line, 3),
    (truncated_file, 2),
    (blank_line, 2),
    (before_the_colon, 2),
    (nul_byte, 4),
    (long_line, 5),
    (wrong_length, 3),
    (unreadable_field, 5),
    (leniently_readable_field, 5),
    (binary_junk, 3),
    (broken_line, 2),
    (carriage_returns_only, 1),
    (moved_line, 2),
)
"""Every kind of damage with its weight."""


def damage(random: Random, lines: Sequence[bytes]) -> tuple[str, bytes]:
    """Damage of a kind drawn by weight: the name of its kind, and the bytes of the file."""
    kinds, weights = zip(*DAMAGES)
    kind = random.choices(kinds, weights)[0]
    return kind.__name__.replace("_", " "), kind(random, lines)
