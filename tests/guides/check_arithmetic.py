#!/usr/bin/env python3
"""The figures of docs/arithmetic.md against the library: check_arithmetic.py PAGE FLAT-LIBRARY

The blocks are named after what they show: "arithmetic, frames", "arithmetic, average", "arithmetic, correction",
"arithmetic, background", "arithmetic, image", "arithmetic, result", "arithmetic, region".
"""
import ctypes
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from guide_blocks import read_blocks  # noqa: E402

PAGE, LIBRARY = pathlib.Path(sys.argv[1]), ctypes.CDLL(sys.argv[2])
WIDTH, HEIGHT = 4, 3
SECONDS, PERCENT = ctypes.c_float, ctypes.c_float


def single(value):
    """The value rounded to single precision."""
    return ctypes.c_float(value).value


def rows_of(name):
    """The numbers of a block, row by row."""
    blocks = [block for block in read_blocks(PAGE) if block.rest == f"arithmetic, {name}"]
    assert len(blocks) == 1, f"{len(blocks)} blocks of the name {name}"
    return [[int(word) for word in line.split()] for line in blocks[0].text.splitlines()]


def pixels_of(name):
    return [pixel for row in rows_of(name) for pixel in row]


def as_pixels(values):
    return (ctypes.c_ushort * len(values))(*values)


class THost:
    """An object of the library whose operations have to succeed."""

    def __init__(self):
        self.object = ctypes.c_void_p()
        assert LIBRARY.QXBC_CreateProcessor(ctypes.byref(self.object)) == 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        LIBRARY.QXBC_Delete(self.object)

    def do(self, operation, *arguments):
        code = getattr(LIBRARY, "QXBC_" + operation)(self.object, *arguments)
        assert code == 0, f"{operation} returned {code}"

    def add(self, frames, width, height, exposure=0.1, intensity=100):
        arrays = [as_pixels(frame) for frame in frames]
        pointers = (ctypes.c_void_p * len(arrays))(*map(ctypes.addressof, arrays))
        self.do("AddCorrection", b"dark", pointers, len(arrays), width, height, SECONDS(exposure), PERCENT(intensity))
        self.do("SetActiveCorrection", b"dark")

    def apply(self, image):
        pixels = as_pixels(image)
        self.do("ApplyCorrection", pixels, len(pixels), None, 0, None, 0, 0, 0)
        return list(pixels)

    def background(self, count):
        """What is subtracted from a white image."""
        return [65535 - pixel for pixel in self.apply([65535] * count)]


def stored(frames, width, height):
    """The correction that the library makes of the frames, unscaled."""
    with THost() as host:
        host.add(frames, width, height)
        host.do("SetExposureAndIntensity", SECONDS(0.1), PERCENT(100))
        return host.background(width * height)


class Arithmetic(unittest.TestCase):
    def setUp(self):
        rows = rows_of("frames")
        self.frames = [[pixel for row in rows for pixel in row[:WIDTH]], [pixel for row in rows for pixel in row[WIDTH:]]]

    def test_average(self):
        # In a correction of one pixel the median changes nothing.
        averages = [stored([[pixel] for pixel in stack], 1, 1)[0] for stack in zip(*self.frames)]
        self.assertEqual(averages, pixels_of("average"))

    def test_correction(self):
        self.assertEqual(stored(self.frames, WIDTH, HEIGHT), pixels_of("correction"))

    def test_median_at_the_left_edge_as_told(self):
        told = re.search(r"the nine values are ([\d ,]+) \(.*?in order ([\d *]+):", PAGE.read_text(encoding="utf-8"), re.S)
        nine = [int(word) for word in re.findall(r"\d+", told[1])]
        average = rows_of("average")
        self.assertEqual(nine, [average[row][column] for row in range(3) for column in (1, 0, 1)])
        self.assertEqual([int(word) for word in re.findall(r"\d+", told[2])], sorted(nine))
        self.assertEqual(re.search(r"\*\*(\d+)\*\*", told[2])[1], str(rows_of("correction")[1][0]))

    def test_background_result_and_region(self):
        told = re.search(r"images are of ([\d.]+) s and (\d+) %, and the level is (\d+): .*= ([\d.]+), exactly",
                         PAGE.read_text(encoding="utf-8"))
        seconds, percent, level, factor = map(float, told.groups())
        product = single(single(percent * single(seconds)) * single(level / 100))
        self.assertEqual(single(product / single(100 * single(0.1))), factor)
        with THost() as host:
            host.add(self.frames, WIDTH, HEIGHT)
            host.do("SetExposureAndIntensity", SECONDS(seconds), PERCENT(percent))
            host.do("SetCorrectionLevel", int(level))
            self.assertEqual(host.background(WIDTH * HEIGHT), pixels_of("background"))
            self.assertEqual(host.apply(pixels_of("image")), pixels_of("result"))
            host.do("SetRegion", 1, 1, 2, 2)
            self.assertEqual(host.background(4), pixels_of("region"))

    def test_levels_that_read_back_lower(self):
        told = re.search(r"(\d+) as (\d+), and (\d+) of the (\d+) levels", PAGE.read_text(encoding="utf-8"))
        with THost() as host:
            def read_back(level):
                host.do("SetCorrectionLevel", level)
                return LIBRARY.QXBC_GetCorrectionLevel(host.object)
            lower = sum(read_back(level) == level - 1 for level in range(101))
            equal = sum(read_back(level) == level for level in range(101))
            self.assertEqual(read_back(int(told[1])), int(told[2]))
        self.assertEqual((lower, lower + equal), (int(told[3]), int(told[4])))

    def test_stacks_that_are_too_long(self):
        text = PAGE.read_text(encoding="utf-8")
        exact = int(re.search(r"up to (\d+) frames the average is the exact mean", text)[1])
        self.assertLessEqual(exact * 65535, 2 ** 24)
        self.assertGreater((exact + 1) * 65535, 2 ** 24)
        wraps = int(re.search(r"stacks of (\d+) frames or more", text)[1])
        self.assertEqual(stored([[65535]] * (wraps - 1), 1, 1), [65535])
        self.assertEqual(stored([[65535]] * wraps, 1, 1), [0])

    def test_untouched_settings(self):
        with THost() as host:
            host.add([[1000]], 1, 1)
            self.assertEqual(host.background(1), [100])  # by 1 / (0.1 s * 100 %)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
