"""Gives the program bad input of every sort: each time a clear line, no harm to the program, no report to a board.

Run: python3 test_bad_input.py --program PATH
"""

import argparse
from collections.abc import Callable
import json
import os
from pathlib import Path
from random import Random
import subprocess
import sys
import threading

from halfkay_model import (
    MCUS, RESULT_SUCCESS, RESULT_UNREADABLE, STATUS_IMPORT_FILE_ERROR, STATUS_SUCCESS, boot_report, find_mcu, load,
    report_length)
from hex_records import HexWriter, Style
from rig_runner import LOG_PREFIXES, Rig, Run, Skipped, require, require_equal, run_checks

MCU_NAME = "TEENSY32"
MCU = find_mcu(MCU_NAME)

MEMORY_MARGIN = 8 * 1024 * 1024
"""What a load may need beyond that of a short file, whatever stands in its file."""
LONGEST_URL = 255
"""Characters of "file://" and the path together that the program has room for."""
CHANGING_FILE_RUNS = 20


def good_file(size: int = 3000, seed: int = 0) -> bytes:
    random = Random(seed)
    writer = HexWriter(random, Style(record_sizes=(32,)))
    writer.store(0, random.randbytes(size))
    writer.end()
    return b"".join(writer.lines)


def require_channels(run: Run) -> None:
    """The log goes to standard error and to nowhere else."""
    astray = [line for line in run.output_lines if line.startswith(LOG_PREFIXES)]
    require(not astray, f"log lines on standard output: {astray[:3]}")
    require(any(line.startswith(LOG_PREFIXES) for line in run.stderr.split("\n")), "no log line on standard error")


def require_refused(run: Run, bytes_read: int | None, line: str | None) -> None:
    """The load failed at the file, said so with that line on standard output, and no board was touched."""
    require_equal("exit status", run.exit_status, 3)
    require_equal("result", run.report["result"], RESULT_UNREADABLE)
    require_equal("load_status", run.report["load_status"], STATUS_IMPORT_FILE_ERROR)
    require_equal("reports", run.report["reports"], 0)
    require_equal("boot_report", run.report["boot_report"], False)
    require_equal("reports that reached the board", len(run.stream), 0)
    if bytes_read is not None:
        require_equal("bytes_read", run.report["bytes_read"], bytes_read)
    if line is not None:
        require(line in run.output_lines, f"no line {line!r} on standard output: {run.stdout[:300]!r}")
    require_channels(run)


def require_unopened(run: Run, file: Path) -> None:
    require_refused(run, -1, f"Unable to read file {file}")


def require_parse_error(run: Run, line: int) -> None:
    require_refused(run, -2, f"Warning, HEX parse error line {line}")


def require_loaded(run: Run, data: bytes) -> None:
    """The load went as the model says."""
    expected = load(data, MCU)
    require_equal("exit status", run.exit_status, 0)
    require_equal("result", run.report["result"], RESULT_SUCCESS)
    require_equal("bytes_read", run.report["bytes_read"], expected.bytes_read)
    require_equal("flash_matches", run.report["flash_matches"], True)
    require(tuple(run.stream) == expected.stream, "the reports are not those of the file")
    require_channels(run)


def memory_on_a_line_of_100_MB(rig: Rig, directory: Path) -> None:
    """However long a line is, its pieces are read one by one; those that begin with a NUL are read to the end.

    First of all checks: the system counts this process's own memory in, and it is still small.
    """
    file = directory / "long.hex"
    record = b":0400000001020304F2"
    file.write_bytes(record)
    usual = rig.load(file, MCU_NAME).peak_memory
    for start, filler, failing_line in ((record, b"a", 2), (b"a", b"a", 1), (record, b"\0", None)):
        with file.open("wb") as output:
            output.write(start)
            for _ in range(100):
                output.write(filler * 1_000_000)
        run = rig.load(file, MCU_NAME)
        if failing_line is None:
            require_loaded(run, record)
        else:
            require_parse_error(run, failing_line)
        growth = run.peak_memory - usual
        require(growth < MEMORY_MARGIN, f"peak memory grew by {growth / 1024 / 1024:.1f} MiB")


def no_such_file(rig: Rig, directory: Path) -> None:
    for file in (directory / "missing.hex", directory / "missing" / "missing.hex"):
        require_unopened(rig.load(file, MCU_NAME), file)


def a_directory(rig: Rig, directory: Path) -> None:
    require_unopened(rig.load(directory, MCU_NAME), directory)


def an_unreadable_file(rig: Rig, directory: Path) -> None:
    if os.geteuid() == 0:
        raise Skipped("permissions don't bind root")
    file = directory / "closed.hex"
    file.write_bytes(good_file())
    file.chmod(0)
    require_unopened(rig.load(file, MCU_NAME), file)


def an_empty_file(rig: Rig, directory: Path) -> None:
    file = directory / "empty.hex"
    file.write_bytes(b"")
    run = rig.load(file, MCU_NAME)
    require_loaded(run, b"")
    require_equal("reports", run.report["reports"], 1)


def a_binary_file(rig: Rig, directory: Path) -> None:
    file = directory / "binary.hex"
    file.write_bytes(b"\x7fELF" + Random(7).randbytes(100_000))
    require_parse_error(rig.load(file, MCU_NAME), 1)


def NUL_bytes(rig: Rig, directory: Path) -> None:
    file = directory / "nul.hex"
    good = good_file()
    for data in (bytes(5000), b"\0\n\0junk\r\n" + good, good.replace(b"\n", b"\0junk\n")):
        file.write_bytes(data)
        require_loaded(rig.load(file, MCU_NAME), data)
    file.write_bytes(good[:100] + b"\0" + good[101:])
    require_parse_error(rig.load(file, MCU_NAME), 2)


def require_sane(run: Run) -> None:
    """The end of a load whose file nobody can know: the report is whole, and its parts agree.

    The load reads the file once. What the flash is compared with is read at another time, so a load that went
    well can end as one that doesn't match.
    """
    if run.report["result"] == RESULT_UNREADABLE:
        require(run.report["bytes_read"] in (-1, -2), f"bytes_read is {run.report['bytes_read']}")
        require_refused(run, None, None)
        return
    require_equal("result", run.report["result"], RESULT_SUCCESS)
    require_equal("load_status", run.report["load_status"], STATUS_SUCCESS)
    require_equal("exit status", run.exit_status, 0 if run.report["flash_matches"] else 3)
    require(run.report["bytes_read"] >= 0, f"bytes_read is {run.report['bytes_read']}")
    require_equal("boot_report", run.report["boot_report"], True)
    require_equal("reports", run.report["reports"], len(run.stream) - 1)
    require_equal("last report", run.stream[-1], boot_report(MCU))
    require_equal("report lengths", {len(report) for report in run.stream}, {report_length(MCU)})


def a_file_that_changes_while_it_is_read(rig: Rig, directory: Path) -> None:
    file = directory / "changing.hex"
    contents = [good_file(200_000, 1), good_file(150_000, 2), good_file(1000, 3), Random(4).randbytes(50_000), b""]
    file.write_bytes(contents[0])
    stop = threading.Event()
    rewritten = 0

    def rewrite() -> None:
        nonlocal rewritten
        while not stop.is_set():
            content = contents[rewritten % len(contents)]
            with file.open("wb", buffering=0) as output:
                for start in range(0, len(content), 4096):
                    output.write(content[start:start + 4096])
            rewritten += 1

    writer = threading.Thread(target=rewrite)
    writer.start()
    try:
        for _ in range(CHANGING_FILE_RUNS):
            before = rewritten
            require_sane(rig.load(file, MCU_NAME))
            require(rewritten > before, "the file did not change during the run")
    finally:
        stop.set()
        writer.join()


def a_percent_escape_in_the_path(rig: Rig, directory: Path) -> None:
    data = good_file()
    plain, escaped = directory / "a b.hex", directory / "a%20b.hex"
    plain.write_bytes(data)
    require_unopened(rig.load(escaped, MCU_NAME), escaped)
    require_loaded(rig.load(plain, MCU_NAME), data)
    escaped.write_bytes(data)
    require_loaded(rig.load(escaped, MCU_NAME), data)


def path_of_length(directory: Path, length: int) -> Path:
    """A path with that many characters below a directory, with the directories in between made."""
    folder = directory / ("d" * ((length - len(str(directory)) - 10) // 2))
    folder.mkdir(exist_ok=True)
    return folder / ("f" * (length - len(str(folder)) - 1))


def a_path_that_is_too_long(rig: Rig, directory: Path) -> None:
    data = good_file()
    longest = LONGEST_URL - len("file://")
    for length in (longest, longest + 1, longest + 100):
        file = path_of_length(directory, length)
        require_equal("length of the path", len(str(file)), length)
        file.write_bytes(data)
        run = rig.load(file, MCU_NAME)
        if length == longest:
            require_loaded(run, data)
        else:
            require_refused(run, None, None)
            log = [line for line in run.stderr.split("\n") if line.startswith(LOG_PREFIXES)]
            require(any("too long" in line for line in log), "no log line says that the path is too long")


def an_unknown_MCU(rig: Rig, directory: Path) -> None:
    file = directory / "good.hex"
    file.write_bytes(good_file())
    for name in ("TEENSY", "TEENSY322", "nonsense", "%s%n"):
        run = rig.load(file, name)
        require_equal("exit status", run.exit_status, 1)
        require(f'Unknown MCU type "{name}"' in run.stderr.split("\n"), f"standard error is {run.stderr[:300]!r}")
        lines = run.output_lines
        require("Supported MCUs are:" in lines, f"standard output is {run.stdout[:300]!r}")
        start = lines.index("Supported MCUs are:") + 1
        listed = [line for line in lines[start:] if line.startswith(" - ")]
        require_equal("list of names", listed, [f" - {mcu.name}" for mcu in MCUS])
        require_equal("reports that reached the board", len(run.stream), 0)


def wrong_use(rig: Rig, directory: Path) -> None:
    file = directory / "good.hex"
    file.write_bytes(good_file())
    good = (str(file), "--mcu", MCU_NAME)
    for arguments in (("--mcu", MCU_NAME), (str(file),), (str(file), "--mcu"), (*good, "--nonsense"),
                      (*good, "second.hex"), (*good, "--time", "slow"), (*good, "--fault", "nonsense")):
        run = rig.run(*arguments)
        require(run.exit_status == 2, f"exit status {run.exit_status}, expected 2, with {arguments}")
        require(run.stderr.strip() != "", f"nothing on standard error with {arguments}")
        require_equal("reports that reached the board", len(run.stream), 0)


def what_is_no_regular_file(rig: Rig, directory: Path) -> None:
    pipe, link = directory / "pipe", directory / "link"
    os.mkfifo(pipe)
    link.symlink_to(pipe)
    for file in (pipe, link, Path("/dev/zero")):
        run = rig.load(file, MCU_NAME)
        require_equal("exit status", run.exit_status, 2)
        require("no regular file" in run.stderr, f"standard error is {run.stderr[:300]!r}")


def results_over_the_file(rig: Rig, directory: Path) -> None:
    file, link, missing = directory / "good.hex", directory / "link.hex", directory / "missing.hex"
    file.write_bytes(good_file())
    link.hardlink_to(file)
    for option in ("--reports", "--report"):
        for loaded, results in ((file, file), (file, directory / "." / "good.hex"), (file, link), (missing, missing)):
            run = rig.run_plainly(str(loaded), "--mcu", MCU_NAME, option, str(results))
            require_equal("exit status", run.exit_status, 2)
            require("would overwrite it" in run.stderr, f"standard error is {run.stderr[:300]!r}")
    same = str(directory / "results")
    run = rig.run_plainly(str(file), "--mcu", MCU_NAME, "--reports", same, "--report", same)
    require_equal("exit status with one file for both results", run.exit_status, 2)
    require_equal("the file to load", file.read_bytes(), good_file())
    require(not missing.exists(), "a file was made that was to be loaded")


def output_that_nobody_takes(rig: Rig, directory: Path) -> None:
    """The results are whole all the same. Only what is lost is a failure, not what nobody wants."""
    file, report = directory / "good.hex", directory / "report.json"
    file.write_bytes(good_file())
    for redirection, expected in ((">&-", 0), ("2>&-", 0), ("<&- >&- 2>&-", 0), ("| true", 0), (">/dev/full", 3)):
        command = f'"$0" program "$1" --mcu {MCU_NAME} --report "$2" {redirection}'
        ended = subprocess.run(["bash", "-o", "pipefail", "-c", command, rig.program, file, report],
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        require_equal(f"exit status with {redirection}", ended.returncode, expected)
        require(json.loads(report.read_bytes())["flash_matches"], f"the report with {redirection}")


CHECKS: tuple[Callable[[Rig, Path], None], ...] = (
    memory_on_a_line_of_100_MB,
    no_such_file,
    a_directory,
    what_is_no_regular_file,
    results_over_the_file,
    output_that_nobody_takes,
    an_unreadable_file,
    an_empty_file,
    a_binary_file,
    NUL_bytes,
    a_file_that_changes_while_it_is_read,
    a_percent_escape_in_the_path,
    a_path_that_is_too_long,
    an_unknown_MCU,
    wrong_use,
)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description="Check what karvex-rig does with bad input.")
    parser.add_argument("--program", type=Path, required=True, help="the karvex-rig to test")
    sys.exit(run_checks(parser.parse_args().program.resolve(strict=True), CHECKS))
