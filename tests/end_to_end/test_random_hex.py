"""Loads random Intel HEX files with the program and compares everything that a load gives with the model.

Run: python3 test_random_hex.py --program PATH [--count 1000] [--seed N] [--jobs 2] [--only INDEX]
"""

import argparse
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from itertools import zip_longest
from pathlib import Path
import sys
import tempfile

from halfkay_model import MCUS, Outcome, load
from hex_generator import HexCase, generate
from rig_runner import Rig, Run

SEVERAL_BLOCKS = 3
ENOUGH_FOR_SHARES = 100
ENOUGH_FOR_TARGETS = 20 * len(MCUS)
"""From these numbers of files on, a bad mix is the generator's fault and not chance."""


@dataclass(frozen=True)
class Verdict:
    """What came of one file."""

    case: HexCase
    exit_status: int
    block_reports: int
    differences: tuple[str, ...]


def stream_differences(stream: list[bytes], expected: tuple[bytes, ...]) -> Iterator[str]:
    """The first report that isn't as it should be."""
    for index, (report, wanted) in enumerate(zip_longest(stream, expected)):
        if report is None or wanted is None:
            yield f"{len(stream)} reports reached the board, expected {len(expected)}"
            return
        if report != wanted:
            place = next((i for i, pair in enumerate(zip(report, wanted)) if pair[0] != pair[1]), None)
            yield (f"report {index} has {len(report)} bytes, expected {len(wanted)}" if place is None else
                   f"report {index} differs at byte {place}: {report[place]:#04x}, expected {wanted[place]:#04x}")
            return


def differences(run: Run, expected: Outcome) -> Iterator[str]:
    """Everything in which a run departs from the model, in words."""
    wanted = {
        "result": expected.result,
        "load_status": expected.load_status,
        "bytes_read": expected.bytes_read,
        "reports": expected.block_reports,
        "boot_report": expected.loaded,
    }
    if expected.loaded:
        wanted["flash_matches"] = True
    if run.exit_status != expected.exit_status:
        yield f"exit status {run.exit_status}, expected {expected.exit_status}"
    for name, value in wanted.items():
        if run.report.get(name) != value:
            yield f"{name} is {run.report.get(name)!r}, expected {value!r}"
    warnings = [line for line in run.output_lines if line.startswith("Warning, HEX parse error")]
    wanted_warnings = [f"Warning, HEX parse error line {expected.warning_line}"] if expected.warning_line else []
    if warnings != wanted_warnings:
        yield f"warnings {warnings}, expected {wanted_warnings}"
    yield from stream_differences(run.stream, expected.stream)


def judge(program: Path, seed: int, index: int) -> Verdict:
    """Load one file and compare."""
    case = generate(seed, index)
    expected = load(case.data, case.mcu)
    with tempfile.TemporaryDirectory(prefix="karvex-") as directory:
        file = Path(directory, "firmware.hex")
        file.write_bytes(case.data)
        try:
            run = Rig(program, Path(directory)).load(file, case.mcu_name)
        except ValueError as error:
            return Verdict(case, -1, 0, (str(error),))
    return Verdict(case, run.exit_status, max(0, len(run.stream) - 1), tuple(differences(run, expected)))


def drift(verdicts: list[Verdict], loaded: int, refused: int) -> Iterator[str]:
    """In which way the files are no fair sample any more."""
    count = len(verdicts)
    if count >= ENOUGH_FOR_SHARES and loaded * 3 < count:
        yield f"only {loaded} of {count} files were loaded, a third is the least"
    if count >= ENOUGH_FOR_SHARES and refused * 10 < count:
        yield f"only {refused} of {count} files were refused, a tenth is the least"
    if count >= ENOUGH_FOR_TARGETS:
        served = {verdict.case.mcu.name for verdict in verdicts if verdict.block_reports >= SEVERAL_BLOCKS}
        for name in (mcu.name for mcu in MCUS if mcu.name not in served):
            yield f"no file sent {SEVERAL_BLOCKS} blocks to {name}"


def keep(verdict: Verdict, seed: int, directory: Path) -> None:
    """Tell of a mismatch, and save its file."""
    file = directory / f"seed{seed}-{verdict.case.index}.hex"
    file.write_bytes(verdict.case.data)
    print(f"FAILED index {verdict.case.index} ({verdict.case}); file kept as {file}; "
          f"again with --seed {seed} --only {verdict.case.index}")
    for difference in verdict.differences:
        print(f"  {difference}")


def options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description="Compare karvex-rig with a model, on random Intel HEX files.")
    parser.add_argument("--program", type=Path, required=True, help="the karvex-rig to test")
    parser.add_argument("--count", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", type=int, metavar="INDEX", help="this file of the seed and no other")
    return parser.parse_args()


def main() -> int:
    chosen = options()
    indices = range(chosen.count) if chosen.only is None else [chosen.only]
    program = chosen.program.resolve(strict=True)
    with ThreadPoolExecutor(chosen.jobs) as pool:
        verdicts = list(pool.map(lambda index: judge(program, chosen.seed, index), indices))
    failed = [verdict for verdict in verdicts if verdict.differences]
    if failed:
        directory = Path(tempfile.mkdtemp(prefix="karvex-mismatches-"))
        for verdict in failed:
            keep(verdict, chosen.seed, directory)
    loaded = sum(verdict.exit_status == 0 for verdict in verdicts)
    refused = sum(verdict.exit_status == 3 for verdict in verdicts)
    drifts = list(drift(verdicts, loaded, refused))
    for text in drifts:
        print(f"FAILED {text}")
    print(f"test_random_hex.py: {len(verdicts) - len(failed)} passed, {len(failed)} failed "
          f"(seed {chosen.seed}: {loaded} loaded, {refused} refused)")
    return 1 if failed or drifts or not verdicts else 0


if __name__ == "__main__":
    sys.exit(main())
