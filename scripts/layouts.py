#!/usr/bin/env python3
"""Writes doc/messages.md from the records in HwapiCommon/include/messages: names and meanings are those of the headers,
every number is the compiler's. "./dev docs" calls it; scripts/check-layouts finds a page that is not what it writes."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

import house

HEADERS = "HwapiCommon/include/messages"
IDS = f"{HEADERS}/MessageIds.h"
INCLUDES = ["HwapiCommon/include", "Platform/include"]
SERVICE = "ClimateS/src"
PAGE = "doc/messages.md"
ARM = "arm-linux-gnueabihf-g++"

ID = re.compile(r"inline constexpr u32 (\w+_MSG) = (\w+);")
OPENING = re.compile(r"(struct|enum) (\w+)(?: : \w+)? \{(.*)")
FIELD = re.compile(r"(\w+) (\w+)((?:\[\w+\])*);")
ENUMERATOR = re.compile(r"(\w+)(?: = \w+)?,?")
INTRODUCTION = """\
What travels between the climate service and others: by id, then field by field. Offsets and sizes are in bytes, numbers
in the byte order of the sender. Of requests in the other order the service converts those for fan speeds and the
counters of those for storing a file; in all others numbers are taken as they come.

A record that ends with an array `[1]` is followed by more elements of it, as many in all as its count says; the size in
bold is that with one. A payload may end early: what is missing of its record reads as zero.

The numbers are the compiler's and the same on the board's 32-bit processor. `./dev docs` writes this page; `./dev test`
fails while it is not what the records say."""

# What may stand between records and is no part of them.
TABLES = re.compile(r"(static_assert|inline constexpr|constexpr|using|#|TempSensorNameText\{|for |  |return|\}|$)")


class Unreadable(Exception):
    """A header says something that this program does not understand."""


@dataclass
class Member:
    name: str
    type: str = ""
    array: str = ""
    meaning: str = ""


@dataclass
class Declaration:
    kind: str  # "struct" or "enum"
    name: str
    header: str
    meaning: str
    members: list = field(default_factory=list)


def read_member(declaration, text, meaning, place):
    match = (FIELD if declaration.kind == "struct" else ENUMERATOR).fullmatch(text)
    if not match:
        raise Unreadable(f"{place}: \"{text}\" is no member that scripts/layouts.py can read; write one a line")
    parts = match.groups()
    member = Member(parts[1], parts[0], parts[2]) if declaration.kind == "struct" else Member(parts[0])
    member.meaning = meaning
    declaration.members.append(member)


def split_comment(line):
    code, _, comment = line.partition("///<")
    return code.strip(), comment.strip()


def read_header(root, path):
    """The records and enumerations of a header, in its order."""
    declarations, doc, current = [], [], None
    for number, line in enumerate((root / path).read_text().splitlines(), 1):
        place, text = f"{path}:{number}", line.strip()
        code, meaning = split_comment(text)
        if current is None:
            opening = OPENING.fullmatch(code)
            if opening and opening[3].strip() != "":  # all on one line
                names = opening[3].strip().removesuffix("};").split(",")
                current = Declaration(opening[1], opening[2], path, " ".join(doc))
                for name in names:
                    read_member(current, name.strip(), "", place)
                declarations.append(current)
                current, doc = None, []
            elif opening:
                current, doc = Declaration(opening[1], opening[2], path, " ".join(doc)), []
                # How people read a sensor's name is no record of a message.
                if current.name == "TempSensorNameText":
                    current.header = ""
            elif text.startswith("///"):
                doc.append(text.removeprefix("///").strip())
            elif TABLES.match(line):
                doc = []
            else:
                raise Unreadable(f"{place}: \"{text}\" is nothing that scripts/layouts.py knows")
        elif code == "};":
            if current.header:
                declarations.append(current)
            current, doc = None, []
        elif code == "" and meaning and current.members:
            current.members[-1].meaning += " " + meaning
        elif text.startswith("///"):
            doc.append(text.removeprefix("///").strip())
        elif current.header:
            read_member(current, code, " ".join([*doc, meaning]).strip(), place)
            doc = []
    return declarations


def read_ids(root):
    return dict(ID.findall((root / IDS).read_text()))


def message_of(declaration, ids):
    """The id whose payload a record is: the first word of its comment."""
    word = re.match(r"\w*", declaration.meaning)[0]
    return word if declaration.kind == "struct" and word in ids else None


def received(root):
    """The ids that the service waits for: those of its routes and of its filters."""
    source = "".join(path.read_text() for path in sorted((root / SERVICE).glob("*.cpp")))
    return set(re.findall(r"\.id = (\w+_MSG)", source)) | set(re.findall(r"\{1, (\w+_MSG)\}", source))


def questions(declarations, ids):
    """What the compiler is asked: expressions by the words under which the answers are found again."""
    asked = {f"id {name}": name for name in ids}
    for declaration in declarations:
        name = declaration.name
        for member in declaration.members:
            if declaration.kind == "enum":
                asked[f"value {name}.{member.name}"] = member.name
            else:
                asked[f"offset {name}.{member.name}"] = f"offsetof({name}, {member.name})"
                asked[f"size {name}.{member.name}"] = f"sizeof({name}::{member.name})"
        if declaration.kind == "struct":
            asked[f"size {name}"] = f"sizeof({name})"
    return asked


def ask(root, compiler, headers, asked):
    """Answers of a compiler. It need not be one for this machine: the numbers are read from its assembly."""
    lines = [f'#include "messages/{Path(header).name}"' for header in headers]
    lines += ["#include <cstddef>", "void Answers() {"]
    lines += [f'  asm volatile("@answer {number} %c0" :: "i"(static_cast<int>({expression})));'
              for number, expression in enumerate(asked.values())]
    lines.append("}")
    with tempfile.TemporaryDirectory() as folder:
        source = Path(folder) / "answers.cpp"
        source.write_text("\n".join(lines) + "\n")
        result = subprocess.run([*compiler, "-std=c++20", *(f"-I{root / path}" for path in INCLUDES), "-S", "-o", "-",
                                 str(source)], capture_output=True, text=True)
    if result.returncode != 0:
        raise Unreadable(f"{' '.join(compiler)} does not compile the records of {HEADERS}:\n{result.stderr}")
    answers = {int(number): int(value) for number, value in re.findall(r"@answer (\d+) (-?\d+)", result.stdout)}
    return {words: answers[number] for number, words in enumerate(asked)}


def host_compiler():
    named = os.environ.get("CXX", "").split()
    for compiler in (named, ["c++"], ["g++"], ["clang++"]):
        if compiler and shutil.which(compiler[0]):
            return compiler
    raise Unreadable("there is no C++ compiler; name one in CXX")


def cell(text):
    return text.replace("|", "\\|")


def link(name, known):
    """A type's name; one that the page has is linked."""
    return f"[`{name}`](#{name.lower()})" if name in known else f"`{name}`"


def record_lines(declaration, answers, known):
    name = declaration.name
    yield from ["| offset | size | type | field | meaning |", "| ---: | ---: | --- | --- | --- |"]
    end = 0
    for member in declaration.members:
        offset, size = answers[f"offset {name}.{member.name}"], answers[f"size {name}.{member.name}"]
        if offset > end:
            yield f"| {end} | {offset - end} | | | padding |"
        kind = link(member.type, known) + (f" `{member.array}`" if member.array else "")
        yield f"| {offset} | {size} | {kind} | `{member.name}` | {cell(member.meaning)} |"
        end = offset + size
    total = answers[f"size {name}"]
    if total > end:
        yield f"| {end} | {total - end} | | | padding |"
    yield f"| | **{total}** | | | |"


def enumeration_lines(declaration, answers):
    values = [(answers[f"value {declaration.name}.{member.name}"], member) for member in declaration.members]
    yield from ["| value | name | meaning |", "| ---: | --- | --- |"]
    for value, member in values:
        yield f"| {value} | `{member.name}` | {cell(member.meaning)} |"


def sentence(text):
    text = text.strip().lstrip(":;.").strip()
    return text[:1].upper() + text[1:]


def message_lines(ids, records, answers, directions):
    yield from ["| id | name | direction | payload | bytes |", "| ---: | --- | --- | --- | ---: |"]
    for name in sorted(ids, key=lambda name: answers[f"id {name}"]):
        record = records.get(name)
        payload = link(record.name, {record.name}) if record else "not looked at"
        size = answers[f"size {record.name}"] if record else ""
        way = "to the service" if name in directions else "from the service"
        yield f"| 0x{answers[f'id {name}']:04X} | `{name}` | {way} | {payload} | {size} |"


def layouts(root, compiler):
    """The declarations of every header, the ids, and the numbers of both."""
    headers = [str(path.relative_to(root)) for path in sorted((root / HEADERS).glob("*.h"))]
    declarations = [declaration for header in headers for declaration in read_header(root, header)]
    ids = read_ids(root)
    return declarations, ids, ask(root, compiler, headers, questions(declarations, ids))


def page(root, declarations, ids, answers):
    records = {message_of(declaration, ids): declaration for declaration in declarations}
    records.pop(None, None)
    known = {declaration.name for declaration in declarations}
    lines = ["<!-- Written by ./dev docs from HwapiCommon/include/messages; edit the records there. -->", "# Messages", "",
             *INTRODUCTION.splitlines(), ""]
    lines += ["## By id", "", *message_lines(ids, records, answers, received(root)), ""]
    lines += ["## Payloads", ""]
    for name in sorted(records, key=lambda name: answers[f"id {name}"]):
        declaration = records[name]
        meaning = sentence(declaration.meaning.removeprefix(name))
        lines += [f"### {declaration.name}", "", f"`{name}`. {meaning}".rstrip(), ""]
        lines += [*record_lines(declaration, answers, known), ""]
    lines += ["## Parts of payloads", ""]
    for declaration in (one for one in declarations if one.kind == "struct" and one not in records.values()):
        lines += [f"### {declaration.name}", "", *([declaration.meaning, ""] if declaration.meaning else []),
                  *record_lines(declaration, answers, known), ""]
    lines += ["## Values", ""]
    for declaration in (one for one in declarations if one.kind == "enum"):
        lines += [f"### {declaration.name}", "", *([declaration.meaning, ""] if declaration.meaning else []),
                  *enumeration_lines(declaration, answers), ""]
    return "\n".join(lines).rstrip() + "\n"


def main(arguments):
    root = house.root_from(arguments)
    try:
        text = page(root, *layouts(root, host_compiler()))
    except Unreadable as problem:
        sys.exit(str(problem))
    (root / PAGE).write_text(text)
    print(f"{PAGE}: written")


if __name__ == "__main__":
    main(sys.argv)
