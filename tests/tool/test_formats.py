"""Every format that the workbench reads, as other programs write it: the same pixels, and what is said beside them."""
import struct
import subprocess

import numpy as np
import tifffile
from astropy.io import fits

import formats
import support
from support import ToolTest

CONDITIONS = ["--dark-exposure", 1, "--dark-intensity", 100, "--exposure", 1, "--intensity", 100]


class FormatTest(ToolTest):
    WIDTH, HEIGHT = 43, 29

    def setUp(self):
        super().setUp()
        self.write("zero.tif", [np.zeros((self.HEIGHT, self.WIDTH), np.uint16)])

    def some(self, count=3, low=0, high=65536):
        return self.images(count, self.WIDTH, self.HEIGHT, low, high)

    def unchanged(self, name, *options, output="o.tif"):
        """The file through a correction that takes nothing away."""
        self.tool("correct", "--dark", "zero.tif", *CONDITIONS, name, "-o", output, "--overwrite", *options)
        return self.folder / output

    def not_read(self, name, *options, says):
        self.refused("statistics", name, *options, says=[name, *says])


class Pixels(FormatTest):
    def test_are_those_that_the_other_program_wrote(self):
        pages = self.some()
        for name, (write, held) in formats.WRITERS.items():
            with self.subTest(file=name):
                write(self.folder / name, pages)
                self.unchanged(name, "--format", "tiff")
                self.assert_same_pages(self.read("o.tif"), held(pages))

    def test_dark_frames_of_any_format_are_the_same_dark_frames(self):
        darks, images = self.some(3, 0, 30000), self.some(2)
        expected = self.library_corrects(darks, (1, 100), images, (1, 100))
        self.write("i.tif", images)
        formats.fits_cube(self.folder / "d.fits", darks)
        (self.folder / "d.ser").write_bytes(formats.ser_bytes(darks))
        formats.pgm_by_netpbm()(self.folder / "d.pgm", darks)
        np.array(darks).astype("<u2").tofile(self.folder / "d.raw")
        raw = ["--raw", f"{self.WIDTH}x{self.HEIGHT}"]
        for name, options in [("d.fits", []), ("d.ser", []), ("d.pgm", []), ("d.raw", raw)]:
            with self.subTest(file=name):
                self.tool("correct", "--dark", name, *CONDITIONS, *options, "i.tif", "-o", f"{name}.tif")
                self.assert_same_pages(self.read(f"{name}.tif"), expected)
                self.tool("build", f"{name}.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, *options, name)
                self.tool("apply", f"{name}.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "i.tif", "-o",
                          f"{name}.applied.tif")
                self.assert_same_pages(self.read(f"{name}.applied.tif"), expected)
                self.tool("store", "add", f"s{name}", "--group", "G", "--key", "G,1,k", "--exposure", 1, "--intensity",
                          100, *options, name)
                self.tool("store", "apply", f"s{name}", "--group", "G", "--key", "G,1,k", "--exposure", 1,
                          "--intensity", 100, "i.tif", "-o", f"{name}.stored.tif")
                self.assert_same_pages(self.read(f"{name}.stored.tif"), expected)
                self.assertIn("pages: 3", self.tool("statistics", *options, name))

    def test_the_name_says_nothing(self):
        pages = self.some(1)
        formats.fits_cube(self.folder / "image.tif", pages)
        self.write("image.fits", pages)
        formats.by_convert(kind="PNG")(self.folder / "image.png", pages)
        (self.folder / "image.png").rename(self.folder / "image[1].fits")  # what some read as a part of a file
        for name in ("image.tif", "image.fits", "image[1].fits"):
            self.unchanged(name)
            self.assert_same_pages(self.read("o.tif"), pages)


class Packed(FormatTest):
    """FITS files that fpack compressed: as good as before."""

    def header(self, number=None):
        header = fits.Header()
        header["EXPTIME"] = (12.5 if number is None else number + 1.5, "seconds")
        header["OBJECT"], header["CCD-TEMP"] = "M 31 'core'", -10.25
        header["HIERARCH A LONG KEYWORD"], header["TEXT"] = 3, "long " * 30
        header["ZVALUE"], header["DATE-OBS"] = 3, "2024-01-02T03:04:05"
        if number is not None:
            header["EXTNAME"] = f"CHIP{number}"
        return header

    def test_headers_and_pixels_are_those_from_before(self):
        pages = self.some(3)
        commented = self.header()
        commented.add_comment("the observer's own")
        commented.add_history("read out slowly")
        units = {"one": [fits.PrimaryHDU(pages[0], self.header())],
                 "commented": [fits.PrimaryHDU(pages[0], commented)],
                 "several": [fits.PrimaryHDU(None, commented)]
                            + [fits.ImageHDU(page, self.header(number)) for number, page in enumerate(pages)],
                 "both": [fits.PrimaryHDU(pages[0], commented), fits.ImageHDU(pages[1], self.header(7))]}
        corrected = ["correct", "--dark", "zero.tif", "--dark-intensity", 1, "--intensity", 1, "--dark-exposure", 1]
        for name, list_of_units in units.items():
            with self.subTest(file=name):
                fits.HDUList(list_of_units).writeto(self.folder / f"{name}.fits", checksum=True)
                formats.run("fpack", "-O", self.folder / f"{name}.fits.fz", self.folder / f"{name}.fits")
                self.tool(*corrected, f"{name}.fits", "-o", "plain/")
                self.tool(*corrected, f"{name}.fits.fz", "-o", "packed/")
                with fits.open(self.folder / "plain" / f"{name}.fits") as plain, \
                        fits.open(self.folder / "packed" / f"{name}.fits") as packed:
                    self.assertEqual(len(packed), len(plain))
                    for one, other in zip(plain, packed):
                        np.testing.assert_array_equal(one.data, other.data)
                        self.assertEqual([card.image for card in other.header.cards],
                                         [card.image for card in one.header.cards])


class Raw(FormatTest):
    def test_frames_of_another_program(self):
        pages = self.some(1)
        formats.raw_by_convert(self.folder / "f.gray", pages)
        self.unchanged("f.gray", "--raw", f"{self.WIDTH}x{self.HEIGHT}")
        self.assert_same_pages(self.read("o.tif"), pages)

    def test_frames_behind_an_offset(self):
        pages = self.some()
        data = np.array(pages).astype("<u2").tobytes()
        (self.folder / "f.raw").write_bytes(b"x" * 17 + data)
        self.unchanged("f.raw", "--raw", f"{self.WIDTH}x{self.HEIGHT}+17")
        self.assert_same_pages(self.read("o.tif"), pages)

    def test_other_lengths_are_refused(self):
        (self.folder / "f.raw").write_bytes(bytes(self.WIDTH * self.HEIGHT * 2 + 1))
        size = f"{self.WIDTH}x{self.HEIGHT}"
        self.not_read("f.raw", "--raw", size, says=["2495 bytes", "43 x 29", "2494 bytes each", "--raw"])
        self.not_read("f.raw", "--raw", size + "+2495", says=["no whole number"])
        self.not_read("f.raw", "--raw", "32767x32767", says=["no whole number"])
        self.not_read("f.raw", says=["no known format", "--raw"])
        (self.folder / "none.raw").write_bytes(b"")
        self.not_read("none.raw", "--raw", size, says=["0 bytes"])

    def test_files_with_a_format_of_their_own_are_read_by_it(self):
        pages = self.some(1)
        self.write("i.tif", pages)
        self.unchanged("i.tif", "--raw", "5x5")
        self.assert_same_pages(self.read("o.tif"), pages)

    def test_pixels_that_look_like_the_start_of_a_text_format(self):
        page = self.some(1)[0]
        page[0, :2] = struct.unpack("<HH", b"P5\n1")
        page.astype("<u2").tofile(self.folder / "f.raw")
        self.unchanged("f.raw", "--raw", f"{self.WIDTH}x{self.HEIGHT}")
        self.assert_same_pages(self.read("o.tif"), [page])

    def test_sizes_that_are_none(self):
        self.write("i.tif", self.some(1))
        for text in ("", "5", "5x", "x5", "0x5", "5x0", "-5x5", "5x-5", "5x5+", "5x5+-1", "5x5-1", "5x5+1x", "5 x5", "5,5",
                     "5x 5", "5x5+ 1", "99999999999x5", "1e3x5"):
            with self.subTest(text=text):
                self.refused("statistics", "i.tif", f"--raw={text}", says=["--raw"])


class Video(FormatTest):
    def picture(self, high=60000):
        columns = np.linspace(1000, high, self.WIDTH)
        return [(columns + self.random.normal(0, 30, (self.HEIGHT, self.WIDTH))).astype(np.uint16) for _ in range(2)]

    def test_the_flag_counts_as_programs_write_it(self):
        pages = self.some()  # noise, of which nobody can tell the order
        for flag, order in [(0, "<"), (1, ">")]:
            (self.folder / "v.ser").write_bytes(formats.ser_bytes(pages, flag, order))
            self.unchanged("v.ser")
            self.assert_same_pages(self.read("o.tif"), pages)

    def test_a_picture_in_the_order_of_the_description_is_recognised(self):
        pages = self.picture()
        for flag, order in [(0, ">"), (1, "<"), (0, "<"), (1, ">")]:
            with self.subTest(flag=flag, order=order):
                (self.folder / "v.ser").write_bytes(formats.ser_bytes(pages, flag, order))
                self.unchanged("v.ser")
                self.assert_same_pages(self.read("o.tif"), pages)

    def test_values_beyond_the_depth_tell_the_order_as_well(self):
        pages = self.some(2, 0, 4096)
        for flag, order in [(0, ">"), (1, "<")]:
            (self.folder / "v.ser").write_bytes(formats.ser_bytes(pages, flag, order, depth=12))
            self.unchanged("v.ser")
            self.assert_same_pages(self.read("o.tif"), pages)

    def test_names_and_times_are_kept(self):
        from datetime import datetime, timezone
        ticks = [int((datetime(*when, tzinfo=timezone.utc) - datetime(1, 1, 1, tzinfo=timezone.utc)).total_seconds())
                 * 10**7 for when in [(2024, 2, 29, 23, 59, 58), (2100, 12, 31, 1, 2, 3)]]
        (self.folder / "v.ser").write_bytes(formats.ser_bytes(self.some(2), times=ticks))
        with tifffile.TiffFile(self.unchanged("v.ser")) as tiff:
            self.assertEqual([page.tags["DateTime"].value for page in tiff.pages],
                             ["2024:02:29 23:59:58", "2100:12:31 01:02:03"])
            tags = tiff.pages[0].tags
            self.assertEqual((tags["Artist"].value, tags["Model"].value, tags["ImageDescription"].value),
                             ("An observer", "A camera", "A telescope"))

    def test_other_videos_are_refused(self):
        pages = self.some(1)
        for how, says in [({"depth": 8}, ["8 bits"]), ({"color": 100}, ["colour video"]), ({"frames": 0}, ["without"]),
                          ({"frames": 2}, ["2 frames", "ends after 1"]), ({"depth": 17}, ["17 bits"])]:
            with self.subTest(how=how):
                (self.folder / "v.ser").write_bytes(formats.ser_bytes(pages, **how))
                self.not_read("v.ser", says=says)


class NotRead(FormatTest):
    """Images of which something would be lost."""

    def test_other_kinds_of_fits(self):
        page = self.some(1)[0]
        for name, unit, says in [("float", fits.PrimaryHDU(page.astype(np.float32)), ["floating-point", "32 bits"]),
                                 ("bytes", fits.PrimaryHDU(page.astype(np.uint8)), ["8 bits"]),
                                 ("long", fits.PrimaryHDU(page.astype(np.int32)), ["32 bits"]),
                                 ("line", fits.PrimaryHDU(page[0]), ["1 dimension"]),
                                 ("negative", fits.PrimaryHDU((page >> 1).astype(np.int16) - 9000), ["negative", "BZERO"])]:
            with self.subTest(kind=name):
                unit.writeto(self.folder / f"{name}.fits")
                self.not_read(f"{name}.fits", says=says)
        fits.HDUList([fits.PrimaryHDU()]).writeto(self.folder / "none.fits")
        self.not_read("none.fits", says=["without an image"])
        fits.PrimaryHDU(page.astype(np.int16)).writeto(self.folder / "scaled.fits")
        data = (self.folder / "scaled.fits").read_bytes()
        (self.folder / "scaled.fits").write_bytes(data.replace(b"END" + b" " * 77, b"BSCALE  =                  2.0".ljust(80)
                                                               + b"END", 1)[:2880] + data[2880:])
        self.not_read("scaled.fits", says=["scaled pixels"])
        fits.HDUList([fits.PrimaryHDU(), fits.CompImageHDU((page >> 1).astype(np.int16) - 9000)]).writeto(
            self.folder / "tiles.fits")
        self.not_read("tiles.fits", says=["negative"])
        formats.fits_tiles(compression_type="HCOMPRESS_1")(self.folder / "h.fits", [page])
        self.not_read("h.fits", says=["HCOMPRESS_1", "funpack"])

    def test_what_fpack_makes_otherwise(self):
        pages = [page >> 4 for page in self.some(3)]
        for option, write, says in [("-h", formats.fits_cube, ["HCOMPRESS_1", "funpack"]),
                                    ("-p", formats.fits_cube, ["PLIO_1", "funpack"]),
                                    ("-d", formats.fits_cube, ["NOCOMPRESS", "funpack"]),
                                    ("-w", formats.fits_cube, ["over several planes", "funpack"]),
                                    ("-i2f", formats.fits_cube, ["floating-point", "16 bits are needed"])]:
            with self.subTest(option=option):
                name = f"p{option}.fits.fz"
                formats.by_fpack(option, write=write)(self.folder / name, pages)
                self.not_read(name, says=says)

    def test_other_kinds_of_png(self):
        page = self.some(1)[0]
        formats.plain_tiff(self.folder / "a.tif", [page])
        for name, options, says in [("eight", ["-depth", "8"], ["8 bits"]),
                                    ("colour", ["-depth", "16", "-type", "TrueColor"], ["colour"]),
                                    ("alpha", ["-depth", "16", "-alpha", "set"], ["transparency"])]:
            with self.subTest(kind=name):
                kind = {"eight": "PNG", "colour": "PNG48", "alpha": "PNG"}[name]
                formats.run("convert", self.folder / "a.tif", *options, "-define",
                            "png:color-type=" + {"eight": "0", "colour": "2", "alpha": "4"}[name],
                            f"{kind}:{self.folder / name}.png")
                self.not_read(f"{name}.png", says=says)

    def test_other_kinds_of_pgm(self):
        for name, data, says in [
                ("eight", b"P5 2 2 255 abcd", ["8 bits", "255"]), ("deep", b"P5 2 2 65536 " + bytes(16), ["above 65535"]),
                ("beyond", b"P5 2 2 4095 " + bytes(6) + b"\x10\0", ["4096", "4095"]),
                ("beyond-text", b"P2 2 2 4095 1 2 3 4096", ["4096", "4095"]), ("word", b"P2 2 2 4095 1 2 x 3", ["number"]),
                ("glued", b"P5 2x2 4095 " + bytes(8), ["number"]), ("short", b"P5 2 2 4095 " + bytes(7), ["more pixels"]),
                ("followed", b"P5 2 2 4095 " + bytes(8) + b"more", ["page 2", "no PGM"]),
                ("bitmap", b"P4 2 2 " + bytes(8), ["no known format"])]:
            with self.subTest(kind=name):
                (self.folder / f"{name}.pgm").write_bytes(data)
                self.not_read(f"{name}.pgm", says=says)

    def test_archives(self):
        formats.fits_cube(self.folder / "c.fits", self.some(1))
        subprocess.run(["gzip", str(self.folder / "c.fits")], check=True)
        self.not_read("c.fits.gz", says=["gzip archive", "unpack it"])

    def test_a_stack_that_is_not_all_there(self):
        formats.image_j_large(self.folder / "s.tif", self.some(3))
        data = (self.folder / "s.tif").read_bytes()
        (self.folder / "s.tif").write_bytes(data[:-1])
        self.not_read("s.tif", says=["3 ImageJ images", "ends after 2"])


if __name__ == "__main__":
    support.main()
