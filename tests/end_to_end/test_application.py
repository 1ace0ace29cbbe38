"""Checks the whole application on the rig: runs without a hand, faults, a kill, a terminal, and its memory.

Run: python3 test_application.py --program PATH
"""

from random import Random
import re
import signal
import sys
import time
from typing import Any

from application_runner import Application, Run, Terminal, main
from rig_runner import require, require_equal

LIST, COMPLETE = "/services/loaderInfo.php", "/services/uploadComplete.php"
STATES = {(True, False, False), (False, False, False), (True, True, True)}
"""What the three flags of the controls may be together: at rest, armed, running."""

MEGABYTE = 1 << 20
FLASH_SIZES = {"TEENSY2": 32_256, "TEENSY2PP": 130_048, "TEENSYLC": 63_488, "TEENSY30": 131_072, "TEENSY31": 262_144,
               "TEENSY32": 262_144, "TEENSY35": 524_288, "TEENSY36": 1_048_576, "TEENSY40": 2_031_616,
               "TEENSY41": 8_126_464}
MEMORY_MARGIN = 6 * MEGABYTE
"""For what grows with the boards beside their flashes: records, timelines, the service's requests."""

def serials_of(report: dict[str, Any]) -> list[str]:
    return [board["serial"] for board in report["boards"]]


def require_upgraded(run: Run, boards: int) -> None:
    require_equal("exit status", run.exit_status, 0)
    require_equal("last line", run.lines[-1], f"{boards} of {boards} devices upgraded.")
    for board in run.report["boards"]:
        require(board["boot_report"] and board["flash_matches"] and board["reported"], f"board: {board}")


def a_run_without_a_hand(application: Application) -> None:
    run = application.upgrade(3)
    require_upgraded(run, 3)
    report = run.report
    serials = serials_of(report)
    require_equal("rows", [row["serial"] for row in report["rows"]], serials)
    for row in report["rows"]:
        statuses = [entry["status"] for entry in row["statuses"]]
        require_equal("statuses", [status for status in statuses if status != 2], [0, 4, 5, 6, 7])
        require_equal("last status", row["statuses"][-1]["text"], "Success")
        times = [entry["at_ms"] for entry in row["statuses"]]
        require_equal("order of times", times, sorted(times))
    requests = [(request["method"], request["path"]) for request in report["requests"]]
    lists = [request for request in requests if request[1] == LIST]
    require_equal("list requests", lists, [("POST", LIST)])
    bodies = [request["body"] for request in report["requests"] if request["path"] == COMPLETE]
    require_equal("completions", [body.split("&")[0] for body in bodies],
                  [f"DEVICE_SERIAL_NUMBER={serial}" for serial in serials])
    for place, body in enumerate(bodies):
        form = rf"[^&]+&DEVICE_FIRMWARE_NAME=[\w-]+&DEVICE_FIRMWARE_VERSION=2\.{place}"
        require(re.fullmatch(form, body) is not None, f"body: {body!r}")
    require_equal("dialogs", [(dialog["title"], dialog["message"]) for dialog in report["dialogs"]],
                  [("Upgrade Procedure Complete",
                    "All devices have been upgraded.\nYou can now close this application.")])
    flags = [tuple(controls[name] for name in ("isUploadButtonDisabled", "loadingInProgress", "actionButtonsDisabled"))
             for controls in report["controls"]]
    require_equal("states of the controls", {state for state in flags if state in STATES}, STATES)
    require_equal("controls at the end", flags[-1], (True, False, False))


def each_fault_is_told_with_its_device(application: Application) -> None:
    """The second of three boards, or the service, goes wrong: which boards are done, and the dialog."""
    done, not_done = "upgraded: ", "NOT UPGRADED: "
    stops_at_second = [done, not_done, not_done]
    for arguments, states, title in (
            (("--board", "2:never-enters-halfkay"), stops_at_second, "An error occurred during upload"),
            (("--board", "2:enters-late=40000"), stops_at_second, "An error occurred during upload"),
            (("--board", "2:port-busy"), stops_at_second, "Device Port currently in use! "),
            (("--board", "2:port-snatched"), stops_at_second, "Could not switch device to programming mode"),
            (("--board", "2:vanishes=1"), stops_at_second, None),
            (("--board", "2:refuses-for-good"), stops_at_second, None),
            (("--board", "2:access-denied"), stops_at_second, "Device already in programming mode"),
            (("--board", "2:returns-late=600"), [done] * 3, "Upgrade Procedure Complete"),
            (("--board", "3:never-returns"), [done] * 3, "Upgrade Procedure Complete"),
            (("--service", "not-found@firmware"), [not_done] * 3, "An error occurred during upload"),
            (("--service", "cut-off@firmware"), [not_done] * 3, "Could not download Firmware file"),
            (("--service", "wrong-certificate"), [not_done] * 3, None),
            (("--service", "missing-key=mcu"), [not_done] * 3, None),
    ):
        for answers in ((), ("--yes",)):
            run = application.upgrade(3, *arguments, *answers)
            name = " ".join(arguments + answers)
            expected = 0 if states == [done] * 3 else 3
            require_equal(f"{name}: exit status", run.exit_status, expected)
            for serial, state in zip(serials_of(run.report), states):
                require(any(f" {serial}: {state}" in line for line in run.lines), f"{name}: {run.lines[-5:]}")
            require_equal(f"{name}: a board that stays away is told of",
                          any(line.endswith("plug it in again.") for line in run.lines), "never-returns" in name)
            titles = [dialog["title"] for dialog in run.report["dialogs"]]
            require(title is None or titles[:1] == [title], f"{name}: dialogs {titles}")


def a_board_in_its_bootloader_comes_first(application: Application) -> None:
    """Its alert stands in the way of a run; the alert's OK brings the board back."""
    arguments = ("--board", "2:in-halfkay")
    run = application.upgrade(3, *arguments)
    require_equal("exit status", run.exit_status, 3)
    require_equal("dialogs", [dialog["title"] for dialog in run.report["dialogs"]],
                  ["Device already in programming mode"])
    require_equal("states", [board["state"] for board in run.report["boards"]], ["running", "halfkay", "running"])
    require_equal("exit status, if it can't be brought back",
                  application.upgrade(3, *arguments, "--board", "2:access-denied", "--yes").exit_status, 3)
    run = application.upgrade(3, *arguments, "--yes")
    require_upgraded(run, 3)
    require_equal("dialogs", [dialog["title"] for dialog in run.report["dialogs"]],
                  ["Device already in programming mode", "Upgrade Procedure Complete"])


def a_row_that_is_not_there(application: Application) -> None:
    run = application.run("--upgrade", "4", "--boards", "3")
    require_equal("exit status and reason", (run.exit_status, run.lines[-1]), (3, "There is no row 4."))
    require_equal("no board", application.run("--upgrade", "1", "--boards", "0").exit_status, 3)
    run = application.run("--upgrade", "3", "--boards", "3")
    require_equal("exit status from the last row on", run.exit_status, 0)
    require_equal("upgraded", [board["flash_matches"] for board in run.report["boards"]], [False, False, True])


def without_a_terminal_it_prints_the_table(application: Application) -> None:
    run = application.run()
    require_equal("exit status", run.exit_status, 0)
    require(re.match(r" *Device +Serial Number +Firmware Name +Current Version +Target Version +Status$",
                     run.lines[0]) is not None, f"titles: {run.lines[0]!r}")
    require_equal("rows", len(run.lines), 4)
    require(all(line.endswith("● Idle") for line in run.lines[1:]), f"rows: {run.lines[1:]}")


def killed_at_any_moment_and_started_again(application: Application) -> None:
    random = Random(5)
    for mode in ("fast", "fast", "fast", "real", "real"):
        process = application.start("--time", mode, "--upgrade", "1", "--boards", "3")
        time.sleep(random.uniform(0, 0.4 if mode == "fast" else 1.5))
        process.send_signal(signal.SIGKILL)
        process.wait()
        require_upgraded(application.upgrade(3), 3)


def memory_grows_with_the_flashes_alone(application: Application) -> None:
    if b"__asan_init" in application.program.read_bytes():
        print("memory: not measured, since the address sanitizer keeps what is freed")
        return
    few, many = application.upgrade(10), application.upgrade(100)
    require_upgraded(few, 10)
    require_upgraded(many, 100)
    flashes = [sum(FLASH_SIZES[board["mcu"]] for board in run.report["boards"]) for run in (few, many)]
    growth, allowed = many.peak_memory - few.peak_memory, flashes[1] - flashes[0] + MEMORY_MARGIN
    print(f"memory: {few.peak_memory / MEGABYTE:.1f} MB with 10 boards, {many.peak_memory / MEGABYTE:.1f} MB with 100, "
          f"of whose growth {(flashes[1] - flashes[0]) / MEGABYTE:.1f} MB are flashes")
    require(growth <= allowed, f"memory grows by {growth} bytes, {allowed} are allowed")


def by_keys_on_a_terminal(application: Application) -> None:
    with Terminal(application.program, "--boards", "1") as terminal:
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


CHECKS = (a_run_without_a_hand, each_fault_is_told_with_its_device, a_board_in_its_bootloader_comes_first,
          a_row_that_is_not_there,
          without_a_terminal_it_prints_the_table, killed_at_any_moment_and_started_again,
          memory_grows_with_the_flashes_alone, by_keys_on_a_terminal)


if __name__ == "__main__":
    sys.exit(main("Check the whole application on the rig.", CHECKS))
