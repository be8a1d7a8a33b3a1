"""What can be wrong with a correction though every file is fine: each is told, and the right correction is chosen."""
import json

import numpy as np

import support
from support import ToolTest


class Situation(ToolTest):
    def flat(self, level, shape=(20, 30)):
        return (level + self.random.integers(0, 5, shape)).astype(np.uint16)

    def build(self, key, exposure, intensity=100, level=100, shape=(20, 30), file="c.qxb"):
        self.write("built.tif", [self.flat(level, shape)] * 2)
        self.tool("build", file, "--key", key, "--exposure", exposure, "--intensity", intensity, "built.tif")

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


if __name__ == "__main__":
    support.main()
