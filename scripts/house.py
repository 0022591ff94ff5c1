"""What the checks share: the files of the tree, and how findings are reported."""

import subprocess
import sys
from pathlib import Path


def root_from(arguments):
    """The tree to check: the first argument, else the one this script lies in."""
    return Path(arguments[1]).resolve() if len(arguments) > 1 else Path(__file__).resolve().parent.parent


def files(root, *patterns):
    """Paths, relative to `root`, of the tracked and the new files that match; ignored ones are left out."""
    # A checkout may belong to another user than the one who checks it, as on build machines.
    listing = subprocess.run(
        ["git", "-c", "safe.directory=*", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard",
         "--deduplicate", "--", *patterns],
        check=True, capture_output=True, text=True)
    paths = (Path(name) for name in listing.stdout.split("\0") if name)
    return sorted(path for path in paths if (root / path).is_file())


def report(check, findings, remedy=""):
    """Prints the findings, one a line, and returns the exit status."""
    for finding in findings:
        print(finding, file=sys.stderr)
    if findings:
        print(f"{check}: {len(findings)} to correct{'; ' + remedy if remedy else ''}", file=sys.stderr)
    else:
        print(f"{check}: good")
    return 1 if findings else 0
