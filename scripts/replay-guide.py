#!/usr/bin/env python3
"""Runs the commands of a guide as its reader would, taken from the guide's own blocks, and compares what they print.

scripts/replay-guide.py GUIDE SESSION FOLDER [--root ROOT] [--first DIR]

GUIDE's blocks of SESSION (scripts/guide_blocks.py says how they are marked) run in their order in one shell that starts
in FOLDER. --root: inside of this root folder, as root, and with the blocks that install packages; FOLDER is then a folder
of it. Without, those blocks are left out and named. --first: programs are looked for there first.

What a guide says to Windows' command line runs in the same shell, with "/" for "\\", programs under Wine, CMake for
Windows' tar, and Debian's cross compilers by the names that the guide uses.
"""
import argparse
import os
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

from guide_blocks import read_blocks

SCRIPTS = Path(__file__).resolve().parent


def for_this_shell(line):
    """A command to Windows' command line as this shell takes it."""
    line = line.replace("\\", "/").replace("%CD%", "$PWD")
    words = line.split(" ", 1)
    if words[0] == "set":
        return f"export {words[1]}"
    if words[0].endswith(".exe"):
        return f"{shlex.quote(str(SCRIPTS / 'run-wine.sh'))} {line}"
    return line


def script_of(blocks, outputs):
    """A shell script of the blocks; what block n prints goes to the file n in the folder outputs."""
    script = ["set -eo pipefail"]
    for number, block in enumerate(blocks):
        script.append(f"exec >{outputs}/{number} 2>&1")
        if block.kind == "file":
            script.append(f"cat >{shlex.quote(block.name)} <<'END OF THE FILE'\n{block.text}END OF THE FILE")
        elif block.kind == "run":
            script += map(for_this_shell, block.commands()) if block.language == "bat" else [block.text]
    return "\n".join(script) + "\n"


def expected_pattern(text):
    """A regular expression for what a block says is printed; "..." alone in a line stands for any lines."""
    parts = [re.escape(part) for part in re.split(r"(?m)^\.\.\.\n", text)]
    return re.compile(r"(?:.*\n)*".join(parts))


def replay(blocks, folder, root, first):
    """Runs the blocks; yields what went wrong."""
    with tempfile.TemporaryDirectory(dir=root or None) as scratch:
        seen = "/" + str(Path(scratch).relative_to(root)) if root else scratch
        Path(scratch, "script").write_text(script_of(blocks, seen), encoding="utf-8")
        environment = dict(os.environ)
        for name in ("MAKEFLAGS", "MAKELEVEL", "CMAKE_PREFIX_PATH", "PKG_CONFIG_PATH", "LD_LIBRARY_PATH"):
            environment.pop(name, None)
        command = ["bash", f"{seen}/script"]
        if root:
            environment = {"PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root",
                           "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8"}
            command = ["chroot", root, "/usr/bin/env", f"--chdir={folder}"] + command
        elif first:
            environment["PATH"] = os.pathsep.join([*map(os.path.abspath, first), environment["PATH"]])
        result = subprocess.run(command, cwd=None if root else folder, env=environment, stdin=subprocess.DEVNULL,
                                capture_output=True, text=True)
        printed = ""
        for number, block in enumerate(blocks):
            output = Path(scratch, str(number))
            if block.kind == "prints":
                if not expected_pattern(block.text).fullmatch(printed):
                    yield f"{block}: this was printed instead:\n{printed}"
                continue
            printed = output.read_text(encoding="utf-8", errors="replace") if output.exists() else ""
            if result.returncode != 0 and not Path(scratch, str(number + 1)).exists():
                yield f"{block}: ended with {result.returncode}:\n{block.text}\n{printed}{result.stderr}"
                return


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("guide")
    parser.add_argument("session")
    parser.add_argument("folder")
    parser.add_argument("--root")
    parser.add_argument("--first", action="append", default=[])
    options = parser.parse_args()

    blocks, belongs = [], False
    for block in read_blocks(options.guide):
        if block.kind != "prints":
            belongs = options.session in block.sessions
            if belongs and block.as_root and not options.root:
                print(f"left out, for it wants root: {block}: {' && '.join(block.commands())}")
                belongs = False
        if belongs:
            blocks.append(block)
    runs = [block for block in blocks if block.kind == "run"]
    if not runs:
        sys.exit(f"{options.guide} has no commands for the session {options.session}")
    failures = list(replay(blocks, options.folder, options.root, options.first))
    for failure in failures:
        print(failure)
    if failures:
        sys.exit(1)
    commands = sum(len(block.commands()) for block in runs)
    compared = sum(block.kind == "prints" for block in blocks)
    print(f"{options.guide}: {commands} commands of {options.session} ran; {compared} outputs are as shown")


if __name__ == "__main__":
    main()
