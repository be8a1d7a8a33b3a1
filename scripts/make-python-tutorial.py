#!/usr/bin/python3
"""Makes docs/python-tutorial.md and its pictures of examples/python_tutorial.py: runs it cell by cell, in this process.

    scripts/make-python-tutorial.py [FOLDER]      (default: docs)

Needs the library (QX_BACKGROUNDCORRECTION_LIBRARY, or build/linux), numpy, dask and matplotlib. A test compares the text.
"""
import contextlib
import io
import os
import re
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent
os.environ.setdefault("QX_BACKGROUNDCORRECTION_LIBRARY", str(SOURCE / "build" / "linux" / "lib"))
sys.path.insert(0, str(SOURCE / "python"))

import matplotlib  # noqa: E402

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

HEAD = ("<!-- Made of examples/python_tutorial.py by scripts/make-python-tutorial.py; change that, not this. -->\n")


def parts(cell):
    """The comment at the beginning of a cell as text, and its code."""
    lines = cell.strip("\n").split("\n")
    count = next((i for i, line in enumerate(lines) if not line.startswith("#")), len(lines))
    return "\n".join(re.sub(r"^# ?", "", line) for line in lines[:count]).strip(), "\n".join(lines[count:]).strip("\n")


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else SOURCE / "docs"
    cells = (SOURCE / "examples" / "python_tutorial.py").read_text(encoding="utf-8").split("\n# %%\n")[1:]
    names, page, pictures = {"__name__": "tutorial"}, [HEAD], 0
    for number, cell in enumerate(cells, 1):
        text, code = parts(cell)
        page.append(text + "\n")
        page.append(f"```python\n{code}\n```\n")
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(code, f"cell {number}", "exec"), names)
        if printed.getvalue():
            page.append(f"```\n{printed.getvalue().rstrip()}\n```\n")
        for figure in map(plt.figure, plt.get_fignums()):
            pictures += 1
            name = f"python-tutorial-{pictures}.png"
            figure.savefig(folder / name, dpi=80, metadata={"Software": None})
            page.append(f"![what the cell draws]({name})\n")
        plt.close("all")
    (folder / "python-tutorial.md").write_text("\n".join(page), encoding="utf-8")


if __name__ == "__main__":
    main()
