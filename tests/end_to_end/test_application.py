"""Checks the whole application on the rig: an unattended run and its report, a terminal, and its memory.

Run: python3 test_application.py --program PATH
"""

import re
import sys

from runner import Rig, Run, Terminal, main, require, require_equal

COMPLETE = "/services/uploadComplete.php"

MEGABYTE = 1 << 20
FLASH_SIZES = {"TEENSY2": 32_256, "TEENSY2PP": 130_048, "TEENSYLC": 63_488, "TEENSY30": 131_072, "TEENSY31": 262_144,
               "TEENSY32": 262_144, "TEENSY35": 524_288, "TEENSY36": 1_048_576, "TEENSY40": 2_031_616,
               "TEENSY41": 8_126_464}
MEMORY_MARGIN = 6 * MEGABYTE
"""For what grows with the boards beside their flashes: records, timelines, the service's requests."""


def require_upgraded(run: Run, boards: int) -> None:
    require_equal("exit status", run.exit_status, 0)
    require_equal("last line", run.lines[-1], f"{boards} of {boards} devices upgraded.")
    for board in run.report["boards"]:
        require(board["boot_report"] and board["flash_matches"] and board["reported"], f"board: {board}")


def a_run_without_a_hand(rig: Rig) -> None:
    run = rig.upgrade(3)
    require_upgraded(run, 3)
    serials = [board["serial"] for board in run.report["boards"]]
    require_equal("rows", [row["serial"] for row in run.report["rows"]], serials)
    for row in run.report["rows"]:
        statuses = [entry["status"] for entry in row["statuses"] if entry["status"] != 2]
        require_equal("statuses", statuses, [0, 4, 5, 6, 7])
        require_equal("last status", row["statuses"][-1]["text"], "Success")
    bodies = [request["body"] for request in run.report["requests"] if request["path"] == COMPLETE]
    require_equal("completions", [body.split("&")[0] for body in bodies],
                  [f"DEVICE_SERIAL_NUMBER={serial}" for serial in serials])
    require_equal("controls at the end", {key: value for key, value in run.report["controls"][-1].items() if key != "at_ms"},
                  {"isUploadButtonDisabled": True, "loadingInProgress": False, "actionButtonsDisabled": False})


def what_became_of_each_board_is_said(rig: Rig) -> None:
    run = rig.upgrade(3, "--board", "2:vanishes=1")
    require_equal("exit status", run.exit_status, 3)
    for line, expected in zip(run.lines[-4:], (": upgraded: 7 blocks, its flash matches", ": NOT UPGRADED: its flash is not",
                                              "it is running.", "1 of 3 devices upgraded.")):
        require(expected in line, f"{line!r} has no {expected!r}")
    require("it is gone." in run.lines[-3], run.lines[-3])
    busy, snatched = (rig.upgrade(1, "--board", f"1:{fault}").report["dialogs"] for fault in ("port-busy", "port-snatched"))
    require_equal("dialogs", [dialog["title"] for dialog in busy + snatched],
                  ["Device Port currently in use! ", "Could not switch device to programming mode"])
    away = rig.upgrade(2, "--board", "2:never-returns")
    require_equal("exit status of a board that stays away", away.exit_status, 0)
    require_equal("told to be plugged in", [line.endswith("plug it in again.") for line in away.lines[-3:]],
                  [False, True, False])


def a_row_that_is_not_there(rig: Rig) -> None:
    run = rig.run("--upgrade", "4", "--boards", "3")
    require_equal("exit status and reason", (run.exit_status, run.lines[-1]), (3, "There is no row 4."))
    require_equal("no board", rig.run("--upgrade", "1", "--boards", "0").exit_status, 3)
    run = rig.run("--upgrade", "3", "--boards", "3")
    require_equal("exit status from the last row on", run.exit_status, 0)
    require(not any("NOT UPGRADED" in line for line in run.lines), "boards before the row are told of")
    require_equal("upgraded", [board["flash_matches"] for board in run.report["boards"]], [False, False, True])


def without_a_terminal_it_prints_the_table(rig: Rig) -> None:
    run = rig.run()
    require_equal("exit status", run.exit_status, 0)
    require(re.match(r" *Device +Serial Number +Firmware Name +Current Version +Target Version +Status$",
                     run.lines[0]) is not None, f"titles: {run.lines[0]!r}")
    require_equal("rows", len(run.lines), 4)
    require(all(line.endswith("● Idle") for line in run.lines[1:]), f"rows: {run.lines[1:]}")


def memory_grows_with_the_flashes_alone(rig: Rig) -> None:
    if b"__asan_init" in rig.program.read_bytes():
        print("memory: not measured, since the address sanitizer keeps what is freed")
        return
    few, many = rig.upgrade(10), rig.upgrade(100)
    require_upgraded(few, 10)
    require_upgraded(many, 100)
    flashes = [sum(FLASH_SIZES[board["mcu"]] for board in run.report["boards"]) for run in (few, many)]
    growth, allowed = many.peak_memory - few.peak_memory, flashes[1] - flashes[0] + MEMORY_MARGIN
    print(f"memory: {few.peak_memory / MEGABYTE:.1f} MB with 10 boards, {many.peak_memory / MEGABYTE:.1f} MB with 100, "
          f"of whose growth {(flashes[1] - flashes[0]) / MEGABYTE:.1f} MB are flashes")
    require(growth <= allowed, f"memory grows by {growth} bytes, {allowed} are allowed")


def by_keys_on_a_terminal(rig: Rig) -> None:
    with Terminal(rig.program, "--boards", "1") as terminal:
        terminal.see("1 - ")
        terminal.press("\x1b[B")
        terminal.see("u: Upload Firmware")
        terminal.press("u")
        terminal.see("Programming...")
        terminal.wait_for("the bar", lambda: re.search(r"\[#*\.+\] \d/7 blocks", terminal.screen) is not None)
        terminal.wait_for("the alert", lambda: "All devices have been upgraded." in terminal.screen)
        terminal.press("\r")
        terminal.see("up/down: select")
        terminal.press("q")
        require_equal("exit status", terminal.end(), 0)
        terminal.require_given_back()


CHECKS = (a_run_without_a_hand, what_became_of_each_board_is_said, a_row_that_is_not_there,
          without_a_terminal_it_prints_the_table, memory_grows_with_the_flashes_alone, by_keys_on_a_terminal)


if __name__ == "__main__":
    sys.exit(main("Check the whole application on the rig.", CHECKS))
