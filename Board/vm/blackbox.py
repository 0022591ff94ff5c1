"""The black box on the emulated board's flash: its files, and the announcements of resets that it records."""

import re

RUNNING, STANDBY = "/ffs/fs1", "/ffs/fs2"  # the file systems, as the board's description has it
BOARD, TRACE = "config/lifedata/blackbox", "config/lifedata/blackbox_temperature"

SECONDS = 60
ENTRY = re.compile(r"(?P<time>\S{24}) (?P<reason>.*) Runnig partition: (?P<partition>\S+) RLC: (?P<counter>\d+)\n")


def file_text(machine, file_system, name):
    """A file's text; None when it is not there."""
    status, text = machine.run(f"cat {file_system}/{name} 2>/dev/null")
    return text if status == 0 else None


def history(board_file):
    """The history of resets in a board file, oldest first: of each the time and the reason. None, of a file that is not
    there, has none."""
    lines = (board_file or "").partition("RESET Reason and timestamp:\n")[2].partition("SW VERSION:")[0]
    entries = [ENTRY.fullmatch(line) for line in lines.splitlines(keepends=True)]
    if None in entries:
        raise ValueError(f"not a history of resets:\n{lines}")
    return [(entry["time"], entry["reason"]) for entry in entries]


def reasons(board_file):
    return [reason for _, reason in history(board_file)]


def wait_until(machine, condition):
    """Returns once a shell condition holds on the board; fails with what the service logged when it does not."""
    status, _ = machine.run(f"timeout {SECONDS} sh -c 'until {condition}; do usleep 50000; done'", SECONDS + 30)
    if status != 0:
        raise AssertionError(f"{condition}: not within {SECONDS} s\n{machine.run('cat /var/log/clm.log')[1]}")


def announcement(kind, category, info):
    """The command that announces a reset and ends well once the service has answered."""
    return f"clmctl reset {kind} --category {category} --info \"{info}\" --timeout 30s"


def announce(machine, kind, category, info):
    machine.output_of(announcement(kind, category, info) + " 2>&1")


def trace_rows(trace):
    """The rows of a trace, oldest first."""
    return [line for line in trace.splitlines() if line[:1].isdigit()]
