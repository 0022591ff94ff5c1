#!/usr/bin/env python3
"""coverage.py BUILD [--report FOLDER]: the lines and branches of the service that its unit tests reach, by file. BUILD is the build folder of
the preset "coverage", with the programs and, in `profiles`, what they counted. FOLDER gets a page for every file. Ends with 1 when a line or a branch is
reached by no test and has no reason in ClimateS/test/unreached.txt, or has a wrong one."""

import argparse
import json
import os
import re
import subprocess
import sys
from collections import Counter, defaultdict
from dataclasses import dataclass, field
from pathlib import Path

import house

SOURCES = "ClimateS/src"
REASONS = "ClimateS/test/unreached.txt"
CODE = 0  # kind of a region that holds code


class CoverageError(Exception):
    """What keeps the coverage from being told."""


@dataclass
class File:
    """What was counted in a file."""

    text: list
    lines: dict = field(default_factory=dict)  # line -> executions
    regions: Counter = field(default_factory=Counter)  # (line, column, line, column) -> executions
    branches: Counter = field(default_factory=Counter)  # (line, column, line, column, outcome) -> how often

    def unreached(self):
        """(line, what) of what was never executed or taken."""
        for (line, *_), count in sorted(self.regions.items()):
            if count == 0:
                yield line, "is never executed"
        for (line, *_, outcome), count in sorted(self.branches.items()):
            if count == 0:
                yield line, f"is never {outcome}"

    def code(self, line):
        return self.text[line - 1].strip()


def tool(name):
    """Path of the tool of the compiler that built the programs."""
    found = subprocess.run(["clang++", f"-print-prog-name={name}"], capture_output=True, text=True).stdout.strip()
    if not os.path.isabs(found):
        raise CoverageError(f"{name} is not installed; \"./dev setup coverage\" installs it")
    return found


def output_of(*command):
    """What a tool prints. It warns of functions in a program that nothing there calls: they count where they are called."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True)
    if done.returncode != 0:
        raise CoverageError(f"{command[0]} failed: {done.stderr.strip()}")
    return done.stdout


def counters_of(build, root):
    """Arguments that name the programs, and what they counted, to the tool."""
    programs = sorted(path for path in (build / "ClimateS/test").glob("*_test") if os.access(path, os.X_OK))
    profiles = sorted((build / "profiles").glob("*.profraw"))
    if not programs or not profiles:
        raise CoverageError(f"{build} has no programs that were run; \"./dev coverage\" builds and runs them")
    merged = build / "profiles/all.profdata"
    output_of(tool("llvm-profdata"), "merge", "-sparse", "-o", merged, *profiles)
    objects = [programs[0], *(f"-object={path}" for path in programs[1:])]
    return [f"-instr-profile={merged}", *objects, root / SOURCES]


def files_of(counters, root):
    """The sources by name, with their counts; templates and inline functions as the sum of all their copies."""
    lcov = output_of(tool("llvm-cov"), "export", *counters, "-format=lcov")
    functions = json.loads(output_of(tool("llvm-cov"), "export", *counters, "-format=text"))["data"][0]["functions"]
    files = {path.name: File((root / path).read_text().splitlines())
             for path in house.files(root, f"{SOURCES}/*.h", f"{SOURCES}/*.cpp")}
    for record in lcov.split("end_of_record"):
        source = re.search(r"^SF:(.*)$", record, re.M)
        if source and Path(source[1]).name in files:
            lines = re.findall(r"^DA:(\d+),(\d+)", record, re.M)
            files[Path(source[1]).name].lines = {int(line): int(count) for line, count in lines}
    for function in functions:
        names = [Path(name) for name in function["filenames"]]
        for *place, count, file, _, kind in function["regions"]:
            if kind == CODE and names[file].parent == root / SOURCES:
                files[names[file].name].regions[tuple(place)] += count
        for *place, true, false, file, _, _ in function["branches"]:
            if names[file].parent == root / SOURCES:
                files[names[file].name].branches[(*place, "true")] += true
                files[names[file].name].branches[(*place, "false")] += false
    return files


def reasons_of(root):
    """{(file, code of the line): (how often, reason)} of what tests do not reach, or not every time."""
    reasons = {}
    for line in (root / REASONS).read_text().splitlines():
        if line and not line.startswith("#"):
            name, code, often, reason = line.split(" @ ")
            if often not in ("never", "sometimes"):
                raise CoverageError(f"{REASONS}: \"{often}\" is neither \"never\" nor \"sometimes\": {line}")
            reasons[name, code] = often, reason
    return reasons


def findings_of(files, reasons):
    unreached = {(name, file.code(line)): (name, line, what)
                 for name, file in files.items() for line, what in file.unreached()}
    for key, (name, line, what) in unreached.items():
        if key not in reasons:
            yield f"{SOURCES}/{name}:{line}: no test reaches it, it {what}: {key[1]}"
    for (name, code), (often, _) in reasons.items():
        if name not in files or code not in map(str.strip, files[name].text):
            yield f"{REASONS}: {name} has no line \"{code}\""
        elif often == "never" and (name, code) not in unreached:
            yield f"{REASONS}: a test reaches it: {name}: {code}"
    for name, file in files.items():
        if name.endswith(".cpp") and not file.regions:
            yield f"{SOURCES}/{name}: is in none of the programs"


def table(files):
    """Lines and branches by file."""
    rows, total = [], [0, 0, 0, 0]
    for name, file in sorted(files.items()):
        if not file.regions:
            continue
        row = [len(file.lines), sum(count > 0 for count in file.lines.values()),
               len(file.branches), sum(count > 0 for count in file.branches.values())]
        rows.append((name, row))
        total = [a + b for a, b in zip(total, row)]
    head = f"{'':34}{'lines':>7}{'reached':>9}{'branches':>10}{'taken':>7}"
    return [head, *(f"{name:34}{a:>7}{b:>9}{c:>10}{d:>7}" for name, (a, b, c, d) in [*rows, ("in all", total)])]


def main(build, report):
    root = house.root_from([])
    counters = counters_of(build, root)
    files = files_of(counters, root)
    reasons = reasons_of(root)
    print(*table(files), sep="\n")
    for (name, code), (often, reason) in reasons.items():
        print(f"reached {often}: {name}: {code} -- {reason}")
    if report:
        output_of(tool("llvm-cov"), "show", *counters, "-format=html", "-show-branches=count", f"-output-dir={report}")
        print(f"every line: {report}/index.html")
    return house.report("coverage", list(findings_of(files, reasons)), f"or give a reason in {REASONS}")


if __name__ == "__main__":
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("build", type=Path)
    arguments.add_argument("--report", type=Path)
    given = arguments.parse_args()
    try:
        sys.exit(main(given.build.resolve(), given.report))
    except CoverageError as error:
        sys.exit(f"coverage: {error}")
