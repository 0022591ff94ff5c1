#!/usr/bin/env python3
"""functions.py TREE NM NAME=FILE...: doc/porting.md names every function of the contract, in the row of its header, under
what the service calls or under what it does not, and says who calls the latter. The programs are asked. "tests" are the
objects, with ':' between, of the contract's tests for boards; they may call only what the service calls."""

import re
import subprocess
import sys
from pathlib import Path

PAGE = "doc/porting.md"
CALLED = "What the service calls"
NOT_CALLED = "What it does not call"
FUNCTION = r"(?:Aa|Api|hwapi|ddal_)\w+"
CLASSES = r"ps::hwapi::common::((?:Service|ArgumentParser)::~?\w+)\("


def declared(tree):
    """Functions of the contract by header."""
    found = {}
    for header in sorted((tree / "Platform/include").glob("*.h")):
        text = re.sub(r"//.*|#.*", "", header.read_text())
        text = re.sub(r"\(\*\w+\)\([^)]*\)", "", text)  # callbacks among the arguments
        text = text[text.find('extern "C"'):] if 'extern "C"' in text else ""
        found[header.name] = set(re.findall(rf"\b({FUNCTION})\(", text))
    return found


def calls(nm, files, dynamic):
    """Functions of the platform that programs or objects leave to others."""
    listing = subprocess.run([nm, "-u", "-C", *(["-D"] if dynamic else []), *files], stdout=subprocess.PIPE, text=True)
    if listing.returncode != 0:
        sys.exit(f"{nm} cannot read {' '.join(files)}; build them first")
    return set(re.findall(rf"^ *[Uw] ({FUNCTION})$", listing.stdout, re.M)) | set(re.findall(CLASSES, listing.stdout))


def rows(tree):
    """Rows of the page's two tables: heading of the section, cells."""
    heading = ""
    for line in (tree / PAGE).read_text().splitlines():
        if line.startswith("#"):
            heading = line.lstrip("# ")
        elif line.startswith("| `"):
            yield heading, [cell.strip() for cell in line.strip("|").split(" | ")]


def quoted(cell):
    return re.findall(r"`([^`]+)`", cell)


def differences(what, page, programs):
    yield from (f"{what} has {name}, but no program says so" for name in sorted(page - programs))
    yield from (f"{what} lacks {name}" for name in sorted(programs - page))


def main(tree, nm, *programs):
    tree = Path(tree)
    files = dict(program.split("=", 1) for program in programs)
    tests = calls(nm, files.pop("tests").split(":"), dynamic=False)
    callers = {name: calls(nm, [file], dynamic=True) for name, file in files.items()}
    service = callers.pop("CLM")
    headers = declared(tree)
    problems, called, others = [], set(), {}
    for heading, cells in rows(tree):
        if heading == CALLED:
            header, names = quoted(cells[0])[0], set(quoted(cells[2]))
            called |= names
            if header != "Service.h":
                problems += differences(f"row {header} of \"{CALLED}\"", names, headers[header] & service)
        elif heading == NOT_CALLED:
            others[quoted(cells[0])[0]] = set(quoted(cells[1]))
    problems += differences(f"\"{CALLED}\"", called, service)
    problems += differences(f"\"{NOT_CALLED}\"", set(others), set().union(*headers.values()) - service)
    for function, page in others.items():
        problems += differences(f"the row of {function}", page, {name for name in callers if function in callers[name]})
    allowed = {name for name in tests if "::" in name or name in service}
    problems += [f"the contract's tests for boards call {name}, which the service does not" for name in tests - allowed]
    for problem in problems:
        print(f"{PAGE}: {problem}", file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
