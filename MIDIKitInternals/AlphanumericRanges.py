#!/usr/bin/env python3
"""Writes AlphanumericRanges.cpp from the Unicode data that this Python brings: MIDIKitInternals/AlphanumericRanges.py"""

import sys
import unicodedata
from collections.abc import Iterator
from pathlib import Path

HEAD = """\
// Written by AlphanumericRanges.py from the general categories of Unicode {version}.
#include "MIDIKitInternals/AlphanumericRanges.hpp"

namespace midikit::internals {{
namespace {{

// clang-format off
constexpr AlphanumericRange ranges[] = {{
"""
TAIL = """\
};
// clang-format on

}  // namespace

constinit const std::span<const AlphanumericRange> alphanumericRanges = ranges;

}  // namespace midikit::internals
"""
RANGES_IN_A_LINE = 5


def ranges() -> Iterator[tuple[int, int]]:
    first = None
    for scalar in range(sys.maxunicode + 2):
        belongs = scalar <= sys.maxunicode and unicodedata.category(chr(scalar))[0] in "LMN"
        if belongs and first is None:
            first = scalar
        elif not belongs and first is not None:
            yield first, scalar - 1
            first = None


def main() -> None:
    entries = [f"{{0x{first:04X}, 0x{last:04X}}}," for first, last in ranges()]
    lines = [" ".join(entries[i : i + RANGES_IN_A_LINE]) for i in range(0, len(entries), RANGES_IN_A_LINE)]
    table = "".join(f"    {line}\n" for line in lines)
    target = Path(__file__).with_suffix(".cpp")
    target.write_text(HEAD.format(version=unicodedata.unidata_version) + table + TAIL, encoding="utf-8")


if __name__ == "__main__":
    main()
