"""A bash that has read the completion, asked line by line or typed at on a terminal."""

import os
import pty
import re
import select
import subprocess
import time
from pathlib import Path

COMPLETION = Path(__file__).resolve().parent.parent / "hwapi.bash"
PATIENCE_SECONDS = 60
# Of a line that is completed: its words, then what the completion offers, and the options it sets.
ASKED = r"""
. "$1"
compopt() { printf 'option %s\n' "$*"; }
while IFS= read -r COMP_LINE; do
  COMP_POINT=${#COMP_LINE}
  IFS=$'\x1f' read -r -a COMP_WORDS -d $'\x1e'
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  _${COMP_WORDS[0]} "${COMP_WORDS[0]}"
  printf 'offer %s\n' "${COMPREPLY[@]}"
  echo ----
done
"""


class Answer:
    """What a line is completed with: the words offered, and the options of `compopt` that are set."""

    def __init__(self, text):
        lines = text.splitlines()
        self.words = [line[6:] for line in lines if line.startswith("offer ") and line != "offer "]
        self.options = {option for line in lines if line.startswith("option ") for option in line.split()[1:]} - {"-o"}

    def __repr__(self):
        return f"{self.words} {self.options or ''}"


def words_of(line):
    """The words of a command line as bash's completion has them: "=" and ":" end a word and are one of their own."""
    words = re.findall(r"[=:]+|[^\s=:]+", line)
    return words + [""] if line.endswith(" ") else words


def completed(lines, programs, environment=None):
    """Completes each line; returns the answers in their order, and what was written to standard error."""
    asked = "".join(line + "\n" + "\x1f".join(words_of(line)) + "\x1f\x1e" for line in lines)
    shell = subprocess.run(["bash", "--norc", "--noprofile", "-c", ASKED, "bash", COMPLETION], input=asked, text=True,
                           capture_output=True, check=False, timeout=PATIENCE_SECONDS,
                           env=with_programs(programs, environment))
    answers = [Answer(text) for text in shell.stdout.split("----\n")[:-1]]
    if len(answers) != len(lines):
        raise AssertionError(f"{len(answers)} answers to {len(lines)} lines: {shell.stdout}{shell.stderr}")
    return answers, shell.stderr


def with_programs(programs, environment=None):
    """The environment in which the folders `programs` come first in the path."""
    path = os.pathsep.join([*map(str, programs), os.environ["PATH"]])
    kept = {name: value for name, value in os.environ.items() if not name.startswith("HWAPI_")}
    return {**kept, "PATH": path, **(environment or {})}


def typed(keys, expected, programs):
    """Types at an interactive bash until its terminal shows `expected`; returns what it showed."""
    process, terminal = pty.fork()
    if process == 0:
        os.environ.update(with_programs(programs), TERM="dumb", PS1="$ ")
        os.execvp("bash", ["bash", "--norc", "--noprofile", "-i"])
    shown = ""
    try:
        os.write(terminal, f". '{COMPLETION}'; echo re''ady\n".encode())
        deadline = time.monotonic() + PATIENCE_SECONDS
        waits_for, then = "ready", keys
        while time.monotonic() < deadline:
            if select.select([terminal], [], [], 1)[0]:
                shown += os.read(terminal, 4096).decode(errors="replace")
            if waits_for in shown.replace("re''ady", ""):
                if then is None:
                    return shown
                os.write(terminal, then.encode())
                shown, waits_for, then = "", expected, None
        raise AssertionError(f"the terminal does not show {waits_for!r}: {shown!r}")
    finally:
        os.close(terminal)
        os.kill(process, 9)
        os.waitpid(process, 0)
