#!/usr/bin/env python3
"""Draws the pictures of the guides: docs/live-image.svg, docs/slots.svg, docs/file-bytes.svg.

scripts/draw-pictures.py           writes them
scripts/draw-pictures.py --check   fails when one is not what would be written

Operations and their order come from the public header, the bytes from src/file/CalibrationFormat.h. Each picture has a
ground of its own, light or dark as the reader has it, so that it can be read on any page.
"""
import re
import sys
from pathlib import Path
from xml.sax.saxutils import escape

ROOT = Path(__file__).resolve().parents[1]

STYLE = """
text { font-family: "Segoe UI", "Helvetica Neue", "DejaVu Sans", sans-serif; font-size: 14px; fill: #1f2328; }
.small { font-size: 12px; fill: #57606a; }
.head { font-weight: bold; }
.code { font-family: Consolas, Menlo, "DejaVu Sans Mono", monospace; font-size: 13px; }
.ground { fill: #ffffff; stroke: #d0d7de; }
.lane { fill: #f6f8fa; }
.box { fill: #ffffff; stroke: #57606a; stroke-width: 1.2; }
.once { fill: #ddf4ff; stroke: #0969da; stroke-width: 1.2; }
.setting { fill: #fff8c5; stroke: #9a6700; stroke-width: 1.2; }
.image { fill: #dafbe1; stroke: #1a7f37; stroke-width: 1.2; }
.line { fill: none; stroke: #57606a; stroke-width: 1.5; }
.tip { fill: #57606a; }
@media (prefers-color-scheme: dark) {
  text { fill: #e6edf3; }
  .small { fill: #9198a1; }
  .ground { fill: #0d1117; stroke: #3d444d; }
  .lane { fill: #161b22; }
  .box { fill: #0d1117; stroke: #9198a1; }
  .once { fill: #10253f; stroke: #4493f8; }
  .setting { fill: #2b2210; stroke: #d29922; }
  .image { fill: #102a1a; stroke: #3fb950; }
  .line { stroke: #9198a1; }
  .tip { fill: #9198a1; }
}
"""


class TPicture:
    """An SVG that grows: boxes, texts and arrows at places in pixels."""

    def __init__(self, width, height, title, description):
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" '
            'role="img" aria-labelledby="title description">',
            f'<title id="title">{escape(title)}</title>',
            f'<desc id="description">{escape(description)}</desc>',
            f"<style>{STYLE}</style>",
            '<defs><marker id="tip" viewBox="0 0 10 10" refX="9" refY="5" markerWidth="7" markerHeight="7" '
            'orient="auto-start-reverse"><path class="tip" d="M0 0 L10 5 L0 10 z"/></marker></defs>']
        self.rectangle(0.5, 0.5, width - 1, height - 1, "ground", 6)

    def rectangle(self, x, y, width, height, kind, radius=4):
        self.parts.append(f'<rect class="{kind}" x="{x}" y="{y}" width="{width}" height="{height}" rx="{radius}"/>')

    def text(self, x, y, text, kind="", anchor="start"):
        self.parts.append(f'<text x="{x}" y="{y}"' + (f' class="{kind}"' if kind else "") +
                          (f' text-anchor="{anchor}"' if anchor != "start" else "") + f">{escape(text)}</text>")

    def box(self, x, y, width, height, kind, text, *small):
        self.rectangle(x, y, width, height, kind)
        at = y + height / 2 + 5 - 8 * len(small)
        self.text(x + width / 2, at, text, "head" if small else "", "middle")
        for number, line in enumerate(small, 1):
            self.text(x + width / 2, at + 16 * number + 1, line, "small", "middle")

    def arrow(self, path, both=False, tip=True):
        tips = (' marker-start="url(#tip)"' if both else "") + (' marker-end="url(#tip)"' if tip else "")
        self.parts.append(f'<path class="line" d="{path}"{tips}/>')

    def svg(self):
        return "\n".join([*self.parts, "</svg>", ""])


def live_image():
    picture = TPicture(
        840, 356, "The flow of a live image",
        "Once for each stack, dark frames are averaged and filtered into a correction, which calibration files hold. When "
        "a setting changes, the active correction is scaled and cut to the background. Every live image has the "
        "background subtracted, by the library or by a delegate of the host.")
    for y, name, small in ((10, "Once", "for each stack"), (124, "Each setting", "that changes"),
                           (238, "Every image", "")):
        picture.rectangle(10, y, 820, 108, "lane")
        picture.text(22, y + 50, name, "head")
        picture.text(22, y + 68, small, "small")
    width, height = 180, 60
    column = [136, 374, 612]
    row = [34, 148, 262]
    middle = [x + width / 2 for x in column]
    picture.box(column[0], row[0], width, height, "once", "Dark frames", "exposure t0, intensity I0")
    picture.box(column[1], row[0], width, height, "once", "Correction", "averaged, 3 × 3 median")
    picture.box(column[2], row[0], width, height, "box", "Calibration file", "or offline store")
    picture.box(column[0], row[1], width, height, "setting", "Settings", "exposure t, intensity I,",
                "level L, region")
    picture.box(column[1], row[1], width, height, "setting", "Scale and cut", "× I · t · L / (I0 · t0)")
    picture.box(column[2], row[1], width, height, "setting", "Background", "kept until the next setting")
    picture.box(column[0], row[2], width, height, "image", "Live image", "16 bits, region's size")
    picture.box(column[1], row[2], width, height, "image", "Subtract", "not below 0;",
                "or your delegate does it")
    picture.box(column[2], row[2], width, height, "image", "Corrected image", "in place, or another buffer")
    for y in row:
        picture.arrow(f"M{column[0] + width} {y + 30} H{column[1] - 2}")
        picture.arrow(f"M{column[1] + width + (2 if y == row[0] else 0)} {y + 30} H{column[2] - 2}", both=y == row[0])
    picture.arrow(f"M{middle[1]} {row[0] + height} V{row[1] - 2}")
    picture.text(middle[1] + 8, row[0] + height + 34, "the active one", "small")
    picture.arrow(f"M{middle[2]} {row[1] + height} V235 H{middle[1]} V{row[2] - 2}")
    return picture.svg()


def operations():
    header = (ROOT / "include/QX_BackgroundCorrection.h").read_text(encoding="utf-8")
    own = header[header.index("class QX_IBackgroundCorrection"):]
    found = re.findall(r"/// Slot (\d+)\.(?:(?!/// Slot).)*?virtual [\w ]+?[ *&]+(\w+)\(", own[own.index("/// Slot 1."):],
                       re.S)
    assert [int(number) for number, _ in found] == list(range(1, len(found) + 1)), found
    return [name for _, name in found]


def slots():
    names = operations()
    row, top, left, right, width = 22, 74, 16, 464, 360
    height = top + row * (len(names) + 2) + 64
    picture = TPicture(
        840, height, "The order of the slots",
        "Two tables of virtual functions side by side. For Windows, slot n of the interface is entry n; entry 0 destroys, "
        "and frees when its flag says so. On Linux there are two destructor entries, so that slot n, from 1 on, is entry "
        f"n + 1. Slot 1 is {names[0]}, the last slot, {len(names)}, is {names[-1]}.")
    picture.text(left, 30, "Windows (Microsoft's ABI)", "head")
    picture.text(left, 50, "slot n is entry n", "small")
    picture.text(right, 30, "Linux (GCC, Clang)", "head")
    picture.text(right, 50, "slot n is entry n + 1, from slot 1 on", "small")

    def entry(x, number, text, kind):
        y = top + row * number
        picture.rectangle(x, y, width, row - 3, kind, 3)
        picture.text(x + 30, y + 14.5, str(number), "code", "end")
        picture.text(x + 44, y + 14.5, text, "code" if kind != "setting" else "small")

    entry(left, 0, "destroys; flag 1: and frees", "setting")
    entry(right, 0, "destroys", "setting")
    entry(right, 1, "destroys and frees", "setting")
    for slot, name in enumerate(names, 1):
        entry(left, slot, name, "once")
        entry(right, slot + 1, name, "once")
        y = top + row * slot + (row - 3) / 2
        picture.arrow(f"M{left + width + 2} {y} C{left + width + 40} {y} {right - 40} {y + row} {right - 2} {y + row}",
                      tip=False)
    y = height - 36
    picture.text(left, y, "In the delegate no destructor stands before the operations: index n is entry n on both.", "small")
    picture.text(left, y + 18, "A host built with MinGW has tables like those on the right; the header makes its calls "
                 "reach those on the left.", "small")
    return picture.svg()


def format_records():
    source = (ROOT / "src/file/CalibrationFormat.h").read_text(encoding="utf-8")
    constants = {name: int(value) for name, value in re.findall(r"std::size_t (k\w+) = (\d+);", source)}
    signature = re.search(r'kSignature\[\] = "([^"]*)"', source)[1]
    records = {}
    for name, identifier, version, length in re.findall(r"TRecord (k\w+) = \{(\d+), (\d+), (\w+)\};", source):
        records[name] = int(identifier), int(version), constants.get(length) or int(length)
    return signature, constants["kRecordHeaderLength"], records


def file_bytes():
    """The file of the worked example in docs/calibration-file.md: one correction of 3 x 2 pixels."""
    signature, head, records = format_records()
    pixels = 2 * 3 * 2
    picture = TPicture(
        840, 476, "The bytes of a calibration file",
        "A file with one correction of 3 × 2 pixels, in its order: signature and structure version, the record with the "
        "number of corrections, then the records of a correction: its beginning, key, width, height, exposure, intensity "
        "and pixels. Each record is identifier, version and length of 32 bits each, and its data.")
    picture.text(16, 30, "A calibration file with one correction of 3 × 2 pixels", "head")
    picture.text(16, 50, "Offsets and lengths in bytes; all numbers are little-endian", "small")
    rows = [("signature", None, len(signature), signature, "box"),
            ("structure version", None, 4, "1", "box")]
    shown = [("kCorrectionCount", "corrections that follow", "1", "setting"),
             ("kCorrectionStart", "a correction begins", "no data", "once"),
             ("kKey", "key, padded with zeros", "dark", "once"),
             ("kWidth", "width", "3", "once"), ("kHeight", "height", "2", "once"),
             ("kExposure", "exposure in seconds", "0.5", "once"),
             ("kIntensity", "light intensity in percent", "100", "once"),
             ("kBackground", "pixels, row by row", "100 101 102 1000 1001 65535", "image")]
    for name, what, value, kind in shown:
        length = pixels if name == "kBackground" else records[name][2]
        rows.append((what, records[name], length, value, kind))
    offset, y, row = 0, 68, 32
    for what, record, length, value, kind in rows:
        picture.text(64, y + 18, str(offset), "code", "end")
        x = 80
        if record:
            for part, width in ((str(record[0]), 44), (str(record[1]), 34),
                                (str(576 + pixels) if record[0] == 62 else str(length), 48)):
                picture.rectangle(x, y, width, row - 6, "lane")
                picture.rectangle(x, y, width, row - 6, kind, 3)
                picture.text(x + width / 2, y + 18, part, "code", "middle")
                x += width + 2
        if length:
            width = {4: 60, pixels: 290}.get(length, 504 - x)
            picture.rectangle(x, y, width, row - 6, kind, 3)
            picture.text(x + 10, y + 18, value, "code")
        else:
            picture.text(x + 10, y + 18, value, "small")
        picture.text(520, y + 18, what, "")
        size = f"{head} + {length}" if record else str(length)
        picture.text(822, y + 18, size, "code", "end")
        offset += length + (head if record else 0)
        y += row
    picture.text(64, y + 18, str(offset), "code", "end")
    picture.text(80, y + 18, "end of the file", "small")
    y += 36
    picture.text(16, y + 18, "A record:", "")
    x = 92
    for part, width in (("identifier, 4", 100), ("version, 4", 90), ("length, 4", 90), ("data, as long as its length says",
                                                                                     222)):
        picture.rectangle(x, y, width, row - 6, "box", 3)
        picture.text(x + width / 2, y + 18, part, "small", "middle")
        x += width + 2
    picture.text(610, y + 18, "(record 62 has no data)", "small")
    return picture.svg()


PICTURES = {"live-image.svg": live_image, "slots.svg": slots, "file-bytes.svg": file_bytes}


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(__doc__)
    for name, draw in PICTURES.items():
        path = ROOT / "docs" / name
        if not sys.argv[1:]:
            path.write_text(draw(), encoding="utf-8")
        elif not path.exists() or path.read_text(encoding="utf-8") != draw():
            sys.exit(f"{path} is not what scripts/draw-pictures.py draws: run it")


if __name__ == "__main__":
    main()
