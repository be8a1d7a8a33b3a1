#!/usr/bin/env python3
"""Writes the guides as Doxygen takes them: scripts/docs-site.py FOLDER

On a hosting site the pages link to each other by file names and to headings by the names that such sites give them.
Doxygen has names of its own; so each page and heading gets a label here, and each link becomes one to a label. Examples
become pages; what is not on the site becomes text. A link that leads nowhere is an error.
"""
import re
import shutil
import sys
from pathlib import Path

from guide_blocks import FENCE

ROOT = Path(__file__).resolve().parents[1]
LANGUAGES = {".c": "c", ".cpp": "cpp", ".cs": "cs", ".py": "py"}


def slug(heading):
    heading = re.sub(r"[`*]|\[([^\]]*)\]\([^)]*\)", lambda match: match.group(1) or "", heading)
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def label_of(page, anchor=""):
    name = page.relative_to(ROOT).with_suffix("").as_posix()
    return re.sub(r"\W", "_", "page_" + name + ("_" + anchor if anchor else "")).lower()


def pages():
    others = [ROOT / name for name in ("CONTRIBUTING.md", "CHANGELOG.md", "examples/README.md")]
    return [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md")), *filter(Path.exists, others)]


def examples():
    return sorted(path for path in (ROOT / "examples").iterdir() if path.suffix in LANGUAGES)


def linked(page, text, target):
    """A link as Doxygen takes it, or its text alone where it leads off the site."""
    if re.match(r"\w+:", target):
        return f"[{text}]({target})"
    name, _, anchor = target.partition("#")
    file = (page.parent / name).resolve() if name else page
    if not file.exists():
        sys.exit(f"{page}: {target} leads nowhere")
    if file == ROOT / "docs":
        file = ROOT / "docs/README.md"
    if file in pages() and page == ROOT / "docs/README.md" and not anchor:
        return f'@subpage {label_of(file)} "{text}"'  # the index orders the tree
    if file in pages():
        return f"[{text}](@ref {label_of(file, anchor)})"
    if file.parent == ROOT / "include":
        return f"[{text}](@ref {file.name})"
    if file in examples():
        return f"[{text}](@ref {label_of(file)}_{file.suffix[1:]})"
    return text


def code(text):
    """Code within a line. Doxygen would take some of it for commands, even between backquotes."""
    if not re.search(r"[\\@%#']", text):
        return f"`{text}`"
    return "<code>" + re.sub(r"--|[\\@%#<>\"&$*|]", lambda match: "\\" + match[0], text) + "</code>"


def picture(page, text, target):
    """A picture whose text is for those who cannot see it, not a line below it."""
    file = page.parent / target
    if not file.exists():
        sys.exit(f"{page}: {target} is not here")
    return f'<img src="{file.name}" alt="{text}"/>'


def site_page(page):
    lines, inside = [], None
    for line in page.read_text(encoding="utf-8").splitlines():
        fence = FENCE.match(line)
        if inside:
            inside = None if line.strip() == inside else inside
        elif fence:
            inside = fence.group(2)
            if fence.group(3) not in ("c", "cpp"):  # Doxygen colours these alone
                line = f"{fence.group(1)}{fence.group(2)}{{.unparsed}}"
        elif re.fullmatch(r" *<!--.*-->", line):
            continue
        else:
            # Code first: nothing in it is markup, a link or a command of Doxygen.
            parts = re.split(r"(`[^`]+`)", line)
            line = "".join(code(part[1:-1]) if part.startswith("`") else part for part in parts)
            line = re.sub(r"!\[([^\]]+)\]\(([^)\s]+)\)", lambda match: picture(page, match[1], match[2]), line)
            line = re.sub(r"\[([^\]]+)\]\(([^)\s]+)\)", lambda match: linked(page, match[1], match[2]), line)
            heading = re.match(r"(#+) (.*)", line)
            if heading:
                top = heading[1] == "#"
                line += f" {{#{label_of(page, '' if top else slug(heading[2]))}}}"
        lines.append(line)
    return "\n".join(lines) + "\n"


def main():
    folder = Path(sys.argv[1])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for page in pages():
        name = page.relative_to(ROOT).as_posix().replace("/", "-")
        (folder / name).write_text(site_page(page), encoding="utf-8")
    listed = ["# Sources of the examples {#page_examples}", ""]
    for example in examples():
        label = f"{label_of(example)}_{example.suffix[1:]}"
        listed.append(f"- @subpage {label}")
        text = f"# {example.name} {{#{label}}}\n\n\\include{{lineno}} {example.name}\n"
        (folder / f"example-{example.name}.md").write_text(text, encoding="utf-8")
    (folder / "examples.md").write_text("\n".join(listed) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
