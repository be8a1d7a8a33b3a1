"""Files that were cut or damaged: read or refused with one line that names them, in little memory, and never a crash.

test_broken_formats.py --long [TRIES] tries far more of them (with the environment of the test)."""
import os
import subprocess
import sys
import unittest

import numpy as np

import formats
import support
from support import TOOL, ToolTest

SAMPLES = ["strips.tif", "deflate-tiles-predictor.tif", "tiffcp-lzw.tif", "bigtiff.tif", "image-j-large.tif",
           "convert.png", "convert-interlaced.png", "netpbm.pgm", "netpbm-text.pgm", "cube.fits", "extensions.fits",
           "rice.fits", "gzip.fits", "gzip-2.fits", "big-endian.ser"]
MOST_KILOBYTES = 400_000
TRIES = 24


def places(data, random):
    """Where to damage: mostly where headers are."""
    if random.random() < 0.7:
        ends = np.concatenate([np.arange(min(600, len(data))), np.arange(max(0, len(data) - 300), len(data))])
        return int(random.choice(ends))
    return int(random.integers(len(data)))


def damaged(data, random):
    out = bytearray(data)
    for _ in range(int(random.integers(1, 5))):
        at = places(out, random)
        kind = random.integers(7)
        if kind == 0:
            out[at] ^= 1 << int(random.integers(8))
        elif kind == 1:
            out[at:at + 4] = bytes(random.integers(0, 256, 4, dtype=np.uint8))
        elif kind == 2:
            out[at:at + 4] = random.choice([b"\xff\xff\xff\xff", b"\0\0\0\0", b"\x7f\xff\xff\xff", b"\xff\xff\xff\x7f"])
        elif kind == 3 and 48 <= out[at] <= 57:
            out[at] = 48 + int(random.integers(10))
        elif kind == 4:
            out[at:at + 8] = b"9" * 8 if random.random() < 0.5 else b" " * 8
        elif kind == 5:
            del out[at:at + int(random.integers(1, 40))]
        else:
            source = places(out, random)
            out[at:at] = out[source:source + int(random.integers(1, 40))]
        if not out:
            return b"\0"
    return bytes(out)


class Broken(ToolTest):
    def setUp(self):
        super().setUp()
        pages = [(page >> 4) for page in self.images(2, 37, 23)]
        for name in SAMPLES:
            formats.WRITERS[name][0](self.folder / name, pages)
        self.random = np.random.default_rng(11)

    def try_reading(self, name, data, what):
        """Whether the workbench reads it; refusals are looked at."""
        path = self.folder / f"broken-{name}"
        path.write_bytes(data)
        limit = [] if support.SANITIZED else ["sh", "-c", f'ulimit -v {MOST_KILOBYTES}; exec "$0" "$@"']
        result = subprocess.run([*limit, TOOL, "statistics", path.name], cwd=self.folder,
                                capture_output=True, text=True, timeout=60, errors="replace")
        try:
            self.assertIn(result.returncode, (0, 2), result.stderr)
            if result.returncode == 2:
                self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
                self.assertTrue(result.stderr.startswith(f"qxbackground: {path.name}: "), result.stderr)
                self.assertNotIn("memory", result.stderr)
                self.assertLess(len(result.stderr), 500)
        except AssertionError as error:
            raise AssertionError(f"{name}, {what}: {error}\n{result.stderr}") from None
        return result.returncode == 0

    def test_no_part_of_a_file_is_taken_for_the_whole(self):
        for name in SAMPLES:
            with self.subTest(file=name):
                data = (self.folder / name).read_bytes()
                self.assertTrue(self.try_reading(name, data, "whole"))
                for left in (0, 1, 3, 9, 30, 170, len(data) // 3 + 7, len(data) // 2 - 3, len(data) * 7 // 10):
                    self.assertFalse(self.try_reading(name, data[:left], f"{left} bytes"), f"{left} of {len(data)}")

    def test_damage_is_read_over_or_refused(self):
        for name in SAMPLES:
            with self.subTest(file=name):
                data = (self.folder / name).read_bytes()
                read = [self.try_reading(name, damaged(data, self.random), f"damage {attempt}")
                        for attempt in range(TRIES)]
                self.assertLess(sum(read), TRIES, "nothing of what was done to it was noticed")

    def test_claims_beyond_what_the_file_can_hold_are_refused(self):
        header = b"SIMPLE  =                    T".ljust(80) + b"BITPIX  =                   16".ljust(80)
        huge = {
            "fits": header + b"NAXIS   =                    2".ljust(80) + b"NAXIS1  =                40000".ljust(80)
                    + b"NAXIS2  =                40000".ljust(80) + b"END".ljust(2880 - 5 * 80) + bytes(2880),
            "pgm": b"P5 40000 40000 65535 " + bytes(1000),
            "text.pgm": b"P2 40000 40000 65535 " + b"1 " * 1000,
            "ser": formats.ser_bytes([np.zeros((2, 2), np.uint16)])[:26] + b"\x40\x9c\0\0" * 2
                   + formats.ser_bytes([np.zeros((2, 2), np.uint16)])[34:],
            "tif": support.tiff_bytes([np.zeros((4, 4), np.uint16)], tags={256: (4, [40000]), 257: (4, [40000])}),
            "deflate.tif": support.tiff_bytes([np.zeros((4, 4), np.uint16)],
                                              tags={256: (4, [40000]), 257: (4, [40000]), 259: (3, [8])}),
            "png": b"\x89PNG\r\n\x1a\n" + formats.chunk(b"IHDR", b"\0\0\x9c\x40\0\0\x9c\x40\x10\0\0\0\0")
                   + formats.chunk(b"IDAT", b"x") + formats.chunk(b"IEND", b"")}
        for name, data in huge.items():
            with self.subTest(file=name):
                (self.folder / name).write_bytes(data)
                self.assertIn("claims more", self.refused("statistics", name, says=[name]))

    @support.not_sanitized
    def test_a_note_in_a_png_that_claims_two_gigabytes_takes_no_memory(self):
        data = (self.folder / "convert.png").read_bytes()
        (self.folder / "n.png").write_bytes(data[:33] + b"\x7f\xff\xff\xf0tEXtComment\0text" + data[33:])
        with subprocess.Popen([TOOL, "statistics", "n.png"], cwd=self.folder, stderr=subprocess.PIPE) as process:
            line = process.stderr.read()
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual((process.returncode, line.count(b"\n")), (2, 1), line)
        self.assertLess(usage.ru_maxrss, 100_000)  # kilobytes


if __name__ == "__main__":
    if "--long" in sys.argv:
        sys.argv.remove("--long")
        TRIES = int(sys.argv.pop()) if sys.argv[-1].isdigit() else 1000
    support.main()
