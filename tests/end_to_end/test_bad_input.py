"""Gives the program bad input of every sort: each time a clear line, no harm to the program, no report to a board.

Run: python3 test_bad_input.py --program PATH
"""

import json
import os
from pathlib import Path
import subprocess
import sys
import threading

from runner import Rig, Run, Skipped, main, require, require_equal

MCU = "TEENSY32"
LOG_PREFIXES = ("> KARVEX", ">>> KARVEX")

MEMORY_MARGIN = 8 * 1024 * 1024
"""What a load may need beyond that of a short file, whatever stands in its file."""
LONGEST_URL = 255
"""Characters of "file://" and the path together that the program has room for."""
CHANGING_FILE_RUNS = 10
RECORD = b":0400000001020304F2"


def record(address: int, data: bytes) -> bytes:
    body = bytes((len(data), address >> 8, address & 0xFF, 0)) + data
    return b":%s%02X\n" % (body.hex().upper().encode(), -sum(body) & 0xFF)


def good_file(size: int = 3000, seed: int = 0) -> bytes:
    records = (record(address, bytes((address // 32 + seed) % 251 for _ in range(32))) for address in range(0, size, 32))
    return b"".join(records) + b":00000001FF\n"


def load(rig: Rig, file: Path, *options: str) -> Run:
    return rig.run("program", str(file), "--mcu", MCU, *options)


def require_channels(run: Run) -> None:
    """The log goes to standard error and to nowhere else."""
    require(not any(line.startswith(LOG_PREFIXES) for line in run.lines), f"log lines on standard output: {run.lines[:3]}")
    require(any(line.startswith(LOG_PREFIXES) for line in run.errors.split("\n")), "no log line on standard error")


def require_refused(run: Run, bytes_read: int, line: str | None) -> None:
    """The load failed at the file, said so with that line on standard output, and no board was touched."""
    require_equal("exit status", run.exit_status, 3)
    found = [run.report[key] for key in ("result", "load_status", "reports", "boot_report", "bytes_read")]
    require_equal("report", found, ["Error: Could not read file", 9, 0, False, bytes_read])
    require(line is None or line in run.lines, f"no line {line!r} on standard output: {run.lines[:3]}")
    require_channels(run)


def require_unopened(run: Run, file: Path) -> None:
    require_refused(run, -1, f"Unable to read file {file}")


def require_parse_error(run: Run, line: int) -> None:
    require_refused(run, -2, f"Warning, HEX parse error line {line}")


def require_loaded(run: Run, bytes_read: int) -> None:
    """The load went well, and the board holds what its own reading of the file says."""
    require_equal("exit status", run.exit_status, 0)
    found = [run.report[key] for key in ("result", "load_status", "flash_matches", "boot_report", "bytes_read")]
    require_equal("report", found, ["Success", 7, True, True, bytes_read])
    require_channels(run)


def memory_on_a_line_of_100_MB(rig: Rig) -> None:
    """However long a line is, its pieces are read one by one. First of all checks, while this process is small."""
    file = rig.directory / "long.hex"
    file.write_bytes(RECORD)
    usual = load(rig, file).peak_memory
    for start, filler, failing_line in ((RECORD, b"a", 2), (b"a", b"a", 1), (RECORD, b"\0", None)):
        with file.open("wb") as output:
            output.write(start)
            for _ in range(100):
                output.write(filler * 1_000_000)
        run = load(rig, file)
        if failing_line is None:
            # The flash is compared by a stricter reading, which has no use for a file with NULs.
            require_equal("load status", run.report["load_status"], 7)
        else:
            require_parse_error(run, failing_line)
        growth = run.peak_memory - usual
        require(growth < MEMORY_MARGIN, f"peak memory grew by {growth / 1024 / 1024:.1f} MiB")


def what_cannot_be_read(rig: Rig) -> None:
    for file in (rig.directory / "missing.hex", rig.directory / "missing" / "missing.hex", rig.directory):
        require_unopened(load(rig, file), file)
    if os.geteuid() == 0:
        raise Skipped("permissions don't bind root")
    file = rig.directory / "closed.hex"
    file.write_bytes(good_file())
    file.chmod(0)
    require_unopened(load(rig, file), file)


def what_is_no_firmware(rig: Rig) -> None:
    file = rig.directory / "bad.hex"
    for data, line in ((b"\x7fELF" + os.urandom(100_000), 1), (good_file()[:100] + b"\0" + good_file()[101:], 2),
                       (good_file().replace(b":", b"", 1), 1), (RECORD + b"\n:01000000 1FE\n", 2)):
        file.write_bytes(data)
        require_parse_error(load(rig, file), line)


def what_reached_the_board_is_written_down(rig: Rig) -> None:
    file, reports = rig.directory / "good.hex", rig.directory / "reports.bin"
    file.write_bytes(good_file())
    run = load(rig, file, "--reports", str(reports))
    require_loaded(run, 3008)
    data, lengths = reports.read_bytes(), []
    while data:
        lengths.append(int.from_bytes(data[:4], "little"))
        last, data = data[4:4 + lengths[-1]], data[4 + lengths[-1]:]
    require_equal("lengths of the reports", lengths, [1088] * (run.report["reports"] + 1))
    require_equal("the last one", last, b"\xff\xff\xff" + bytes(1085))


def a_file_that_changes_while_it_is_read(rig: Rig) -> None:
    """The load and the check of the flash read it at different times, so a load that went well can end as one that
    doesn't match."""
    file = rig.directory / "changing.hex"
    contents = [good_file(60_000, 1), good_file(40_000, 2), good_file(1000, 3), os.urandom(50_000), b""]
    file.write_bytes(contents[0])
    stop = threading.Event()

    def rewrite() -> None:
        turn = 0
        while not stop.is_set():
            turn += 1
            with file.open("wb", buffering=0) as output:
                for start in range(0, len(contents[turn % 5]), 4096):
                    output.write(contents[turn % 5][start:start + 4096])

    writer = threading.Thread(target=rewrite)
    writer.start()
    try:
        for _ in range(CHANGING_FILE_RUNS):
            run = load(rig, file)
            if run.report["result"] == "Success":
                require_equal("exit status", run.exit_status, 0 if run.report["flash_matches"] else 3)
                require_equal("boot_report", run.report["boot_report"], True)
            else:
                require_refused(run, run.report["bytes_read"], None)
    finally:
        stop.set()
        writer.join()


def paths_are_taken_as_they_stand(rig: Rig) -> None:
    plain, escaped = rig.directory / "a b.hex", rig.directory / "a%20b.hex"
    plain.write_bytes(good_file())
    require_unopened(load(rig, escaped), escaped)
    require_loaded(load(rig, plain), 3008)
    for length in (LONGEST_URL - len("file://"), LONGEST_URL + 1 - len("file://")):
        file = rig.directory / ("f" * (length - len(str(rig.directory)) - 1))
        file.write_bytes(good_file())
        run = load(rig, file)
        if len(f"file://{file}") <= LONGEST_URL:
            require_loaded(run, 3008)
        else:
            require_refused(run, -1, None)
            require("too long" in run.errors, "no log line says that the path is too long")


def an_unknown_MCU(rig: Rig) -> None:
    file = rig.directory / "good.hex"
    file.write_bytes(good_file())
    for name in ("TEENSY", "TEENSY322", "%s%n"):
        run = rig.run("program", str(file), "--mcu", name)
        require_equal("exit status", run.exit_status, 1)
        require(f'Unknown MCU type "{name}"' in run.errors.split("\n"), f"standard error is {run.errors[:300]!r}")
        listed = run.lines[run.lines.index("Supported MCUs are:") + 1:]
        require_equal("names listed", len([line for line in listed if line.startswith(" - ")]), 21)


def wrong_use(rig: Rig) -> None:
    file, link, pipe, missing = (rig.directory / name for name in ("good.hex", "link.hex", "pipe", "missing.hex"))
    file.write_bytes(good_file())
    link.hardlink_to(file)
    os.mkfifo(pipe)
    good = ("program", str(file), "--mcu", MCU)
    results = str(rig.directory / "results")
    for arguments, reason in (
            (("program", "--mcu", MCU), "FILE"), (good[:2], "--mcu"), (good[:3], "--mcu"), ((*good, "--nonsense"), "--nonsense"),
            ((*good, "second.hex"), "second.hex"), ((*good, "--time", "slow"), "slow"),
            ((*good, "--fault", "nonsense"), 'no fault called "nonsense"'),
            (("program", str(pipe), "--mcu", MCU), "no regular file"), (("program", "/dev/zero", "--mcu", MCU), "no regular file"),
            ((*good, "--reports", results, "--report", results), "can't be the file of the reports"),
            *(((*good, option, str(same)), "would overwrite it") for option in ("--report", "--reports")
              for same in (file, link, rig.directory / "." / "good.hex")),
            (("program", str(missing), "--mcu", MCU, "--report", str(missing)), "would overwrite it"),
            ((*good, "--report", str(rig.directory)), "can't be written"),
            (("--boards", "1001"), "--boards"), (("--upgrade", "0"), "--upgrade"), (("--board", "vanishes"), "2:vanishes=5"),
            (("--board", "0:vanishes"), "2:vanishes=5"), (("--board", "1x:vanishes"), "2:vanishes=5"),
            (("--service", "slow@nowhere"), "nowhere"), (("list", "report"), "report")):
        run = rig.run_plainly(*arguments)
        require_equal(f"exit status with {arguments}", run.exit_status, 2)
        require(reason in run.errors, f"standard error with {arguments} is {run.errors[:300]!r}")
    require_equal("the file to load", file.read_bytes(), good_file())
    require(not missing.exists(), "a file was made that was to be loaded")


def output_that_nobody_takes(rig: Rig) -> None:
    """The results are whole all the same. Only what is lost is a failure, not what nobody wants."""
    file, report = rig.directory / "good.hex", rig.directory / "report.json"
    file.write_bytes(good_file())
    for redirection, expected in ((">&-", 0), ("2>&-", 0), ("<&- >&- 2>&-", 0), ("| true", 0), (">/dev/full", 3)):
        command = f'"$0" program "$1" --mcu {MCU} --report "$2" {redirection}'
        ended = subprocess.run(["bash", "-o", "pipefail", "-c", command, rig.program, file, report], check=False,
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        require_equal(f"exit status with {redirection}", ended.returncode, expected)
        require(json.loads(report.read_bytes())["flash_matches"], f"the report with {redirection}")
    program = ("program", str(file), "--mcu", MCU)
    for arguments in ((*program, "--report"), (*program, "--reports"), ("--upgrade", "1", "--boards", "1", "--report")):
        run = rig.run_plainly(*arguments, "/dev/full", "--time", "fast")
        require_equal(f"exit status with {arguments}", run.exit_status, 3)


def the_service_and_the_equipment_are_shown(rig: Rig) -> None:
    for arguments, status, line in ((("list", "--boards", "2"), 0, "1000020"), (("report", "--boards", "2"), 0, "1000020"),
                                    (("list", "--service", "empty-list"), 3, ""), (("list", "--service", "not-json"), 3, ""),
                                    (("report", "--service", "wrong-certificate"), 3, "")):
        run = rig.run_plainly(*arguments, "--time", "fast")
        require_equal(f"exit status of {arguments}", run.exit_status, status)
        require(any(line in printed for printed in run.lines), f"{arguments}: no {line!r} in {run.lines}")


CHECKS = (memory_on_a_line_of_100_MB, what_cannot_be_read, what_is_no_firmware, what_reached_the_board_is_written_down,
          a_file_that_changes_while_it_is_read, paths_are_taken_as_they_stand, an_unknown_MCU, wrong_use,
          output_that_nobody_takes, the_service_and_the_equipment_are_shown)

if __name__ == "__main__":
    sys.exit(main("Check what karvex-rig does with bad input.", CHECKS))
