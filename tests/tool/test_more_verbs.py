"""export, diff, rename, convert; keys and groups that are probably slips of the keyboard."""
import json

import numpy as np
from astropy.io import fits

import support
from support import ToolTest, read_png
from test_files import file_bytes

CONDITIONS = ["--exposure", 1, "--intensity", 100]


class Verbs(ToolTest):
    def file(self, name, *corrections):
        """Each correction: key, image, and its exposure if that is not 1."""
        (self.folder / name).write_bytes(file_bytes([(key.encode(), *(exposure or [1]), 100, image)
                                                     for key, image, *exposure in corrections]))
        return name

    def setUp(self):
        super().setUp()
        self.one, self.two = self.images(2, 7, 5)


class Export(Verbs):
    def test_writes_the_pixels_that_are_stored(self):
        self.file("c.qxb", ("one", self.one), ("two", self.two, 2.5))
        said = self.tool("export", "c.qxb", "--key", "TWO", "-o", "two.tif")
        self.assertIn("Exported 'TWO' (2.5 s, 100 %, 7 x 5 pixels): two.tif", said)
        self.assert_same_pages(self.read("two.tif"), [self.two])
        self.tool("export", "c.qxb", "--key", "two", "-o", "two.fits")
        self.assertRegex((self.folder / "two.fits").read_bytes(), rb"EXPTIME =\s+2.5 ")
        self.tool("convert", "two.fits", "-o", "back.tif")
        self.assert_same_pages(self.read("back.tif"), [self.two])

    def test_as_fits_and_png_for_other_programs(self):
        self.file("c.qxb", ("größe", self.two, 2.5))
        self.tool("export", "c.qxb", "--key", "größe", "-o", "two.png")
        np.testing.assert_array_equal(read_png(self.folder / "two.png"), self.two)
        about = "Background correction 'größe' (2.5 s, 100 %)".encode()
        self.assertIn(b"iTXtDescription" + bytes(5) + about, (self.folder / "two.png").read_bytes())
        self.tool("convert", "two.png", "-o", "two.tif")
        self.assertIn(about, (self.folder / "two.tif").read_bytes())
        self.tool("export", "c.qxb", "--key", "größe", "--format", "png", "-o", "odd.tif")
        self.assertEqual((self.folder / "odd.tif").read_bytes(), (self.folder / "two.png").read_bytes())
        self.tool("export", "c.qxb", "--key", "größe", "-o", "two.fits")
        with fits.open(self.folder / "two.fits") as units:
            np.testing.assert_array_equal(units[0].data, self.two)

    def test_refuses_what_is_not_there(self):
        self.file("c.qxb", ("one", self.one))
        self.refused("export", "c.qxb", "--key", "two", "-o", "o.tif", says=["c.qxb: key 'two'"])


class Diff(Verbs):
    def test_files_with_the_same_corrections(self):
        self.file("a.qxb", ("one", self.one), ("two", self.two))
        self.file("b.qxb", ("TWO", self.two), ("one", self.one))
        self.assertEqual(self.tool("diff", "a.qxb", "b.qxb"), "2 corrections the same, 0 different\n")

    def test_every_difference_is_told(self):
        other = self.two.copy()
        other[1, 1:3] ^= 4
        self.file("a.qxb", ("gone", self.one), ("two", self.two), ("size", self.one), ("when", self.one), ("same", self.one))
        self.file("b.qxb", ("two", other), ("size", self.one[:4]), ("when", self.one, 2), ("new", self.one),
                  ("same", self.one))
        self.assertEqual(self.tool("diff", "a.qxb", "b.qxb", status=1).splitlines(),
                         ["'gone': only in a.qxb", "'two': 2 pixels of 35 differ, by up to 4 ADU",
                          "'size': 7 x 5 and 7 x 4 pixels", "'when': (1 s, 100 %) and (2 s, 100 %)",
                          "'new': only in b.qxb", "1 correction the same, 5 different"])


class Rename(Verbs):
    def test_changes_the_key_and_nothing_else(self):
        for key, new, left in (("TWO", "second", "one"), ("one", "ONE", "two")):
            self.file("c.qxb", ("one", self.one), ("two", self.two, 3))
            self.tool("rename", "c.qxb", "--key", key, new)
            keys = ("one", new) if left == "one" else (new, "two")
            expected = file_bytes([(keys[0].encode(), 1, 100, self.one), (keys[1].encode(), 3, 100, self.two)])
            self.assertEqual((self.folder / "c.qxb").read_bytes(), expected)

    def test_refusals_change_nothing(self):
        self.file("c.qxb", ("one", self.one), ("two", self.two))
        for arguments, says in ((("--key", "one", "Two"), "'two' already"), (("--key", "three", "four"), "no correction 'three'"),
                                (("--key", "one", ""), "empty"), (("--key", "one", "x" * 513), "513 bytes"),
                                (("--key", "one", "a\tb"), "control character")):
            self.refused("rename", "c.qxb", *arguments, says=[says])


class Convert(Verbs):
    def test_keeps_pixels_and_what_is_said_beside_them(self):
        self.write("a.tif", [self.one, self.two], tags={282: (3, [1])})
        self.write("b.tif", [self.one.T])
        self.assertIn("Converted 3 pages of 2 files: o.fits", self.tool("convert", "a.tif", "b.tif", "-o", "o.fits"))
        self.tool("convert", "o.fits", "-o", "o.tif")
        self.assert_same_pages(self.read("o.tif"), [self.one, self.two, self.one.T])
        self.tool("simulate", "-o", "s", "--width", 8, "--height", 6, "--frames", 2, "--exposure", 0.5)
        self.tool("convert", "s/dark_0.5s.tif", "--compress", "-o", "c.fits")
        self.tool("convert", "c.fits", "--format", "tiff", "-o", "c.dat")
        self.assert_same_pages(self.read("c.dat"), self.read("s/dark_0.5s.tif"))

    def test_one_page_becomes_a_png_and_comes_back(self):
        header = fits.Header({"EXPTIME": 2.5, "INSTRUME": "a camera", "GAIN": 120})
        fits.PrimaryHDU(self.one, header).writeto(self.folder / "a.fits")
        self.tool("convert", "a.fits", "-o", "o.png")
        np.testing.assert_array_equal(read_png(self.folder / "o.png"), self.one)
        self.tool("convert", "o.png", "-o", "back.fits")
        with fits.open(self.folder / "back.fits") as units:
            np.testing.assert_array_equal(units[0].data, self.one)
            self.assertEqual([units[0].header[name] for name in header], [2.5, "a camera", 120])

    def test_a_bad_input_leaves_nothing(self):
        self.write("a.tif", [self.one])
        (self.folder / "b.tif").write_bytes(b"nothing")
        self.refused("convert", "a.tif", "b.tif", "-o", "o.fits", says=["b.tif"])
        self.write("two.tif", [self.one, self.two])
        self.refused("convert", "two.tif", "-o", "o.png", says=["o.png: a PNG holds one image", "TIFF and FITS"])
        self.refused("convert", "a.tif", "-o", "a.tif", "--overwrite", says=["a.tif"])


class Slips(Verbs):
    def test_control_characters_in_keys_are_refused(self):
        self.write("d.tif", [self.one])
        for key in ("a\tb", "a\n", "\x01", "a\x7f"):
            self.refused("build", "c.qxb", "--key", key, *CONDITIONS, "d.tif", says=["control character"])
            self.refused("store", "add", "s", "--group", "A", "--key", "A,1," + key, *CONDITIONS, "d.tif",
                         says=["control character"])
        self.tool("build", "c.qxb", "--key", "größe 60 s", *CONDITIONS, "d.tif")

    def test_a_group_almost_like_another_is_asked_about(self):
        self.write("d.tif", [self.one])

        def add(key, *more, group="Mode"):
            return ["store", "add", "s", "--group", group, "--key", key, *CONDITIONS, *more, "d.tif"]
        self.tool(*add("Mode,fast"))
        self.tool(*add("Mode,fast,again"))
        self.tool(*add("Mode,faster"))
        for key in ("Mode,Fast", "Mode,fa st"):
            self.refused(*add(key), says=["would be a new group", "s_Mode_fast", "--new-group"])
        self.refused(*add("mode,fast", group="mode"), says=["would be a new group", "s_Mode_fast"])
        self.tool(*add("Mode,Fast", "--new-group"))
        self.tool(*add("Mode,Fast,again"))  # is there by now
        listing = json.loads(self.tool("store", "list", "s", "--group", "Mode", "--json"))
        self.assertEqual(len(listing["groups"]), 3)


if __name__ == "__main__":
    support.main()
