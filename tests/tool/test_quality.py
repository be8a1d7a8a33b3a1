"""How near corrected images come to the truth of a small simulated camera: what bench/quality.py measures, with bounds."""
import importlib.util
import unittest

import support
from support import SOURCE, TOOL, ToolTest

try:
    SPEC = importlib.util.spec_from_file_location("quality", SOURCE / "bench" / "quality.py")
    quality = importlib.util.module_from_spec(SPEC)
    SPEC.loader.exec_module(quality)
except ImportError:
    quality = None

SIZE = ["--width", 192, "--height", 192]
UNREPAIRED = "`--bias --reject sigma --unfiltered`"


@unittest.skipIf(quality is None, "python3-tifffile is not installed")
class Quality(ToolTest):
    def errors(self, title, ways, dark_seconds=1):
        folder = self.folder / f"{title} {dark_seconds}"
        if title == quality.SHARP:
            scene, _, valid = quality.sharp(TOOL, folder, quality.SHARP_CAMERA + SIZE, dark_seconds)
        else:
            scene, _, valid = quality.simulated(TOOL, folder, quality.CAMERAS[title], dark_seconds, SIZE)
        found = quality.compare(TOOL, folder, scene, valid, dark_seconds, 2, ["numpy"], dark_seconds != 2, ways)
        return dict(found)

    def test_all_together_is_near_the_truth_and_no_worse_than_numpy(self):
        for title in quality.CAMERAS:
            with self.subTest(camera=title):
                errors = self.errors(title, [quality.ALL])
                found, rival = errors[quality.ALL], errors["numpy: with the bias"]
                self.assertLessEqual(found.off, 12)
                self.assertLessEqual(found.off, rival.off)
                self.assertLess(abs(found.median), 0.5)
                self.assertLessEqual(found.spread, rival.spread)
                self.assertLessEqual(found.deviation, rival.deviation)
                self.assertLessEqual(found.columns, rival.columns + 0.1)
                self.assertLessEqual(found.rows, rival.rows + 0.1)
                self.assertAlmostEqual(found.light, 100, delta=0.6)

    def test_a_sharp_scene_is_not_eaten(self):
        for dark_seconds, without in ((1, UNREPAIRED), (2, UNREPAIRED.replace("--bias ", ""))):
            with self.subTest(dark_seconds=dark_seconds):
                errors = self.errors(quality.SHARP, [UNREPAIRED, quality.ALL], dark_seconds)
                found, unrepaired = errors[quality.ALL], errors[without]
                self.assertAlmostEqual(found.light, 100, delta=0.3)
                self.assertLess(found.sources_off, 0.9 * unrepaired.sources_off)
                self.assertLess(found.off, 0.6 * unrepaired.off)
                self.assertLess(found.deviation, 0.92 * unrepaired.deviation)

    def test_each_option_does_what_it_is_for(self):
        errors = self.errors("cosmic rays in the darks", ["plain", "`--bias`", "`--repair-hot`", "`--reject sigma`",
                                                          "`--bias --repair-hot`", quality.ALL])
        plain = errors["plain"]
        self.assertAlmostEqual(plain.median, -24, delta=1.5)  # the camera's offset, scaled with the dark current
        self.assertLessEqual(abs(errors["`--bias`"].median), 1)
        self.assertLess(errors["`--repair-hot`"].off, plain.off)
        self.assertLess(errors["`--reject sigma`"].off, plain.off)
        self.assertGreater(errors["numpy: with the bias"].off, 100)  # the rays are there, without any rejection
        self.assertLess(errors[quality.ALL].columns, errors["`--bias --repair-hot`"].columns)


if __name__ == "__main__":
    support.main()
