#!/usr/bin/env python3
"""Checks rules about the library's sources: includes run downhill only, the flat interface uses little of the library, the
operating system is met in src/platform alone, a source is named like its header and a header like its class, the public
headers of the interfaces include nothing.

check_sources.py ROOT           reports every violation below ROOT and fails when there is one
check_sources.py --self-test    makes violations of every kind and fails when one is not reported
"""
import pathlib
import re
import sys
import tempfile

# Who may include whom: a folder its own layer and those below.
LAYERS = {"platform": 0, "boundary": 1, "kernels": 2, "data": 3, "file": 4, "processor": 5, "offline": 6,
          "flat": 8}
EXPORTS_LAYER = 7
PUBLIC_HEADER = "QX_BackgroundCorrection.h"
FLAT_HEADER = "QX_BackgroundCorrection_C.h"
# A library of its own, which shares nothing with the main one but this.
FLAT_MAY_USE = re.compile(r"flat/.*|platform/.*|boundary/ExportDecoration\.h")

SYSTEM_HEADERS = re.compile(
    r"(windows|winnt|winbase|winnls|unistd|pthread|dirent|fcntl|io|direct|process|dlfcn|langinfo|xlocale)\.h|sys/.*")
SYSTEM_MACROS = re.compile(
    r"\b(_WIN32|_WIN64|WIN32|__MINGW32__|__MINGW64__|__CYGWIN__|__linux__|__unix__|__APPLE__|_POSIX_\w+)\b")
MAY_NAME_SYSTEMS = {"boundary/ExportDecoration.h"}

# Sources that stand for no header of src/.
HEADERLESS = {"boundary/Exports.cpp", "flat/FlatInterface.cpp"}
# Their headers are named after what the system or the loops do, not after a class.
NAMED_AFTER_SUBJECTS = {"platform", "kernels"}

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')
DECLARED = re.compile(r"^(?:template\s*<.*>\s*)?(?:class|struct|enum class|namespace)\s+(\w+)\b(?!\s*;)")
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)")


def without_comments(text):
    text = re.sub(r"/\*.*?\*/", lambda match: "\n" * match.group().count("\n"), text, flags=re.S)
    return re.sub(r"//.*", "", text)


def layer_of(path):
    """The layer of a path below src/, or None when it lies in none."""
    if path == "boundary/Exports.cpp":
        return EXPORTS_LAYER
    return LAYERS.get(path.split("/")[0]) if "/" in path else None


def included_path(source, name, src):
    """The path below src/ that an include in quotes means, or None."""
    for candidate in (source.parent / name, src / name):
        if candidate.is_file():
            return candidate.resolve().relative_to(src.resolve()).as_posix()
    return None


def check_source(source, src):
    path = source.relative_to(src).as_posix()
    layer = layer_of(path)
    if layer is None:
        yield path, 0, "lies in no layer"
        return
    for number, line in enumerate(without_comments(source.read_text(encoding="utf-8")).splitlines(), 1):
        include = INCLUDE.match(line)
        if include and include.group(1) == FLAT_HEADER:
            if layer != LAYERS["flat"]:
                yield path, number, "includes the flat header uphill"
        elif include and include.group(1) and include.group(1) != PUBLIC_HEADER:
            target = included_path(source, include.group(1), src)
            if target is None:
                yield path, number, f'includes "{include.group(1)}", which is not here'
            elif layer_of(target) is None or layer_of(target) > layer:
                yield path, number, f'includes "{target}" uphill'
            elif layer == LAYERS["flat"] and not FLAT_MAY_USE.fullmatch(target):
                yield path, number, f'includes "{target}", which belongs to the main library'
        if layer == LAYERS["platform"]:
            if include and include.group(1) == PUBLIC_HEADER:
                yield path, number, "includes the public header uphill"
            continue
        if include and include.group(2) and SYSTEM_HEADERS.fullmatch(include.group(2).lower()):
            yield path, number, f"includes <{include.group(2)}> outside of platform"
        condition = CONDITION.match(line)
        if condition and SYSTEM_MACROS.search(condition.group(1)) and path not in MAY_NAME_SYSTEMS:
            yield path, number, "tells systems apart outside of platform"


def is_named_like(source, header):
    """Whether a source may stand for a header: its name, or its name and what this part of it holds."""
    return re.fullmatch(re.escape(header.stem) + r"([A-Z]\w*)?", source.stem) is not None


def check_source_name(source, src):
    path = source.relative_to(src).as_posix()
    folders = [source.parent]
    if source.parent.parent == src / "platform":
        folders.append(source.parent.parent)  # windows/ and posix/ say how what those headers name is done
    headers = [header for folder in folders for header in folder.glob("*.h") if is_named_like(source, header)]
    if not headers:
        yield path, 0, "is named like no header"
        return
    included = set()
    for line in source.read_text(encoding="utf-8").splitlines():
        include = INCLUDE.match(line)
        if include and include.group(1):
            included.add(included_path(source, include.group(1), src))
    if path.split("/")[0] != "kernels" and not any(h.relative_to(src).as_posix() in included for h in headers):
        yield path, 0, "does not include the header that it is named like"


def check_header_name(header, src):
    lines = without_comments(header.read_text(encoding="utf-8")).splitlines()
    names = {match.group(1) for match in map(DECLARED.match, lines) if match}
    if any(re.match("T[A-Z]", name) for name in names) and header.stem not in names:
        yield header.relative_to(src).as_posix(), 0, "is named like nothing that it declares: " + " ".join(sorted(names))


def check_names(source, src):
    path = source.relative_to(src).as_posix()
    if layer_of(path) is None:
        return
    if source.suffix == ".cpp" and path not in HEADERLESS:
        yield from check_source_name(source, src)
    if source.suffix == ".h" and path.split("/")[0] not in NAMED_AFTER_SUBJECTS:
        yield from check_header_name(source, src)


def check(root):
    src = root / "src"
    sources = sorted(p for p in src.rglob("*") if p.suffix in (".h", ".hpp", ".cpp", ".inc"))
    if not sources:
        yield "src", 0, "no sources found"
    for source in sources:
        yield from check_source(source, src)
        yield from check_names(source, src)
    for header in (root / "include" / PUBLIC_HEADER, root / "include" / FLAT_HEADER):
        for number, line in enumerate(without_comments(header.read_text(encoding="utf-8")).splitlines(), 1):
            if INCLUDE.match(line):
                yield header.name, number, "the public header includes something"


GOOD_TREE = {
    "include/QX_BackgroundCorrection.h": "// #include <vector>\n",
    "include/QX_BackgroundCorrection_C.h": "/* #include <stdlib.h> */\n",
    "src/flat/FlatInterface.cpp": '#include "QX_BackgroundCorrection_C.h"\n#include "QX_BackgroundCorrection.h"\n'
                         '#include "boundary/ExportDecoration.h"\n#include "platform/Text.h"\n',
    "src/platform/Text.h": "#include <cstddef>\n",
    "src/platform/posix/Text.cpp": '#include "platform/Text.h"\n#include <unistd.h>\n#ifdef _WIN32\n#endif\n',
    "src/boundary/Basics.h": '#include "QX_BackgroundCorrection.h"\n#include "platform/Text.h"\n',
    "src/boundary/ExportDecoration.h": "#ifdef _WIN32\n#endif\n",
    "src/boundary/Exports.cpp": '#include "offline/Manager.h"\n',
    "src/kernels/Kernels.h": "// #include <windows.h> would be wrong\n/* #ifdef _WIN32 */\n",
    "src/data/Entry.h": '#include "kernels/Kernels.h"\nclass TOther;\n',
    "src/data/Entry.cpp": '#include "data/Entry.h"\n',
    "src/data/EntryFiles.cpp": '#include "data/Entry.h"\n',
    "src/data/parts/TOther.h": "class TOther {\n};\n",
    "src/processor/Processor.h": "",
    "src/offline/Manager.h": '#include "Other.h"\n#include "data/Entry.h"\n',
    "src/offline/Other.h": "",
}
VIOLATIONS = [
    ("src/platform/Bad.h", '#include "boundary/Basics.h"\n', "uphill"),
    ("src/platform/Bad.h", '#include "QX_BackgroundCorrection.h"\n', "uphill"),
    ("src/kernels/Bad.h", '#include "data/Entry.h"\n', "uphill"),
    ("src/data/Entry.cpp", '#include "Entry.h"\n  #  include "offline/Other.h"\n', "uphill"),
    ("src/boundary/Basics.cpp", '#include "Basics.h"\n#include "offline/Manager.h"\n', "uphill"),
    ("src/offline/Manager.cpp", '#include "Manager.h"\n#include "boundary/Exports.cpp"\n', "uphill"),
    ("src/data/Bad.h", '#include "nowhere/None.h"\n', "not here"),
    ("src/cellar/Bad.h", "", "no layer"),
    ("src/data/Bad.h", "#include <windows.h>\n", "outside of platform"),
    ("src/data/Bad.h", "#include <Windows.h>\n", "outside of platform"),
    ("src/processor/Processor.cpp", '#include "Processor.h"\n#include <unistd.h>\n', "outside of platform"),
    ("src/offline/Manager.cpp", '#include "Manager.h"\n#include <sys/stat.h>\n', "outside of platform"),
    ("src/boundary/Bad.h", "#ifdef _WIN32\n", "tells systems apart"),
    ("src/file/Bad.h", "#if !defined(__linux__) && 1\n", "tells systems apart"),
    ("src/flat/Bad.h", '#include "boundary/Basics.h"\n', "belongs to the main library"),
    ("src/flat/FlatInterface.cpp", '#include "data/Entry.h"\n', "belongs to the main library"),
    ("src/flat/FlatInterface.cpp", "#include <dlfcn.h>\n", "outside of platform"),
    ("src/boundary/Exports.cpp", '#include "flat/FlatInterface.cpp"\n', "uphill"),
    ("src/boundary/Bad.h", '#include "QX_BackgroundCorrection_C.h"\n', "uphill"),
    ("include/QX_BackgroundCorrection.h", "#include <vector>\n", "includes something"),
    ("src/data/TEntry.cpp", '#include "data/Entry.h"\n', "named like no header"),
    ("src/data/Entryfiles.cpp", '#include "data/Entry.h"\n', "named like no header"),
    ("src/platform/posix/Texts.cpp", '#include "platform/Text.h"\n', "named like no header"),
    ("src/data/EntryBuild.cpp", '#include "data/parts/TOther.h"\n', "that it is named like"),
    ("src/data/parts/Bad.h", "template <typename TValue> class TBad {\n", "like nothing"),
    ("src/data/Bad.h", "struct TWorse { int value; };\nnamespace Worst {\n", "like nothing"),
    ("src/data/Bad.h", "class TBad;\nenum class TWorse {\n", "like nothing"),
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
