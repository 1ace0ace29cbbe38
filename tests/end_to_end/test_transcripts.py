"""Replays the transcripts beside it: each command must print what it printed then, and end as it ended.

Run: python3 test_transcripts.py --program PATH

A transcript is a session of bash in an empty directory, which is DIR in what is printed. After "$ " comes a command, below
it what it prints up to the next command or blank line, and "[3]" for an exit status of 3. "..." is any text. What a command
writes to standard error is in the file "log" for the next one, and FIRMWARE is the folder of the sample firmware. With
KARVEX_WRITE_TRANSCRIPTS=1, what differs is written anew: look at what `git diff` shows then.
"""

import doctest
import os
from pathlib import Path
import re
import subprocess
import sys

from runner import RUN_LIMIT_SECONDS, Rig, main, require

HERE = Path(__file__).parent
STEP = re.compile(r"^\$ (.*)\n((?:(?!\$ |\n).*\n)*)", re.MULTILINE)


def printed_by(command: str, rig: Rig) -> str:
    environment = {**os.environ, "PATH": f"{rig.program.parent}:{os.environ['PATH']}",
                   "FIRMWARE": str(HERE.parent.parent / "rig" / "firmware")}
    ended = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=rig.directory, env=environment, check=False,
                           stdin=subprocess.DEVNULL, capture_output=True, timeout=RUN_LIMIT_SECONDS)
    (rig.directory / "log").write_bytes(ended.stderr)
    text = ended.stdout.decode(errors="replace").replace(str(rig.directory), "DIR")
    return re.sub(r"^$\n", "<BLANKLINE>\n", text, flags=re.MULTILINE) + (f"[{ended.returncode}]\n" if ended.returncode else "")


def replay(transcript: Path, rig: Rig) -> None:
    differences = []

    def replayed(step: re.Match[str]) -> str:
        command, expected = step.groups()
        printed = printed_by(command, rig)
        if doctest.OutputChecker().check_output(expected, printed, doctest.ELLIPSIS):
            return step[0]
        differences.append(f"$ {command}\n--- expected\n{expected}--- printed\n{printed}")
        return f"$ {command}\n{printed}"

    text = STEP.sub(replayed, transcript.read_text(encoding="utf-8"))
    if os.environ.get("KARVEX_WRITE_TRANSCRIPTS"):
        transcript.write_text(text, encoding="utf-8")
    require(not differences, "\n".join(differences))


def check_of(transcript: Path):
    def check(rig: Rig) -> None:
        replay(transcript, rig)

    check.__name__ = transcript.stem
    return check


if __name__ == "__main__":
    sys.exit(main("Replay the transcripts.", map(check_of, sorted(HERE.glob("transcripts/*.txt")))))
