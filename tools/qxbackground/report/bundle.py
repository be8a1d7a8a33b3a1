#!/usr/bin/env python3
"""Puts the report's page together: page/index.html with the style sheet, the scripts and Chart.js in it, as a C++ source.

bundle.py CHART_JS OUTPUT.cpp [PAGE.html]    (the page alone as well, for looking at it)
"""
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent / "page"
# Longer literals are more than some compilers take.
PIECE = 8000


def page(chart):
    def put(match):
        name = match.group(1)
        text = pathlib.Path(chart).read_text(encoding="utf-8") if name == "chart.js" else (
            HERE / name).read_text(encoding="utf-8")
        text = re.sub(r"//# sourceMappingURL=\S+", "", text)  # would be looked for over the network
        if re.search(r"</(script|style)", text, re.I):
            raise SystemExit(f"{name} would end the element that it is put into")
        return text

    html = (HERE / "index.html").read_text(encoding="utf-8")
    return re.sub(r"/\* bundle: (\S+) \*/", put, html)


def literal(data):
    # Octal escapes end after three digits, whatever follows them.
    text = "".join(chr(b) if 32 <= b < 127 and chr(b) not in '"\\?' else f"\\{b:03o}" for b in data)
    return f'    "{text}",\n'


def source(pieces):
    body = "".join(pieces)
    return ('// Written by bundle.py.\n#include "report/PageResource.h"\n\nnamespace workbench {\n\n'
            f"const char* const kPagePieces[] = {{\n{body}    nullptr}};\n\n}} // namespace workbench\n")


def main():
    html = page(sys.argv[1])
    if html.count('"QXBACKGROUND-DATA"') != 1:
        raise SystemExit("the page has to hold the place of its data exactly once")
    data = html.encode()
    if len(sys.argv) > 3:
        pathlib.Path(sys.argv[3]).write_bytes(data)
    text = source(literal(data[at:at + PIECE]) for at in range(0, len(data), PIECE))
    pathlib.Path(sys.argv[2]).write_text(text, encoding="ascii")


if __name__ == "__main__":
    main()
