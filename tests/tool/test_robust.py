"""Stacks combined pixel by pixel with rejection: held against a second writing in numpy, in memory and in bands; and what
is said about frames that do not fit."""
import json
import os
import tempfile

import numpy as np

import support
from support import ToolTest

CORRECT = ["correct", "--dark-exposure", 1, "--dark-intensity", 100, "--exposure", 1, "--intensity", 100]
BUILD = ["--exposure", 1, "--intensity", 100]


def noise_of(frames):
    """Of frames small enough that every pixel is in the sample. The upper one of two medians, as nth_element gives it."""
    def upper(values):
        return np.sort(values, axis=None)[np.size(values) // 2]
    pairs = []
    for one, other in zip(frames, frames[1:]):
        difference = other.astype(int) - one.astype(int)
        pairs.append(1.4826 * upper(np.abs(difference - upper(difference))) / np.sqrt(2))
    return max(upper(pairs), 0.5)


def sigma_spread(values, centre):
    return 1.4826 * np.median(np.abs(values - centre))


def winsor_spread(values, centre):
    if len(values) < 2:
        return 0
    spread = values.std(ddof=1)
    for _ in range(50):
        then = 1.134 * values.clip(centre - 1.5 * spread, centre + 1.5 * spread).std(ddof=1)
        settled = abs(then - spread) <= 0.0005 * spread
        spread = then
        if settled:
            break
    return spread


def combined(frames, reject=None, low=3, high=3, combine="average"):
    stack = np.sort(np.stack(frames).astype(float).reshape(len(frames), -1), axis=0)
    noise = noise_of(frames)
    out, rejected = [], 0
    for values in stack.T:
        if reject == "minmax":
            values = values[low:len(values) - low]
        while reject in ("sigma", "winsor"):
            centre = np.median(values)
            spread = max(noise, (sigma_spread if reject == "sigma" else winsor_spread)(values, centre))
            kept = values[(values >= centre - low * spread) & (values <= centre + high * spread)]
            if len(kept) == len(values):
                break
            values = kept
        rejected += len(frames) - len(values)
        out.append(np.floor((np.median(values) if combine == "median" else values.mean()) + 0.5))
    return np.array(out).reshape(frames[0].shape).astype(np.uint16), rejected


class Combining(ToolTest):
    def darks(self, count, shape=(19, 31), rays=40):
        level = self.random.integers(200, 260, shape)
        frames = [np.clip(level + self.random.normal(0, 6, shape), 0, 65535).astype(np.uint16) for _ in range(count)]
        for _ in range(rays):
            frames[self.random.integers(count)][tuple(self.random.integers(0, shape))] += 3000
        return frames

    def correction(self, frames, *how):
        """What is subtracted from a white image, whose pixels show all of it."""
        height, width = frames[0].shape
        self.write("d.tif", frames)
        self.write("white.tif", [np.full((height, width), 65535, np.uint16)])
        self.report = json.loads(self.tool(*CORRECT, "--dark", "d.tif", *how, "--json", "--overwrite", "-o", "o.tif",
                                           "white.tif"))
        return 65535 - self.read("o.tif")[0]

    def assert_combined(self, frames, expected, *how):
        height, width = frames[0].shape
        white = [np.full((height, width), 65535, np.uint16)]
        out = self.library_corrects([expected], (1, 100), white, (1, 100))[0]
        np.testing.assert_array_equal(self.correction(frames, *how), 65535 - out)

    def test_is_what_was_described(self):
        for count in (3, 5, 10, 16):
            frames = self.darks(count)
            for how, reference in (
                    (["--reject", "sigma"], dict(reject="sigma")),
                    (["--reject", "sigma:2,2.5"], dict(reject="sigma", low=2, high=2.5)),
                    (["--reject", "winsor"], dict(reject="winsor")),
                    (["--reject", "winsor:2,4"], dict(reject="winsor", low=2, high=4)),
                    (["--reject", "minmax:1"], dict(reject="minmax", low=1)),
                    (["--combine", "median"], dict(combine="median")),
                    (["--combine", "median", "--reject", "sigma"], dict(combine="median", reject="sigma"))):
                with self.subTest(frames=count, how=how):
                    expected, rejected = combined(frames, **reference)
                    self.assert_combined(frames, expected, *how)
                    if "reject" in reference:
                        self.assertIn(f"Rejected {rejected} of {count * 19 * 31} values", self.report["notes"][0])

    def test_takes_away_what_an_average_keeps(self):
        clean = self.darks(10, rays=0)
        dirty = [frame.copy() for frame in clean]
        for row in range(5, 8):  # a track wide enough to pass the library's median filter
            dirty[3][row, 4:20] = 9000
        plain = self.correction(dirty).astype(int)
        robust = self.correction(dirty, "--reject", "sigma").astype(int)
        clean = self.correction(clean).astype(int)
        self.assertGreater(np.abs(plain - clean).max(), 500)
        self.assertLess(np.abs(robust - clean).max(), 5)

    def test_frames_are_brought_to_the_level_of_the_middle_one(self):
        frames = self.darks(9)
        shifts = [40, 22, 13, 7, 3, 0, -2, -3, -4]
        drifted = [(frame.astype(int) + shift).astype(np.uint16) for frame, shift in zip(frames, shifts)]
        levels = []
        for frame in drifted:
            values = np.sort(frame, axis=None)
            quarter = values.size // 4
            levels.append(values[quarter:values.size - quarter].mean())
        wanted = np.median(levels) - np.array(levels)
        whole = np.sign(wanted) * np.floor(np.abs(wanted) + 0.5)
        even = [(frame + shift).astype(np.uint16) for frame, shift in zip(drifted, whole)]
        rest = (wanted - whole).mean()
        for how, reference in ((["--reject", "sigma"], dict(reject="sigma")), ([], {})):
            with self.subTest(how=how):
                # The second writing of the combining rounds; what is missing then is at most a half.
                expected, rejected = combined(even, **reference)
                found = self.correction(drifted, "--align-levels", *how).astype(int)
                white = [np.full(found.shape, 65535, np.uint16)]
                expected = 65535 - self.library_corrects([expected], (1, 100), white, (1, 100))[0].astype(int)
                self.assertLessEqual(np.abs(found - expected).max(), 1)
                self.assertAlmostEqual((found - expected).mean(), rest, delta=0.15)
                self.assertIn(f"the level of the middle one: dark frames by {whole.min():+.0f} to {whole.max():+.0f} ADU",
                              self.report["notes"][-1])
                if how:
                    self.assertIn(f"Rejected {rejected} of", self.report["notes"][0])
                    hit = self.report["notes"][1]
                    self.correction(even, *how)
                    self.assertEqual(self.report["notes"][1], hit)
        plain = self.correction(drifted).astype(int)
        self.assertGreater(np.median(plain - found), 4)

    def test_bands_give_what_memory_gives(self):
        frames = self.darks(40, (150, 140), rays=300)  # 1.7 MB
        for how in ("sigma", "winsor", "minmax:2"):
            whole = self.correction(frames, "--reject", how)
            notes = self.report["notes"]
            np.testing.assert_array_equal(self.correction(frames, "--reject", how, "--stack-memory", 1), whole)
            self.assertEqual(self.report["notes"], notes)

    def test_build_and_store_hold_the_same(self):
        frames = self.darks(8)
        expected = self.correction(frames, "--reject", "sigma")
        said = self.tool("build", "c.qxb", "--key", "k", *BUILD, "--reject", "sigma", "d.tif")
        self.assertIn("from 8 dark frames by average, rejecting by sigma:3,3 of 31 x 19 pixels", said)
        self.assertIn("\nRejected ", said)
        self.assertIn("\nBright in one frame only, as cosmic rays are: d.tif page 1 (", said)
        self.tool("apply", "c.qxb", "--key", "k", *BUILD, "white.tif", "-o", "file.tif")
        np.testing.assert_array_equal(65535 - self.read("file.tif")[0], expected)
        self.tool("store", "add", "s", "--group", "A", "--key", "A,1", *BUILD, "--reject", "sigma", "d.tif")
        self.tool("store", "apply", "s", "--group", "A", "--key", "A,1", *BUILD, "white.tif", "-o", "store.tif")
        np.testing.assert_array_equal(65535 - self.read("store.tif")[0], expected)

    def test_frames_with_cosmic_rays_are_named(self):
        frames = self.darks(6, rays=0)
        frames[4][2, 3:6] = 8000
        self.correction(frames, "--reject", "sigma:5,5")
        self.assertEqual(self.report["notes"][1:],
                         ["Bright in one frame only, as cosmic rays are: d.tif page 5 (3 pixels)"])
        self.assertNotIn("warnings", self.report)

    def test_too_few_frames_and_senseless_values_are_refused(self):
        self.write("d.tif", self.darks(2))
        correct = [*CORRECT, "--dark", "d.tif", "-o", "o.tif", "d.tif"]
        self.refused(*correct, "--reject", "sigma", says=["--reject", "needs 3 dark frames or more, not 2"])
        self.refused(*correct, "--reject", "minmax:3", says=["needs 7 dark frames or more, not 2"])
        for wrong in ("sigmoid", "sigma:", "sigma:3", "sigma:3,x", "sigma:0.5,3", "sigma:3,nan", "sigma:3,3,3", "minmax",
                      "minmax:0", "minmax:-1", "minmax:1.5", "winsor:", ""):
            self.refused(*correct, "--reject", wrong, says=["--reject", f"'{wrong}'"])
        self.refused(*correct, "--combine", "mode", says=["--combine", "'mode' is neither average nor median"])
        self.refused(*correct, "--stack-memory", 0, says=["--stack-memory"])

    def test_a_full_disk_says_so(self):
        self.write("d.tif", self.darks(40, (150, 140)))
        self.refused(*CORRECT, "--dark", "d.tif", "--reject", "sigma", "--stack-memory", 1, "-o", "o.tif", "d.tif",
                     env={**os.environ, "TMPDIR": "/proc"}, says=["temporary file", "TMPDIR"])

    def refused(self, *arguments, says=(), env=None):
        if env is None:
            return super().refused(*arguments, says=says)
        before = self.contents()
        result = self.run_tool(*arguments, env=env)
        self.assertEqual((result.returncode, result.stderr.count("\n")), (2, 1), result.stderr)
        for text in says:
            self.assertIn(text, result.stderr)
        self.assertEqual(self.contents(), before)
        return result.stderr


@support.not_sanitized
class Memory(ToolTest):
    def test_does_not_grow_with_the_number_of_frames(self):
        def peak_with(frames):
            self.write("d.tif", self.images(1, 256, 256) * frames)
            return self.peak_kilobytes("build", "c.qxb", "--key", frames, *BUILD, "--combine", "median",
                                       "--stack-memory", 1, "d.tif")
        self.assertLess(peak_with(200), peak_with(20) + 6000)


class Frames(ToolTest):
    """What is said of frames that do not fit; by the plain average as well."""

    def warnings(self, frames, *how):
        self.write("d.tif", frames)
        result = self.run_tool("build", "c.qxb", "--key", self.id() + str(self.random.integers(1 << 40)), *BUILD, *how,
                               "d.tif")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stderr, "")
        return [line for line in result.stdout.splitlines() if line.startswith("Warning: ")]

    def darks(self, levels):
        return [self.random.normal(level, 6, (40, 50)).clip(0, 65535).astype(np.uint16) for level in levels]

    def test_nothing_of_frames_that_fit(self):
        for how in ([], ["--reject", "sigma"]):
            self.assertEqual(self.warnings(self.darks([300] * 10), *how), [])
        self.assertEqual(self.warnings(self.darks([300, 900])), [])  # nobody knows which of them

    def test_a_light_frame_is_named(self):
        for how in ([], ["--reject", "sigma"]):
            lines = self.warnings(self.darks([300] * 6 + [340] + [300] * 3), *how)
            self.assertEqual(len(lines), 1, lines)
            self.assertRegex(lines[0], r"brighter than the other dark frames, which are at (299|30\d)(.5)? ADU: d.tif page 7 \(3[34]")

    def test_a_frame_that_is_darker_is_named(self):
        lines = self.warnings(self.darks([300, 300, 150, 300, 300]))
        self.assertEqual(len(lines), 1, lines)
        self.assertIn("darker than the other dark frames", lines[0])
        self.assertIn("d.tif page 3 (1", lines[0])

    def test_of_many_the_first_are_named(self):
        lines = self.warnings(self.darks([300] * 20 + [900] * 8))
        self.assertIn("d.tif page 25", lines[0])
        self.assertIn("and 3 more", lines[0])

    def test_a_drift_is_told(self):
        lines = self.warnings(self.darks(range(300, 340, 4)))
        self.assertEqual(len(lines), 1, lines)
        self.assertRegex(lines[0], r"drifts from 30\d(.5)? to 33\d(.5)? ADU: was the camera still getting warmer")
        self.assertIn("colder", self.warnings(self.darks(range(340, 300, -4)))[0])

    def test_frames_of_another_bit_depth_are_named(self):
        """Those of fewer bits, in the high ones of 16 or in the low ones."""
        for high, low, step, bits in ((6000, 6000, 16, 12), (800, 50, 16, 12), (6000, 6000, 4, 14)):
            with self.subTest(high=high, low=low, step=step):
                frames = self.darks([low] * 9)
                for odd in (3, 7):
                    frames[odd] = (self.random.normal(high, 40, (40, 50)).astype(np.uint16) // step * step)
                frames[3][0, :5] = 0xFFFF, 1, 2, 3, 4  # what a driver may put into any frame
                lines = self.warnings(frames)
                self.assertEqual(len(lines), 1, lines)
                self.assertIn(f"values come in steps of {step}, as of {bits} bits in the high ones of 16 in d.tif page 4, "
                              "d.tif page 8, in steps of 1 in the other dark frames: they may not mean the same", lines[0])
                self.assertIn("leave frames of another bit depth out", lines[0])

    def test_a_frame_of_all_bits_among_those_of_fewer_is_named(self):
        frames = [frame // 16 * 16 for frame in self.darks([600] * 6)]
        self.assertEqual(self.warnings(frames), [])
        frames[4] = self.darks([600])[0]
        for how in ([], ["--combine", "median"]):
            lines = self.warnings(frames, *how)
            self.assertEqual(len(lines), 1, lines)
            self.assertIn("values come in steps of 1 in d.tif page 5, in steps of 16", lines[0])

    def test_a_bit_depth_that_nobody_can_tell_is_none(self):
        """Without noise, with hardly any, and with the values of a small frame."""
        flat = np.full((40, 50), 512, np.uint16)
        flat[3, 4:6] = 1024, 2048
        quiet = flat + (self.random.random((40, 50)) < 0.05).astype(np.uint16)
        self.assertEqual(self.warnings([flat, quiet] + self.darks([512] * 3)), [])
        self.assertEqual(self.warnings([frame[:6, :10] for frame in [flat] + self.darks([512] * 3)]), [])

    def test_saturated_frames_are_named(self):
        for highest in (65535, 4095, 65520):
            frames = [np.minimum(frame.astype(int), highest).astype(np.uint16)
                      for frame in self.darks([300] * 4 + [highest] + [300] * 2)]
            lines = self.warnings(frames)
            self.assertEqual(len(lines), 2, lines)
            self.assertRegex(lines[1], r"saturated among the dark frames: d.tif page 5 \([45]\d % of its pixels\)")


if __name__ == "__main__":
    support.main()
