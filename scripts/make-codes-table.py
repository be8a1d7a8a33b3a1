#!/usr/bin/env python3
"""Writes docs/codes.md: every result code and every text of the library, with cause and cure.

scripts/make-codes-table.py           writes the page
scripts/make-codes-table.py --check   fails when the page is not what would be written

Codes and texts, and which code an operation returns with which text, are read from the sources. What sources do not say
stands in scripts/codes.toml: causes, cures, and where a text goes that no operation returns with a code of its own. An
entry that is missing there, or has nothing left to describe, is an error.
"""
import re
import sys
import tomllib
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs/codes.md"
FAILED = re.compile(r"Fail\((k\w+),\s*Messages::(k\w+)")
FORMATTED = re.compile(r"messages\.main\.Format\(Messages::(k\w+)[^;]*;(?:(?!\breturn\b)[^}])*return (k\w+);")
OPERATION = re.compile(r"^\S.*\b(TBackgroundCorrection(?:ProcessorUINT16|FileManager))::(\w+)\(", re.M)

INTRODUCTION = """# Codes and texts

<!-- written by scripts/make-codes-table.py out of the sources and scripts/codes.toml; do not edit -->

Every result code and every text of the library. A code says which of an operation's checks failed; the checks are made
in the order in which the operation's description lists them (`QX_BackgroundCorrection.h`), and the first that fails
decides. One code has several meanings, so read the text as well: `GetLastErrorMessage` returns it. Read it only after a
failure, since a success does not clear an older one.

In the table, `%s` and `%d` stand for the key, path or number in question. *Store* marks operations of the offline store.
A text of a store's own is cleared before `GetLastErrorMessage` returns it, so that those rows arrive as an **empty text**;
what its loaded group's processor says does arrive.

A row in bold begins each code; the rows below it are the texts that come with it.
"""

END = """
## Texts inside other texts

These never come alone. They stand in the place of `%s` in a text above, or are what an exception says.

| text | where | cause | cure |
|---|---|---|---|
"""

FLAT = """
## Codes of the flat interface

What `QX_BACKGROUNDCORRECTION_C` returns beyond those: the main library never does, and no text is left in the object;
`QXBC_DescribeCode` gives the one in this table. The codes above have the names `QXBC_...` there
(`kFirstArgumentInvalid` is `QXBC_FIRST_ARGUMENT_INVALID`).

| code | name | text | cause | cure |
|---|---|---|---|---|
"""


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def public_codes():
    """Name to number and meaning, in the header's order."""
    header = read("include/QX_BackgroundCorrection.h")
    group = header[header.index(r"\name Result codes"):]
    group = group[:group.index("/// @}")]
    codes, comment = {}, []
    for line in group.splitlines():
        if line.startswith("///"):
            comment.append(line[3:].strip())
        elif found := re.match(r"const unsigned int (k\w+) = (\d+)u?;", line):
            codes[found[1]] = (int(found[2]), " ".join(comment))
            comment = []
        if line.startswith("/// @{"):
            comment = []
    return codes


def texts():
    source = read("src/boundary/Messages.h")
    found = re.findall(r"constexpr char (k\w+)\[\] =\s*((?:\"(?:[^\"\\]|\\.)*\"\s*)+);", source)
    if len(found) != source.count("constexpr char"):
        sys.exit("src/boundary/Messages.h has a text that this script does not understand")
    return {name: "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', literal)) for name, literal in found}


def flat_codes():
    header, source = read("include/QX_BackgroundCorrection_C.h"), read("src/flat/FlatInterface.cpp")
    own = header[header.index("Result codes of the flat interface itself"):]
    own = own[:own.index("/** @} */")]
    described = dict(re.findall(r'case (QXBC_\w+):\s*return "([^"]*)";', source))
    codes = dict(re.findall(r"#define (QXBC_\w+) (\d+)u", own))
    if codes.keys() != described.keys():
        sys.exit("the flat header's codes are not those that QXBC_DescribeCode describes")
    return {name: (number, described[name]) for name, number in codes.items()}


def uses():
    """For each pair of code and text the operations of the interface that return it, in the interface's order."""
    header = read("include/QX_BackgroundCorrection.h")
    interface = re.findall(r"virtual [\w ]+[ *&](\w+)\(", header[header.index("class QX_IBackgroundCorrection"):])
    found = {}
    for source in sorted((ROOT / "src").rglob("*.cpp")):
        text = source.read_text(encoding="utf-8")
        definitions = [(match.start(), match[1], match[2]) for match in OPERATION.finditer(text)]
        pairs = [(m.start(), m[1], m[2]) for m in FAILED.finditer(text)]
        pairs += [(m.start(), m[2], m[1]) for m in FORMATTED.finditer(text)]
        for at, code, message in pairs:
            operations = found.setdefault((code, message), set())
            before = [definition for definition in definitions if definition[0] < at]
            if before and before[-1][2] in interface:
                operations.add((interface.index(before[-1][2]), before[-1][2], before[-1][1].endswith("FileManager")))
    return {pair: sorted(operations) for pair, operations in found.items()}


def spelled(text):
    return "<br>".join(f"`{line}`" for line in text.replace("\\n", "\n").split("\n"))


def places(operations, note):
    """Live processor first, then store."""
    live = ", ".join(f"`{name}`" for _, name, store in operations if not store)
    store = ", ".join(f"`{name}`" for _, name, store in operations if store)
    parts = [part for part in (live, f"*store:* {store}" if store else "", note) if part]
    return "; ".join(parts)


def page():
    codes, messages, flat, used = public_codes(), texts(), flat_codes(), uses()
    with open(ROOT / "scripts/codes.toml", "rb") as file:
        notes = tomllib.load(file)
    for kind, names in (("code", codes), ("text", messages), ("flat", flat)):
        wrong = sorted(names.keys() ^ notes[kind].keys())
        if wrong:
            sys.exit(f"scripts/codes.toml: [{kind}.{wrong[0]}] is missing, or is of nothing that the sources have")
        for name, note in notes[kind].items():
            lacking = {"cause", "cure"} - note.keys() if kind != "code" else {"cure"} - note.keys()
            if lacking or note.keys() - {"cause", "cure", "where", "codes"}:
                sys.exit(f"scripts/codes.toml: [{kind}.{name}] lacks {lacking or 'nothing'}, or has what it should not")

    rows = {code: [] for code in codes}
    inside = []
    for name, text in messages.items():
        note = notes["text"][name]
        with_codes = sorted({code for code, message in used if message == name} | set(note.get("codes", ())),
                            key=list(codes).index)
        for code in with_codes:
            where = places(used.get((code, name), ()), note.get("where", ""))
            if not where:
                sys.exit(f"scripts/codes.toml: [text.{name}] has to say where it comes with {code}")
            rows[code].append(f"| {spelled(text)} | {where} | {note['cause']} | {note['cure']} |")
        if not with_codes:
            if "where" not in note:
                sys.exit(f"scripts/codes.toml: [text.{name}] has to say where it goes")
            inside.append(f"| {spelled(text)} | {note['where']} | {note['cause']} | {note['cure']} |")

    lines = [INTRODUCTION, "| code or text | operations | cause | cure |", "|---|---|---|---|"]
    for code, (number, meaning) in codes.items():
        lines.append(f"| **{number}** `{code}` | | {notes['code'][code].get('cause', meaning)} "
                     f"| {notes['code'][code]['cure']} |")
        lines += rows[code]
    lines.append(END.rstrip("\n"))
    lines += inside
    lines.append(FLAT.rstrip("\n"))
    for name, (number, text) in flat.items():
        lines.append(f"| **{number}** | `{name}` | {spelled(text)} | {notes['flat'][name]['cause']} "
                     f"| {notes['flat'][name]['cure']} |")
    return "\n".join(lines) + "\n"


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(__doc__)
    text = page()
    if not sys.argv[1:]:
        PAGE.write_text(text, encoding="utf-8")
    elif not PAGE.exists() or PAGE.read_text(encoding="utf-8") != text:
        sys.exit(f"{PAGE} is not what the sources and scripts/codes.toml give: run scripts/make-codes-table.py")


if __name__ == "__main__":
    main()
