#!/usr/bin/env python3
"""Checks rules about the library's sources: includes run downhill only, the flat interface uses little of the library, the
operating system is met in src/platform alone, the public headers of the interfaces include nothing.

check_sources.py ROOT           reports every violation below ROOT and fails when there is one
check_sources.py --self-test    makes violations of every kind and fails when one is not reported
"""
import pathlib
import re
import sys
import tempfile

# Who may include whom: a room its own floor and those below.
FLOORS = {"platform": 0, "boundary": 1, "kernels": 2, "data": 3, "file": 4, "processor": 5, "offline": 6,
          "flat": 8}
EXPORTS_FLOOR = 7
PUBLIC_HEADER = "QX_BackgroundCorrection.h"
FLAT_HEADER = "QX_BackgroundCorrection_C.h"
# A library of its own, which shares nothing with the main one but this.
FLAT_MAY_USE = re.compile(r"flat/.*|platform/.*|boundary/ExportDecoration\.h")

SYSTEM_HEADERS = re.compile(
    r"(windows|winnt|winbase|winnls|unistd|pthread|dirent|fcntl|io|direct|process|dlfcn|langinfo|xlocale)\.h|sys/.*")
SYSTEM_MACROS = re.compile(
    r"\b(_WIN32|_WIN64|WIN32|__MINGW32__|__MINGW64__|__CYGWIN__|__linux__|__unix__|__APPLE__|_POSIX_\w+)\b")
MAY_NAME_SYSTEMS = {"boundary/ExportDecoration.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)")


def without_comments(text):
    text = re.sub(r"/\*.*?\*/", lambda match: "\n" * match.group().count("\n"), text, flags=re.S)
    return re.sub(r"//.*", "", text)


def floor_of(path):
    """The floor of a path below src/, or None when it lies in no room."""
    if path == "boundary/Exports.cpp":
        return EXPORTS_FLOOR
    return FLOORS.get(path.split("/")[0]) if "/" in path else None


def included_path(source, name, src):
    """The path below src/ that an include in quotes means, or None."""
    for candidate in (source.parent / name, src / name):
        if candidate.is_file():
            return candidate.resolve().relative_to(src.resolve()).as_posix()
    return None


def check_source(source, src):
    path = source.relative_to(src).as_posix()
    floor = floor_of(path)
    if floor is None:
        yield path, 0, "lies in no room of the house"
        return
    for number, line in enumerate(without_comments(source.read_text(encoding="utf-8")).splitlines(), 1):
        include = INCLUDE.match(line)
        if include and include.group(1) == FLAT_HEADER:
            if floor != FLOORS["flat"]:
                yield path, number, "includes the flat header uphill"
        elif include and include.group(1) and include.group(1) != PUBLIC_HEADER:
            target = included_path(source, include.group(1), src)
            if target is None:
                yield path, number, f'includes "{include.group(1)}", which is not here'
            elif floor_of(target) is None or floor_of(target) > floor:
                yield path, number, f'includes "{target}" uphill'
            elif floor == FLOORS["flat"] and not FLAT_MAY_USE.fullmatch(target):
                yield path, number, f'includes "{target}", which belongs to the main library'
        if floor == FLOORS["platform"]:
            if include and include.group(1) == PUBLIC_HEADER:
                yield path, number, "includes the public header uphill"
            continue
        if include and include.group(2) and SYSTEM_HEADERS.fullmatch(include.group(2).lower()):
            yield path, number, f"includes <{include.group(2)}> outside of platform"
        condition = CONDITION.match(line)
        if condition and SYSTEM_MACROS.search(condition.group(1)) and path not in MAY_NAME_SYSTEMS:
            yield path, number, "tells systems apart outside of platform"


def check(root):
    src = root / "src"
    sources = sorted(p for p in src.rglob("*") if p.suffix in (".h", ".hpp", ".cpp", ".inc"))
    if not sources:
        yield "src", 0, "no sources found"
    for source in sources:
        yield from check_source(source, src)
    for header in (root / "include" / PUBLIC_HEADER, root / "include" / FLAT_HEADER):
        for number, line in enumerate(without_comments(header.read_text(encoding="utf-8")).splitlines(), 1):
            if INCLUDE.match(line):
                yield header.name, number, "the public header includes something"


GOOD_TREE = {
    "include/QX_BackgroundCorrection.h": "// #include <vector>\n",
    "include/QX_BackgroundCorrection_C.h": "/* #include <stdlib.h> */\n",
    "src/flat/Flat.cpp": '#include "QX_BackgroundCorrection_C.h"\n#include "QX_BackgroundCorrection.h"\n'
                         '#include "boundary/ExportDecoration.h"\n#include "platform/Text.h"\n',
    "src/platform/Text.h": "#include <cstddef>\n",
    "src/platform/posix/Text.cpp": '#include "platform/Text.h"\n#include <unistd.h>\n#ifdef _WIN32\n#endif\n',
    "src/boundary/Basics.h": '#include "QX_BackgroundCorrection.h"\n#include "platform/Text.h"\n',
    "src/boundary/ExportDecoration.h": "#ifdef _WIN32\n#endif\n",
    "src/boundary/Exports.cpp": '#include "offline/Manager.h"\n',
    "src/kernels/Kernels.h": "// #include <windows.h> would be wrong\n/* #ifdef _WIN32 */\n",
    "src/data/Entry.h": '#include "kernels/Kernels.h"\n',
    "src/offline/Manager.h": '#include "Other.h"\n#include "data/Entry.h"\n',
    "src/offline/Other.h": "",
}
VIOLATIONS = [
    ("src/platform/Bad.h", '#include "boundary/Basics.h"\n', "uphill"),
    ("src/platform/Bad.h", '#include "QX_BackgroundCorrection.h"\n', "uphill"),
    ("src/kernels/Bad.h", '#include "data/Entry.h"\n', "uphill"),
    ("src/data/Bad.cpp", '  #  include "offline/Other.h"\n', "uphill"),
    ("src/boundary/Bad.cpp", '#include "offline/Manager.h"\n', "uphill"),
    ("src/offline/Bad.cpp", '#include "boundary/Exports.cpp"\n', "uphill"),
    ("src/data/Bad.h", '#include "nowhere/None.h"\n', "not here"),
    ("src/cellar/Bad.h", "", "no room"),
    ("src/data/Bad.h", "#include <windows.h>\n", "outside of platform"),
    ("src/data/Bad.h", "#include <Windows.h>\n", "outside of platform"),
    ("src/processor/Bad.cpp", "#include <unistd.h>\n", "outside of platform"),
    ("src/offline/Bad.cpp", "#include <sys/stat.h>\n", "outside of platform"),
    ("src/boundary/Bad.h", "#ifdef _WIN32\n", "tells systems apart"),
    ("src/file/Bad.h", "#if !defined(__linux__) && 1\n", "tells systems apart"),
    ("src/flat/Bad.h", '#include "boundary/Basics.h"\n', "belongs to the main library"),
    ("src/flat/Bad.cpp", '#include "data/Entry.h"\n', "belongs to the main library"),
    ("src/flat/Bad.cpp", "#include <dlfcn.h>\n", "outside of platform"),
    ("src/boundary/Exports.cpp", '#include "flat/Flat.cpp"\n', "uphill"),
    ("src/boundary/Bad.h", '#include "QX_BackgroundCorrection_C.h"\n', "uphill"),
    ("include/QX_BackgroundCorrection.h", "#include <vector>\n", "includes something"),
    ("include/QX_BackgroundCorrection_C.h", "#include <stddef.h>\n", "includes something"),
]


def write_tree(root, files):
    for name, text in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


def self_test():
    wrong = 0
    cases = [({}, None)] + [({name: text}, kind) for name, text, kind in VIOLATIONS]
    for extra, kind in cases:
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            write_tree(root, {**GOOD_TREE, **extra})
            reports = [report for _, _, report in check(root)]
        if (kind is None and reports) or (kind is not None and (len(reports) != 1 or kind not in reports[0])):
            print(f"expected {kind!r} for {extra}, got {reports}")
            wrong += 1
    print(f"{len(cases)} cases, {wrong} wrong")
    return wrong


def main(arguments):
    if arguments == ["--self-test"]:
        return 1 if self_test() else 0
    if len(arguments) != 1:
        print(__doc__)
        return 2
    violations = list(check(pathlib.Path(arguments[0])))
    for path, number, report in violations:
        print(f"{path}:{number}: {report}")
    print(f"{len(violations)} violations")
    return 1 if violations else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
