"""What the tests of the Python package share."""
import os
import sys
from pathlib import Path

SOURCE = Path(os.environ["QX_SOURCE_DIR"])
sys.path.insert(0, str(SOURCE / "tests" / "tool"))

import numpy as np  # noqa: E402
from support import ToolTest, main, real_frames, wait_for  # noqa: E402,F401

from qx_backgroundcorrection import Processor  # noqa: E402


class PythonTest(ToolTest):
    """A folder, a workbench, images, and a calibration file that the workbench wrote."""

    def calibration(self, key="dark", shape=(30, 40), frames=3, name="c.dat", exposure=1.0):
        """Builds a correction with the workbench into a calibration file; the file's path, and the dark frames."""
        darks = np.array(self.images(frames, shape[1], shape[0], 0, 500))
        self.write("darks.tif", list(darks))
        self.tool("build", name, "--key", key, "--exposure", exposure, "--intensity", 100, "darks.tif")
        return str(self.folder / name), darks

    def workbench_applies(self, path, images, *, key="dark", exposure=2.0, intensity=100, level=100, region=None):
        self.write("in.tif", list(images))
        arguments = ["--region", ",".join(map(str, region))] if region else []
        self.tool("apply", path, "--key", key, "--exposure", exposure, "--intensity", intensity, "--level", level,
                  *arguments, "in.tif", "-o", "out.tif", "--overwrite", "--no-statistics")
        return np.array(self.read("out.tif"))

    def processor(self, background):
        """A processor that subtracts `background`."""
        processor = Processor()
        self.addCleanup(processor.close)
        processor.add("dark", background, exposure=1)
        processor.active = "dark"
        processor.set_exposure_and_intensity(1)
        return processor

    def same(self, found, expected):
        self.assertEqual(found.dtype, np.uint16)
        np.testing.assert_array_equal(found, expected)
