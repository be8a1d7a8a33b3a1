"""The fenced blocks of a guide, and what the comment above each says about it.

A block is marked by a comment in the line above its fence, which no reader sees:

    <!-- run: SESSION, ... -->            its commands are run, in this shell session or in each of these
    <!-- run: SESSION, ... as root -->    the same, where the session belongs to root: it installs packages
    <!-- file: NAME in SESSION, ... -->   is written into the session's current folder
    <!-- prints -->                       what the block before printed; a line "..." stands for any lines
    <!-- compiles -->                     is a whole source, or statements of a function
    <!-- compiles, given: DECLARATIONS -->  the same, with these before it
    <!-- covered by: FILE -->             that test or script runs the same; it has each program (or figure) of the block
    <!-- not run here: WHY -->            for Windows' own tools; the section says "not run here" for readers
    <!-- checked by a test: NAME -->      the test of that name reads it
    <!-- written by: FILE -->            that script writes the page
    <!-- drawing -->                      says nothing that could be wrong by itself
"""
import re
from pathlib import Path

FENCE = re.compile(r"^( *)(```+)\s*(\S*)\s*$")
MARK = re.compile(r"^ *<!-- (.*?) -->$")
SHELLS = ("sh", "bat")


class TBlock:
    """A fenced block: its page, the number of its first line, its language, its mark and its text."""

    def __init__(self, page, line, language, mark, lines):
        self.page, self.line, self.language, self.text = Path(page), line, language, "\n".join(lines) + "\n"
        self.mark = mark
        self.kind, _, rest = mark.partition(":")
        self.kind, _, self.detail = self.kind.partition(",")
        self.rest = rest.strip()
        self.as_root = self.rest.endswith(" as root")
        self.sessions = []
        if self.kind in ("run", "file"):
            names = self.rest.removesuffix(" as root")
            if self.kind == "file":
                self.name, _, names = names.partition(" in ")
            self.sessions = [name.strip() for name in names.split(",")]

    def __str__(self):
        return f"{self.page}:{self.line}"

    def commands(self):
        """The commands of a shell block: its lines, continued ones joined, without blank lines and comments."""
        joined = re.sub(r"\\\n\s*" if self.language == "sh" else r"\^\n\s*", "", self.text)
        return [line for line in joined.splitlines() if line.strip() and not line.lstrip().startswith(("#", "rem "))]


def read_blocks(page):
    """The blocks of a page in their order. A fence that is never closed is an error."""
    lines = Path(page).read_text(encoding="utf-8").splitlines()
    found, at = [], 0
    while at < len(lines):
        fence = FENCE.match(lines[at])
        if not fence:
            at += 1
            continue
        indent, ticks, language = fence.groups()
        end = next((i for i in range(at + 1, len(lines)) if lines[i].strip() == ticks), None)
        if end is None:
            raise ValueError(f"{page}:{at + 1}: the block is never closed")
        mark = MARK.match(lines[at - 1]) if at > 0 else None
        found.append(TBlock(page, at + 1, language, mark.group(1) if mark else "",
                            [line.removeprefix(indent) for line in lines[at + 1:end]]))
        at = end + 1
    return found


def without_blocks(page):
    """The numbered lines of a page outside of fenced blocks and comments."""
    inside = None
    for number, line in enumerate(Path(page).read_text(encoding="utf-8").splitlines(), 1):
        fence = FENCE.match(line)
        if inside:
            inside = None if line.strip() == inside else inside
        elif fence:
            inside = fence.group(2)
        else:
            yield number, re.sub(r"<!--.*?-->", "", line)
