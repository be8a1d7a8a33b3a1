#!/usr/bin/env python3
"""Nothing in the guides is left to rot: every block of them is run, compiled or compared, and every link leads somewhere.

check_guides.py ROOT [COMPILER]   reports every violation and fails when there is one. COMPILER, a g++, checks the
                                  C and C++ blocks
check_guides.py --self-test       makes violations of every kind and fails when one is not reported

What is looked at: README.md, CONTRIBUTING.md, examples/README.md and docs/*.md. How blocks are marked, scripts/guide_blocks.py says.
"""
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from guide_blocks import SHELLS, read_blocks, without_blocks  # noqa: E402

# Who replays which session of which page: the tests beside this one, and for sessions that want root a script.
REPLAYED = re.compile(r"qxbc_replay\(([\w./-]+\.md) (\w+)")
REPLAYED_BY_ROOT = {("docs/getting-started-linux.md", "packages"): "scripts/try-guides.sh"}
# Pages and languages that a test of their own runs, and that test.
WHOLE_PAGES = {"docs/python-tutorial.md": "tests/python/test_docs.py"}
PYTHON_PAGES = {"docs/python.md": "tests/python/test_docs.py"}
MEASURED_BY = re.compile(r"(?:bench|scripts)/[\w-]+\.(?:py|sh)")
KINDS = {
    "sh": ("run", "covered by"),
    "bat": ("run", "covered by", "not run here"),
    "c": ("compiles", "file", "covered by"),
    "cpp": ("compiles", "file", "covered by"),
    "cmake": ("file", "covered by"),
    "python": ("file", "covered by"),
    "text": ("prints", "covered by", "checked by a test", "written by", "drawing"),
    "": ("prints", "covered by", "checked by a test", "written by", "drawing"),
}
WORD_THAT_RUNS_ANOTHER = {"sudo", "env", "time"}


def pages(root):
    return [page for page in (root / "README.md", root / "CONTRIBUTING.md", root / "examples/README.md",
                              *sorted((root / "docs").glob("*.md"))) if page.exists()]


def programs(block):
    """The words that a covering test has to have as well: of shells the programs, of others the figures or names."""
    if block.language in SHELLS:
        for command in block.commands():
            for part in re.split(r"&&|\|\||\||;", command):
                words = [word for word in shlex.split(part, comments=True) if word not in WORD_THAT_RUNS_ANOTHER]
                if words:
                    yield words[0].replace("\\", "/").split("/")[-1]
    elif block.language == "cmake":
        yield from re.findall(r"^\s*(\w+)\(", block.text, re.M)
    else:
        yield from re.findall(r"\d[\d.]*\d|\d", block.text)


def is_run_by(test, block, root):
    return test is not None and (root / test).is_file() and \
        block.page.name in (root / test).read_text(encoding="utf-8")


def check_block(block, root, replayed):
    page = block.page.relative_to(root).as_posix()
    if is_run_by(WHOLE_PAGES.get(page), block, root):
        return
    if block.language == "python" and is_run_by(PYTHON_PAGES.get(page), block, root):
        return
    kinds = KINDS.get(block.language)
    if kinds is None:
        yield f'has the language "{block.language}", which nothing here checks'
    elif block.kind not in kinds:
        yield f"is neither run nor checked: above it has to stand one of <!-- {': -->, <!-- '.join(kinds)}: -->"
    elif block.kind == "run" or block.kind == "file" and block.sessions != [""]:
        for session in block.sessions:
            if (block.page.relative_to(root).as_posix(), session) not in replayed:
                yield f"nobody replays the session {session}"
    elif block.kind == "file":
        yield "does not say in which session the file is written"
    elif block.kind == "covered by":
        test = root / block.rest
        text = test.read_text(encoding="utf-8") if test.is_file() else None
        if text is None:
            yield f"is covered by {block.rest}, which is not here"
            return
        for word in sorted(set(programs(block))):
            if not re.search(rf"(?<![\w.]){re.escape(word)}(?![\w]|\.\d)", text):
                yield f'is covered by {block.rest}, which has no "{word}"'
    elif block.kind == "written by":
        script = root / block.rest
        if not script.is_file() or f"written by: {block.rest}" not in script.read_text(encoding="utf-8"):
            yield f"is said to be written by {block.rest}, which does not write this mark"
    elif block.kind == "not run here":
        section = re.split(r"(?m)^#+ ", block.page.read_text(encoding="utf-8"))
        own = [part for part in section if block.text.strip().splitlines()[0] in part]
        if not any("not run here" in re.sub(r"<!--.*?-->", "", part) for part in own):
            yield "does not tell its readers that it is not run here"
    elif block.kind == "checked by a test":
        if not any(block.rest in test.read_text(encoding="utf-8", errors="replace")
                   for test in (root / "tests").rglob("*") if test.suffix in (".cpp", ".py") and test.is_file()):
            yield f'is checked by a test, but none has "{block.rest}"'


def as_source(block):
    """A block as a whole source: as it is, or its statements in a function behind its includes."""
    if re.search(r"^int main\(", block.text, re.M) or block.kind == "file":
        return block.text
    lines = block.text.splitlines()
    includes = [line for line in lines if line.startswith("#include")]
    usings = [line for line in lines if line.startswith("using namespace")]
    statements = [line for line in lines if line not in includes and line not in usings]
    header = "QX_BackgroundCorrection_C.h" if block.language == "c" else "QX_BackgroundCorrection.hpp"
    given = block.rest if block.detail.strip() == "given" else ""
    return "\n".join(['#include <stddef.h>', f'#include "{header}"', *includes, *usings,
                      "void Example(void);" if block.language == "c" else "void Example();",
                      "void Example(void)" if block.language == "c" else "void Example()",
                      "{", given, *statements, "}"]) + "\n"


def check_compiles(block, root, compiler):
    if block.language == "c":
        flags = ["-xc", "-std=c99", "-Wno-unused-but-set-variable"]
    else:
        flags = ["-xc++", "-std=c++17"]
    command = [compiler, *flags, "-Wall", "-Wextra", "-Werror", "-Wno-unknown-warning-option", "-Wno-uninitialized",
               "-Wno-maybe-uninitialized",
               "-fsyntax-only", f"-I{root / 'include'}", "-"]
    result = subprocess.run(command, input=as_source(block), capture_output=True, text=True)
    if result.returncode != 0:
        yield f"does not compile:\n{result.stderr}"


def slug(heading):
    """The name that hosting sites give a heading."""
    heading = re.sub(r"[`*]|\[([^\]]*)\]\([^)]*\)", lambda match: match.group(1) or "", heading)
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def anchors(page):
    return {slug(line.lstrip("#")) for _, line in without_blocks(page) if re.match(r"#{1,6} ", line)}


def check_page(page, root):
    section = ""
    for number, line in without_blocks(page):
        section = "" if line.startswith("#") else section + line
        if re.match(r"    +[^ |*\d-]", line) and "|" not in line and not in_list(page, number):
            yield f"{page}:{number}", "is an indented block: only fenced ones can be checked"
        if re.search(r"\d ?(?:[nµm]s|[GM]B/s)\b", line) and not MEASURED_BY.search(section) \
                and "performance" not in page.name:
            yield f"{page}:{number}", "tells a measured time, and nothing before it in its section says what measures it"
        if re.search(r"!\[\s*\]\(", line):
            yield f"{page}:{number}", "shows a picture without telling those who cannot see it what is on it"
        for target in re.findall(r"\]\(([^)\s]+)\)", line):
            if re.match(r"\w+:", target):
                continue
            name, _, anchor = target.partition("#")
            file = page if not name else page.parent / name
            if not file.exists():
                yield f"{page}:{number}", f"leads to {name}, which is not here"
            elif anchor and anchor not in anchors(file):
                yield f"{page}:{number}", f"leads to the heading {anchor} of {file.name}, which it has not"
        for name in re.findall(r"`((?:\./)?(?:scripts/|tests/|docs/|examples/|include/|src/|cmake/)[\w./-]+|\./\w+\.sh)", line):
            if not (root / name).exists() and not list((root / name).parent.glob((root / name).name + ".*")):
                yield f"{page}:{number}", f"names {name}, which is not here"


def in_list(page, number):
    """Whether an indented line goes on with an item of a list."""
    lines = page.read_text(encoding="utf-8").splitlines()
    for line in reversed(lines[:number - 1]):
        if re.match(r" *(?:[-*]|\d+\.) ", line):
            return True
        if line and not line.startswith(" "):
            return False
    return False


def check_five_commands(page, sessions):
    """From install to a corrected image, each session takes five commands at most."""
    for session in sessions:
        count = 0
        for block in read_blocks(page):
            if block.kind == "run" and session in block.sessions:
                commands = block.commands()
                first = next((i for i, command in enumerate(commands) if "-o corrected.tif" in command), None)
                count += len(commands) if first is None else first + 1
                if first is not None:
                    break
        else:
            yield f"{page}", f"{session} never leads to a corrected image"
        if count > 5:
            yield f"{page}", f"{session} takes {count} commands to a corrected image, more than five"


def check(root, compiler=None):
    tests = root / "tests/guides/CMakeLists.txt"
    replayed = set(REPLAYED.findall(tests.read_text(encoding="utf-8"))) if tests.exists() else set()
    for (page, session), script in REPLAYED_BY_ROOT.items():
        text = (root / script).read_text(encoding="utf-8") if (root / script).exists() else ""
        if re.search(rf"{re.escape(page)}", text) and re.search(rf"^\w+ {session}\b", text, re.M):
            replayed.add((page, session))
    index = root / "docs/README.md"
    for page in sorted((root / "docs").glob("*.md")) if index.exists() else ():
        if page != index and f"({page.name})" not in index.read_text(encoding="utf-8"):
            yield str(page), "stands in no line of docs/README.md"
    for page in pages(root):
        yield from check_page(page, root)
        for block in read_blocks(page):
            for what in check_block(block, root, replayed):
                yield str(block), what
            if compiler and block.language in ("c", "cpp") and block.kind in ("compiles", "file"):
                for what in check_compiles(block, root, compiler):
                    yield str(block), what
        if page.name == "getting-started-linux.md":
            yield from check_five_commands(page, ("packages", "archive"))


def violation_of(root, page, text, expected):
    """Whether a page with this text is reported for what it does wrong, and for nothing else."""
    (root / "docs").mkdir(exist_ok=True)
    (root / page).write_text(text, encoding="utf-8")
    found = list(check(root, "g++"))
    (root / page).unlink()
    if expected is None:
        return [] if not found else [f"{text!r} is reported: {found}"]
    return [] if len(found) == 1 and expected in found[0][1] else [f"{text!r} is not reported as {expected!r}: {found}"]


def self_test():
    def block(mark, language, *lines):
        return "\n".join([f"<!-- {mark} -->" if mark else "", f"```{language}", *lines, "```", ""])

    cases = [
        (block("run: shown", "sh", "true"), None),
        (block("", "sh", "true"), "neither run nor checked"),
        (block("compiles", "sh", "true"), "neither run nor checked"),
        (block("run: unknown", "sh", "true"), "nobody replays the session unknown"),
        (block("file: a.txt in unknown", "cmake", "project(x)"), "nobody replays the session unknown"),
        (block("file: a.txt", "cmake", "project(x)"), "in which session"),
        (block("covered by: tests/some.sh", "sh", "./made --fast && other"), None),
        (block("covered by: tests/some.sh", "sh", "made && missing"), 'has no "missing"'),
        (block("covered by: tests/none.sh", "sh", "made"), "which is not here"),
        (block("covered by: tests/some.sh", "text", "17 of 4"), None),
        (block("covered by: tests/some.sh", "text", "18 of 4"), 'has no "18"'),
        (block("covered by: tests/some.sh", "text", "7 of 4"), 'has no "7"'),
        (block("not run here: why", "bat", "cl x.cpp"), "does not tell its readers"),
        ("It is not run here.\n" + block("not run here: why", "bat", "cl x.cpp"), None),
        ("It is not run here.\n## Other\n" + block("not run here: why", "bat", "cl x.cpp"), "does not tell its readers"),
        (block("checked by a test: a name", "", "x"), None),
        (block("checked by a test: another name", "", "x"), "none has"),
        (block("compiles", "cpp", "#include <vector>", "std::vector<int> v(2);", "v.clear();"), None),
        (block("compiles", "cpp", "int main() { return 0; }"), None),
        (block("compiles", "cpp", "x = 1;"), "does not compile"),
        (block("compiles, given: int x;", "cpp", "x = 1;", "if (x) {}"), None),
        (block("compiles, given: unsigned code;", "c", "code = QXBC_SUCCESS;"), None),
        (block("compiles", "c", "code = QXBC_SUCCESS;"), "does not compile"),
        (block("written by: tests/writer.py", "", "1"), None),
        (block("written by: tests/other.py", "", "1"), "does not write this mark"),
        (block("drawing", "", "a -> b"), None),
        (block("", "", "a -> b"), "neither run nor checked"),
        (block("drawing", "ruby", "a"), "which nothing here checks"),
        ("text\n\n    make me\n", "indented block"),
        ("- text\n\n    more\n", None),
        ("[a](nowhere.md)\n", "leads to nowhere.md"),
        ("[a](#one-heading)\n\n# One `heading`\n", None),
        ("[a](#two)\n\n# One\n", "leads to the heading two"),
        ("![](../tests/some.sh)\n", "without telling"),
        ("![a picture](../tests/some.sh)\n", None),
        ("A call takes 5 ns.\n", "tells a measured time"),
        ("An exposure of 5 s.\n", None),
        ("`scripts/b.sh` measures.\n\nA call takes 5 ns.\n", "names scripts/b.sh"),
        (block("", "python", "x = 1"), "neither run nor checked"),
        ("It is in `tests/none.cpp`.\n", "names tests/none.cpp"),
        ("It is in `tests/some.sh`.\n", None),
    ]
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "tests/guides").mkdir(parents=True)
        (root / "include").mkdir()
        for header in ("QX_BackgroundCorrection_C.h", "QX_BackgroundCorrection.hpp"):
            (root / "include" / header).write_text("#define QXBC_SUCCESS 0u\n", encoding="utf-8")
        (root / "tests/some.sh").write_text("made && other # 17 4.\n", encoding="utf-8")
        (root / "tests/writer.py").write_text("written by: tests/writer.py\n", encoding="utf-8")
        (root / "tests/other.py").write_text("# a name\n", encoding="utf-8")
        (root / "tests/guides/CMakeLists.txt").write_text("qxbc_replay(docs/page.md shown)\n", encoding="utf-8")
        failures = [line for text, expected in cases for line in violation_of(root, "docs/page.md", text, expected)]
        five = "".join(block("run: archive", "sh", *["true"] * 4, "x -o corrected.tif") for _ in range(1))
        (root / "tests/guides/CMakeLists.txt").write_text(
            "qxbc_replay(docs/getting-started-linux.md archive)\n", encoding="utf-8")
        (root / "scripts").mkdir()
        (root / "scripts/try-guides.sh").write_text("try docs/getting-started-linux.md\nfollow packages\n", encoding="utf-8")
        guide = "docs/getting-started-linux.md"
        both = five + five.replace("archive", "packages")
        failures += violation_of(root, guide, both, None)
        failures += violation_of(root, guide, both.replace("true", "true\ntrue", 1), "takes 6 commands")
        failures += violation_of(root, guide, five, "packages never leads")
        (root / "docs/README.md").write_text("none\n", encoding="utf-8")
        failures += violation_of(root, "docs/page.md", "Text.\n", "in no line of docs/README.md")
        (root / "docs/README.md").write_text("[it](page.md)\n", encoding="utf-8")
        failures += violation_of(root, "docs/page.md", "Text.\n", None)
        (root / "docs/README.md").unlink()
        (root / "scripts/try-guides.sh").write_text("try docs/getting-started-linux.md\n", encoding="utf-8")
        failures += violation_of(root, guide, both, "nobody replays the session packages")
    for failure in failures:
        print(failure)
    sys.exit(1 if failures else 0)


def main():
    if sys.argv[1:] == ["--self-test"]:
        self_test()
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    violations = list(check(pathlib.Path(sys.argv[1]).resolve(), *sys.argv[2:]))
    for place, what in violations:
        print(f"{place}: {what}")
    sys.exit(1 if violations else 0)


if __name__ == "__main__":
    main()
