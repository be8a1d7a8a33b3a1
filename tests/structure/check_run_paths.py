#!/usr/bin/env python3
"""Checks where the binaries of ELF systems have their libraries searched: an entry that is empty or relative means the
current folder, where anyone may have put a file.

check_run_paths.py BUILD                 reads every binary below the build folder BUILD, installs it to a folder of its
                                         own and reads every binary there; reports every such entry
check_run_paths.py --self-test           makes binaries with such entries and fails when one is not reported
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ENTRY = re.compile(r"\((RPATH|RUNPATH|NEEDED|FILTER|AUXILIARY|AUDIT|DEPAUDIT)\)[^\[]*\[(.*)\]$")
LINKED = re.compile(r"Type:\s+(EXEC|DYN)\b")


def violations_of(name, dynamic_section):
    for line in dynamic_section.splitlines():
        match = ENTRY.search(line)
        if not match:
            continue
        kind, value = match.groups()
        if kind in ("RPATH", "RUNPATH"):
            for entry in value.split(":"):
                if not entry:
                    yield f"{name}: {kind} [{value}] has an empty entry"
                elif not re.match(r"/|\$ORIGIN(/|$)|\$\{ORIGIN\}(/|$)", entry):
                    yield f"{name}: {kind} [{value}] has the relative entry {entry}"
        elif "/" in value and not value.startswith("/"):
            yield f"{name}: {kind} [{value}] is a relative path"


def readelf(*arguments):
    return subprocess.run(["readelf", "-W", *arguments], check=False, capture_output=True, text=True).stdout


def binaries_below(folder):
    """The linked ELF files below a folder. What other tests take away meanwhile is passed over."""
    for parent, _, names in os.walk(folder):
        for name in names:
            path = pathlib.Path(parent, name)
            try:
                if path.is_symlink() or not path.is_file():
                    continue
                with open(path, "rb") as file:
                    if file.read(4) != b"\x7fELF":
                        continue
            except FileNotFoundError:
                continue
            if LINKED.search(readelf("-h", path)):
                yield path


def check(folder):
    """How many binaries there are below a folder, and what is wrong with them."""
    paths = list(binaries_below(folder))
    return len(paths), [report for path in paths for report in violations_of(path, readelf("-d", path))]


def self_test():
    wrong = 0
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "main.c").write_text("int main(void) { return 0; }\n", encoding="utf-8")
        (root / "notes.txt").write_text("no binary\n", encoding="utf-8")
        cases = [(None, 0), ("/usr/lib", 0), ("$ORIGIN/../lib", 0), ("${ORIGIN}", 0), ("$ORIGIN/../lib:", 1),
                 (":/usr/lib", 1), ("/usr/lib::/lib", 1), ("lib", 1), ("$ORIGINAL/lib", 1), (".", 1),
                 ("$ORIGIN/../lib:::::", 5)]
        for number, (run_path, expected) in enumerate(cases):
            for tags in ("--enable-new-dtags", "--disable-new-dtags"):
                place = root / f"{number}{tags}"
                place.mkdir()
                command = ["cc", str(root / "main.c"), "-o", str(place / "program"), f"-Wl,{tags}"]
                if run_path is not None:
                    command.append(f"-Wl,-rpath,{run_path}")
                subprocess.run(command, check=True)
                count, reports = check(place)
                if count != 1 or len(reports) != expected:
                    print(f"{run_path} {tags}: {count} binaries, {reports}")
                    wrong += 1
        place = root / "needed"
        place.mkdir()
        subprocess.run(["cc", "-shared", "-o", "near.so", "-x", "c", "/dev/null"], check=True, cwd=place)
        subprocess.run(["cc", str(root / "main.c"), "-Wl,--no-as-needed", "./near.so", "-o", "program"], check=True,
                       cwd=place)
        count, reports = check(place)
        if count != 2 or len(reports) != 1:
            print(f"needed by a relative path: {count} binaries, {reports}")
            wrong += 1
    print(f"{2 * len(cases) + 1} cases, {wrong} wrong")
    return wrong


def main(arguments):
    if arguments == ["--self-test"]:
        return 1 if self_test() else 0
    if len(arguments) != 1:
        print(__doc__)
        return 2
    build = arguments[0]
    built, reports = check(build)
    with tempfile.TemporaryDirectory() as prefix:
        subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
        installed, more = check(prefix)
    reports += more
    for report in reports:
        print(report)
    print(f"{built} binaries built, {installed} installed, {len(reports)} violations")
    return 1 if reports or built == 0 or installed == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
