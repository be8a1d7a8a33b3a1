"""What the tests of the workbench share: running programs, and TIFF files written and read without the workbench."""
import hashlib
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import numpy as np

TOOL = os.environ["QXBACKGROUND"]
HOST = os.environ["QX_TEST_HOST"]
SOURCE = Path(os.environ["QX_SOURCE_DIR"])
UNDER_WINE = "QX_UNDER_WINE" in os.environ
SANITIZED = "QX_SANITIZED" in os.environ


def not_sanitized(test):
    """What is said of memory does not hold where sanitizers take memory of their own."""
    return unittest.skipIf(SANITIZED, "the sanitizers' own memory counts as well")(test)


def not_under_wine(why):
    return unittest.skipIf(UNDER_WINE, f"not under Wine: {why}")


def real_frames():
    """The folder of small real frames, or None."""
    # A relative path is one from the checkout; the tests run somewhere below the build folder.
    data = SOURCE / os.environ.get("QX_SAMPLE_DATA", SOURCE.parent / "shared" / "data")
    folder = data / "darks-sbig-st10" / "crop512"
    return folder if folder.is_dir() else None


def ifd_entry(order, tag, kind, values):
    codes = {3: "H", 4: "I"}
    packed = struct.pack(order + codes[kind] * len(values), *values)
    assert len(packed) <= 4
    return struct.pack(order + "HHI", tag, kind, len(values)) + packed.ljust(4, b"\0")


def tiff_bytes(pages, order="<", bits=16, tags=None, rows_per_strip=None):
    """A classic TIFF, one strip per page. `tags` replaces entries: {tag: (type, [values])}."""
    out = bytearray((b"II" if order == "<" else b"MM") + struct.pack(order + "HI", 42, 0))
    link = 4
    for page in pages:
        height, width = page.shape
        data = np.ascontiguousarray(page).astype(order + ("u2" if bits == 16 else "u1")).tobytes()
        strip = len(out)
        out += data + b"\0" * (len(data) % 2)
        entries = {256: (4, [width]), 257: (4, [height]), 258: (3, [bits]), 259: (3, [1]), 262: (3, [1]),
                   273: (4, [strip]), 277: (3, [1]), 278: (4, [height]), 279: (4, [len(data)]), 339: (3, [1])}
        entries.update(tags or {})
        struct.pack_into(order + "I", out, link, len(out))
        out += struct.pack(order + "H", len(entries))
        for tag in sorted(entries):
            out += ifd_entry(order, tag, *entries[tag])
        link = len(out)
        out += struct.pack(order + "I", 0)
    return bytes(out)


def write_tiff(path, pages, **how):
    Path(path).write_bytes(tiff_bytes(pages, **how))


def write_fits(path, page, **cards):
    """A FITS file of one 16-bit image; __ in a keyword stands for a hyphen."""
    height, width = page.shape
    header = {"SIMPLE": "T", "BITPIX": 16, "NAXIS": 2, "NAXIS1": width, "NAXIS2": height, "BZERO": 32768, "BSCALE": 1}
    header.update({name.replace("__", "-"): value for name, value in cards.items() if value is not None})
    text = "".join(f"{name:<8}= " + (f"'{value:<8}'" if isinstance(value, str) and value != "T" else f"{value:>20}")
                   .ljust(70) for name, value in header.items()) + "END"
    data = (page.astype(np.int32) - 32768).astype(">i2").tobytes()
    Path(path).write_bytes(text.ljust(-(-len(text) // 2880) * 2880).encode() + data + bytes(-len(data) % 2880))


def read_tiff(path):
    """The pages of a classic little-endian file with one strip per page, as the workbench writes them."""
    data = Path(path).read_bytes()
    assert data[:4] == b"II*\0", "not a classic little-endian TIFF"
    pages, at = [], struct.unpack_from("<I", data, 4)[0]
    while at:
        count = struct.unpack_from("<H", data, at)[0]
        tags = {}
        for entry in range(count):
            tag, kind, number, value = struct.unpack_from("<HHII", data, at + 2 + 12 * entry)
            tags[tag] = value & 0xFFFF if kind == 3 else value
            assert number == 1 or tag not in (258, 273, 277, 279)
        assert tags[258] == 16 and tags[259] == 1 and tags[262] == 1 and tags[277] == 1
        shape = (tags[257], tags[256])
        pages.append(np.frombuffer(data, "<u2", shape[0] * shape[1], tags[273]).reshape(shape))
        at = struct.unpack_from("<I", data, at + 2 + 12 * count)[0]
    return pages


def read_png(path):
    """The pixels of a grayscale PNG, by ImageMagick."""
    raw = subprocess.run(["convert", str(path), "pgm:-"], check=True, capture_output=True).stdout
    kind, size, most, pixels = raw.split(b"\n", 3)
    assert kind == b"P5", kind
    width, height = map(int, size.split())
    return np.frombuffer(pixels, "u1" if int(most) < 256 else ">u2").reshape(height, width)


def wait_for(condition, seconds=60):
    deadline = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < deadline, "what the test waits for does not come"
        time.sleep(0.001)


def works_on_a_file(process):
    """Whether a workbench has begun its output: a file without a name, or a hidden one, in its folder."""
    if process.poll() is not None:
        raise AssertionError("the workbench ended before the test could get at it")
    folder = Path(f"/proc/{process.pid}/fd")
    try:
        opened = [os.readlink(entry) for entry in folder.iterdir()]
    except OSError:  # closed while being looked at
        return False
    # .../#12345 (deleted) without a name
    return any((name.endswith("(deleted)") and "/qxtool" in name) or "/.qxbackground-" in name for name in opened)


class ToolTest(unittest.TestCase):
    """A folder of its own for every test, and the workbench run in it."""

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="qxtool"))
        self.addCleanup(shutil.rmtree, self.folder, True)
        self.random = np.random.default_rng(7)

    def run_tool(self, *arguments, **how):
        return subprocess.run([TOOL, *map(str, arguments)], cwd=self.folder, capture_output=True, text=True,
                              timeout=300, errors="surrogateescape", **how)

    def tool(self, *arguments, status=0):
        result = self.run_tool(*arguments)
        self.assertEqual(result.returncode, status, f"{arguments}: {result.stdout}{result.stderr}")
        return result.stdout

    def refused(self, *arguments, says=(), status=2):
        """The workbench refuses with one line that contains every text of `says`, and changes no file."""
        before = self.contents()
        result = self.run_tool(*arguments)
        self.assertEqual(result.returncode, status, f"{arguments}: {result.stdout}{result.stderr}")
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertTrue(result.stderr.startswith("qxbackground: "), result.stderr)
        for text in says:
            self.assertIn(text, result.stderr)
        self.assertEqual(self.contents(), before, "a refused run left something behind or changed a file")
        return result.stderr

    def contents(self):
        """A digest of every file: unittest takes minutes to show where two libraries differ."""
        return {str(p.relative_to(self.folder)): hashlib.sha256(p.read_bytes()).hexdigest()
                for p in self.folder.rglob("*") if p.is_file()}

    def images(self, count, width, height, low=0, high=65536):
        return [self.random.integers(low, high, (height, width)).astype(np.uint16) for _ in range(count)]

    def write(self, name, pages, **how):
        write_tiff(self.folder / name, pages, **how)
        return name

    def read(self, name):
        return read_tiff(self.folder / name)

    def peak_kilobytes(self, *arguments):
        """The most memory that the workbench had at a time, in kilobytes; for tests that are not_sanitized."""
        code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True, stdout=subprocess.DEVNULL);"
                "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
        result = subprocess.run([sys.executable, "-c", code, TOOL, *map(str, arguments)], cwd=self.folder, check=True,
                                capture_output=True, text=True)
        return int(result.stdout)

    def library(self, *arguments):
        result = subprocess.run([HOST, *map(str, arguments)], cwd=self.folder, capture_output=True, text=True, timeout=300,
                                errors="surrogateescape")
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def library_corrects(self, darks, dark, images, now, level=100, region=None):
        """What the library makes of `images`, by way of another host. dark, now: (exposure, intensity)."""
        height, width = darks[0].shape
        left, top, w, h = region or (0, 0, width, height)
        np.concatenate(darks).astype("<u2").tofile(self.folder / "darks.raw")
        np.concatenate(images).astype("<u2").tofile(self.folder / "images.raw")
        self.library("correct", width, height, "darks.raw", *dark, *now, level, left, top, w, h, "images.raw", "out.raw")
        out = np.fromfile(self.folder / "out.raw", "<u2").reshape(len(images), h, w)
        for name in ("darks.raw", "images.raw", "out.raw"):
            (self.folder / name).unlink()
        return list(out)

    def assert_same_pages(self, found, expected):
        self.assertEqual(len(found), len(expected))
        for index, (one, other) in enumerate(zip(found, expected)):
            np.testing.assert_array_equal(one, other, f"page {index + 1}")


def main():
    program = unittest.main(exit=False, verbosity=1)
    result = program.result
    for test, reason in result.skipped:  # for the summary of the test run
        print(f"skipped: {reason} [{test}]" if result.testsRun != len(result.skipped) else "")
    if result.wasSuccessful() and result.testsRun and len(result.skipped) == result.testsRun:
        print("skipped: " + result.skipped[0][1])
        sys.exit(77)
    sys.exit(0 if result.wasSuccessful() else 1)
