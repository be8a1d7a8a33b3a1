#!/usr/bin/env python3
"""Whether the guides name every Debian package that the workbench of the archive needs: check_needed.py PROGRAM PAGE..."""
import pathlib
import re
import subprocess
import sys

WITH_EVERY_PROGRAM = {"libc", "libm", "libstdc++", "libgcc_s", "ld-linux-x86-64"}


def package_of(soname):
    """By Debian's rule for libraries: libtiff.so.6 is in libtiff6, libpng16.so.16 in libpng16-16."""
    if soname == "libz.so.1":
        return "zlib1g"
    name, version = soname.split(".so.")
    return name + ("-" if name[-1].isdigit() else "") + version


def main():
    program, *pages = sys.argv[1:]
    headers = subprocess.run(["objdump", "-p", program], capture_output=True, text=True, check=True).stdout
    needed = [name for name in re.findall(r"NEEDED +(\S+)", headers) if name.split(".so")[0] not in WITH_EVERY_PROGRAM]
    if not needed:
        sys.exit(f"{program} seems to need nothing")
    missing = [(page, package) for page in pages for package in map(package_of, needed)
               if not re.search(rf"(?<![\w.-]){re.escape(package)}(?![\w.-])",
                                pathlib.Path(page).read_text(encoding="utf-8"))]
    for page, package in missing:
        print(f"{page} does not name {package}, which {program} needs")
    sys.exit(1 if missing else 0)


if __name__ == "__main__":
    main()
