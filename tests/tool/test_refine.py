"""What is done to images beside the library's subtraction: bias, pedestal, hot pixels. Each held against numpy around what
the library makes of the same pixels by way of another host."""
import json
import re

import numpy as np

import support
from support import ToolTest

DARK = ["--dark-exposure", 1, "--dark-intensity", 100]
NOW = ["--exposure", 2, "--intensity", 100]


def rounded_mean(frames):
    return np.floor(np.mean(np.stack(frames).astype(float), axis=0) + 0.5).astype(int)


def as_pixels(values):
    return np.clip(values, 0, 65535).astype(np.uint16)


class Refined(ToolTest):
    SHAPE = (24, 33)

    def setUp(self):
        super().setUp()
        height, width = self.SHAPE
        self.dark_frames = self.images(4, width, height, 300, 330)
        self.bias_frames = self.images(3, width, height, 90, 110)
        self.light = self.images(1, width, height, 800, 1000)
        self.write("darks.tif", self.dark_frames)
        self.write("bias.tif", self.bias_frames)
        self.write("light.tif", self.light)

    def correct(self, *how, images="light.tif", output="o.tif", darks="darks.tif"):
        self.report = json.loads(self.tool("correct", *DARK, *NOW, *how, "--json", "--overwrite", "--dark", darks, "-o",
                                           output, images))
        return self.read(output)[0] if output.endswith("tif") else None

    def background(self, darks):
        """That the library subtracts: what is missing from a white image."""
        white = [np.full(self.SHAPE, 65535, np.uint16)]
        return 65535 - self.library_corrects(darks, (1, 100), white, (2, 100))[0].astype(int)


class Pedestal(Refined):
    def test_is_added_before_anything_is_cut_off(self):
        self.light[0][3, 4:9] = [0, 100, 65535, 65500, 65100]
        self.write("light.tif", self.light)
        plain = self.correct()
        self.assertEqual(plain[3, 5], 0)
        found = self.correct("--pedestal", 700)
        expected = self.light[0].astype(int) + 700 - self.background(self.dark_frames)
        np.testing.assert_array_equal(found, as_pixels(expected))
        self.assertGreater(expected[3, 5], 0)  # was cut off
        self.assertGreater(expected[3, 6], 65535 - 700)  # went above the highest value in between
        self.assertIn("Pedestal added: 700 ADU", self.report["notes"])

    def test_stands_in_the_result(self):
        self.correct("--pedestal", 25)
        self.assertRegex((self.folder / "o.tif").read_bytes(), rb"PEDESTAL=\s+25 / ADU that were added")
        self.correct("--pedestal", 25, output="o.fits")
        cards = (self.folder / "o.fits").read_bytes()[:5760]
        self.assertEqual(len(re.findall(rb"PEDESTAL=\s+25 / ADU", cards)), 1)
        self.assertEqual((cards.find(b"PEDESTAL") % 80, cards.find(b"HISTORY Pedestal added: 25 ADU") % 80), (0, 0))

    def test_a_second_one_adds_up(self):
        self.correct("--pedestal", 25, output="o.fits")
        self.correct("--pedestal", 700, images="o.fits", output="p.fits")
        self.assertEqual(re.findall(rb"PEDESTAL=\s+(\d+) / ADU", (self.folder / "p.fits").read_bytes()), [b"725"])

    def test_none_leaves_no_trace(self):
        self.correct(output="o.fits")
        for word in (b"PEDESTAL", b"HISTORY"):
            self.assertNotIn(word, (self.folder / "o.fits").read_bytes())

    def test_values_out_of_range_are_refused(self):
        for wrong in (-1, 65536, "x", 1.5):
            self.refused("correct", *DARK, *NOW, "--pedestal", wrong, "--dark", "darks.tif", "-o", "o.tif", "light.tif",
                         says=["--pedestal"])


class Bias(Refined):
    def expected(self, light):
        bias = rounded_mean(self.bias_frames)
        dark = as_pixels(rounded_mean(self.dark_frames) - bias)
        return light.astype(int) - bias - self.background([dark])

    def test_is_not_scaled_with_the_dark_current(self):
        found = self.correct("--bias", "bias.tif")
        expected = self.expected(self.light[0])
        np.testing.assert_array_equal(found, as_pixels(expected))
        self.assertIn("Bias subtracted: the average of 3 bias frames", self.report["notes"])
        # Without it, the camera's offset of 100 ADU is scaled by 2 as well.
        self.assertAlmostEqual(np.median(found) - np.median(self.correct()), 100, delta=5)

    def test_goes_with_a_pedestal(self):
        self.light[0][:2] = 0
        self.write("light.tif", self.light)
        np.testing.assert_array_equal(self.correct("--bias", "bias.tif", "--pedestal", 600),
                                      as_pixels(self.expected(self.light[0]) + 600))

    def test_in_files_and_stores(self):
        expected = self.correct("--bias", "bias.tif")
        build = ["--exposure", 1, "--intensity", 100, "darks.tif", "--bias", "bias.tif"]
        self.assertIn("Bias subtracted from the dark frames: the average of 3 bias frames",
                      self.tool("build", "c.qxb", "--key", "k", *build))
        self.tool("store", "add", "s", "--group", "A", "--key", "A,1", *build)
        apply = [*NOW, "light.tif", "--bias", "bias.tif"]
        self.tool("apply", "c.qxb", "--key", "k", *apply, "-o", "file.tif")
        self.tool("store", "apply", "s", "--group", "A", "--key", "A,1", *apply, "-o", "store.tif")
        np.testing.assert_array_equal(self.read("file.tif")[0], expected)
        np.testing.assert_array_equal(self.read("store.tif")[0], expected)

    def test_of_a_region_only_that_part_counts(self):
        whole = self.correct("--bias", "bias.tif")
        part = self.write("part.tif", [self.light[0][5:15, 7:27]])
        found = self.correct("--bias", "bias.tif", "--region", "7,5,20,10", images=part)
        np.testing.assert_array_equal(found, whole[5:15, 7:27])

    def test_another_size_is_named_with_its_own(self):
        self.write("other.tif", self.images(1, 10, 12))
        for verb in (["correct", *DARK, *NOW, "--dark", "darks.tif", "-o", "o.tif", "light.tif"],
                     ["build", "c.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "darks.tif"]):
            self.refused(*verb, "--bias", "other.tif", says=["other.tif", "10 x 12", "33 x 24"])


class HotPixels(Refined):
    HOT = [(0, 0), (5, 9), (5, 10), (12, 20), (23, 32)]  # row, column; two side by side, two in corners
    DEAD = [(8, 8)]

    def setUp(self):
        super().setUp()
        for frame in (*self.dark_frames, *self.light):
            for place in self.HOT:
                frame[place] += 5000
            for place in self.DEAD:
                frame[place] = 0
        self.write("darks.tif", self.dark_frames)
        self.write("light.tif", self.light)

    def repaired(self, image, bad=None):
        bad = self.HOT + self.DEAD if bad is None else bad
        out = image.copy()
        for y, x in bad:
            radius, good = 1, []
            while len(good) < 3:
                good = [image[r, c] for r in range(max(y - radius, 0), min(y + radius + 1, image.shape[0]))
                        for c in range(max(x - radius, 0), min(x + radius + 1, image.shape[1])) if (r, c) not in bad]
                radius += 1
            out[y, x] = np.floor(np.median(good) + 0.5)
        return out

    def test_are_found_and_replaced(self):
        plain = self.correct()
        self.assertGreater(plain[5, 9], 4000)
        found = self.correct("--repair-hot")
        np.testing.assert_array_equal(found, self.repaired(plain))
        self.assertIn("Replaced by the median of their good neighbours: 5 hot and 1 dead pixel", self.report["notes"])
        np.testing.assert_array_equal(self.correct("--repair-hot=20"), found)
        np.testing.assert_array_equal(self.correct("--repair-hot=1000"), plain)

    def test_a_cluster_takes_from_further_away(self):
        bad = [(y, x) for y in range(10, 13) for x in range(10, 13)]
        self.list(bad)
        np.testing.assert_array_equal(self.correct("--hot-list", "list.txt"), self.repaired(self.correct(), bad))

    def list(self, bad):
        lines = [f"{x} {y} hot" for y, x in bad]
        (self.folder / "list.txt").write_text("size 33 24\n" + "\n".join(lines) + "\n")

    def test_a_list_is_written_edited_and_read(self):
        self.assertIn("5 hot and 1 dead pixel of 33 x 24 pixels, in 4 dark frames: l.txt",
                      self.tool("hotpixels", "darks.tif", "-o", "l.txt"))
        text = (self.folder / "l.txt").read_text()
        self.assertEqual(text, self.tool("hotpixels", "darks.tif"))
        self.assertEqual(text.splitlines()[1:], ["size 33 24", "0 0 hot", "9 5 hot", "10 5 hot", "8 8 dead", "20 12 hot",
                                                 "32 23 hot"])
        np.testing.assert_array_equal(self.correct("--hot-list", "l.txt"), self.correct("--repair-hot"))
        edited = text.replace("9 5 hot\n", "") + "1 1  # added by hand\n\n20 12 dead # twice\n"
        (self.folder / "l.txt").write_text(edited)
        bad = [place for place in self.HOT + self.DEAD if place != (5, 9)] + [(1, 1)]
        np.testing.assert_array_equal(self.correct("--hot-list", "l.txt"), self.repaired(self.correct(), bad))

    def test_a_library_file_takes_the_list_too(self):
        self.tool("hotpixels", "darks.tif", "-o", "l.txt")
        self.tool("build", "c.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "darks.tif")
        self.tool("apply", "c.qxb", "--key", "k", *NOW, "light.tif", "-o", "file.tif", "--hot-list", "l.txt")
        np.testing.assert_array_equal(self.read("file.tif")[0], self.correct("--repair-hot"))

    def test_in_a_region_they_are_where_they_are(self):
        part = self.write("part.tif", [self.light[0][4:16, 8:30]])
        inside = [(y - 4, x - 8) for y, x in self.HOT + self.DEAD if 4 <= y < 16 and 8 <= x < 30]
        plain = self.correct("--region", "8,4,22,12", images=part)
        np.testing.assert_array_equal(self.correct("--region", "8,4,22,12", "--repair-hot", images=part),
                                      self.repaired(plain, inside))

    def test_lists_that_make_no_sense_are_refused(self):
        correct = ["correct", *DARK, *NOW, "--dark", "darks.tif", "-o", "o.tif", "--hot-list", "l.txt", "light.tif"]
        for text, says in (("", "no line 'size"), ("1 2 hot\n", "line 1"), ("size 33 24\n1\n", "line 2"),
                           ("size 33 24\n1 2 warm\n", "'1 2 warm'"), ("size 33 24\n33 2 hot\n", "outside"),
                           ("size 33 24\n3 24\n", "outside"), ("size 33 24\n-1 2\n", "outside"),
                           ("size 33 24\n1.5 2\n", "line 2"), ("size 33 0\n", "line 1"), ("size 33 24 9\n", "line 1"),
                           ("size 20 24\n", "20 x 24 pixels, the dark frames are 33 x 24")):
            (self.folder / "l.txt").write_text(text)
            self.refused(*correct, says=["l.txt", says])
        (self.folder / "l.txt").unlink()
        self.refused(*correct, says=["l.txt"])
        self.refused("correct", *DARK, *NOW, "--dark", "darks.tif", "-o", "o.tif", "--repair-hot=0", "light.tif",
                     says=["--repair-hot"])

    def test_each_part_of_the_frame_has_its_own_spread(self):
        """A glow to the right, whose pixels differ. What differs is subtracted with --unfiltered, and stays without it."""
        level = np.concatenate([self.random.normal(300, 2, (64, 128)), self.random.normal(900, 40, (64, 128))], axis=1)
        for x in (20, 60, 100, 200):
            level[30, x] += 60
        level[40, 220] += 900
        self.write("d.tif", [np.rint(level).astype(np.uint16)])
        lines = self.tool("hotpixels", "d.tif").splitlines()
        for place in ("20 30", "60 30", "100 30", "220 40"):
            self.assertIn(f"{place} hot", lines)
        right = [line for line in lines if line.endswith(("hot", "dead")) and int(line.split()[0]) >= 128]
        self.assertGreater(len(right), 100)
        self.write("white.tif", [np.full((64, 256), 20000, np.uint16)])
        unfiltered = self.correct("--unfiltered", darks="d.tif", images="white.tif").astype(int)
        repaired = self.correct("--unfiltered", "--repair-hot", darks="d.tif", images="white.tif").astype(int)
        changed = set(zip(*np.nonzero(unfiltered != repaired)))
        self.assertLessEqual({(30, 20), (30, 60), (30, 100), (40, 220)}, changed)
        self.assertLess(len(changed), 10)

    def test_too_many_are_a_reason_to_ask(self):
        frame = self.images(1, 33, 24, 0, 65536)
        frame[0][self.random.random(self.SHAPE) < 0.9] = 300
        self.write("d.tif", frame)
        self.assertIn("# Warning: more than 2 % of all pixels are called hot or dead", self.tool("hotpixels", "d.tif"))
        self.assertIn("\nWarning: more than 2 %", self.tool("hotpixels", "d.tif", "-o", "l.txt"))
        self.assertEqual((self.folder / "l.txt").read_text().count("Warning"), 0)


class Unfiltered(Refined):
    def scaled(self, factor):
        """Rounded once, when all is done."""
        return np.floor(np.mean(np.stack(self.dark_frames).astype(float), axis=0) * factor + 0.5).astype(int)

    def test_subtracts_the_dark_frames_as_they_are(self):
        self.dark_frames[0][4, 5] += 4000  # the filter takes it out
        self.write("darks.tif", self.dark_frames)
        expected = as_pixels(self.light[0].astype(int) - self.scaled(2))
        self.assertFalse(np.array_equal(self.correct(), expected))
        np.testing.assert_array_equal(self.correct("--unfiltered"), expected)
        self.assertIn("Dark frames subtracted as they are, without the median filter", self.report["notes"])
        np.testing.assert_array_equal(self.correct("--unfiltered", "--no-statistics"), expected)
        np.testing.assert_array_equal(self.correct("--unfiltered", "--pedestal", 900),
                                      as_pixels(self.light[0].astype(int) + 900 - self.scaled(2)))

    def test_a_bias_is_not_rounded_either(self):
        dark, bias = (np.mean(np.stack(frames).astype(float), axis=0) for frames in (self.dark_frames, self.bias_frames))
        for how in ([], ["--reject", "sigma:1000,1000"]):
            found = self.correct("--unfiltered", "--bias", "bias.tif", "--pedestal", 900, *how)
            np.testing.assert_array_equal(
                found, self.light[0].astype(int) + 900 - np.floor(2 * (dark - bias) + bias + 0.5).astype(int))

    def test_with_a_level_and_a_region(self):
        part = self.write("part.tif", [self.light[0][5:15, 7:27]])
        found = self.correct("--unfiltered", "--region", "7,5,20,10", "--level", 50, images=part)
        np.testing.assert_array_equal(found, as_pixels(self.light[0].astype(int) - self.scaled(1))[5:15, 7:27])


class Together(Refined):
    def test_the_result_says_all(self):
        self.correct("--bias", "bias.tif", "--repair-hot", "--pedestal", 10, "--reject", "sigma", output="o.fits")
        header = (self.folder / "o.fits").read_bytes()[:5760]
        for text in (b"HISTORY Dark frames combined: 4 dark frames by average, rejecting by sigma:3,3",
                     b"HISTORY Bias subtracted: the average of 3 bias frames", b"HISTORY Replaced by the median",
                     b"HISTORY Pedestal added: 10 ADU"):
            self.assertEqual(header.count(text), 1, text)
            self.assertEqual(header.find(text) % 80, 0)


if __name__ == "__main__":
    support.main()
