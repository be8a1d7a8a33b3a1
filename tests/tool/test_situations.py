"""What can be wrong with a correction though every file is fine: each is told, and the right correction is chosen."""
import hashlib
import json
import os

import numpy as np

import formats
import support
from support import ToolTest


class Situation(ToolTest):
    def flat(self, level, shape=(20, 30)):
        return (level + self.random.integers(0, 5, shape)).astype(np.uint16)

    def build(self, key, exposure, intensity=100, level=100, shape=(20, 30), file="c.qxb"):
        self.write("built.tif", [self.flat(level, shape)] * 2)
        self.tool("build", file, "--key", key, "--exposure", exposure, "--intensity", intensity, "built.tif")

    def fits(self, name, level=900, shape=(20, 30), **cards):
        support.write_fits(self.folder / name, self.flat(level, shape), **cards)
        return name

    def warned(self, *arguments, status=0):
        """The warnings of a run that is done, without what they all begin with."""
        result = self.run_tool(*arguments)
        self.assertEqual(result.returncode, status, result.stderr)
        self.said = result.stdout
        self.assertEqual(result.stderr, "")
        start = "Warning: "
        return [line[len(start):] for line in result.stdout.splitlines() if line.startswith(start)]

    def apply(self, exposure, *more, intensity=100, image="light.tif", status=0):
        return self.warned("apply", "c.qxb", "--exposure", exposure, "--intensity", intensity, *more, "--overwrite",
                           image, "-o", "o.tif", status=status)


class Scaling(Situation):
    def setUp(self):
        super().setUp()
        self.write("light.tif", [self.flat(900)])

    def test_up_is_warned_of(self):
        self.build("k", 1)
        lines = self.apply(2, "--key", "k")
        self.assertEqual(len(lines), 1, lines)
        self.assertIn("scaled up by 2, and its noise, and the camera's offset (see --bias), with it", lines[0])
        self.assertEqual(self.apply(1, "--key", "k"), [])
        self.assertEqual(self.apply(0.5, "--key", "k"), [])
        self.assertEqual(self.apply(0.5, "--key", "k", intensity=200), [])
        self.assertEqual(len(self.apply(0.5, "--key", "k", intensity=201)), 1)

    def test_json_has_the_warnings(self):
        self.build("k", 1)
        self.apply(2, "--key", "k", "--json")
        self.assertIn("scaled up by 2", json.loads(self.said)["warnings"][0])


class Sizes(Situation):
    def test_an_image_of_another_size_is_refused_with_both(self):
        self.build("k", 1)
        self.write("other.tif", [self.flat(900, (9, 8))])
        self.refused("apply", "c.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "other.tif", "-o", "n.tif",
                     says=["other.tif: page 1: is 8 x 9 pixels, the correction's region is 30 x 20"])
        (self.folder / "in").mkdir()
        self.write("in/a.tif", [self.flat(900)])
        self.write("in/b.tif", [self.flat(900, (9, 8))])
        result = self.run_tool("apply", "c.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "in", "-o", "out/")
        self.assertEqual(result.returncode, 1)
        self.assertIn("b.tif: page 1: is 8 x 9 pixels, the correction's region is 30 x 20", result.stderr)
        self.assertTrue((self.folder / "out/a.tif").exists())


class Clipping(Situation):
    def setUp(self):
        super().setUp()
        self.build("k", 1, level=500)
        image = self.flat(900)
        image[:3] = 400  # 15 % of it
        image[19] = 0    # has nothing to lose
        self.write("light.tif", [image])

    def test_a_share_cut_off_is_told(self):
        lines = self.apply(1, "--key", "k")
        self.assertEqual(len(lines), 1, lines)
        self.assertIn("15 % of the pixels were cut off at zero: what lay below is lost", lines[0])
        self.assertEqual(self.apply(1, "--key", "k", "--warn-clipped", 15), [])
        self.assertEqual(len(self.apply(1, "--key", "k", "--warn-clipped", 14.9)), 1)

    def test_a_pedestal_heals_it(self):
        self.assertEqual(self.apply(1, "--key", "k", "--pedestal", 600), [])

    def test_all_of_it_raises_a_question(self):
        self.write("light.tif", [self.flat(300)])
        self.assertIn("100 % of the pixels were cut off at zero: does the correction belong to these images?",
                      self.apply(1, "--key", "k")[0])


class Choosing(Situation):
    def setUp(self):
        super().setUp()
        self.write("light.tif", [self.flat(900)])
        for key, exposure, level in (("short", 1, 110), ("middle", 10, 150), ("long", 60, 400)):
            self.build(key, exposure, level=level)

    def chosen(self, exposure, *more, **how):
        warnings = self.apply(exposure, "--auto", *more, **how)
        line = next(line for line in self.said.splitlines() if line.startswith("Chose "))
        return line, warnings

    def test_exactly_what_is_needed(self):
        for exposure, key in ((1, "short"), (10, "middle"), (60, "long")):
            line, warnings = self.chosen(exposure)
            self.assertEqual((line, warnings), (f"Chose '{key}' ({exposure} s, 100 %): exactly what the images need", []))
            auto = self.read("o.tif")
            self.apply(exposure, "--key", key)
            self.assert_same_pages(self.read("o.tif"), auto)
        self.assertIn("Chose 'middle'", self.chosen(20, intensity=50)[0])

    def test_the_nearest_that_is_scaled_down(self):
        line, warnings = self.chosen(5)
        self.assertEqual((line, warnings), ("Chose 'middle' (10 s, 100 %): the nearest that is scaled down, by 0.5", []))
        self.assertIn("Chose 'long' (60 s, 100 %): the nearest that is scaled down, by 0.1833", self.chosen(11)[0])

    def test_up_only_when_nothing_else_is_there(self):
        line, warnings = self.chosen(120)
        self.assertEqual(line, "Chose 'long' (60 s, 100 %): none is scaled down; the nearest, scaled up by 2")
        self.assertIn("scaled up by 2", warnings[0])

    def test_two_alike_are_refused(self):
        self.build("Middle 2", 10)
        self.refused("apply", "c.qxb", "--auto", "--exposure", 10, "--intensity", 100, "light.tif", "-o", "n.tif",
                     says=["'middle' and 'Middle 2' are of the same 10 s, 100 %", "--key"])
        self.build("other light", 5, 200)  # the same product
        self.assertIn("Chose 'other light'", self.chosen(5, intensity=200)[0])

    def test_sizes_count(self):
        self.build("small", 5, shape=(10, 12))
        self.write("small.tif", [self.flat(900, (10, 12))])
        self.assertIn("Chose 'small'", self.chosen(10, image="small.tif")[0])
        self.write("other.tif", [self.flat(900, (11, 12))])
        self.refused("apply", "c.qxb", "--auto", "--exposure", 1, "--intensity", 100, "other.tif", "-o", "n.tif",
                     says=["c.qxb: has no correction for images of 12 x 11 pixels", "12 x 10, 30 x 20"])
        self.assertIn("Chose 'middle'", self.chosen(10, "--region", "3,4,12,11", image="other.tif")[0])

    def test_one_of_the_two_options_is_needed(self):
        apply = ["apply", "c.qxb", "--exposure", 1, "--intensity", 100, "light.tif", "-o", "n.tif"]
        self.refused(*apply, says=["--key or --auto"])
        self.refused(*apply, "--auto", "--key", "short", says=["--key", "--auto"])


class DryRun(Situation):
    def test_says_all_and_writes_nothing(self):
        self.build("k", 10)
        (self.folder / "lights").mkdir()
        for name in ("a.tif", "b.tif"):
            self.write("lights/" + name, [self.flat(900)] * 2)
        before = self.contents()
        run = ["apply", "c.qxb", "--auto", "--dry-run", "--exposure", 20, "--intensity", 100, "lights/", "-o", "out/"]
        warnings = self.warned(*run)
        self.assertEqual(self.said, "Would correct 4 pages of 2 files with 'k' of c.qxb, scaled by 2; nothing is written:\n"
                                    "  lights/a.tif -> out/a.tif\n  lights/b.tif -> out/b.tif\n"
                                    "Chose 'k' (10 s, 100 %): none is scaled down; the nearest, scaled up by 2\n"
                                    "Warning: " + warnings[0] + "\n")
        self.assertIn("scaled up by 2", warnings[0])
        self.assertEqual(self.contents(), before)
        self.assertFalse((self.folder / "out").exists())

    def test_names_what_does_not_fit(self):
        self.write("d.tif", [self.flat(100)])
        self.write("a.tif", [self.flat(900)])
        self.write("b.tif", [self.flat(900, (9, 8))])
        self.warned("correct", "--dry-run", "--dark-exposure", 1, "--dark-intensity", 100, "--exposure", 1, "--intensity",
                    100, "--dark", "d.tif", "-o", "o.tif", "a.tif", "b.tif", status=1)
        self.assertIn("Would correct 1 page of 1 file with 1 dark frame (1 s, 100 %), scaled by 1", self.said)
        self.assertIn("\n  a.tif -> o.tif\n", self.said)
        self.assertIn("\n  cannot be corrected: b.tif: page 1: is 8 x 9 pixels, the correction's region is 30 x 20\n",
                      self.said)
        self.assertFalse((self.folder / "o.tif").exists())


class ExposureInHeaders(Situation):
    def test_each_image_gets_its_own(self):
        """In a folder, in one file, and in files of several pages: as with an option for each."""
        self.build("k", 30, level=300)
        (self.folder / "in").mkdir()
        for name, exposure in (("a", 30), ("b", 15), ("c", 30.01), ("d", 60)):
            self.fits(f"in/{name}.fits", EXPTIME=exposure)
        support.write_fits(self.folder / "in/e.fits", self.flat(900), EXPOSURE=15)
        lines = self.warned("apply", "c.qxb", "--key", "k", "--intensity", 100, "in", "-o", "out/", "--format", "tiff",
                            "--name", "{stem}.tif")
        self.assertIn("(15 s to 60 s by the headers, 100 %, level 100 %) with 'k' of c.qxb", self.said)
        for note in ("1 page of 30 s: scaled by 1\n", "2 pages of 15 s: scaled by 0.5\n", "1 page of 60 s: scaled by 2\n"):
            self.assertIn(note, self.said)
        self.assertEqual(len(lines), 1, lines)
        self.assertIn("scaled up by 2", lines[0])
        self.warned("apply", "c.qxb", "--key", "k", "--intensity", 100, *(f"in/{n}.fits" for n in "abcde"), "-o",
                    "all.tif")
        together = self.read("all.tif")
        for index, (name, exposure) in enumerate((("a", 30), ("b", 15), ("c", 30.01), ("d", 60), ("e", 15))):
            self.warned("apply", "c.qxb", "--key", "k", "--intensity", 100, "--exposure", exposure, f"in/{name}.fits",
                        "-o", "one.tif", "--overwrite")
            self.assertEqual(self.said.count("(%g s, 100 %%, level" % exposure), 1)
            for found in (self.read(f"out/{name}.tif"), together[index:index + 1]):
                self.assert_same_pages(found, self.read("one.tif"))

    def test_with_unfiltered_darks_and_a_level(self):
        dark = self.flat(300)
        dark[5, 5] = 2000
        support.write_fits(self.folder / "dark.fits", dark, EXPTIME=20)
        images = [self.fits(f"{n}.fits", 3000, EXPTIME=exposure) for n, exposure in (("a", 20), ("b", 10), ("c", 20))]
        correct = ["correct", "--dark-intensity", 100, "--intensity", 100, "--unfiltered", "--level", 80, "-o", "o.tif",
                   "--overwrite"]
        self.warned(*correct, *images, "--dark", "dark.fits")
        self.assertIn("1 dark frame (20 s, 100 %)", self.said)
        together = self.read("o.tif")
        for index, exposure in enumerate((20, 10, 20)):
            self.warned(*correct, "--exposure", exposure, images[index], "--dark-exposure", 20, "--dark", "dark.fits")
            self.assert_same_pages(together[index:index + 1], self.read("o.tif"))

    def test_an_option_counts_and_what_differs_is_told(self):
        self.build("k", 30)
        self.fits("light.fits", EXPTIME=30)
        lines = self.apply(15, "--key", "k", image="light.fits")
        self.assertEqual(lines, ["exposure 30 s by the header of light.fits, but --exposure says 15 s, which counts"])
        self.assertEqual(self.apply(30, "--key", "k", image="light.fits"), [])

    def test_without_either_the_image_is_refused(self):
        self.build("k", 30)
        self.write("light.tif", [self.flat(900)])
        self.refused("apply", "c.qxb", "--key", "k", "--intensity", 100, "light.tif", "-o", "o.tif",
                     says=["light.tif: page 1: does not say its exposure time; give it with --exposure"])
        (self.folder / "in").mkdir()
        for name in "ab":
            self.write(f"in/{name}.tif", [self.flat(900)])
        apply = ["apply", "c.qxb", "--key", "k", "--intensity", 100, "in", "-o", "out/"]
        self.refused(*apply, says=["a.tif: page 1: does not say its exposure time", "none of 2 files can be corrected"])
        for name, exposure in (("c", 30), ("d", "unknown"), ("e", 0), ("f", -5)):
            self.fits(f"in/{name}.fits", EXPTIME=exposure)
        self.fits("in/g.fits", EXPTIME="unknown", EXPOSURE=30)
        result = self.run_tool(*apply)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr.count("does not say its exposure time"), 2, result.stderr)
        for line in ("d.fits: page 1: EXPTIME is 'unknown', not a number of seconds; give the exposure time with --exposure",
                     "e.fits: page 1: EXPTIME is 0, as a bias frame's is, and nothing can be scaled with that; give the",
                     "f.fits: page 1: EXPTIME is -5, which is no exposure time; give the exposure time with --exposure"):
            self.assertIn(line, result.stderr)
        self.assertEqual(sorted(os.listdir(self.folder / "out")), ["c.fits", "g.fits"])

    def test_of_dark_frames(self):
        for name, exposure, gain in (("a", 60, 100), ("b", 60.02, 100), ("c", 30, 100), ("d", 60, 200), ("e", None, 100)):
            self.fits(f"{name}.fits", 200, EXPTIME=exposure, GAIN=gain)
        build = ["build", "n.qxb", "--intensity", 100, "--key"]
        self.assertIn("(60 s, 100 %)", self.tool(*build, "k", "a.fits", "b.fits", "e.fits"))
        self.refused(*build, "l", "a.fits", "b.fits", "c.fits",
                     says=["c.fits: page 1: was taken with exposure 30 s, a.fits page 1 with exposure 60 s", "--mixed"])
        self.refused(*build, "l", "a.fits", "d.fits",
                     says=["d.fits: page 1: was taken with gain 200, a.fits page 1 with gain 100"])
        self.refused(*build, "l", "e.fits", "a.fits", says=["e.fits: page 1: does not say its exposure time", "--exposure"])
        self.refused(*build, "l", self.fits("f.fits", 200, EXPTIME="1 min"), "a.fits",
                     says=["f.fits: page 1: EXPTIME is '1 min', not a number of seconds; give the exposure time with --exposure"])
        self.assertEqual(self.warned(*build, "o", "a.fits", "f.fits"),
                         ["in f.fits page 1 EXPTIME is '1 min', not a number of seconds; it was taken for 60 s as the others are"])
        self.refused(*build, "l", "a.fits", self.fits("g.fits", 200, EXPTIME=0),
                     says=["g.fits: page 1: was taken with exposure 0 s, a.fits page 1 with exposure 60 s"])
        self.refused(*build, "l", "a.fits", "c.fits", "--mixed", says=["several exposure times; give one with --exposure"])
        lines = self.warned(*build, "l", "a.fits", "c.fits", "d.fits", "--mixed", "--exposure", 60)
        self.assertEqual(lines, ["the dark frames were not all taken alike: a.fits page 1 with exposure 60 s, c.fits page 1 "
                                 "with exposure 30 s",
                                 "the dark frames were not all taken alike: a.fits page 1 with gain 100, d.fits page 1 with "
                                 "gain 200"])
        lines = self.warned(*build, "m", "a.fits", "b.fits", "--exposure", 45)
        self.assertEqual(lines[0], "by their headers the dark frames were exposed for 60 s; --exposure 45 was taken instead")
        self.assertIn("(45 s, 100 %)", self.said)

    def test_of_dark_frames_are_seen_before_their_pixels(self):
        for name, how in (("a", {}), ("negative", {"BZERO": 0}), ("b", {}), ("wide", {"shape": (20, 31)}), ("c", {"GAIN": 7})):
            self.fits(f"{name}.fits", 200, **{"EXPTIME": 60, "GAIN": 3, **how})
        build = ["build", "n.qxb", "--intensity", 100, "--key", "k", "a.fits", "negative.fits", "b.fits"]
        self.refused(*build, says=["negative.fits: page 1: has negative pixels"])
        self.refused(*build, "c.fits", says=["c.fits: page 1: was taken with gain 7, a.fits page 1 with gain 3"])
        self.refused(*build, "wide.fits", "--combine", "median",
                     says=["wide.fits: page 1: is 31 x 20 pixels, the frames before it are 30 x 20"])


class Twice(Situation):
    def test_a_dark_frame_that_is_something_else_as_well_is_named(self):
        for name, level in (("d.tif", 300), ("light.tif", 900), ("bias.tif", 50)):
            self.write(name, [self.flat(level)])
        os.link(self.folder / "d.tif", self.folder / "e.tif")
        conditions = ["--intensity", 100, "--exposure", 1]
        correct = ["correct", "--dark-intensity", 100, "--dark-exposure", 1, *conditions, "--warn-clipped", 100, "-o",
                   "o/", "--overwrite", "--dark", "d.tif", "--bias"]
        self.assertEqual(self.warned(correct[0], "light.tif", *correct[1:], "bias.tif"), [])
        self.assertEqual(self.warned(correct[0], "e.tif", "light.tif", "bias.tif", *correct[1:], "bias.tif"),
                         ["d.tif is among the dark frames and among the images as well: is that meant?",
                          "bias.tif is among the bias frames and among the images as well: is that meant?"])
        self.assertEqual(self.warned(correct[0], "light.tif", *correct[1:], "d.tif"),
                         ["d.tif is among the bias frames and among the dark frames as well: is that meant?"])
        self.assertEqual(self.warned("build", "c.qxb", "--key", "k", *conditions, "d.tif", "--bias", "e.tif"),
                         ["d.tif is among the dark frames and among the bias frames as well: is that meant?"])


class Depth(Situation):
    """How many bits the camera's values have, by headers."""

    def setUp(self):
        super().setUp()
        for name, bits in (("a", 12), ("b", 12), ("c", None), ("d", 16)):
            self.fits(f"{name}.fits", 200, EXPTIME=60, BITDEPTH=bits)
        (self.folder / "v.ser").write_bytes(formats.ser_bytes([self.flat(200)] * 2, depth=14))

    def test_of_dark_frames(self):
        build = ["build", "n.qxb", "--intensity", 100, "--exposure", 60, "--key"]
        self.assertEqual(self.warned(*build, "k", "a.fits", "c.fits", "b.fits"), [])
        self.refused(*build, "l", "c.fits", "a.fits", "d.fits",
                     says=["d.fits: page 1: was taken with depth 16 bits, a.fits page 1 with depth 12 bits", "--mixed"])
        self.refused(*build, "l", "v.ser", "a.fits",
                     says=["a.fits: page 1: was taken with depth 12 bits, v.ser page 1 with depth 14 bits"])
        self.assertEqual(self.warned(*build, "l", "a.fits", "d.fits", "--mixed"),
                         ["the dark frames were not all taken alike: a.fits page 1 with depth 12 bits, d.fits page 1 with "
                          "depth 16 bits"])

    def test_of_images(self):
        correct = ["correct", "--dark-intensity", 100, "--intensity", 100, "--warn-clipped", 100, "-o", "o.fits",
                   "--overwrite", "--dark", "a.fits"]
        self.assertEqual(self.warned(*correct[:1], "c.fits", "d.fits", *correct[1:]),
                         ["depth 16 bits by the header of d.fits, but 12 bits in the dark frames: is this the right "
                          "correction?"])
        self.assertEqual(self.warned(*correct[:1], "b.fits", "c.fits", *correct[1:]), [])


class OtherCamera(Situation):
    """What headers say of dark frames and of images is held against each other."""

    def correct(self, *images, **dark):
        self.fits("dark.fits", 200, **{"EXPTIME": 60, **dark})
        return self.warned("correct", "--dark-intensity", 100, "--intensity", 100, *images, "-o", "o.tif", "--overwrite",
                           "--dark", "dark.fits")

    def test_gain_and_binning(self):
        self.fits("a.fits", EXPTIME=60, GAIN=200, XBINNING=1, YBINNING=1)
        self.fits("b.fits", EXPTIME=60, GAIN=200, XBINNING=2, YBINNING=2)
        self.assertEqual(self.correct("a.fits", "b.fits", GAIN=100, XBINNING=2, YBINNING=2),
                         ["gain 200 by the header of a.fits, b.fits, but 100 in the dark frames: is this the right "
                          "correction?",
                          "binning 1 x 1 by the header of a.fits, but 2 x 2 in the dark frames: is this the right "
                          "correction?"])
        self.assertEqual(self.correct("b.fits", GAIN=200), [])

    def test_temperature(self):
        self.fits("a.fits", EXPTIME=60, CCD__TEMP=-7.5)
        lines = self.correct("a.fits", CCD__TEMP=-10)
        self.assertEqual(lines, ["temperature -7.5 C by the header of a.fits, but -10 C in the dark frames: dark current "
                                 "doubles about every 6 degrees"])
        self.assertEqual(self.correct("a.fits", "--temperature-tolerance", 2.5, CCD__TEMP=-10), [])

    def test_bias_of_another_gain(self):
        self.fits("a.fits", EXPTIME=60, GAIN=100)
        self.fits("bias.fits", 50, GAIN=200)
        lines = self.correct("a.fits", "--bias", "bias.fits", GAIN=100)
        self.assertIn("the bias frames with 200", " ".join(lines))

    def test_old_dark_frames(self):
        self.fits("a.fits", EXPTIME=60, DATE__OBS="2026-11-22T03:04:05.5")
        lines = self.correct("a.fits", DATE__OBS="2025-11-21T23:00:00")
        self.assertEqual(lines, ["the correction is 366 days older than a.fits: hot pixels come with time; take new dark "
                                 "frames, or allow it with --warn-older"])
        self.assertEqual(self.correct("a.fits", DATE__OBS="2025-11-22"), [])
        self.assertEqual(len(self.correct("a.fits", "--warn-older", 10, DATE__OBS="2026-11-01")), 1)

    def test_an_old_calibration_file(self):
        self.build("k", 60)
        (self.folder / "c.qxb.json").unlink()            # its date would count
        os.utime(self.folder / "c.qxb", (1.0e9, 1.0e9))  # 2001-09-09
        self.fits("a.fits", EXPTIME=60, DATE__OBS="2003-02-01")
        for how in (["--key", "k"], ["--auto"]):
            lines = self.warned("apply", "c.qxb", *how, "--intensity", 100, "a.fits", "-o", "o.tif", "--dry-run")
            self.assertEqual(len(lines), 1, lines)
            self.assertIn("the correction is 510 days older than a.fits", lines[0])


class Groups(Situation):
    """A store whose groups are named by what headers say."""

    GROUPS = ["--group", "Gain", "--group", "Temperature", "--group", "Binning"]

    def add(self, key, level, exposure=60, gain=100, celsius=-10.0, binning=1, shape=(20, 30), says=None, groups=GROUPS):
        for index in (0, 1):
            self.fits(f"dark{index}.fits", level, shape, EXPTIME=exposure, GAIN=gain, CCD__TEMP=celsius + index / 5,
                      XBINNING=binning, YBINNING=binning)
        said = self.tool("store", "add", "s", *groups, "--key", key, "--intensity", 100, "dark0.fits", "dark1.fits")
        self.assertIn(says or "", said)

    def auto(self, *more, status=0):
        self.lines = self.warned("store", "apply", "s", *self.GROUPS, "--auto", "--intensity", 100, *more, "-o", "o.tif",
                                 "--overwrite", status=status)
        return self.said

    def refuses(self, *more, says):
        self.refused("store", "apply", "s", *self.GROUPS, "--auto", "--intensity", 100, *more, "-o", "n.tif", says=says)

    def setUp(self):
        super().setUp()
        self.add("a", 110, says="Added 'Gain,100,Temperature,-10,Binning,1x1,a'")
        self.add("long", 170, exposure=300)
        self.add("a", 210, gain=200)
        self.add("a", 310, celsius=-20)

    def light(self, name, exposure=60, gain=100, celsius=-10, binning=1, shape=(20, 30)):
        return self.fits(name, 900, shape, EXPTIME=exposure, GAIN=gain, CCD__TEMP=celsius, XBINNING=binning,
                         YBINNING=binning)

    def test_each_image_gets_the_correction_of_its_group(self):
        lights = [self.light("a.fits"), self.light("b.fits", gain=200), self.light("c.fits", celsius=-19.4),
                  self.light("d.fits", exposure=100)]
        said = self.auto(*lights)
        self.assertIn("with 4 corrections", said)
        for line in ("1 page of 60 s: Chose 'Gain,100,Temperature,-10,Binning,1x1,a' (60 s, 100 %): exactly what the images "
                     "need",
                     "1 page of 60 s: Chose 'Gain,200,Temperature,-10,Binning,1x1,a' (60 s, 100 %): exactly",
                     "Chose 'Gain,100,Temperature,-20,Binning,1x1,a' (60 s, 100 %): exactly what the images need; its sensor "
                     "was 0.6 C colder",
                     "1 page of 100 s: Chose 'Gain,100,Temperature,-10,Binning,1x1,long' (300 s, 100 %): the nearest that is "
                     "scaled down, by 0.3333"):
            self.assertIn(line, said)
        self.assertEqual(self.lines, [])
        together = self.read("o.tif")
        for index, key in enumerate(("Gain,100,Temperature,-10,Binning,1x1,a", "Gain,200,Temperature,-10,Binning,1x1,a",
                                     "Gain,100,Temperature,-20,Binning,1x1,a", "Gain,100,Temperature,-10,Binning,1x1,long")):
            self.tool("store", "apply", "s", *self.GROUPS, "--key", key, "--intensity", 100, lights[index], "-o", "o.tif",
                      "--overwrite")
            self.assert_same_pages(together[index:index + 1], self.read("o.tif"))

    def test_what_no_group_fits_is_refused(self):
        self.refuses(self.light("a.fits", gain=150), says=["a.fits: s has no group for it: Gain of 100, 200, the image's is 150"])
        self.refuses(self.light("a.fits", binning=2), says=["Binning of 1x1, the image's is 2x2"])
        self.refuses(self.light("a.fits", celsius=-12),
                     says=["Temperature of -10, -20, the image's sensor was at -12 C; --temperature-tolerance 1 C"])
        self.assertIn("Temperature,-10", self.auto("a.fits", "--temperature-tolerance", 3))
        self.refuses(self.light("a.fits", gain="high"),
                     says=["a.fits: GAIN is 'high', not a number, and s is grouped by Gain; say it with --where Gain=..."])
        self.refuses(self.light("a.fits", celsius="off"), says=["CCD-TEMP is 'off', not a number of degrees, and s is grouped"])
        self.refuses(self.light("a.fits", gain=None), says=["a.fits: its header does not say the Gain (GAIN)", "--where Gain="])
        self.assertIn("Chose 'Gain,200,", self.auto("a.fits", "--where", "Gain=200"))
        self.refuses(self.light("a.fits", shape=(9, 8)), says=["has no correction for images of 8 x 9 pixels", "30 x 20"])
        self.refuses("a.fits", "--where", "Mode=fast", says=["--where Mode=fast", "grouped by Binning, Gain, Temperature"])
        self.refuses("a.fits", "--where", "Gain", says=["--where: 'Gain' is not NAME=VALUE"])

    def test_two_alike_are_refused(self):
        self.add("b", 120)
        self.refuses(self.light("a.fits"), says=["Binning,1x1,a' and 'Gain,100,Temperature,-10,Binning,1x1,b'", "--key"])

    def test_a_key_of_another_gain_is_told(self):
        self.light("a.fits", gain=200)
        lines = self.warned("store", "apply", "s", *self.GROUPS, "--key", "Gain,100,Temperature,-10,Binning,1x1,a",
                            "--intensity", 100, "a.fits", "-o", "o.tif")
        self.assertEqual(lines, ["gain 200 by the header of a.fits, but 100 in the dark frames: is this the right correction?"])

    def test_groups_that_headers_do_not_tell_apart(self):
        groups = ["--group", "Gain", "--group", "Mode"]
        for mode, level in (("fast", 100), ("slow", 200)):
            self.add(f"Mode,{mode},x", level, groups=["--group", "Gain", "--group", "Mode"], gain=7)
        apply = ["store", "apply", "s", *groups, "--auto", "--intensity", 100, self.light("a.fits", gain=7), "-o", "n.tif"]
        self.refused(*apply, says=["grouped by Mode as well", "fast, slow", "--where Mode=fast"])
        self.assertIn("Chose 'Gain,7,Mode,slow,x'", self.tool(*apply, "--where", "Mode=slow"))

    def test_added_to_the_group_that_is_meant(self):
        """A group that is there already is not made anew in another spelling."""
        self.fits("d.fits", 100)
        self.tool("store", "add", "t", "--group", "Binning", "--group", "Temp", "--key", "Binning,2,Temp,-5.0 C,x",
                  "--exposure", 1, "--intensity", 100, "d.fits")
        said = self.warned("store", "add", "t", "--group", "Binning", "--group", "Temp", "--key", "y", "--intensity", 100,
                           self.fits("d.fits", 100, EXPTIME=2, XBINNING=2, YBINNING=2, CCD__TEMP=-5.2))
        self.assertIn("Added 'Binning,2,Temp,-5.0 C,y'", self.said)
        self.refused("store", "add", "t", "--group", "Binning", "--group", "Temp", "--key", "z", "--intensity", 100,
                     self.fits("d.fits", 100, EXPTIME=2, XBINNING=2), says=["'Temp'", "the frames' headers do not say one"])
        self.refused("store", "add", "t", "--group", "Binning", "--key", "z", "--intensity", 100,
                     self.fits("e.fits", 100, EXPTIME=2, XBINNING=0),
                     says=["'Binning', and in the frames' headers XBINNING is 0, not a whole number from 1 to 1000 (keys read"])
        self.assertEqual(said, [])
        self.refused("store", "add", "t", "--group", "Binning", "--group", "Temp", "--key", "binning,1,z", "--intensity", 100,
                     "d.fits", says=["no value for the grouping name 'Binning'", "'binning'"])


class Recorded(Situation):
    """What stands beside a calibration file of how it was built. Nothing is said where nothing is recorded."""

    def record(self, key, exposure, bias, date="2026-11-22T06:35:00Z", level=100, pixels=None):
        frames = {"frames": 2, "files": [{"name": "x.tif", "bytes": 1, "sha256": None}]}
        data = (self.folder / "c.qxb").read_bytes()[-20 * 30 * 2:]
        entry = {"key": key, "width": 30, "height": 20, "exposureSeconds": exposure, "lightIntensityPercent": 100,
                 "pixelsSha256": hashlib.sha256(pixels or data).hexdigest(),
                 "built": {"date": date, "tool": "x", "combine": "average", "reject": "none", "darks": frames,
                           "bias": frames if bias else None, "hotPixels": {"sigma": 5, "hot": 0, "dead": 0}, "notes": [],
                           "warnings": []}}
        (self.folder / "c.qxb.json").write_text(json.dumps({"format": "qxbackground-provenance", "version": 1,
                                                            "corrections": [entry]}))

    def test_a_bias_on_one_side_only(self):
        self.build("k", 1)
        (self.folder / "c.qxb.json").unlink()
        self.write("light.tif", [self.flat(900)])
        self.write("bias.tif", [self.flat(50)])
        with_bias = ["--bias", "bias.tif", "--warn-clipped", 100]
        self.assertEqual(self.apply(1, "--key", "k"), [])
        self.assertEqual(self.apply(1, "--key", "k", *with_bias), [])
        self.record("k", 1, bias=True)
        self.assertEqual(self.apply(1, "--key", "K"),
                         ["'K' of c.qxb: built with --bias, which took the camera's offset off the dark frames; without "
                          "--bias here it stays in the images"])
        self.assertEqual(self.apply(1, "--key", "k", *with_bias), [])
        self.record("k", 1, bias=False)
        self.assertEqual(self.apply(1, "--key", "k"), [])
        self.assertEqual(self.apply(1, "--auto", *with_bias),
                         ["'k' of c.qxb: built without --bias, so that it holds the camera's offset; with --bias here that "
                          "is taken off the images twice"])
        self.record("k", 1, bias=False, pixels=b"of another correction")
        self.assertEqual(self.apply(1, "--key", "k", *with_bias), [])

    def test_its_date_counts(self):
        self.build("k", 1)
        self.fits("a.fits", EXPTIME=1, DATE__OBS="2026-11-22")
        self.assertEqual(self.apply(1, "--key", "k", image="a.fits"), [])
        self.record("k", 1, bias=False, date="2024-11-22T06:35:00Z")
        self.assertIn("730 days older than a.fits", self.apply(1, "--key", "k", image="a.fits")[0])


class Neighbours(Situation):
    def test_a_dark_that_is_brighter_than_a_longer_one(self):
        for key, exposure, level in (("short", 1, 100), ("long", 60, 300)):
            self.build(key, exposure, level=level)
        self.write("built.tif", [self.flat(350)])
        lines = self.warned("build", "c.qxb", "--key", "middle", "--exposure", 10, "--intensity", 100, "built.tif")
        self.assertEqual(len(lines), 1, lines)
        self.assertRegex(lines[0], r"'middle' \(10 s, 100 %: 35\d ADU\) is brighter than 'long' \(60 s, 100 %: 30\d ADU\), "
                                   "and should be darker: was there light in it")
        (self.folder / "c.qxb.json").unlink()  # or the frames' file that is written anew is told as well
        self.assertEqual(self.warned("check", "c.qxb"), lines)
        self.write("light.tif", [self.flat(900)])
        self.assertEqual(self.apply(10, "--auto"), lines)
        self.assertEqual(self.apply(1, "--auto"), [])
        self.build("other size", 5, level=900, shape=(4, 5))  # is no neighbour
        (self.folder / "c.qxb.json").unlink()
        self.assertEqual(self.warned("check", "c.qxb"), lines)


if __name__ == "__main__":
    support.main()
