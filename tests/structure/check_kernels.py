#!/usr/bin/env python3
"""Checks the kernels as the compiler left them, one object file for each instruction set.

check_kernels.py instructions OBJECT...   finds in each kernel the instructions that its loops live on, inside of loops
check_kernels.py sharing OBJECT...        finds no function that the linker could take for the whole program
check_kernels.py --self-test              makes listings of every kind and fails when one is judged wrongly

Objects of ELF and of Windows, both read with GNU's objdump and nm; with --tools PREFIX before all else, with those of a
cross compiler (PREFIXobjdump, PREFIXnm). Those for x86 are three; for 64-bit ARM the baseline is NEON, and all there is.
"""
import collections
import pathlib
import re
import subprocess
import sys

# The registers of full width, as the operands name them, and those of half the width.
REGISTERS = {"Baseline": ".*%xmm", "Avx2": ".*%ymm", "Avx512": ".*%zmm", "Neon": r"v\d+\.(?:16b|8h|4s|2d)\b"}
HALVES = {"Baseline": ".*%xmm", "Avx2": ".*%xmm", "Avx512": ".*%ymm", "Neon": r"v\d+\.(?:8b|4h|2s)\b"}
X86 = ("Baseline", "Avx2", "Avx512")
ARM = ("Neon",)

# What each loop lives on: a kernel, the work, and the instructions, on x86 without the "v" that all but the baseline's
# have before them. One of the alternatives (|) has to stand in an innermost loop of the kernel, on registers of the
# instruction set's width, or after "half" on those of half the width. Each alternative is a vector form of that work,
# with what it says of rounding.
# COUNT of the loops have to have it: as many as the compilers make, beginnings, blocks and ends apart.
ALL = X86
WIDE = ("Avx2", "Avx512")
Expectation = collections.namedtuple("Expectation", "kernel work instruction sets count", defaults=(1,))
EXPECTED = [
    # With the longest registers it would be slower, see src/kernels/Vectors.h.
    Expectation("SubtractLoop", "saturating difference", "psubusw", ("Baseline", "Avx2"), 5),
    Expectation("SubtractLoop", "saturating difference", "half psubusw", ("Avx512",), 5),
    Expectation("ScaleLoop", "product", "mulps", ("Baseline", "Avx2"), 5),
    Expectation("ScaleLoop", "cut to an integer", "cvttps2dq", ("Baseline", "Avx2"), 5),
    Expectation("ScaleLoop", "product", "fmadd132ps|fmadd213ps|fmadd231ps", ("Avx512",), 5),
    Expectation("ScaleLoop", "sum that is cut", "addps {rz-sae}", ("Avx512",), 5),
    Expectation("AverageLoop", "mean of two frames", "pavgw", ALL, 2),
    Expectation("AverageLoop", "sum of many frames", "addps", ALL, 3),
    Expectation("AverageLoop", "mean of many frames", "divps", ALL, 1),
    # Called through a pointer; one each for 1, 2, 3, 4, 5 and 10 frames at a time.
    Expectation("AddFrames", "sum of words", "paddd", ALL, 6),
    Expectation("AddFrames", "upper halves of words", "psrld", ALL, 6),
    Expectation("AddFrames", "means", "divps", WIDE, 6),
    Expectation("AddFrames", "means", "divps", ("Baseline",), 1), # most beside an inner loop over the line's vectors
    Expectation("MedianLoop", "lesser of two", "pminsw", ("Baseline",), 4),
    Expectation("MedianLoop", "greater of two", "pmaxsw", ("Baseline",), 4),
    Expectation("MedianLoop", "lesser of two", "pminuw", WIDE, 4),
    Expectation("MedianLoop", "greater of two", "pmaxuw", WIDE, 4),
    Expectation("StatisticsLoop", "minimum", "pminsw", ALL),
    Expectation("StatisticsLoop", "maximum", "pmaxsw", ALL),
    Expectation("StatisticsLoop", "sum", "pmaddwd", ALL),

    Expectation("SubtractLoop", "saturating difference", "uqsub", ARM, 5),
    Expectation("ScaleLoop", "product", "fmul", ARM, 5),
    Expectation("ScaleLoop", "cut to an integer", "fcvtzs", ARM, 5),
    Expectation("AverageLoop", "mean of two frames", "urhadd", ARM, 2),
    Expectation("AverageLoop", "sum of many frames", "fadd", ARM, 3),
    Expectation("AverageLoop", "mean of many frames", "fdiv", ARM, 1),
    Expectation("AddFrames", "sum of words", "add", ARM, 6),
    Expectation("AddFrames", "upper halves of words", "ushr", ARM, 6),
    Expectation("AddFrames", "means", "fdiv", ARM, 1), # as on the baseline of x86
    Expectation("MedianLoop", "lesser of two", "umin", ARM, 4),
    Expectation("MedianLoop", "greater of two", "umax", ARM, 4),
    Expectation("StatisticsLoop", "minimum", "smin", ARM),
    Expectation("StatisticsLoop", "maximum", "smax", ARM),
    Expectation("StatisticsLoop", "sum", "saddw2|saddw|sadalp", ARM),
]

FUNCTION = re.compile(r"^([0-9a-f]+) <(.+)>:$")
INSTRUCTION = re.compile(r"^\s*([0-9a-f]+):\s+(?:(?:rep|lock|notrack|bnd|data16|cs)\s+)*(\S+)\s*(.*)$")
# Behind a register, and the bit of it, where ARM tests those.
TARGET = re.compile(r"^(?:[wx]\w+, (?:#\d+, )?)?([0-9a-f]+) <([^+>]+)(?:\+0x[0-9a-f]+)?>")
BRANCH = re.compile(r"j|b$|b\.|cbn?z$|tbn?z$")
CALL = re.compile(r"call|bl$")
RELOCATION = re.compile(r"^\s*[0-9a-f]+:\s+(?:R_X86_64|R_AARCH64|IMAGE_REL_AMD64)\w*\s+(\S+?)(?:[-+]0x[0-9a-f]+)?$")

Line = collections.namedtuple("Line", "address mnemonic operands")


class Function:
    """The lines of a function, where it jumps back to, and whom it calls from where."""

    def __init__(self):
        self.lines = []
        self.loops = []
        self.calls = []

    def innermost_loop(self, address):
        """The smallest loop around an address, or None when there is none or when other loops lie within it."""
        around = [loop for loop in self.loops if loop[0] <= address <= loop[1]]
        if not around:
            return None
        least = min(around, key=lambda loop: loop[1] - loop[0])
        within = any(least[0] <= a and b <= least[1] and (a, b) != least for a, b in self.loops)
        return None if within else least


def read_functions(listing):
    functions = {}
    name = None
    for text in listing.splitlines():
        match = FUNCTION.match(text)
        if match:
            name = match.group(2)
            functions[name] = Function()
            continue
        if name is None:
            continue
        function = functions[name]
        match = RELOCATION.match(text)
        if match:
            if function.lines and re.match("call|jmp|bl?$", function.lines[-1].mnemonic):
                function.calls.append((function.lines[-1].address, match.group(1)))
            continue
        match = INSTRUCTION.match(text)
        if not match:
            continue
        line = Line(int(match.group(1), 16), match.group(2), match.group(3))
        function.lines.append(line)
        target = TARGET.match(line.operands)
        if target and (BRANCH.match(line.mnemonic) or CALL.match(line.mnemonic)):
            address = int(target.group(1), 16)
            if target.group(2) != name:
                function.calls.append((line.address, target.group(2)))
            elif BRANCH.match(line.mnemonic) and address <= line.address:
                function.loops.append((address, line.address))
    return functions


def loops_with(functions, name, pattern, is_in_loop=False, seen=()):
    """The innermost loops of a function and of those it calls that have a line of that kind."""
    if name not in functions or name in seen:
        return set()
    function = functions[name]
    found = set()
    for line in function.lines:
        if pattern.match(f"{line.mnemonic} {line.operands}"):
            loop = function.innermost_loop(line.address)
            if loop is None and is_in_loop and not function.loops:
                loop = "called from a loop"
            if loop is not None:
                found.add((name, loop))
    for address, callee in function.calls:
        found |= loops_with(functions, callee, pattern, is_in_loop or function.innermost_loop(address) is not None,
                            (*seen, name))
    return found


def pattern_of(instruction, instruction_set):
    """Matches a line with one of the alternatives of the table."""
    prefix = "v" if instruction_set in WIDE else ""
    forms = []
    for form in instruction.split("|"):
        registers = HALVES if form.startswith("half ") else REGISTERS
        mnemonic, _, rounding = form.removeprefix("half ").partition(" ")
        forms.append(f"{prefix}{mnemonic} {rounding}{registers[instruction_set]}")
    return re.compile("|".join(forms))


def instruction_set_of(path, listing):
    for instruction_set in X86:
        if f"Kernels{instruction_set}.cpp" in pathlib.Path(path).name:
            return "Neon" if instruction_set == "Baseline" and "aarch64" in listing else instruction_set
    return None


def check_instructions(listings):
    """Reports what is missing in the listings, one for each instruction set."""
    for instruction_set in ARM if "Neon" in listings else X86:
        if instruction_set not in listings:
            yield f"no object of the kernels for {instruction_set}"
            continue
        functions = read_functions(listings[instruction_set])
        for expected in EXPECTED:
            if instruction_set not in expected.sets:
                continue
            kernel = f"{instruction_set}, {expected.kernel}"
            # As GCC and Clang name functions on Linux and Windows, those made from a template too.
            names = [name for name in functions
                     if re.search(rf"\d{expected.kernel}[EI]|\?\$?{expected.kernel}@", name)]
            if not names:
                yield f"{kernel}: no function of this name"
                continue
            pattern = pattern_of(expected.instruction, instruction_set)
            count = len(set().union(*(loops_with(functions, name, pattern) for name in names)))
            if count < expected.count:
                yield (f"{kernel}, {expected.work}: {count} loops with {expected.instruction}, "
                       f"expected {expected.count}")


def check_sharing(path, symbols, sections):
    """Reports what the linker may take from this object for others: weak symbols, and code that is kept once."""
    for text in symbols.splitlines():
        match = re.match(r"^(?:[0-9a-f]+)?\s*([A-Za-z]) (.*)$", text)
        if match and match.group(1) in "WwVvu":
            yield f"{path}: {match.group(2)} is shared (symbol of type {match.group(1)})"
    name = ""
    for text in sections.splitlines():
        match = re.match(r"^\s*\d+ (\S+)\s+[0-9a-f]{8}", text)
        if match:
            name = match.group(1)
        if "CODE" in text and "LINK_ONCE" in text:
            yield f"{path}: code in {name} is kept once in the program"


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def function_text(name, *lines):
    return f"0000000000000000 <{name}>:\n" + "".join(f"  {line}\n" for line in lines)


def self_test():
    name = "_ZN7Kernels12SubtractAvx2EPtm"
    inside = function_text(name, "0:\tvpsubusw (%rdi),%ymm1,%ymm0", f"8:\tjne    0 <{name}>")
    outside = function_text(name, "0:\tvpsubusw (%rdi),%ymm1,%ymm0", "8:\tinc    %eax", f"a:\tjne    8 <{name}+0x8>")
    narrow = inside.replace("ymm", "xmm")
    scalar = inside.replace("vpsubusw (%rdi),%ymm1,%ymm0", "sub    %eax,%ecx")
    around = function_text(name, "0:\tvpsubusw (%rdi),%ymm1,%ymm0", "8:\tinc    %eax", f"a:\tjne    8 <{name}+0x8>",
                           f"c:\tjmp    0 <{name}>")
    callee = function_text("_Local", "20:\tvpsubusw (%rdi),%ymm1,%ymm0", "28:\tret")
    by_call = function_text(name, "0:\tcall   20 <_Local>", f"8:\tjne    0 <{name}>") + callee
    by_relocation = function_text(name, "0:\tcall   5 <.text+0x5>", "\t\t1: IMAGE_REL_AMD64_REL32\t_Local",
                                  f"8:\tjne    0 <{name}>") + callee
    call_outside = function_text(name, "0:\tcall   20 <_Local>", "5:\tret") + callee
    rounded = function_text(name, "0:\tvaddps {rz-sae},%zmm4,%zmm1,%zmm1", f"8:\tjne    0 <{name}>")
    pattern = pattern_of("psubusw", "Avx2")
    wrong = 0
    cases = [("inside", inside, 1), ("outside", outside, 0), ("narrow", narrow, 0), ("scalar", scalar, 0),
             ("around", around, 0), ("by call", by_call, 1), ("by relocation", by_relocation, 1),
             ("call outside", call_outside, 0), ("half", narrow, 1, pattern_of("psubw|half psubusw", "Avx2")),
             ("half of the widest", inside, 1, pattern_of("half psubusw", "Avx512")),
             ("not half", inside, 0, pattern_of("half psubusw", "Avx2")),
             ("longer name", inside, 0, pattern_of("psub", "Avx2")),
             ("rounded as told", rounded, 1, pattern_of("addps {rz-sae}", "Avx512")),
             ("rounded otherwise", rounded, 0, pattern_of("addps {rd-sae}", "Avx512"))]
    for case, listing, expected, *other in cases:
        count = len(loops_with(read_functions(listing), name, other[0] if other else pattern))
        if count != expected:
            print(f"{case}: {count} loops, expected {expected}")
            wrong += 1
    sharing = [("0000 T _Z1fv\n     U memcpy\n0000 t _Z1gv\n0000 r .LC0\n", "", 0), ("0000 W _Z1fv\n", "", 1),
               ("0000 V _ZTI1A\n", "", 1), ("0000 u _ZGVZ1fvE1a\n", "", 1), ("     w __cxa_thing\n", "", 1),
               ("", "  0 .text 00000010  0000  0000  0000  2**4\n  CONTENTS, ALLOC, CODE\n", 0),
               ("", "  0 .text$f 00000010  0000  0000  0000  2**4\n  CONTENTS, CODE, LINK_ONCE_DISCARD\n", 1),
               ("", "  0 .rdata 00000010  0000  0000  0000  2**4\n  CONTENTS, DATA, LINK_ONCE_DISCARD\n", 0)]
    for symbols, sections, expected in sharing:
        if len(list(check_sharing("object", symbols, sections))) != expected:
            print(f"expected {expected} reports of {symbols!r} and {sections!r}")
            wrong += 1
    arm = function_text(name, "0:\tuqsub\tv0.8h, v0.8h, v1.8h", f"8:\tb.ne\t0 <{name}>  // b.any")
    arm_cases = [("inside", arm, 1), ("outside", arm.replace(f"b.ne\t0 <{name}>", f"b.ne\t4 <{name}+0x4>"), 0),
                 ("half", arm.replace(".8h", ".4h"), 0), ("scalar", arm.replace("v0.8h, v0.8h, v1.8h", "h0, h0, h1"), 0),
                 ("bit tested", arm.replace("b.ne\t", "tbnz\tw3, #31, "), 1),
                 ("zero tested", arm.replace("b.ne\t", "cbnz\tx3, "), 1),
                 ("by call", function_text(name, "0:\tbl\t0 <_Local>", "\t\t0: R_AARCH64_CALL26\t_Local",
                                           f"8:\tb\t0 <{name}>")
                  + function_text("_Local", "20:\tuqsub\tv0.8h, v0.8h, v1.8h", "28:\tret"), 1)]
    for case, listing, expected in arm_cases:
        count = len(loops_with(read_functions(listing), name, pattern_of("uqsub", "Neon")))
        if count != expected:
            print(f"ARM, {case}: {count} loops, expected {expected}")
            wrong += 1
    arm_missing = list(check_instructions({"Neon": arm}))
    if len(arm_missing) != sum("Neon" in expected.sets for expected in EXPECTED):
        print(f"missing kernels for ARM: {arm_missing}")
        wrong += 1
    missing = list(check_instructions({"Avx2": inside.replace("Subtract", "Another")}))
    if len(missing) != 2 + sum("Avx2" in expected.sets for expected in EXPECTED):
        print(f"missing kernels: {missing}")
        wrong += 1
    print(f"{len(cases) + len(sharing) + len(arm_cases) + 2} cases, {wrong} wrong")
    return wrong


def main(arguments):
    if arguments == ["--self-test"]:
        return 1 if self_test() else 0
    tools = ""
    if arguments[:1] == ["--tools"] and len(arguments) > 1:
        tools = arguments[1]
        arguments = arguments[2:]
    if len(arguments) < 2 or arguments[0] not in ("instructions", "sharing"):
        print(__doc__)
        return 2
    listings, objects = {}, {}
    for path in arguments[1:]:
        listing = run(f"{tools}objdump", "-d", "-r", "-w", "--no-show-raw-insn", path)
        instruction_set = instruction_set_of(path, listing)
        if instruction_set:
            listings[instruction_set] = listing
            objects[instruction_set] = path
    if tuple(sorted(objects)) not in (tuple(sorted(X86)), ARM):
        print(f"kernel objects found: {sorted(objects)}, expected: {X86} or {ARM}")
        return 1
    if arguments[0] == "instructions":
        reports = list(check_instructions(listings))
    else:
        reports = [report for path in objects.values()
                   for report in check_sharing(path, run(f"{tools}nm", path), run(f"{tools}objdump", "-h", "-w", path))]
    for report in reports:
        print(report)
    print(f"{len(objects)} objects, {len(reports)} violations")
    return 1 if reports else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
