"""The examples do what they say: the smallest host, and the reader of calibration files in another language."""
import os
import subprocess
import sys

import numpy as np

import support
from support import SOURCE, ToolTest

sys.path.insert(0, str(SOURCE / "examples"))
import read_calibration  # noqa: E402


class MinimalHost(ToolTest):
    def test_corrects_its_image(self):
        result = subprocess.run([os.environ["QX_MINIMAL_HOST"], os.environ["QX_LIBRARY"]], capture_output=True,
                                text=True)
        self.assertEqual((result.stdout, result.returncode), ("1000 became 796\n", 0), result.stderr)

    def test_says_why_it_cannot_load_the_library(self):
        result = subprocess.run([os.environ["QX_MINIMAL_HOST"], "/nowhere.so"], capture_output=True, text=True)
        self.assertEqual(result.returncode, 1)
        self.assertIn("/nowhere.so", result.stderr)


class ReadCalibration(ToolTest):
    KEYS = ["one", "Gain,1,Mode,fast", "dünn & more", "x" * 512]

    def setUp(self):
        super().setUp()
        for index, key in enumerate(self.KEYS):
            self.write("d.tif", self.images(3, 5 + index, 4 + 3 * index))
            self.tool("build", "c.qxb", "--key", key, "--exposure", 0.1 + index, "--intensity", 33.3, "d.tif")

    def test_equals_what_the_library_loads(self):
        lines = self.library("dump", "c.qxb", "pixels.raw").splitlines()
        pixels = np.fromfile(self.folder / "pixels.raw", "<u2")
        found = read_calibration.read_calibration(self.folder / "c.qxb")
        self.assertEqual(found.structure_version, 1)
        self.assertEqual(found.grouping_names, [])
        self.assertEqual(len(found.corrections), len(lines))
        at = 0
        for correction, line, key in zip(found.corrections, lines, self.KEYS):
            width, height, exposure, intensity, name = line.split(" ", 4)
            self.assertEqual(correction.key.decode(), name)
            self.assertEqual(name, key)
            self.assertEqual(correction.background.shape, (int(height), int(width)))
            self.assertEqual(correction.exposure, np.float32(exposure))
            self.assertEqual(correction.intensity, np.float32(intensity))
            count = int(width) * int(height)
            np.testing.assert_array_equal(correction.background.ravel(), pixels[at:at + count])
            at += count
        self.assertEqual(at, pixels.size)

    def test_names_the_byte_where_a_file_departs(self):
        whole = (self.folder / "c.qxb").read_bytes()
        for damaged, offset in [(whole[:-1], "byte 2"), (whole + b"x", f"byte {len(whole)}"), (b"B" + whole, "byte 0"),
                                (whole[:30] + b"\x3e" + whole[31:], "byte 30")]:
            (self.folder / "x.qxb").write_bytes(damaged)
            with self.assertRaises(read_calibration.CalibrationError) as caught:
                read_calibration.read_calibration(self.folder / "x.qxb")
            self.assertIn(offset, str(caught.exception))

    def test_as_a_program(self):
        result = subprocess.run([sys.executable, "-B", SOURCE / "examples" / "read_calibration.py",
                                 self.folder / "c.qxb"], capture_output=True, text=True)
        self.assertIn("structure version 1, 4 corrections", result.stdout)


if __name__ == "__main__":
    support.main()
