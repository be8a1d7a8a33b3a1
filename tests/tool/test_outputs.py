"""What the workbench writes, read by other programs: pixels, and what was said beside them."""
import json
import subprocess
import unittest

import numpy as np
import tifffile
from astropy.io import fits

import formats
import support
from support import ToolTest, read_png
from test_formats import CONDITIONS, FormatTest

TAGS = {"ImageDescription": "Ein Bild", "Make": "a maker", "Model": "a model", "Software": "a program", "Artist": "me",
        "DateTime": "2026:01:02 03:04:05", "HostComputer": "here", "Copyright": "mine", "DocumentName": "a document",
        "PageName": "a page"}
CODES = {"ImageDescription": 270, "Make": 271, "Model": 272, "Software": 305, "Artist": 315, "DateTime": 306,
         "HostComputer": 316, "Copyright": 33432, "DocumentName": 269, "PageName": 285}


class OutputTest(FormatTest):
    def tagged(self, name, pages, description=TAGS["ImageDescription"], profile=bytes(range(256)) + bytes(44)):
        tags = [(CODES[tag], "s", 0, text, False) for tag, text in TAGS.items() if tag in ("Make", "Model", "Artist",
                "HostComputer", "Copyright", "DocumentName", "PageName")]
        tags += [(274, "H", 1, 3, True), (34675, "B", len(profile), profile, True),
                 (700, "B", 11, b"<x:xmpmeta>", True)]
        formats.plain_tiff(self.folder / name, pages, description=description, software=TAGS["Software"],
                           datetime=TAGS["DateTime"], resolution=(300, 150), resolutionunit="CENTIMETER",
                           metadata=None, extratags=tags)
        return name

    def header(self, **cards):
        header = fits.Header()
        for keyword, value in cards.items():
            header[keyword.replace("_", "-")] = value
        return header


class Tiff(OutputTest):
    def test_keeps_every_tag_that_still_holds(self):
        pages = self.some(2)
        self.tagged("i.tif", pages)
        for options in ([], ["--compress"]):
            with tifffile.TiffFile(self.unchanged("i.tif", *options)) as tiff:
                np.testing.assert_array_equal(tiff.asarray(), pages)
                tags = tiff.pages[0].tags
                self.assertEqual({tag: tags[tag].value for tag in TAGS}, TAGS)
                self.assertEqual((tags["XResolution"].value, tags["YResolution"].value), ((300, 1), (150, 1)))
                self.assertEqual((tags["ResolutionUnit"].value, tags["Orientation"].value), (3, 3))
                self.assertEqual(bytes(tags["InterColorProfile"].value), bytes(range(256)) + bytes(44))
                self.assertEqual(bytes(tags["XMP"].value), b"<x:xmpmeta>")
                self.assertEqual(tiff.pages[1].tags["PageName"].value, "a page")

    def test_other_programs_read_the_tags_back(self):
        """Of each verb that writes images, by libtiff's tools and ImageMagick."""
        profile = formats.gray_profile()
        self.tagged("i.tif", self.some(1), profile=profile)
        page = tifffile.imread(self.folder / "i.tif")
        self.tool("build", "zero.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "zero.tif")
        for name, command in [
                ("a.tif", ["apply", "zero.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "i.tif", "-o", "a.tif"]),
                ("out/i.tif", ["correct", "--dark", "zero.tif", *CONDITIONS, "i.tif", "-o", "out/", "--compress"]),
                ("c.tif", ["convert", "i.tif", "-o", "c.tif"])]:
            with self.subTest(command=command[0]):
                self.tool(*command)
                np.testing.assert_array_equal(tifffile.imread(self.folder / name), page)
                info = subprocess.run(["tiffinfo", name], cwd=self.folder, capture_output=True, text=True)
                self.assertEqual((info.returncode, info.stderr), (0, ""))
                for line in ("ImageDescription: Ein Bild", "Resolution: 300, 150 pixels/cm", "Artist: me",
                             "DateTime: 2026:01:02 03:04:05", "Software: a program", "Orientation: row 0 bottom, col 0 rhs",
                             f"ICC Profile: <present>, {len(profile)} bytes"):
                    self.assertIn(line, info.stdout)
                formats.run("convert", self.folder / name, f"icc:{self.folder / 'back.icc'}")
                self.assertEqual((self.folder / "back.icc").read_bytes(), profile)
                formats.run("convert", self.folder / name, "-depth", 16, "-endian", "LSB",
                            f"GRAY:{self.folder / 'back.raw'}")
                np.testing.assert_array_equal(np.fromfile(self.folder / "back.raw", "<u2").reshape(page.shape), page)

    def test_compressed_is_deflate_with_the_horizontal_predictor(self):
        pages = [np.arange(self.WIDTH * self.HEIGHT, dtype=np.uint16).reshape(self.HEIGHT, self.WIDTH)]
        self.write("i.tif", pages)
        plain = self.unchanged("i.tif").stat().st_size
        out = self.unchanged("i.tif", "--compress")
        self.assertLess(out.stat().st_size, plain / 3)
        text = subprocess.run(["tiffinfo", "-d", str(out)], capture_output=True, text=True, check=True)
        self.assertIn("AdobeDeflate", text.stdout)
        self.assertIn("horizontal differencing", text.stdout)
        self.assertEqual(text.stderr, "")
        np.testing.assert_array_equal(tifffile.imread(out), pages[0])
        formats.run("tiffcp", "-c", "none", out, self.folder / "plain.tif")
        np.testing.assert_array_equal(tifffile.imread(self.folder / "plain.tif"), pages[0])

    def test_large_pages_are_compressed_in_several_strips(self):
        page = self.random.integers(0, 4096, (700, 1000)).astype(np.uint16)
        self.write("zero.tif", [page * 0])
        self.write("i.tif", [page])
        with tifffile.TiffFile(self.unchanged("i.tif", "--compress")) as tiff:
            self.assertEqual(len(tiff.pages[0].dataoffsets), 2)
            np.testing.assert_array_equal(tiff.asarray(), page)

    def test_a_description_that_counts_images_loses_the_counts(self):
        pages = self.some(3)
        formats.image_j_large(self.folder / "i.tif", pages)
        with tifffile.TiffFile(self.unchanged("i.tif")) as tiff:
            self.assertEqual(tiff.pages[0].description, "ImageJ=1.53t\nunit=micron\nloop=false")
            self.assertEqual(len(tiff.pages), 3)
        formats.plain_tiff(self.folder / "i.tif", pages)  # which describes its shape
        self.unchanged("i.tif")
        with tifffile.TiffFile(self.folder / "o.tif") as tiff:
            self.assertNotIn("ImageDescription", tiff.pages[0].tags)
            self.assertEqual(tiff.asarray().shape, (3, self.HEIGHT, self.WIDTH))

    def test_cards_of_a_fits_file_become_the_description_and_cards_again(self):
        page = self.some(1)[0]
        fits.PrimaryHDU(page, self.header(EXPTIME=2.5, INSTRUME="a camera", CCD_TEMP=-10.25)).writeto(
            self.folder / "i.fits")
        with tifffile.TiffFile(self.unchanged("i.fits", "--format", "tiff")) as tiff:
            for line in ("EXPTIME =                  2.5", "INSTRUME= 'a camera'", "CCD-TEMP=               -10.25"):
                self.assertIn(line, tiff.pages[0].description.split("\n"))
            self.assertNotIn("BZERO", tiff.pages[0].description)
            np.testing.assert_array_equal(tiff.asarray(), page)
        self.unchanged("o.tif", output="back.fits")
        with fits.open(self.folder / "back.fits") as back:
            self.assertEqual((back[0].header["EXPTIME"], back[0].header["INSTRUME"], back[0].header["CCD-TEMP"]),
                             (2.5, "a camera", -10.25))

    def test_png_says_what_it_has(self):
        formats.plain_tiff(self.folder / "a.tif", self.some(1))
        (self.folder / "gray.icc").write_bytes(formats.gray_profile())
        formats.run("convert", self.folder / "a.tif", "-units", "PixelsPerCentimeter", "-density", "50x25", "-profile",
                    self.folder / "gray.icc", "-set", "Description", "a description", "-set", "Author", "me", f"PNG:{self.folder / 'i.png'}")
        with tifffile.TiffFile(self.unchanged("i.png")) as tiff:
            tags = tiff.pages[0].tags
            self.assertEqual((tags["XResolution"].value, tags["YResolution"].value, tags["ResolutionUnit"].value),
                             ((50, 1), (25, 1), 3))
            self.assertEqual((tags["ImageDescription"].value, tags["Artist"].value), ("a description", "me"))
            self.assertEqual(bytes(tags["InterColorProfile"].value), formats.gray_profile())


    def test_a_png_that_is_written_says_what_the_page_said(self):
        page = self.some(1)
        self.tagged("i.tif", page)  # its profile is none, which costs the profile
        self.tool("convert", "i.tif", "-o", "o.png")
        np.testing.assert_array_equal(read_png(self.folder / "o.png"), page[0])
        self.tool("convert", "o.png", "-o", "back.tif")
        with tifffile.TiffFile(self.folder / "back.tif") as tiff:
            tags = tiff.pages[0].tags
            kept = ("ImageDescription", "Model", "Software", "Artist", "DateTime", "Copyright", "DocumentName")
            self.assertEqual({tag: tags[tag].value for tag in kept}, {tag: TAGS[tag] for tag in kept})
            self.assertEqual((tags["XResolution"].value, tags["YResolution"].value), ((300, 1), (150, 1)))


class Fits(OutputTest):
    def verified(self, name):
        with fits.open(self.folder / name) as units:
            units.verify("exception")
            return [(unit.header.copy(), np.array(unit.data)) for unit in units if unit.data is not None]

    def test_keeps_every_card_that_still_holds(self):
        header = self.header(EXPTIME=0.25, OBJECT="M 31", GAIN=120, CCD_TEMP=-10.5, XBINNING=2, YBINNING=2,
                             DATE_OBS="2026-11-22T01:02:03.456", LONGTEXT="long " * 30)
        header["HIERARCH a long keyword"] = 5
        header.add_comment("a comment")
        header.add_history("a history")
        pages = self.some(2)
        unit = fits.PrimaryHDU(pages[0], header)
        unit.header["DATAMAX"] = 65535
        unit.add_checksum()
        extension = fits.ImageHDU(pages[1], self.header(EXPTIME=0.5), name="SECOND")
        fits.HDUList([unit, extension]).writeto(self.folder / "i.fits")
        for options, first in (([], 0), (["--compress"], 0)):
            with self.subTest(options=options):
                self.unchanged("i.fits", *options, output="o.fits")
                (one, pixels), (two, more) = self.verified("o.fits")
                np.testing.assert_array_equal(pixels, pages[0])
                np.testing.assert_array_equal(more, pages[1])
                for keyword in ("EXPTIME", "OBJECT", "GAIN", "CCD-TEMP", "XBINNING", "YBINNING", "DATE-OBS", "LONGTEXT",
                                "a long keyword"):
                    self.assertEqual(one[keyword], header[keyword])
                self.assertEqual((list(one["HISTORY"]), "a comment" in list(one["COMMENT"])), (["a history"], True))
                self.assertEqual((two["EXPTIME"], two["EXTNAME"]), (0.5, "SECOND"))
                for keyword in ("CHECKSUM", "DATASUM", "DATAMAX"):
                    self.assertNotIn(keyword, one)

    def test_a_cube_stays_one_cube_and_cubes_stay_apart(self):
        cubes = [np.array(self.some(3)), np.array(self.some(2))]
        for index, cube in enumerate(cubes):
            fits.PrimaryHDU(cube, self.header(OBJECT=f"cube {index}")).writeto(self.folder / f"c{index}.fits")
        self.write("i.tif", self.some(1))
        self.tool("correct", "--dark", "zero.tif", *CONDITIONS, "c0.fits", "c1.fits", "i.tif", "-o", "o.fits")
        units = self.verified("o.fits")
        self.assertEqual([data.shape for _, data in units], [cubes[0].shape, cubes[1].shape, (self.HEIGHT, self.WIDTH)])
        for index, cube in enumerate(cubes):
            np.testing.assert_array_equal(units[index][1], cube)
            self.assertEqual(units[index][0]["OBJECT"], f"cube {index}")

    def test_compressed_is_rice_tiles(self):
        page = np.arange(self.WIDTH * self.HEIGHT, dtype=np.uint16).reshape(self.HEIGHT, self.WIDTH)
        self.write("i.tif", [page, page[::-1]] * 4)
        self.unchanged("i.tif", "--compress", "--format", "fits", output="o.fits")
        with fits.open(self.folder / "o.fits") as units:
            self.assertEqual(len(units), 9)
            np.testing.assert_array_equal(units[1].data, page)
            np.testing.assert_array_equal(units[8].data, page[::-1])
        with fits.open(self.folder / "o.fits", disable_image_compression=True) as units:
            self.assertEqual({unit.header["ZCMPTYPE"] for unit in units[1:]}, {"RICE_1"})
        self.unchanged("o.fits", "--format", "tiff")
        self.assert_same_pages(self.read("o.tif"), [page, page[::-1]] * 4)

    def test_tags_of_a_tiff_become_cards(self):
        self.tagged("i.tif", self.some(1), description="two\nlines " + "and more " * 20)
        self.unchanged("i.tif", output="o.fits")
        header = self.verified("o.fits")[0][0]
        self.assertEqual((header["INSTRUME"], header["OBSERVER"], header["CREATOR"], header["DATE"]),
                         ("a model", "me", "a program", "2026-01-02T03:04:05"))
        self.assertEqual(" ".join(line.strip() for line in header["COMMENT"][:2])[:14], "two lines and ")

    def test_cards_of_a_primary_header_without_pixels_are_about_the_extensions(self):
        page = self.some(1)[0]
        fits.HDUList([fits.PrimaryHDU(header=self.header(EXPTIME=7.0, OBJECT="all")),
                      fits.ImageHDU(page, self.header(OBJECT="own"))]).writeto(self.folder / "i.fits")
        self.unchanged("i.fits", output="o.fits")
        header = self.verified("o.fits")[0][0]
        self.assertEqual((header["EXPTIME"], header["OBJECT"]), (7.0, "own"))


class Choice(OutputTest):
    def kind(self, name):
        return {b"II*\0": "tiff", b"SIMP": "fits", b"\x89PNG": "png"}[(self.folder / name).read_bytes()[:4]]

    def test_as_the_input_unless_the_name_or_an_option_says_otherwise(self):
        pages = self.some(1)
        formats.fits_cube(self.folder / "i.fits", pages)
        self.write("i.tif", pages)
        formats.by_convert(kind="PNG")(self.folder / "i.png", pages)
        for source, output, options, kind in [
                ("i.tif", "o", [], "tiff"), ("i.fits", "o", [], "fits"), ("i.png", "o", [], "tiff"),
                ("i.tif", "o.fits", [], "fits"), ("i.tif", "o.FIT", [], "fits"), ("i.fits", "o.tiff", [], "tiff"),
                ("i.fits", "o.fts", ["--format", "tiff"], "tiff"), ("i.tif", "o", ["--format", "fits"], "fits"),
                ("i.fits", "o.TIF", ["--format", "fits"], "fits"), ("i.fits", "o.PNG", [], "png"),
                ("i.png", "o", ["--format", "png", "--compress"], "png")]:
            with self.subTest(source=source, output=output, options=options):
                self.unchanged(source, *options, output=output)
                self.assertEqual(self.kind(output), kind)

    def test_another_format_is_refused(self):
        self.write("i.tif", self.some(1))
        self.refused("correct", "--dark", "zero.tif", *CONDITIONS, "i.tif", "-o", "o.tif", "--format", "gif",
                     says=["--format", "'gif'", "tiff", "fits", "png"])

    def test_a_png_has_one_page(self):
        self.write("one.tif", self.some(1))
        self.write("two.tif", self.some(2))
        says = "a PNG holds one image, and there are more pages; TIFF and FITS hold any number"
        correct = ["correct", "--dark", "zero.tif", *CONDITIONS]
        self.refused(*correct, "two.tif", "-o", "o.png", says=["o.png: " + says])
        self.assertIn("cannot be corrected: o.png: " + says,
                      self.tool(*correct, "two.tif", "-o", "o.png", "--dry-run", status=1))
        result = self.run_tool(*correct, "two.tif", "one.tif", "--format", "png", "-o", "out/")
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertEqual([path.name for path in (self.folder / "out").iterdir()], ["one.png"])
        self.assertIn(says, result.stderr)
        np.testing.assert_array_equal(read_png(self.folder / "out" / "one.png"), self.read("one.tif")[0])
        self.refused("simulate", "-o", "s", "--frames", 2, "--format", "png", says=["dark_1s.png: " + says])

    def test_simulated_frames_say_their_exposure(self):
        self.tool("simulate", "-o", "s", "--width", 8, "--height", 6, "--frames", 2, "--exposure", 0.5, 2, "--format",
                  "fits", "--compress")
        names = sorted(path.name for path in (self.folder / "s").iterdir())
        self.assertEqual(names[:2], ["dark_0.5s.fits", "dark_2s.fits"])
        with fits.open(self.folder / "s/dark_0.5s.fits") as units:
            self.assertEqual([unit.header["EXPTIME"] for unit in units[1:]], [0.5, 0.5])
        self.tool("simulate", "-o", "t", "--width", 8, "--height", 6, "--frames", 2, "--exposure", 0.5)
        self.tool("correct", "--dark", "s/dark_0.5s.fits", *CONDITIONS, "t/light_0.5s.tif", "-o", "a.tif")
        self.tool("correct", "--dark", "t/dark_0.5s.tif", *CONDITIONS, "t/light_0.5s.tif", "-o", "b.tif")
        self.assert_same_pages(self.read("a.tif"), self.read("b.tif"))


class Bits(FormatTest):
    def said(self, pages, write=None):
        if write is None:
            self.write("i.tif", pages)
            name = "i.tif"
        else:
            name = write(pages)
        report = json.loads(self.tool("statistics", "--json", name))["files"][0]["bits"]
        text = self.tool("statistics", name)
        corrected = self.tool("correct", "--dark", "zero.tif", *CONDITIONS, name, "-o", "o.tif", "--overwrite")
        line = text.split(", pages: ")[1].split("\n")[1].strip()
        self.assertEqual("The images: " + line in corrected, "bit data" in line)
        return report["used"], report["alwaysZeroBelow"], line

    def test_are_recognised_by_the_values(self):
        low = [page | 2048 for page in self.some(2, 0, 4096)]
        self.assertEqual(self.said(low), (12, 0, "values stay below 4096: 12-bit data in 16-bit pixels"))
        self.assertEqual(self.said([page << 4 for page in low]),
                         (12, 4, "the lowest 4 bits are always zero: 12-bit data in 16-bit pixels, left-aligned"))
        self.assertEqual(self.said([page << 2 for page in low])[:2], (14, 0))
        self.assertEqual(self.said([page << 4 | 1 for page in low])[:2], (16, 0))
        self.assertNotIn("bit data", self.said(self.some(1))[2])
        self.assertEqual(self.said([page * 0 for page in low])[:2], (0, 0))

    def test_are_taken_from_what_the_file_says(self):
        dark = self.some(1, 0, 200)

        def pgm(pages):
            (self.folder / "i.pgm").write_bytes(b"P5 %d %d 4095\n" % (self.WIDTH, self.HEIGHT)
                                                + pages[0].astype(">u2").tobytes())
            return "i.pgm"

        def ser(pages):
            (self.folder / "i.ser").write_bytes(formats.ser_bytes(pages, depth=14))
            return "i.ser"

        def tiff(pages):
            self.write("m.tif", pages, tags={281: (3, [4095])})
            return "m.tif"

        for write, bits in [(pgm, 12), (ser, 14), (tiff, 12)]:
            self.assertEqual(self.said(dark, write), (bits, 0, f"{bits}-bit data in 16-bit pixels, as the file says"))


if __name__ == "__main__":
    support.main()
