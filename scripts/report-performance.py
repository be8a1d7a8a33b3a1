#!/usr/bin/env python3
"""Turns the output of the benchmarks into docs/performance.md and docs/performance.svg.

Usage: report-performance.py COMPARE.json SCALING.txt DOCS_FOLDER
"""
import datetime
import json
import math
import os
import re
import sys

WANTED = {  # the least ratio that each operation is meant to reach, by rival and size
    ("apply in place", "limit"): {512: 0.95, 2048: 0.95, 4096: 0.95},
    ("apply in place", "opencv"): {64: 1.0, 512: 1.05, 2048: 1.0, 4096: 1.05},
    ("apply into output", "opencv"): {512: 0.97, 2048: 1.2, 4096: 1.05},
    ("setting change", "opencv"): {512: 1.1, 2048: 1.1, 4096: 1.1},
    ("average of 10", "opencv"): {512: 1.9, 2048: 2.3, 4096: 3.0},
    ("median", "opencv"): {512: 4.0, 2048: 1.9, 4096: 1.5},
    ("add correction", "opencv"): {512: 2.0, 2048: 2.0, 4096: 2.0},
    ("statistics", "opencv"): {512: 4.0, 2048: 4.0, 4096: 2.8},
    ("average of 10", "limit"): {2048: 0.95},
    ("ring in place", "opencv"): {2048: 1.0, 4096: 1.0},
    ("ring in place", "limit"): {2048: 0.97, 4096: 0.97},
    ("ring, an output each", "opencv"): {2048: 1.0, 4096: 1.0},
    ("ring, one output", "opencv"): {2048: 1.1, 4096: 1.1},
    ("save", "limit"): {512: 0.9, 2048: 0.9},
    ("load", "limit"): {512: 0.95, 2048: 0.95},
}
COLOURS = {"literal": "#b0b0b0", "opencv": "#c05020", "limit": "#2060a0", "avx2": "#40a040"}


def time_text(seconds):
    for unit, factor in (("ns", 1e9), ("µs", 1e6), ("ms", 1e3)):
        if seconds * factor < 1000:
            return f"{seconds * factor:.3g} {unit}"
    return f"{seconds:.3g} s"


def ratio_text(row, rival):
    ratio = row.get("ratio", {}).get(rival)
    if ratio is None:
        return ""
    wanted = WANTED.get((row["operation"], rival), {}).get(row["size"])
    text = f"{ratio:.2f}"
    if wanted is None:
        return text
    return f"**{text}** (≥ {wanted})" if ratio >= wanted else f"{text} (**not** ≥ {wanted})"


def table(rows):
    lines = ["| operation | size | median | spread | to literal | to OpenCV | to the limit |",
             "|---|---|---|---|---|---|---|"]
    for row in rows:
        median, least, greatest = row["seconds"]["library"]
        lines.append(f"| {row['operation']} | {row['size']}² | {time_text(median)} | "
                     f"{time_text(least)} – {time_text(greatest)} | {ratio_text(row, 'literal')} | "
                     f"{ratio_text(row, 'opencv')} | {ratio_text(row, 'limit')} |")
    return "\n".join(lines)


def plot(rows):
    """Ratios on a logarithmic scale: a line of its own for each operation and size, a dot for each rival."""
    rows = [row for row in rows if row.get("ratio")]
    left, top, step, width = 190, 50, 16, 620
    low, high = math.log10(0.2), math.log10(400)
    height = top + step * len(rows) + 40

    def x(ratio):
        return left + width * (min(max(math.log10(ratio), low), high) - low) / (high - low)

    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{left + width + 30}" height="{height}" '
           'font-family="sans-serif" font-size="11">',
           f'<rect width="100%" height="100%" fill="white"/>',
           f'<text x="{left}" y="18" font-size="13">How many times the library\'s time each rival takes '
           '(right of 1: the library is faster)</text>']
    for index, (rival, colour) in enumerate(COLOURS.items()):
        svg.append(f'<circle cx="{left + 8 + index * 90}" cy="32" r="4" fill="{colour}"/>'
                   f'<text x="{left + 16 + index * 90}" y="36">{rival}</text>')
    for ratio in (0.25, 0.5, 1, 2, 5, 10, 20, 50, 100, 200):
        heavy = ' stroke-width="2"' if ratio == 1 else ""
        svg.append(f'<line x1="{x(ratio):.1f}" y1="{top - 4}" x2="{x(ratio):.1f}" y2="{height - 30}" '
                   f'stroke="#d8d8d8"{heavy}/><text x="{x(ratio):.1f}" y="{height - 14}" '
                   f'text-anchor="middle">{ratio:g}</text>')
    for index, row in enumerate(rows):
        y = top + step * index + step / 2
        svg.append(f'<text x="{left - 8}" y="{y + 4}" text-anchor="end">{row["operation"]} {row["size"]}²</text>')
        for rival, ratio in row["ratio"].items():
            svg.append(f'<circle cx="{x(ratio):.1f}" cy="{y}" r="4" fill="{COLOURS[rival]}" fill-opacity="0.85"/>')
    svg.append("</svg>")
    return "\n".join(svg) + "\n"


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        text = file.read()
    name = re.search(r"model name\s*:\s*(.*)", text)
    sets = [flag for flag in ("avx2", "avx512bw") if f" {flag}" in text]
    family, model = (re.search(rf"^{word}\s*:\s*(\d+)", text, re.M) for word in ("cpu family", "model"))
    kind = f" (family {family.group(1)}, model {model.group(1)})" if family and model else ""
    return (f"{name.group(1) if name else 'unknown'}{kind}, {os.cpu_count()} cores seen, "
            f"{', '.join(sets) or 'SSE2 only'}")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        report = json.load(file)
    with open(sys.argv[2], encoding="utf-8") as file:
        scaling = file.read().rstrip()
    listing = [row for row in report["rows"] if row["operation"].startswith("list")]
    listing_text = "; ".join(
        f"{row['size']}²: {time_text(row['seconds']['library'][0])} for 100 corrections" for row in listing)
    median_text = ", ".join(f"{row['ratio']['avx2']:.2f} times the time at {row['size']}²"
                            for row in report["rows"] if "avx2" in row.get("ratio", {})) or "(not measured here)"
    with open(os.path.join(sys.argv[3], "performance.svg"), "w", encoding="utf-8") as file:
        file.write(plot(report["rows"]))
    text = f"""# Performance

Written by `scripts/bench.sh`; measured on {datetime.date.today().isoformat()}. What makes the difference, and what is
not reached and why, is in [performance-notes.md](performance-notes.md).

- Machine: {processor()}
- Compiler: GCC {report['compiler']}, preset `linux` (`-O3`, `-ffp-contract=off`; kernels once for SSE2, once with
  `-mavx2`, once with AVX-512's F, BW, DQ and VL, chosen at run time)
- Medians of {report['rounds']} rounds. The rivals take turns in one process on one core, so that noise hits all of them;
  each row has a process of its own. Times are of this machine and this day, ratios mean more.

A ratio is the rival's time by the library's: above 1 the library is faster. The library is called through its exports,
lock and checks included; averaging and median, which are no operations of their own, as kernels. *Literal* is the
algorithm as one would write it down, at `-O2`. *OpenCV* is its nearest equivalent on one thread (`subtract`,
`convertTo`, `accumulate` and `convertTo`, `medianBlur` 3, `minMaxLoc` and `mean`), into images that exist already. *The
limit* is the fastest of four loops with the same memory traffic and next to no arithmetic; for files plain `fwrite`, and
plain `fread` into newly allocated memory. In brackets: what was aimed at.

Most rows work on the same images again and again. In rows named *odd* these begin anywhere and the region is a part of a
larger correction. A *ring* is a live view: 40 frames of 2048² or 12 of 4096² in turn, at all addresses that allocators
give (0, 8, 16 ... 56 bytes behind a line of the cache), corrected in place, each into an output of its own, or all into
one; its times are for one frame.

{table(row for row in report['rows'] if not row['operation'].startswith('list'))}

Opening a file without its pixels: {listing_text}.

The median filter with AVX2 takes, against the one with AVX-512: {median_text}.

![Ratios](performance.svg)

## Growth with the number of corrections

Nanoseconds per correction (1 × 1 pixels); the ratio says how much more each costs in the large list.

<!-- written by: scripts/report-performance.py -->
```
{scaling}
```
"""
    with open(os.path.join(sys.argv[3], "performance.md"), "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
