"""read_calibration against the library, against the independent reader among the examples, and on damaged files."""
import importlib.util
import mmap
import os
import struct
import subprocess
import sys
import tracemalloc

import numpy as np

import python_support
from python_support import SOURCE, PythonTest
from qx_backgroundcorrection import CalibrationFormatError, Processor, Store, read_calibration
from qx_backgroundcorrection._calibration import parse_calibration


def example():
    spec = importlib.util.spec_from_file_location("read_calibration", SOURCE / "examples" / "read_calibration.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def map_below(array):
    """What an array's memory belongs to in the end."""
    while True:
        below = array.obj if isinstance(array, memoryview) else array.base
        if isinstance(below, mmap.mmap) or below is None:
            return below
        array = below


class Reading(PythonTest):
    def two(self):
        path, _ = self.calibration("dark", exposure=0.5)
        self.calibration("Flat ö", shape=(5, 3))
        return path

    def test_what_is_read_is_what_the_library_has(self):
        path = self.two()
        calibration = read_calibration(path)
        self.assertEqual((calibration.structure_version, calibration.grouping_names), (1, []))
        with Processor() as processor:
            processor.load(path)
            self.assertEqual(calibration.keys(), processor.keys())
            for correction in calibration:
                processor.active = correction.key
                reference = processor.reference
                self.assertEqual((correction.exposure, correction.intensity), reference)
                processor.set_exposure_and_intensity(*reference)
                self.same(correction.background, processor.background())
                self.assertEqual(correction.shape, correction.background.shape)

    def test_and_what_the_example_reads(self):
        path = self.two()
        for one, other in zip(read_calibration(path), example().read_calibration(path).corrections):
            self.assertEqual((one.key.encode(), one.exposure, one.intensity),
                             (other.key, other.exposure, other.intensity))
            self.same(one.background, other.background)

    def test_group_files(self):
        with Store(["Gain", "SensorTemperature"]) as store:
            store.add("Gain,1,SensorTemperature,5", np.full((2, 3), 9, np.uint16), exposure=1)
            store.save(self.folder / "s")
        calibration = read_calibration(self.folder / "s_Gain_1_SensorTemperature_5")
        self.assertEqual((calibration.structure_version, calibration.grouping_names), (2, ["Gain", "SensorTemperatur"]))
        self.same(calibration[0].background, np.full((2, 3), 9))

    def test_keys(self):
        calibration = read_calibration(self.two())
        self.assertEqual(len(calibration), 2)
        self.assertIn("DARK", calibration)
        self.assertNotIn("other", calibration)
        self.assertEqual(calibration["DARK"].key, "dark")
        self.assertEqual(calibration[1].key, "Flat ö")
        with self.assertRaises(KeyError):
            calibration["other"]
        self.assertEqual(repr(calibration), "<Calibration: 2 corrections: 'dark', 'Flat ö'>")
        self.assertEqual(repr(calibration[0]), "<Correction 'dark': 40 x 30; taken at 0.5 s 100 %>")
        self.assertEqual(calibration._repr_html_().count("<img"), 2)
        self.assertEqual(calibration[0]._repr_png_()[:4], b"\x89PNG")

    def test_pixels_are_views_over_the_mapped_file(self):
        with Processor() as processor:
            processor.add("dark", np.zeros((2048, 2048), np.uint16), exposure=1)
            processor.save(self.folder / "large")
        tracemalloc.start()
        background = read_calibration(self.folder / "large")[0].background
        peak = tracemalloc.get_traced_memory()[1]
        tracemalloc.stop()
        self.assertLess(peak, 100000)
        self.assertIsInstance(map_below(background), mmap.mmap)
        self.assertFalse(background.flags.writeable)
        with self.assertRaises(ValueError):
            background[0, 0] = 1

    def test_the_library_is_not_loaded(self):
        code = ("from qx_backgroundcorrection import read_calibration, _library\nimport sys\n"
                f"print(read_calibration({self.two()!r}), _library._library, 'dask' in sys.modules)")
        result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True,
                                env={**os.environ, "QX_BACKGROUNDCORRECTION_LIBRARY": "/nowhere"})
        self.assertEqual(result.stdout, "<Calibration: 2 corrections: 'dark', 'Flat ö'> None False\n", result.stderr)

    def test_one_correction_as_a_file_of_its_own(self):
        path = self.two()
        calibration = read_calibration(path)
        self.tool("delete", "c.dat", "--key", "Flat ö")
        self.assertEqual(calibration["dark"].file_bytes(), (self.folder / "c.dat").read_bytes())
        alone = parse_calibration(calibration["dark"].file_bytes())["dark"]
        self.assertEqual(alone.digest(), calibration["dark"].digest())
        self.assertNotEqual(alone.digest(), calibration["Flat ö"].digest())


class Damaged(PythonTest):
    def test_every_file_that_is_cut_is_refused_with_the_byte(self):
        whole = (self.folder / self.calibration(shape=(2, 3))[0]).read_bytes()
        for length in range(len(whole)):
            (self.folder / "cut").write_bytes(whole[:length])
            with self.assertRaisesRegex(CalibrationFormatError, r"^byte \d+: "):
                read_calibration(self.folder / "cut")
        self.assertEqual(len(parse_calibration(whole + b"what follows is ignored")), 1)

    def test_what_is_wrong_is_said(self):
        whole = (self.folder / self.calibration(shape=(2, 3))[0]).read_bytes()
        width, exposure = 46 + 12 + 12 + 512 + 12, 46 + 12 + 12 + 512 + 16 * 2 + 12
        self.assertEqual(struct.unpack_from("<I", whole, width)[0], 3)
        self.assertEqual(struct.unpack_from("<f", whole, exposure)[0], 1)
        for at, data, text in [(0, b"b", "not a calibration file"), (26, b"\3", "structure version 3"),
                               (30, b"\x3e", "record"), (46, b"\x3f", "no correction starts here"),
                               (46 + 24, bytes(512), "empty key"), (width, b"\4", "is record"),
                               (width, b"\xff\xff\xff\x7f", "too large"), (exposure, bytes(4), "is 0"),
                               (42, b"\2", "the file ends")]:
            with self.subTest(text), self.assertRaisesRegex(CalibrationFormatError, text):
                parse_calibration(whole[:at] + data + whole[at + len(data):])
        one = whole[46:]
        with self.assertRaisesRegex(CalibrationFormatError, "twice"):
            parse_calibration(whole[:42] + b"\2\0\0\0" + one + one.replace(b"dark", b"DARK"))
        self.assertEqual(len(parse_calibration(whole[:42] + b"\xff\xff\xff\xff")), 0)
        (self.folder / "empty").write_bytes(b"")
        with self.assertRaisesRegex(CalibrationFormatError, "not a calibration file"):
            read_calibration(self.folder / "empty")
        with self.assertRaises(FileNotFoundError):
            read_calibration(self.folder / "missing")


if __name__ == "__main__":
    python_support.main()
