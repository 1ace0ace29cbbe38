"""Kills runs of the application at random moments, and has later runs upgrade the boards that they leave. By hand.

Each job has boards of its own, which keep their flash and state in files. A run in real time is killed with SIGKILL, one
time in four its successor too, and then an unattended run must upgrade every board.

Run: python3 kill_runs.py --program PATH [--kills 1000] [--seed N] [--jobs 24]
"""

import argparse
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
import os
from pathlib import Path
from random import Random
import subprocess
import sys
import tempfile

BOARDS = 6
LONGEST_WAIT_SECONDS = 20.0
"""From its start, a run takes 2 s until it reaches its first board. The largest one, the last, takes 13 s to program."""
RUN_LIMIT_SECONDS = 120
AGAIN_SHARE = 0.25


class Job:
    """Boards, and the runs that meet them. A board's file is its flash and a last byte: whether it is in its bootloader."""

    def __init__(self, program: Path, seed: str, directory: Path) -> None:
        self._random = Random(seed)
        self._boards = directory / "boards"
        self._command = [str(program), "--boards", str(BOARDS), "--yes", "--keep", str(self._boards)]
        self._environment = {**os.environ, "TMPDIR": str(directory)}
        self._whole: dict[str, bytes] = {}
        self.kills = 0
        self.left: Counter[str] = Counter()
        self.lost: list[str] = []

    def kill_one(self) -> None:
        row = str(self._random.randint(1, BOARDS))
        process = subprocess.Popen([*self._command, "--time", "real", "--upgrade", row], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, env=self._environment)
        try:
            process.wait(self._random.uniform(0, LONGEST_WAIT_SECONDS))
            self.left["run over before the kill"] += 1
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
            self.kills += 1
            self._look()

    def _look(self) -> None:
        """Note what the kill has left: the worst of the boards says it."""
        places = set()
        for file in sorted(self._boards.iterdir()) if self._boards.exists() else []:
            memory = file.read_bytes()
            flash, is_in_bootloader = memory[:-1], any(memory[-1:])
            whole = self._whole.get(file.name)
            content = ("erased" if not flash.strip(b"\xff") else "whole" if flash == whole else "partly written")
            places.add(f"{content}, in its {'bootloader' if is_in_bootloader else 'firmware'}")
        worst = min(places, key=lambda place: ("bootloader" not in place, "partly" not in place, "erased" not in place),
                    default="no boards yet")
        self.left[worst] += 1

    def recover(self) -> None:
        """A later run on the same boards, in fast time."""
        run = subprocess.run([*self._command, "--time", "fast", "--upgrade", "1"], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                             env=self._environment, timeout=RUN_LIMIT_SECONDS, check=False)
        if run.returncode != 0:
            self.lost.append(f"exit status {run.returncode}: {run.stdout[-600:]}")
        for file in self._boards.iterdir():
            flash = file.read_bytes()[:-1]
            if self._whole.setdefault(file.name, flash) != flash:
                self.lost.append(f"{file.name} has another flash than after the first run")

    def run(self, kills: int) -> "Job":
        self.recover()
        while self.kills < kills and not self.lost:
            self.kill_one()
            if self._random.random() >= AGAIN_SHARE or self.kills == kills:
                self.recover()
        return self


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", type=Path, required=True, help="the karvex-rig to kill")
    parser.add_argument("--kills", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=24, help="runs at a time; most of their time they sleep")
    options = parser.parse_args()
    program = options.program.resolve(strict=True)
    shares = [options.kills // options.jobs + (place < options.kills % options.jobs) for place in range(options.jobs)]

    def work(place: int) -> Job:
        with tempfile.TemporaryDirectory(prefix="karvex-kills-") as directory:
            return Job(program, f"{options.seed}/{place}", Path(directory)).run(shares[place])

    with ThreadPoolExecutor(options.jobs) as pool:
        jobs = list(pool.map(work, range(options.jobs)))
    left = sum((job.left for job in jobs), Counter())
    lost = [text for job in jobs for text in job.lost]
    print(f"{sum(job.kills for job in jobs)} runs killed (seed {options.seed}), {len(lost)} times a board was lost")
    for state, count in left.most_common():
        print(f"  {count:5} {state}")
    for text in lost:
        print(f"LOST {text}")
    return 1 if lost else 0


if __name__ == "__main__":
    sys.exit(main())
