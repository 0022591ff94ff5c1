#!/usr/bin/env python3
"""defence.py [--optimized] [--commands=FILE] FILE...: says which defences programs and libraries were built without, one
a line, and ends with 1 when there are any. Reads ELF files of every processor with readelf, and the compiler's commands
(compile_commands.json): some defences leave too little in a program to tell which of its sources was built without."""

import json
import re
import shlex
import subprocess
import sys
from pathlib import Path

# What a function begins with that an indirect jump may reach, by processor.
LANDING_MARKS = {"Advanced Micro Devices X86-64": bytes.fromhex("f30f1efa"), "AArch64": bytes.fromhex("3f2303d5")}
# The C library's own in a program that is built without them.
MARKS_OF_START_FILES = 2
# What the linker notes of a program when each of its objects has marks and lets return addresses be compared.
NOTE_OF_MARKS = {"Advanced Micro Devices X86-64": {"IBT", "SHSTK"}, "AArch64": {"BTI"}}
# What each source is compiled with for that.
MARKING = {"Advanced Micro Devices X86-64": "-fcf-protection=full", "AArch64": "-mbranch-protection=standard"}
# The level that also checks sizes that are known at run time only; the functions called are those of the level below.
FORTIFY_LEVEL = "3"


def readelf(option, file):
    return subprocess.run(["readelf", "--wide", option, file], check=True, capture_output=True, text=True).stdout


class Elf:
    def __init__(self, file):
        self.file = file
        header = readelf("--file-header", file)
        self.machine = re.search(r"Machine: +(.+)", header).group(1)
        self.type = re.search(r"Type: +(\w+)", header).group(1)
        self.segments = readelf("--program-headers", file)
        self.dynamic = readelf("--dynamic", file)
        self.symbols = set(re.findall(r" UND (\w+)", readelf("--dyn-syms", file)))

    def flags(self, name):
        found = re.search(rf"\({name}\) +(?:Flags: )?(.*)", self.dynamic)
        return found.group(1).split() if found else []

    def code(self, section=".text"):
        found = re.search(rf" {re.escape(section)} +PROGBITS +\w+ (\w+) (\w+)", readelf("--section-headers", self.file))
        offset, size = (int(number, 16) for number in found.groups()) if found else (0, 0)
        return Path(self.file).read_bytes()[offset:offset + size]

    def notes(self):
        return set(re.findall(r"\w+", " ".join(re.findall(r" feature: (.*)", readelf("--notes", self.file)))))


def is_position_independent(elf):
    return elf.type == "DYN" and ("PIE" in elf.flags("FLAGS_1") or "(SONAME)" in elf.dynamic)


def has_fixed_tables(elf):
    return "GNU_RELRO" in elf.segments and ("BIND_NOW" in elf.flags("FLAGS") or "NOW" in elf.flags("FLAGS_1"))


def has_plain_stack(elf):
    return re.search(r"GNU_STACK .* RW ", elf.segments) is not None


def searches_named_folders(elf):
    paths = re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]", elf.dynamic)
    return all(folder.startswith(("/", "$ORIGIN")) for path in paths for folder in path.split(":"))


def guards_stack(elf):
    return "__stack_chk_fail" in elf.symbols


def checks_sizes(elf):
    return any(re.fullmatch(r"__\w+_chk", symbol) for symbol in elf.symbols)


def checks_containers(elf):
    return any("__glibcxx_assert_fail" in symbol for symbol in elf.symbols)


def marks_landings(elf):
    mark = LANDING_MARKS.get(elf.machine)
    if mark is None:
        return True
    # The linker notes nothing of a program with an object that has no marks, be it a start file of the C library: .init
    # begins with one of those.
    has_note = NOTE_OF_MARKS[elf.machine] <= elf.notes() or not elf.code(".init").startswith(mark)
    return has_note and elf.code().count(mark) > MARKS_OF_START_FILES


DEFENCES = {
    "a position-independent program or library (-pie)": is_position_independent,
    "tables that are bound at the start and read-only then (-z relro -z now)": has_fixed_tables,
    "a stack without code (-z noexecstack)": has_plain_stack,
    "a search path of named folders (RUNPATH)": searches_named_folders,
    "guarded stack frames (-fstack-protector-strong)": guards_stack,
    "checked containers (_GLIBCXX_ASSERTIONS)": checks_containers,
    "marked landings of indirect jumps (-fcf-protection, -mbranch-protection)": marks_landings,
}
DEFENCES_OF_OPTIMIZED = {"checked sizes of buffers (_FORTIFY_SOURCE)": checks_sizes}


def missing(file, optimized):
    """The defences that a program or library was built without."""
    elf = Elf(file)
    wanted = DEFENCES | (DEFENCES_OF_OPTIMIZED if optimized else {})
    return [name for name, is_there in wanted.items() if not is_there(elf)]


def level_of(command):
    """The level of _FORTIFY_SOURCE that a compiler was given; None for none."""
    given = re.compile(r"-(?:U|D)_FORTIFY_SOURCE(?:=(\w+))?")
    return next((word.group(1) for word in map(given.fullmatch, reversed(command)) if word), None)


def unmarked(command, machine):
    kind = MARKING.get(machine, "").partition("=")[0]
    return bool(kind) and [word for word in command if word.startswith(kind + "=")][-1:] != [MARKING[machine]]


def missing_of_commands(commands, machine, optimized):
    """The defences that sources were compiled without, each with its source."""
    findings = []
    for entry in commands:
        command = entry.get("arguments") or shlex.split(entry["command"])
        if optimized and level_of(command) != FORTIFY_LEVEL:
            findings.append(f"{entry['file']}: without -D_FORTIFY_SOURCE={FORTIFY_LEVEL}")
        if unmarked(command, machine):
            findings.append(f"{entry['file']}: without {MARKING[machine]}")
    return findings


def main(arguments):
    optimized = "--optimized" in arguments
    files = [argument for argument in arguments if not argument.startswith("--")]
    findings = [f"{file}: without {name}" for file in files for name in missing(file, optimized)]
    for argument in arguments if files else []:
        if argument.startswith("--commands="):
            commands = json.loads(Path(argument.partition("=")[2]).read_text())
            findings += missing_of_commands(commands, Elf(files[0]).machine, optimized)
    print("\n".join(findings or [f"{len(files)} programs and libraries are built for defence"]))
    return 1 if findings or not files else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
