"""The one-liners on numpy arrays, against the workbench."""
import inspect
import tracemalloc

import numpy as np

import python_support
from python_support import PythonTest, real_frames
from qx_backgroundcorrection import CalibrationFormatError, correct, master_dark, read_calibration


class Correct(PythonTest):
    def test_signature(self):
        parameters = [(p.name, p.default, p.kind) for p in inspect.signature(correct).parameters.values()]
        none, word = inspect.Parameter.empty, inspect.Parameter.KEYWORD_ONLY
        self.assertEqual(parameters, [
            ("images", none, inspect.Parameter.POSITIONAL_OR_KEYWORD), ("calibration", None, word), ("key", None, word),
            ("darks", None, word), ("dark_exposure", None, word), ("dark_intensity", 100, word),
            ("exposure", none, word), ("intensity", 100, word), ("level", 100, word), ("region", None, word),
            ("out", None, word)])

    def test_calibration_in_every_form(self):
        path, _ = self.calibration()
        self.calibration("other")
        images = np.array(self.images(4, 40, 30))
        expected = self.workbench_applies(path, images)
        original = images.copy()
        for calibration in (path, self.folder / "c.dat", (self.folder / "c.dat").read_bytes(), read_calibration(path)):
            self.same(correct(images, calibration=calibration, key="Dark", exposure=2), expected)
        self.same(correct(images.reshape(2, 2, 30, 40), calibration=path, key="dark", exposure=2),
                  expected.reshape(2, 2, 30, 40))
        self.same(correct(images[1], calibration=path, key="dark", exposure=2), expected[1])
        self.assertEqual(correct(images[:0], calibration=path, key="dark", exposure=2).shape, (0, 30, 40))
        self.same(images, original)

    def test_settings(self):
        path, _ = self.calibration()
        images = np.array(self.images(2, 40, 30))
        for settings in ({"exposure": 0.3, "intensity": 47.5}, {"exposure": 4.0, "level": 29}):
            self.same(correct(images, calibration=path, **settings), self.workbench_applies(path, images, **settings))
        small = np.array(self.images(2, 7, 5))
        self.same(correct(small, calibration=path, exposure=2, region=(3, 4, 7, 5)),
                  self.workbench_applies(path, small, region=(3, 4, 7, 5)))

    def test_darks(self):
        path, darks = self.calibration(exposure=0.7)
        images = np.array(self.images(2, 40, 30))
        expected = self.workbench_applies(path, images, exposure=3, intensity=50)
        for frames in (darks, list(darks), iter(darks)):
            self.same(correct(images, darks=frames, dark_exposure=0.7, exposure=3, intensity=50), expected)
        self.write("images.tif", list(images))
        self.tool("correct", "--dark", "darks.tif", "--dark-exposure", 0.7, "--dark-intensity", 30, "--exposure", 3,
                  "--intensity", 50, "images.tif", "-o", "o.tif")
        self.same(correct(images, darks=darks, dark_exposure=0.7, dark_intensity=30, exposure=3, intensity=50),
                  np.array(self.read("o.tif")))

    def test_output(self):
        path, _ = self.calibration()
        images = np.array(self.images(3, 40, 30))
        expected = self.workbench_applies(path, images)
        out = np.zeros_like(images)
        self.assertIs(correct(images, calibration=path, exposure=2, out=out), out)
        self.same(out, expected)
        changed = images.copy()
        self.assertIs(correct(changed, calibration=path, exposure=2, out=changed), changed)
        self.same(changed, expected)
        changed = images.copy()
        correct(changed, calibration=path, exposure=2, out=changed[:])  # the same pixels by another name
        self.same(changed, expected)

    def test_an_input_may_lie_in_memory_as_it_likes(self):
        path, _ = self.calibration()
        images = np.array(self.images(3, 40, 30))
        expected = self.workbench_applies(path, images)
        wide = np.zeros((3, 30, 80), np.uint16)
        wide[:, :, ::2] = images
        frozen = images.copy()
        frozen.flags.writeable = False
        for given in (wide[:, :, ::2], np.asfortranarray(images), frozen):
            self.same(correct(given, calibration=path, exposure=2), expected)
        self.same(correct(images[::-1], calibration=path, exposure=2), expected[::-1])
        (self.folder / "raw").write_bytes(images.tobytes())
        self.same(correct(np.memmap(self.folder / "raw", np.uint16, "r", shape=images.shape), calibration=path, exposure=2),
                  expected)

    def test_in_place_nothing_is_copied(self):
        dark = np.full((1024, 1024), 10, np.uint16)
        images = np.full((2, 1024, 1024), 100, np.uint16)
        with_nothing = []
        for out in (images, None):
            tracemalloc.start()
            correct(images, darks=dark, dark_exposure=1, exposure=1, out=out)
            with_nothing.append(tracemalloc.get_traced_memory()[1])
            tracemalloc.stop()
        self.assertLess(with_nothing[0], 100000)
        self.assertGreater(with_nothing[1], images.nbytes)

    def test_what_is_refused(self):
        path, darks = self.calibration()
        two, _ = self.calibration(name="two.dat")
        self.calibration("other", name="two.dat")
        images = np.array(self.images(2, 40, 30))
        good = {"calibration": path, "exposure": 1}
        cases = [
            (TypeError, "either calibration or darks", {"exposure": 1}),
            (TypeError, "not both", {**good, "darks": darks}),
            (TypeError, "key names", {"darks": darks, "dark_exposure": 1, "exposure": 1, "key": "a"}),
            (TypeError, "dark_exposure is missing", {"darks": darks, "exposure": 1}),
            (TypeError, "belongs to darks", {**good, "dark_exposure": 1}),
            (TypeError, "exposure is 'x'", {**good, "exposure": "x"}),
            (ValueError, "exposure is 0", {**good, "exposure": 0}),
            (ValueError, "exposure is nan", {**good, "exposure": float("nan")}),
            (ValueError, "intensity is -1", {**good, "intensity": -1}),
            (ValueError, "dark_exposure is inf", {"darks": darks, "dark_exposure": float("inf"), "exposure": 1}),
            (ValueError, "dark_intensity is 0", {"darks": darks, "dark_exposure": 1, "dark_intensity": 0, "exposure": 1}),
            (ValueError, "level is 101", {**good, "level": 101}),
            (TypeError, "level is 0.5, not a whole number", {**good, "level": 0.5}),
            (ValueError, "which does not lie in the correction's 40 x 30", {**good, "region": (1, 0, 40, 30)}),
            (TypeError, "not \\(left, top, width, height\\)", {**good, "region": (1, 0)}),
            (ValueError, "but the region has 20 x 10", {**good, "region": (0, 0, 20, 10)}),
            (ValueError, "no correction 'x', only: 'dark'", {**good, "key": "x"}),
            (ValueError, "holds 2 corrections, say which one: 'dark', 'other'", {**good, "calibration": two}),
            (TypeError, "key is a int", {**good, "key": 5}),
            (TypeError, "calibration is a int", {**good, "calibration": 5}),
            (CalibrationFormatError, "not a calibration file", {**good, "calibration": b"x" * 100}),
            (FileNotFoundError, "missing", {**good, "calibration": self.folder / "missing"}),
            (TypeError, "out has dtype uint8", {**good, "out": images.astype(np.uint8)}),
            (ValueError, "out has the shape", {**good, "out": images[:1]}),
            (ValueError, "read-only", {**good, "out": np.broadcast_to(images[0], images.shape)}),
        ]
        for kind, text, arguments in cases:
            with self.subTest(text), self.assertRaisesRegex(kind, text):
                correct(images, **arguments)
        for wrong, kind, text in ((images.astype(int), TypeError, "images has dtype int64"), ([1], TypeError, "images is a list"),
                                  (images[0, 0], ValueError, "1 dimensions"),
                                  (images[:, :5], ValueError, "images are of 40 x 5 pixels, but the correction has 40 x 30")):
            with self.subTest(text), self.assertRaisesRegex(kind, text):
                correct(wrong, **good)
        memory = np.zeros((3, 30, 40), np.uint16)
        with self.assertRaisesRegex(ValueError, "shares memory"):
            correct(memory[:2], **good, out=memory[1:])

    def test_master_dark(self):
        path, darks = self.calibration()
        expected = read_calibration(path)[0].background
        for frames in (darks, list(darks), iter(darks)):
            self.same(master_dark(frames), expected)


class RealFrames(PythonTest):
    def test_real_frames_as_the_workbench_does(self):
        folder = real_frames()
        if folder is None:
            self.skipTest("no real camera frames here (QX_SAMPLE_DATA)")
        names = sorted(str(path) for path in folder.glob("*.tif"))[:6]
        self.assertGreater(len(names), 3)
        frames = np.array([self.read(name)[0] for name in names])
        self.tool("correct", *names[-2:], "--dark", *names[:-2], "--dark-exposure", 1, "--dark-intensity", 100,
                  "--exposure", 1, "--intensity", 100, "-o", "o.tif", "--no-statistics")
        self.same(correct(frames[-2:], darks=frames[:-2], dark_exposure=1, exposure=1), np.array(self.read("o.tif")))


if __name__ == "__main__":
    python_support.main()
