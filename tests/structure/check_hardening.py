#!/usr/bin/env python3
"""Reads from binaries that are shipped whether they are hardened as docs/packages.md says.

check_hardening.py [--commands FILE] BINARY...   reports what a binary (ELF or DLL) lacks; with --commands, also what the
                                                 compile commands in FILE (compile_commands.json) of src and tools lack
                                                 and a binary does not show
check_hardening.py --self-test                   makes binaries that each lack one thing and fails when one passes
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile


def output_of(*command):
    return subprocess.run([str(part) for part in command], check=True, capture_output=True, text=True).stdout


def lacking_in_elf(path):
    header, segments, dynamic = (output_of("readelf", "-W", option, path) for option in ("-h", "-l", "-d"))
    symbols = output_of("readelf", "-W", "--dyn-syms", path)
    if not re.search(r"Type:\s+DYN\b", header):
        yield "it is not position independent"
    if "GNU_RELRO" not in segments:
        yield "no read-only relocations (RELRO)"
    if not re.search(r"\(BIND_NOW\)|\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*\bNOW\b", dynamic):
        yield "no immediate binding (BIND_NOW)"
    stack = re.search(r"GNU_STACK.*?0x\w+ 0x\w+ 0x\w+ 0x\w+ 0x\w+ (\w+)", segments)
    if not stack or "E" in stack.group(1):
        yield "an executable stack"
    if "TEXTREL" in dynamic:
        yield "relocations in code"
    if "__stack_chk_fail" not in symbols:
        yield "no stack protector"
    if not re.search(r" UND __\w+_chk@", symbols):
        yield "no fortified C functions"
    if "X86-64" in header:
        code = output_of("objdump", "-d", "--no-show-raw-insn", path)
        functions = set(re.findall(r"FUNC\s+GLOBAL\s+DEFAULT\s+\d+ (\w+)", symbols))
        starts = set(re.findall(r"^\w+ <(\w+)(?:@@\w+)?>:\n\s*\w+:\s+endbr64", code, re.MULTILINE))
        # An executable exports nothing; that it has any at all is then what can be told.
        if functions - starts - {"_init", "_fini"} or len(re.findall(r"\bendbr64\b", code)) < 4:
            yield "no marks of where indirect jumps may land (control flow protection)"


def lacking_in_dll(path):
    readobj = "llvm-readobj-19"
    headers = output_of(readobj, "--file-headers", path)
    for flag in ("DYNAMIC_BASE", "HIGH_ENTROPY_VA", "NX_COMPAT"):
        if f"IMAGE_DLL_CHARACTERISTICS_{flag} " not in headers:
            yield f"no {flag}"
    if not re.search(r"BaseRelocationTableRVA: 0x[1-9A-F]", headers):
        yield "it cannot be moved in memory"
    if b"*** stack smashing detected ***" in pathlib.Path(path).read_bytes(): # MinGW's, which asks nothing of the loader
        return
    cookie = re.search(r"SecurityCookie: 0x(\w+)", output_of(readobj, "--coff-load-config", path))
    if not cookie or int(cookie.group(1), 16) == 0:
        yield "no stack protector that the loader starts (load configuration)"
        return
    # Each protected function reads the cookie before it begins; one that is only there protects nothing.
    code = output_of("llvm-objdump-19", "-d", "--no-show-raw-insn", "--no-leading-headers", path)
    if len(re.findall(f"(?:# 0x|0x|<.*>.*){cookie.group(1)}", code, re.IGNORECASE)) < 10:
        yield "no functions with a stack protector"


def lacking_in(path):
    with open(path, "rb") as file:
        start = file.read(4)
    return list(lacking_in_elf(path) if start == b"\x7fELF" else lacking_in_dll(path))


def lacking_in_commands(path):
    """What leaves no trace where no function has a frame larger than a page."""
    count = 0
    for entry in json.loads(pathlib.Path(path).read_text(encoding="utf-8")):
        if re.search(r" -o \S*\b(qxbc_core|qxbc_exports|qxbackground)\.dir/", entry["command"]): # tests have their own
            count += 1
            for flag in ("-fstack-clash-protection", "-fstack-protector-strong", "-D_FORTIFY_SOURCE=3"):
                if flag not in entry["command"]:
                    yield f"{entry['file']}: compiled without {flag}"
    if count == 0:
        yield f"{path}: nothing of src"


def self_test():
    source = """
#include <stdio.h>
#include <string.h>
void Fill(char* to, const char* from, unsigned long size);
extern "C" __attribute__((visibility("default"))) int Shown(const char* text, int number)
{
    char copy[64];
    snprintf(copy, static_cast<unsigned long>(number), "%s", text);
    Fill(copy, text, sizeof copy);
    return copy[number];
}
void Fill(char* to, const char* from, unsigned long size) { strncpy(to, from, size); }
"""
    # As hardened, then what takes one thing away and what is said then.
    full = ["-fPIC", "-shared", "-O2", "-fstack-protector-strong", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=3",
            "-fcf-protection", "-Wl,-z,relro,-z,now,-z,noexecstack"]
    cases = [([], ""), (["-Wl,-z,norelro"], "RELRO"), (["-Wl,-z,lazy"], "BIND_NOW"),
             (["-Wl,-z,execstack"], "executable stack"), (["-fno-stack-protector"], "stack protector"),
             (["-U_FORTIFY_SOURCE"], "fortified"), (["-fcf-protection=none"], "control flow")]
    wrong = 0
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "library.cpp").write_text(source, encoding="utf-8")
        for options, expected in cases:
            library = root / "library.so"
            subprocess.run(["g++", "-w", *full, *options, root / "library.cpp", "-o", library], check=True)
            reports = lacking_in(library)
            if len(reports) != (1 if expected else 0) or (expected and expected not in reports[0]):
                print(f"{options}: {reports}")
                wrong += 1
        commands = root / "compile_commands.json"
        for flags, expected in (("-fstack-clash-protection -fstack-protector-strong -D_FORTIFY_SOURCE=3", 0), ("", 3)):
            commands.write_text(json.dumps([{"file": "a.cpp", "command": f"g++ {flags} -o src/CMakeFiles/qxbc_core.dir/a.o a.cpp"}]), encoding="utf-8")
            if len(list(lacking_in_commands(commands))) != expected:
                print(f"compile commands with {flags}: not {expected} reports")
                wrong += 1
    print(f"{len(cases) + 2} cases, {wrong} wrong")
    return wrong


def main(arguments):
    if arguments == ["--self-test"]:
        return 1 if self_test() else 0
    reports = []
    if arguments[:1] == ["--commands"] and len(arguments) > 1:
        reports += lacking_in_commands(arguments[1])
        arguments = arguments[2:]
    if not arguments:
        print(__doc__)
        return 2
    for path in arguments:
        reports += [f"{path}: {lack}" for lack in lacking_in(path)]
    for report in reports:
        print(report)
    print(f"{len(arguments)} binaries, {len(reports)} lacks")
    return 1 if reports else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
