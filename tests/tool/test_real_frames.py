"""Real camera frames, when the data folder is there: the tool equals the library, and a dark frame loses itself."""
import json
import unittest

import numpy as np

import support
from support import ToolTest, real_frames

FRAMES = real_frames()


@unittest.skipIf(FRAMES is None, "no real frames (QX_SAMPLE_DATA names their folder)")
class RealFrames(ToolTest):
    def setUp(self):
        super().setUp()
        self.darks = sorted(FRAMES.glob("dark_60s_*.tif"))
        self.lights = sorted(FRAMES.glob("light_60s_*.tif"))
        self.assertEqual(len(self.darks), 10)

    def correct(self, darks, images, exposure, *more):
        return self.tool("correct", "--dark", *darks, "--dark-exposure", 60, "--dark-intensity", 100, "--exposure",
                         exposure, "--intensity", 100, *images, "-o", "o.tif", "--overwrite", "--json", *more)

    def pages(self, paths):
        return [support.read_tiff(path)[0] for path in paths]

    def test_tool_equals_library_pixel_for_pixel(self):
        self.correct(self.darks, self.lights, 60)
        self.assert_same_pages(self.read("o.tif"), self.library_corrects(self.pages(self.darks), (60, 100),
                                                                         self.pages(self.lights), (60, 100)))
        light = FRAMES / "light_45s_01.tif"
        self.correct(self.darks, [light], 45, "--level", 77)
        self.assert_same_pages(self.read("o.tif"), self.library_corrects(self.pages(self.darks), (60, 100),
                                                                         self.pages([light]), (45, 100), 77))

    def test_a_dark_left_out_of_the_stack_loses_its_background(self):
        for index, dark in enumerate(self.darks):
            report = json.loads(self.correct(self.darks[:index] + self.darks[index + 1:], [dark], 60))
            before, after = report["before"], report["after"]
            with self.subTest(dark=dark.name):
                self.assertGreater(before["median"], 140)
                self.assertLess(after["median"], 10)  # the frames' level drifts by a few ADU
                self.assertLess(after["spread"], before["spread"])
                self.assertLess(after["columnPattern"], before["columnPattern"])
                self.assertGreater(after["pixelsAtZero"], 0)

    def test_stripes_fall_where_clipping_cannot_hide_them(self):
        report = json.loads(self.correct(self.darks[:9], self.darks[9:], 60, "--level", 80))
        before, after = report["before"], report["after"]
        self.assertLess(after["pixelsAtZero"], 0.01 * after["pixels"])
        self.assertLess(after["rowPattern"], 0.5 * before["rowPattern"])
        self.assertLess(after["columnPattern"], 0.8 * before["columnPattern"])
        self.assertLess(after["spread"], before["spread"])

    def test_single_hot_pixels_stay(self):
        self.correct(self.darks[:9], self.darks[9:], 60)
        before, after = self.pages(self.darks[9:])[0].astype(int), self.read("o.tif")[0].astype(int)
        hottest = np.unravel_index(before.argmax(), before.shape)
        self.assertGreater(before[hottest], 10000)
        self.assertGreater(after[hottest], 10000)


if __name__ == "__main__":
    support.main()
