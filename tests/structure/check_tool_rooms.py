#!/usr/bin/env python3
"""Checks rules about the workbench's sources: each room includes only the rooms that it may know, the operating system is
met in base/posix and base/windows alone, files are named like their headers and headers like their classes, and opened by
paths.

check_tool_rooms.py ROOT           reports every violation below ROOT/tools/qxbackground and fails when there is one
check_tool_rooms.py --self-test    makes violations of every kind and fails when one is not reported
"""
import pathlib
import re
import sys
import tempfile

from check_sources import INCLUDE, SYSTEM_HEADERS, without_comments, write_tree

TOOL = "tools/qxbackground"
# What each room may include besides itself. What stands beside the rooms, which is main.cpp, may include all of them.
MAY_INCLUDE = {
    "base": set(),
    "images": {"base"},
    "batch": {"base", "images"},
    "stacks": {"base", "images", "batch"},
    "calibration": {"base"},
    "camera": {"base", "images"},
    "pictures": {"base", "images"},
    "commandline": {"base", "calibration"},
    "report": {"base", "images", "calibration"},
    "verbs": {"base", "images", "batch", "stacks", "calibration", "camera", "pictures", "commandline", "report"},
}
# Of the library's sources, the constants of the calibration file; all else goes through its public headers.
FROM_OUTSIDE = re.compile(r"QX_BackgroundCorrection\.hpp|file/CalibrationFormat\.h")
SYSTEM_ROOMS = ("base/posix/", "base/windows/")
# A class, but no declaration of one, and nothing within another class.
TEMPLATE = r"^(?:template <[^;{}]*> )?"
CLASS = re.compile(TEMPLATE + r"class (T\w+)[^;]*$", re.M)
LONGEST = 400
# Windows finds a file of any name by a path, and by a text only what its code page can spell.
OPENED = re.compile(r"\bi?o?fstream (?!&)\w+[({]|\bi?o?fstream\((?!\))|\bstream\.open\(|\bfile\.open\(")
BY_PATH = re.compile(r"std::filesystem::path[({]|fs::path[({]")


def check_includes(path, number, name, tool):
    room = path.split("/")[0] if "/" in path else None
    if FROM_OUTSIDE.fullmatch(name):
        return
    if not (tool / name).is_file():
        yield path, number, f'includes "{name}", which is not here'
    elif name.startswith(SYSTEM_ROOMS) and pathlib.PurePosixPath(path).parent != pathlib.PurePosixPath(name).parent:
        yield path, number, f'includes "{name}", which is for its own system alone'
    elif room is not None and name.split("/")[0] not in MAY_INCLUDE[room] | {room}:
        yield path, number, f'includes "{name}" uphill'


def check_names(path, text, tool):
    source = pathlib.PurePosixPath(path)
    if source.suffix == ".cpp" and source.parts[0] != "verbs" and path != "main.cpp":
        header = source.parts[0] + "/" + source.stem + ".h"
        own = path.startswith(SYSTEM_ROOMS) and (tool / source.with_suffix(".h")).is_file()
        if not own and not (tool / header).is_file():
            yield path, 0, f'has no header of its name ("{header}")'
    if source.suffix == ".h":
        classes = CLASS.findall(text)
        if classes and source.stem not in classes:
            yield path, 0, f"is not named like its class {classes[0]}"
        if source.stem[0] == "T" and source.stem[1].isupper() and not re.search(
                TEMPLATE + rf"(class|struct) {source.stem}\b[^;]*$", text, re.M):
            yield path, 0, "is named like a class that it does not hold"


def check(root):
    tool = root / TOOL
    sources = sorted(p for p in tool.rglob("*") if p.suffix in (".h", ".cpp"))
    if not sources:
        yield TOOL, 0, "no sources found"
    for source in sources:
        path = source.relative_to(tool).as_posix()
        if path != "main.cpp" and path.split("/")[0] not in MAY_INCLUDE:
            yield path, 0, "lies in no room"
            continue
        text = without_comments(source.read_text(encoding="utf-8"))
        if text.count("\n") > LONGEST:
            yield path, 0, f"has more than {LONGEST} lines"
        yield from check_names(path, text, tool)
        for number, line in enumerate(text.splitlines(), 1):
            opened = OPENED.search(line)
            if opened and not BY_PATH.match(line, opened.end()):
                yield path, number, "opens a file by a text instead of by a path"
            include = INCLUDE.match(line)
            if include and include.group(1):
                yield from check_includes(path, number, include.group(1), tool)
            elif include and SYSTEM_HEADERS.fullmatch(include.group(2)) and not path.startswith(SYSTEM_ROOMS):
                yield path, number, f"includes <{include.group(2)}> outside of {' and '.join(SYSTEM_ROOMS)}"


GOOD_TREE = {
    "main.cpp": '#include "base/Text.h"\n#include "verbs/Verbs.h"\n',
    "base/Text.h": "#include <string>\nclass TOther;\nstruct TPart {\n};\n",
    "base/Text.cpp": '#include "base/Text.h"\n// #include <unistd.h> would be wrong\n'
                     'std::ofstream file(std::filesystem::path(name));\nfile = std::ofstream();\nvoid Put(std::ofstream& file);\n',
    "base/TQueue.h": "template <class T> class TQueue {\n};\n",
    "base/TLock.h": "class TLock {\n    class TInner {\n    };\n};\n",
    "base/posix/TLock.cpp": '#include "base/TLock.h"\n#include <unistd.h>\n',
    "base/windows/TLock.cpp": '#include "base/TLock.h"\n#include "base/windows/Handle.h"\n#include <windows.h>\n',
    "base/windows/Handle.h": "#include <windows.h>\n",
    "base/windows/Handle.cpp": '#include "base/windows/Handle.h"\n',
    "images/TImage.h": '#include "base/Text.h"\nstruct TImage {\n};\n',
    "batch/TPage.h": '#include "images/TImage.h"\nstruct TPage {\n};\n',
    "stacks/TStack.h": '#include "batch/TPage.h"\nstruct TStack {\n};\n',
    "calibration/Files.h": '#include "base/Text.h"\n',
    "calibration/Files.cpp": '#include "calibration/Files.h"\n#include "file/CalibrationFormat.h"\n',
    "camera/TCamera.h": '#include "images/TImage.h"\nclass TCamera {\n};\n',
    "commandline/TVerb.h": '#include "calibration/Files.h"\nclass TVerb : public CLI::App {\n};\n',
    "verbs/Verbs.h": '#include "commandline/TVerb.h"\n#include "QX_BackgroundCorrection.hpp"\n',
    "verbs/Show.cpp": '#include "camera/TCamera.h"\n#include "verbs/Verbs.h"\n',
}
VIOLATIONS = [
    ("base/Bad.h", '#include "images/TImage.h"\n', "uphill"),
    ("base/Bad.h", '#include "calibration/Files.h"\n', "uphill"),
    ("images/Bad.h", '#include "calibration/Files.h"\n', "uphill"),
    ("calibration/Bad.h", '#include "images/TImage.h"\n', "uphill"),
    ("batch/Bad.h", '#include "calibration/Files.h"\n', "uphill"),
    ("images/Bad.h", '#include "batch/TPage.h"\n', "uphill"),
    ("stacks/Bad.h", '#include "calibration/Files.h"\n', "uphill"),
    ("batch/Bad.h", '#include "stacks/TStack.h"\n', "uphill"),
    ("camera/Bad.h", '#include "commandline/TVerb.h"\n', "uphill"),
    ("pictures/Bad.h", '#include "batch/TPage.h"\n', "uphill"),
    ("commandline/Bad.h", '  #  include "verbs/Verbs.h"\n', "uphill"),
    ("verbs/Bad.cpp", '#include "Verbs.h"\n', "not here"),
    ("verbs/Bad.cpp", '#include "kernels/Kernels.h"\n', "not here"),
    ("cellar/Bad.h", "", "no room"),
    ("Bad.cpp", "", "no room"),
    ("base/Bad.h", "#include <unistd.h>\n", "outside of"),
    ("base/Bad.h", "#include <windows.h>\n", "outside of"),
    ("base/Bad.h", '#include "base/windows/Handle.h"\n', "its own system"),
    ("base/posix/TLock.cpp", '#include "base/windows/Handle.h"\n', "its own system"),
    ("base/windows/Bad.cpp", "", "no header of its name"),
    ("verbs/Bad.cpp", "#include <sys/stat.h>\n", "outside of"),
    ("images/Bad.cpp", "", "no header of its name"),
    ("base/posix/Bad.cpp", "", "no header of its name"),
    ("images/Bad.h", "class TGood {\n};\n", "not named like its class"),
    ("images/Bad.h", "class TGood final : public TImage {\n};\n", "not named like its class"),
    ("images/Bad.h", "template <class T> class TGood {\n};\n", "not named like its class"),
    ("images/TBad.h", "class TBad;\n", "does not hold"),
    ("images/Bad.h", "\n" * (LONGEST + 1), "lines"),
    ("images/Bad.h", "std::ifstream from(options.file, std::ios::binary);\n", "by a text"),
    ("images/Bad.h", "    source = std::fstream(name);\n", "by a text"),
    ("images/Bad.h", "    std::ifstream file{name};\n", "by a text"),
    ("images/Bad.h", "    stream.open(file->Path(), std::ios::binary);\n", "by a text"),
]


def self_test():
    wrong = 0
    cases = [({}, None)] + [({name: text}, kind) for name, text, kind in VIOLATIONS]
    for extra, kind in cases:
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            write_tree(root / TOOL, {**GOOD_TREE, **extra})
            reports = [report for _, _, report in check(root)]
        if (kind is None and reports) or (kind is not None and (len(reports) != 1 or kind not in reports[0])):
            print(f"expected {kind!r} for {extra}, got {reports}")
            wrong += 1
    with tempfile.TemporaryDirectory() as folder:
        if not list(check(pathlib.Path(folder))):
            print("finds nothing wrong with no sources at all")
            wrong += 1
    print(f"{len(cases) + 1} cases, {wrong} wrong")
    return wrong


def main(arguments):
    if arguments == ["--self-test"]:
        return 1 if self_test() else 0
    if len(arguments) != 1:
        print(__doc__)
        return 2
    violations = list(check(pathlib.Path(arguments[0])))
    for path, number, report in violations:
        print(f"{TOOL}/{path}:{number}: {report}")
    print(f"{len(violations)} violations")
    return 1 if violations else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
