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
ALL = "all, `--unfiltered`"


@unittest.skipIf(quality is None, "python3-tifffile is not installed")
class Quality(ToolTest):
    def errors(self, title, dark_seconds=1):
        folder = self.folder / title
        scene, _, valid = quality.simulated(TOOL, folder, quality.CAMERAS[title], dark_seconds, SIZE)
        found = quality.compare(TOOL, folder, scene, valid, dark_seconds, 2, ["numpy"], dark_seconds != 2)
        return dict(found)

    def test_all_together_is_near_the_truth_and_no_worse_than_numpy(self):
        for title in ("usual", "many hot pixels", "cosmic rays in the darks", "drifting level", "12 bits"):
            with self.subTest(camera=title):
                errors = self.errors(title)
                found, rival = errors[ALL], errors["numpy: with the bias"]
                if title != "many hot pixels":  # of which some lie beneath stars
                    self.assertLessEqual(found.off, 12)
                self.assertLessEqual(found.off, rival.off + 2)  # of so few
                self.assertLess(abs(found.median), 0.5)
                self.assertLessEqual(found.deviation, rival.deviation + 0.3)
                self.assertLessEqual(found.columns, rival.columns + 0.3)

    def test_each_option_does_what_it_is_for(self):
        errors = self.errors("cosmic rays in the darks")
        plain = errors["plain"]
        self.assertAlmostEqual(plain.median, -24, delta=1.5)  # the camera's offset, scaled with the dark current
        self.assertLessEqual(abs(errors["`--bias`"].median), 1)
        self.assertLess(errors["`--repair-hot`"].off, plain.off)
        self.assertLess(errors["`--reject sigma`"].off, plain.off)
        self.assertGreater(errors["numpy: with the bias"].off, 100)  # the rays are there, without any rejection
        self.assertLess(errors[ALL].columns, errors["`--bias --repair-hot`"].columns)


if __name__ == "__main__":
    support.main()
