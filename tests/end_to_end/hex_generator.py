"""Intel HEX files by chance, each wholly determined by a seed and an index.

About two thirds of the files load: firmware in many layouts and styles for each target. The others are
damaged, or reach for addresses that their target doesn't have. Run as a program it prints what the model
makes of a number of them: `python3 hex_generator.py --count 3000 --seed 1`.
"""

import argparse
from collections import Counter
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from random import Random

from halfkay_model import (
    BLANK, DATA_RECORD, END_RECORD, HIGHEST_RECORD_END, LINEAR_RECORD, MCUS, REMAP_BASE, REMAP_CODE_SIZE_ABOVE,
    SEGMENT_RECORD, Mcu, load)
from hex_damage import damage
from hex_records import HexWriter, Style, draw_style

Chunks = list[tuple[int, bytes]]
"""Pieces of firmware with their addresses in the picture, in the order of the file."""

_DAMAGED_SHARE = 0.33
_ODD_RECORDS_SHARE = 0.4
_WINDOW_EDGE_SHARE = 0.1
"""Of the files for targets that have a window or just miss it, so that both sides of each edge are met often."""
_LARGE_SIZES = (100_000, 400_000)


@dataclass(frozen=True)
class HexCase:
    """One file, and the target that it is for."""

    index: int
    mcu: Mcu
    mcu_name: str
    """As the command line gives it: the letters can be of another case."""
    data: bytes
    kind: str
    damage: str
    """What was done to the file, or nothing."""

    def __str__(self) -> str:
        damaged = f", {self.damage}" if self.damage else ""
        return f"{self.mcu_name}, {self.kind}{damaged}, {len(self.data)} bytes"


def _payload(random: Random, size: int) -> bytes:
    flavour = random.random()
    if flavour < 0.6:
        return random.randbytes(size)
    if flavour < 0.75:
        return bytes(random.choices((BLANK, BLANK, BLANK, 0x00), k=size))
    if flavour < 0.9:
        return bytes(index & 0xFF for index in range(size))
    return bytes((random.choice((0x00, 0x7F, 0xFE)),)) * size


def _some_block(random: Random, mcu: Mcu) -> int:
    """Address of a block, near the start more often than far away."""
    blocks = mcu.code_size // mcu.block_size
    return random.randrange(random.choice((min(16, blocks), blocks))) * mcu.block_size


def _size(random: Random, mcu: Mcu, most_blocks: int) -> int:
    """A number of bytes up to a few KB, whole blocks now and then."""
    blocks = random.randint(1, min(most_blocks, max(2, 8192 // mcu.block_size)))
    return blocks * mcu.block_size - random.choice((0, 0, 1, random.randrange(mcu.block_size)))


def _contiguous(random: Random, mcu: Mcu) -> Chunks:
    return [(0, _payload(random, _size(random, mcu, 12)))]


def _late_start(random: Random, mcu: Mcu) -> Chunks:
    address = random.choice((0x2000, mcu.block_size, _some_block(random, mcu) + random.randrange(mcu.block_size)))
    return [(address, _payload(random, _size(random, mcu, 8)))]


def _scattered(random: Random, mcu: Mcu) -> Chunks:
    count = random.randint(3, 10)
    starts = [_some_block(random, mcu) + random.randrange(mcu.block_size) for _ in range(count)]
    return [(start, _payload(random, random.randint(1, mcu.block_size))) for start in starts]


def _block_edges(random: Random, mcu: Mcu) -> Chunks:
    """A few bytes on one side of a block's edge, or on both."""
    edges = [_some_block(random, mcu) + mcu.block_size for _ in range(random.randint(2, 6))]
    return [(edge - random.randint(0, 3), _payload(random, random.randint(1, 4))) for edge in edges]


def _blank_blocks(random: Random, mcu: Mcu) -> Chunks:
    """Blocks that the file fills with 0xFF, wholly or but for one byte, between full and untouched ones."""
    size = mcu.block_size
    chunks = []
    for block in range(random.randint(3, max(4, min(16, 8192 // size)))):
        content = bytearray((BLANK,)) * random.choice((size, size, random.randint(1, size)))
        shape = random.choice(("blank", "blank", "one byte", "full", "untouched"))
        if shape == "one byte":
            content[random.choice((0, -1, random.randrange(len(content))))] = random.randrange(BLANK)
        if shape != "untouched":
            chunks.append((block * size, random.randbytes(size) if shape == "full" else bytes(content)))
    return chunks


def _overlaps(random: Random, mcu: Mcu) -> Chunks:
    """Firmware that is partly written again, here and there back to blank."""
    chunks = _contiguous(random, mcu)
    end = len(chunks[0][1])
    for _ in range(random.randint(1, 4)):
        size = random.choice((mcu.block_size, random.randint(1, 2 * mcu.block_size)))
        address = random.choice((random.randrange(end), random.randrange(end) // mcu.block_size * mcu.block_size))
        chunks.append((address, random.choice((_payload(random, size), bytes((BLANK,)) * size))))
    return chunks


def _code_end(random: Random, mcu: Mcu) -> Chunks:
    """The last blocks of the target, and often some bytes beyond it: those are in the picture and never sent."""
    size = _size(random, mcu, 4)
    beyond = random.choice((0, 0, 1, random.randrange(2 * mcu.block_size)))
    start = mcu.code_size - size + beyond
    return _contiguous(random, mcu) + [(start, _payload(random, size))]


def _large(random: Random, mcu: Mcu) -> Chunks:
    return [(random.choice((0, 0, mcu.block_size)), _payload(random, random.randint(*_LARGE_SIZES)))]


def _nothing(random: Random, _mcu: Mcu) -> Chunks:
    return []


_LAYOUTS: dict[str, tuple[Callable[[Random, Mcu], Chunks], int]] = {
    "contiguous": (_contiguous, 16),
    "late start": (_late_start, 10),
    "scattered": (_scattered, 12),
    "block edges": (_block_edges, 10),
    "blank blocks": (_blank_blocks, 12),
    "overlaps": (_overlaps, 10),
    "end of the code": (_code_end, 10),
    "large": (_large, 1),
    "no data": (_nothing, 3),
    "picture's limit": (_contiguous, 5),
    "foreign window": (_contiguous, 3),
    "window's edge": (_contiguous, 2),
}
"""Every layout with its weight; the last three go on with records of their own."""


def _at_limit(random: Random, writer: HexWriter) -> None:
    """A record of any type that ends at the highest place allowed, or just beyond it."""
    over = random.choice((0, 0, 0, 1, 1, 2, 300))
    size = random.choice((0, 1, 4, 16, 32, 255))
    writer.set_linear(HIGHEST_RECORD_END >> 16)
    kind = random.choice((DATA_RECORD, DATA_RECORD, DATA_RECORD, 3, 5))
    address = min(0xFFFF, (HIGHEST_RECORD_END & 0xFFFF) - size + over)
    writer.record(kind, address, random.randbytes(size))


def _into_window(random: Random, writer: HexWriter) -> None:
    """Firmware in the window at 0x60000000, or another high address, whatever the target.

    Where the target has no such window, a record that takes the address back comes too late: it is itself
    beyond the limit.
    """
    writer.set_linear(random.choice((REMAP_BASE >> 16, 0x0100, 0x5FFF, 0x6001)))
    if random.random() < 0.3:
        writer.set_linear(0)
    if random.random() < 0.7:
        writer.record(DATA_RECORD, random.randrange(0x8000), random.randbytes(16))


def _at_window_edge(random: Random, mcu: Mcu, writer: HexWriter) -> None:
    """The last 128 KiB of the window, or the first place behind it; no target but the large ones has it at all."""
    window_end = (REMAP_BASE + mcu.code_size) >> 16
    writer.set_linear(window_end - random.choice((0, 1, 1, 2)))
    writer.record(DATA_RECORD, random.randrange(0xFF00), random.randbytes(16))


def _misfit_extension(random: Random) -> bytes:
    """A type 2 or 4 record whose length isn't 2, with value and checksum where the proper length puts them."""
    kind = random.choice((SEGMENT_RECORD, LINEAR_RECORD))
    body = bytes((random.choice((0, 1, 3, 4)), 0, 0, kind)) + random.randbytes(2)
    return b":%s%02X0000\n" % (body.hex().upper().encode("ascii"), -sum(body) & 0xFF)


def _odd_lines(random: Random) -> list[bytes]:
    """Lines that a reader has to take without a word and without effect, as long as the address is low."""
    writer = HexWriter(random, Style(line_ends=(b"\n", b"\r\n")))
    error = random.choice((0, 0, random.randint(1, 255)))
    start = random.randbytes(4)
    actions: tuple[Callable[[], None], ...] = (
        lambda: writer.record(3, 0, start, error),
        lambda: writer.record(5, 0, start, error),
        lambda: writer.record(random.randint(6, 255), random.randrange(0x8000), random.randbytes(5), error),
        lambda: writer.record(random.choice((3, 5, 6, 0x14)), 0, random.randbytes(2)),
        lambda: writer.lines.append(_misfit_extension(random)),
        lambda: writer.record(LINEAR_RECORD, 0, random.randbytes(2), random.randint(1, 255)),
        lambda: writer.record(SEGMENT_RECORD, 0, random.randbytes(2), random.randint(1, 255)),
        lambda: writer.record(DATA_RECORD, random.randrange(0x8000)),
        lambda: writer.lines.append(random.choice((b"\0\n", b"\0not read\r\n", b"\0" * 3000 + b"\n"))),
        lambda: writer.lines.append(random.choice((b":02000004ZZZZ00\n", b":020000020000+C\n"))),
        lambda: writer.lines.append(random.choice((b":02000002 10 FC\r\n", b":02000004 +1 F9\n"))),
        lambda: writer.lines.append(random.choice((b":04000005no digits at all\n", b":00000003\r\n"))),
    )
    random.choice(actions)()
    return writer.lines


def _end_lines(random: Random, writer: HexWriter) -> list[bytes]:
    """How the file ends: an end record of any kind or none, and sometimes something behind it."""
    kind = random.random()
    if kind < 0.15:
        return []
    first = len(writer.lines)
    if kind < 0.75:
        writer.end()
    elif kind < 0.85:
        payload = random.randbytes(random.randrange(5))
        writer.record(END_RECORD, random.randrange(0x8000), payload, random.randrange(256))
    elif kind < 0.87:
        writer.lines.append(random.choice((b":00000001\n", b":00000001F")))
    else:
        unusual = (b":00000001\r\n", b":00000001  ", b":00000001FFFFFFFF\n", b":00000001zz\n")
        writer.lines.append(random.choice(unusual))
    lines = writer.lines[first:]
    del writer.lines[first:]
    if random.random() < 0.2:
        behind = (b"\r\n", b"garbage\n", b":10000000zz\n", random.randbytes(40), b":00000002FE\n")
        lines.append(random.choice(behind))
    return lines


def _well_formed(random: Random, mcu: Mcu, kind: str) -> list[bytes]:
    """The lines of a file of one layout, each with its line end but perhaps the last."""
    in_window = kind == "window's edge" or (mcu.remaps and random.random() < 0.6)
    writer = HexWriter(random, draw_style(random, REMAP_BASE if in_window else 0, kind == "large"))
    for address, payload in _LAYOUTS[kind][0](random, mcu):
        writer.store(address, payload)
    if random.random() < _ODD_RECORDS_SHARE:
        for _ in range(random.randint(1, 3)):
            place = random.randint(0, len(writer.lines))
            writer.lines[place:place] = _odd_lines(random)
    if kind == "picture's limit":
        _at_limit(random, writer)
    elif kind == "foreign window":
        _into_window(random, writer)
    elif kind == "window's edge":
        _at_window_edge(random, mcu, writer)
    lines = writer.lines + _end_lines(random, writer)
    if lines and random.random() < 0.2:
        lines[-1] = lines[-1].rstrip(b"\r\n")
    return lines


def _spelled(random: Random, name: str) -> str:
    mixed = "".join(random.choice((letter.lower(), letter.upper())) for letter in name)
    return random.choice((name, name, name.lower(), name.upper(), mixed))


def generate(seed: int, index: int) -> HexCase:
    """The file of that index. Targets follow each other in the order of the table, over and over."""
    random = Random(f"{seed}/{index}")
    mcu = MCUS[index % len(MCUS)]
    kind = random.choices(list(_LAYOUTS), [weight for _, weight in _LAYOUTS.values()])[0]
    if mcu.code_size >= REMAP_CODE_SIZE_ABOVE and random.random() < _WINDOW_EDGE_SHARE:
        kind = "window's edge"
    lines = _well_formed(random, mcu, kind)
    data, damaged = b"".join(lines), ""
    if random.random() < _DAMAGED_SHARE and any(line.startswith(b":") for line in lines):
        damaged, data = damage(random, lines)
    return HexCase(index, mcu, _spelled(random, mcu.name), data, kind, damaged)


def _print_table(title: str, rows: Sequence[tuple[str, str]]) -> None:
    print(title)
    for name, text in rows:
        print(f"  {name:<24}{text}")


def print_statistics(seed: int, count: int) -> None:
    """What the model makes of the first `count` files of a seed."""
    totals: Counter[str] = Counter()
    groups: dict[str, Counter[str]] = {"by layout": Counter(), "by damage": Counter()}
    per_mcu: dict[str, Counter[str]] = {mcu.name: Counter() for mcu in MCUS}
    for case in (generate(seed, index) for index in range(count)):
        outcome = load(case.data, case.mcu)
        end = "loaded" if outcome.loaded else "refused"
        totals.update((end, "large") if len(case.data) > 100_000 else (end,))
        totals["bytes"] += len(case.data)
        groups["by layout" if not case.damage else "by damage"].update([f"{case.damage or case.kind}/{end}"])
        several = outcome.block_reports >= 3
        per_mcu[case.mcu.name].update({end: 1, "reports": outcome.block_reports, "several": several})
    print(f"{count} files of seed {seed}: {totals['loaded']} load, {totals['refused']} are refused; "
          f"{totals['bytes'] / count / 1024:.1f} KiB each, {totals['large']} above 100 KB")
    for title, ends in groups.items():
        names = sorted({key.partition("/")[0] for key in ends})
        _print_table(title, [
            (name, f"{ends[f'{name}/loaded']:5} load {ends[f'{name}/refused']:5} refused") for name in names])
    _print_table("by target", [
        (name, f"{seen['loaded']:5} load {seen['refused']:5} refused {seen['reports']:7} block reports, "
               f"three or more in {seen['several']} files") for name, seen in per_mcu.items()])


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description="Print what the model makes of random Intel HEX files.")
    parser.add_argument("--count", type=int, default=3000)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    print_statistics(options.seed, options.count)
