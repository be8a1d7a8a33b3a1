"""qxbackground correct: equal to the library pixel for pixel, clear about everything it refuses."""
import json
import os
import pty
import re
import resource
import signal
import struct
import subprocess
import time

import numpy as np

import support
from support import ToolTest, TOOL, read_png


def conditions(dark=(1, 100), now=(2, 100)):
    return ["--dark-exposure", dark[0], "--dark-intensity", dark[1], "--exposure", now[0], "--intensity", now[1]]


class CorrectedPixels(ToolTest):
    def test_equal_the_library_for_awkward_sizes(self):
        for width, height in [(1, 1), (1, 9), (9, 1), (3, 2), (17, 5), (64, 7)]:
            with self.subTest(size=(width, height)):
                darks = self.images(5, width, height, 0, 3000)
                images = self.images(3, width, height)
                self.write("d.tif", darks)
                self.write("i.tif", images)
                self.tool("correct", "--dark", "d.tif", *conditions((0.5, 80), (1.3, 60)), "--level", 71, "i.tif",
                          "-o", "o.tif", "--overwrite")
                self.assert_same_pages(self.read("o.tif"),
                                       self.library_corrects(darks, (0.5, 80), images, (1.3, 60), 71))

    def test_equal_the_library_in_a_region(self):
        darks, images = self.images(4, 20, 12, 0, 900), self.images(2, 7, 5)
        self.write("d.tif", darks)
        self.write("i.tif", images)
        self.tool("correct", "--dark", "d.tif", *conditions(), "--region", "3,2,7,5", "i.tif", "-o", "o.tif")
        self.assert_same_pages(self.read("o.tif"),
                               self.library_corrects(darks, (1, 100), images, (2, 100), region=(3, 2, 7, 5)))

    def test_darks_of_several_files_form_one_stack_and_inputs_follow_in_order(self):
        darks, images = self.images(5, 8, 6, 0, 500), self.images(4, 8, 6)
        self.write("d1.tif", darks[:2])
        self.write("d2.tif", darks[2:], order=">")
        self.write("i1.tif", images[:3], order=">")
        self.write("i2.tif", images[3:])
        self.tool("correct", "--dark", "d1.tif", "d2.tif", *conditions(), "i1.tif", "i2.tif", "-o", "o.tif")
        self.assert_same_pages(self.read("o.tif"), self.library_corrects(darks, (1, 100), images, (2, 100)))

    @support.not_under_wine("it makes other permissions of Windows' than it was given")
    def test_an_older_output_is_replaced_and_keeps_its_permissions(self):
        self.write("d.tif", self.images(1, 4, 4))
        self.write("i.tif", self.images(1, 4, 4))
        old = self.folder / "o.tif"
        old.write_bytes(b"old")
        old.chmod(0o640)
        self.tool("correct", "--dark", "d.tif", *conditions(), "i.tif", "-o", "o.tif", "--overwrite")
        self.assertEqual(len(self.read("o.tif")), 1)
        self.assertEqual(old.stat().st_mode & 0o777, 0o640)
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["d.tif", "i.tif", "o.tif"])

    @support.not_under_wine("programs there do not see what is a link")
    def test_an_output_behind_a_link_is_replaced_not_the_link(self):
        self.write("d.tif", self.images(1, 4, 4))
        self.write("i.tif", self.images(1, 4, 4))
        (self.folder / "real.tif").write_bytes(b"old")
        (self.folder / "link.tif").symlink_to("real.tif")
        self.tool("correct", "--dark", "d.tif", *conditions(), "i.tif", "-o", "link.tif", "--overwrite")
        self.assertTrue((self.folder / "link.tif").is_symlink())
        self.assertEqual(len(self.read("real.tif")), 1)

    def test_the_picture_shows_all_panels_with_their_scales(self):
        """A light of 20000 ADU with a faint stripe: the stripe is seen in the background, and the noise in what is left."""
        stripe = np.where(np.arange(30) % 7 == 0, 40, 0).astype(np.uint16)
        dark = (self.random.integers(100, 105, (20, 30)) + stripe).astype(np.uint16)
        light = (dark + np.linspace(20000, 50000, 30)).astype(np.uint16)
        self.write("d.tif", [dark])
        self.write("i.tif", [light])
        said = self.tool("correct", "--dark", "d.tif", *conditions(), "i.tif", "-o", "o.tif", "--picture", "p.png")
        shown = re.findall(r"^  (.*):\s+black (\d+), white (\d+) ADU$", said, re.M)
        self.assertEqual([title for title, _, _ in shown],
                         ["before", "after, range as wide as before", "background, as it is subtracted",
                          "what is left: after, range of its own"])
        after = self.read("o.tif")[0]
        background = (light - after).astype(np.uint16)  # nothing is cut off
        picture = read_png(self.folder / "p.png")
        side = 13  # 400 dots, the least there are, by 30 pixels
        self.assertIn(f"each pixel is drawn as {side} x {side} dots", said)
        spans = []
        for (title, black, white), image in zip(shown, (light, after, background, after)):
            black, white = int(black), int(white)
            spans.append(white - black)
            shades = np.clip((image.astype(np.float32) - black) * np.float32(255 / (white - black)), 0, 255)
            panel = np.kron(np.floor(shades + 0.5).astype(np.uint8), np.ones((side, side), np.uint8))
            rows, columns = panel.shape
            corners = [(y, x) for y, x in zip(*np.where(picture == panel[0, 0]))
                       if np.array_equal(picture[y:y + rows, x:x + columns], panel)]
            self.assertEqual(len(corners), 1, title)
            self.assertGreater(panel.std(), 40, f"{title}: nothing is to be seen in it")
            y, x = corners[0]
            scale = picture[y:y + rows, x + columns + 20].astype(int)  # right of the panel, from white to black
            self.assertEqual((scale[0], scale[-1]), (255, 0))
            self.assertTrue((np.diff(scale) <= 0).all())
            numbers = picture[y:y + rows, x + columns + 37:x + columns + 60]
            self.assertLess(numbers.min(), 60, f"{title}: no numbers beside the scale")
        self.assertEqual(spans[0], spans[1])
        self.assertLess(spans[2], 200)

    def test_striped_compressed_and_tiled_files_are_read_like_any(self):
        pages = self.images(1, 40, 33)
        self.write("d.tif", self.images(1, 40, 33, 0, 9))
        self.write("plain.tif", pages)
        # Strips of 8 rows: the strip table moves behind the pixels.
        data = pages[0].astype("<u2").tobytes()
        strips = [data[at:at + 8 * 80] for at in range(0, len(data), 8 * 80)]
        out = bytearray(b"II*\0" + struct.pack("<I", 0)) + data
        offsets = len(out)
        at = 8
        for strip in strips:
            out += struct.pack("<I", at)
            at += len(strip)
        lengths = len(out)
        for strip in strips:
            out += struct.pack("<I", len(strip))
        struct.pack_into("<I", out, 4, len(out))
        entries = [(256, 4, 1, 40), (257, 4, 1, 33), (258, 3, 1, 16), (259, 3, 1, 1), (262, 3, 1, 1),
                   (273, 4, len(strips), offsets), (277, 3, 1, 1), (278, 4, 1, 8), (279, 4, len(strips), lengths)]
        out += struct.pack("<H", len(entries)) + b"".join(struct.pack("<HHII", *e) for e in entries) + b"\0\0\0\0"
        (self.folder / "striped.tif").write_bytes(out)
        # One row of three 16 x 48 tiles, padded beyond the image.
        padded = np.zeros((48, 48), "<u2")
        padded[:33, :40] = pages[0]
        tiles = [padded[:, left:left + 16].tobytes() for left in (0, 16, 32)]
        out = bytearray(b"II*\0" + struct.pack("<I", 0)) + b"".join(tiles)
        table = len(out)
        for index in range(3):
            out += struct.pack("<I", 8 + index * len(tiles[0]))
        counts = len(out)
        out += struct.pack("<III", *[len(tiles[0])] * 3)
        struct.pack_into("<I", out, 4, len(out))
        entries = [(256, 4, 1, 40), (257, 4, 1, 33), (258, 3, 1, 16), (259, 3, 1, 1), (262, 3, 1, 1), (277, 3, 1, 1),
                   (322, 4, 1, 16), (323, 4, 1, 48), (324, 4, 3, table), (325, 4, 3, counts)]
        out += struct.pack("<H", len(entries)) + b"".join(struct.pack("<HHII", *e) for e in entries) + b"\0\0\0\0"
        (self.folder / "tiled.tif").write_bytes(out)
        self.tool("correct", "--dark", "d.tif", *conditions(), "plain.tif", "striped.tif", "tiled.tif", "-o", "o.tif")
        plain, striped, tiled = self.read("o.tif")
        np.testing.assert_array_equal(striped, plain)
        np.testing.assert_array_equal(tiled, plain)


class Statistics(ToolTest):
    def expected(self, pages):
        values = np.concatenate([p.ravel() for p in pages]).astype(float)
        rows = np.mean([np.median(p, axis=1).std() for p in pages])
        columns = np.mean([np.median(p, axis=0).std() for p in pages])
        median = np.median(values)
        return {"pixels": values.size, "median": median, "mean": values.mean(),
                "spread": 1.4826 * np.median(np.abs(values - median)), "standardDeviation": values.std(),
                "minimum": values.min(), "maximum": values.max(), "rowPattern": rows, "columnPattern": columns,
                "pixelsAtZero": int((values == 0).sum())}

    def test_equal_those_of_numpy_over_all_pages(self):
        for width, height in [(1, 1), (6, 5), (70, 33)]:
            with self.subTest(size=(width, height)):
                self.write("d.tif", self.images(3, width, height, 0, 20000))
                images = self.images(3, width, height)
                self.write("i.tif", images)
                report = json.loads(self.tool("correct", "--dark", "d.tif", *conditions(), "i.tif", "-o", "o.tif",
                                              "--json", "--overwrite"))
                self.assertEqual(report["pages"], 3)
                for name, pages in [("before", images), ("after", self.read("o.tif"))]:
                    for key, value in self.expected(pages).items():
                        self.assertAlmostEqual(report[name][key], value, delta=1e-6 * max(1, abs(value)),
                                               msg=f"{name} {key}")


class Refusals(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("d.tif", self.images(2, 6, 4))
        self.write("i.tif", self.images(3, 6, 4))

    def refuse(self, says, darks=("d.tif",), images=("i.tif",), output="o.tif", more=(), conditions_=None):
        return self.refused("correct", "--dark", *darks, *(conditions_ or conditions()), *more, *images, "-o", output,
                            says=says)

    def test_wrong_bit_depth_names_file_and_page(self):
        good = self.images(1, 6, 4)[0]
        self.write("bits.tif", [good], bits=8)
        self.refuse(["bits.tif: page 1:", "8 bits"], images=["i.tif", "bits.tif"])
        self.refuse(["bits.tif: page 1:", "8 bits"], darks=["d.tif", "bits.tif"])

    def test_color_signed_and_inverted_pictures_are_refused(self):
        page = self.images(1, 6, 4)
        for tags, word in [({277: (3, [3])}, "3 samples"), ({339: (3, [2])}, "unsigned"),
                           ({262: (3, [0])}, "black as zero")]:
            self.write("x.tif", page, tags=tags)
            self.refuse(["x.tif: page 1:", word], images=["x.tif"])

    def test_size_mismatch_names_file_page_and_both_sizes(self):
        self.write("mixed.tif", self.images(1, 6, 4) + self.images(1, 7, 4))
        self.refuse(["mixed.tif: page 2:", "7 x 4", "6 x 4"], images=["mixed.tif"])
        self.refuse(["mixed.tif: page 2:", "7 x 4", "6 x 4"], darks=["mixed.tif"])

    def test_images_must_have_the_size_of_the_region(self):
        self.refuse(["i.tif: page 1:", "6 x 4", "3 x 2"], more=["--region", "1,1,3,2"])

    def test_region_outside_the_frames_is_refused_in_the_library_s_words(self):
        self.refuse(["--region: The input width [ 6 ] is out of range. [code 515]"], more=["--region", "1,0,6,4"])
        for text in ("1,2,3", "1,2,3,4,5", "a,b,c,d", "1,2,3,4x", ""):
            if text:
                self.refuse(["--region"], more=["--region", text])

    def test_missing_files_and_values(self):
        self.refuse(["nothere.tif", "No such file"], images=["nothere.tif"])
        self.refuse(["nothere.tif", "No such file"], darks=["nothere.tif"])
        self.refused("correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 100, "--exposure", 1,
                     "i.tif", "-o", "o.tif", says=["--intensity"])
        self.refused("correct", "--dark", "d.tif", *conditions(), "i.tif", says=["--output"])
        self.refused("correct", *conditions(), "i.tif", "-o", "o.tif", says=["--dark"])
        self.refused("nosuchverb", says=["'nosuchverb' is no verb"])

    def test_values_that_are_no_positive_numbers(self):
        for bad in ("0", "-1", "nan", "inf", "x", "1e60", "1e-60"):
            with self.subTest(value=bad):
                self.refuse(["exposure"], conditions_=conditions(dark=(bad, 100)))
                self.refuse(["intensity"], conditions_=conditions(now=(1, bad)))
        for bad in ("101", "-1", "x"):
            self.refuse(["level"], more=[f"--level={bad}"])

    def test_a_reference_product_of_zero_is_refused_by_the_library(self):
        self.refuse(["d.tif: Could not add", "[code 513]"], conditions_=conditions(dark=("1e-30", "1e-30")))

    def test_no_tiff_truncated_and_damaged_files(self):
        (self.folder / "text.tif").write_text("this is no picture")
        (self.folder / "empty.tif").write_bytes(b"")
        whole = (self.folder / "i.tif").read_bytes()
        self.refuse(["text.tif"], images=["text.tif"])
        self.refuse(["empty.tif"], images=["empty.tif"])
        self.refuse([str(self.folder)], images=[str(self.folder)])
        for length in sorted({*range(8, len(whole), 17), *range(len(whole) - 10, len(whole))}):
            (self.folder / "cut.tif").write_bytes(whole[:length])
            self.refuse(["cut.tif"], images=["cut.tif"])

    def test_pixels_missing_on_the_second_page_name_that_page(self):
        images = self.images(3, 6, 4)
        data = bytearray(support.tiff_bytes(images))
        first = struct.unpack_from("<I", data, 4)[0]
        second = struct.unpack_from("<I", data, first + 2 + 12 * 10)[0]
        for entry in range(10):  # the second page's strip lies beyond the end of the file
            if struct.unpack_from("<H", data, second + 2 + 12 * entry)[0] == 273:
                struct.pack_into("<I", data, second + 2 + 12 * entry + 8, len(data) + 100)
        (self.folder / "late.tif").write_bytes(data)
        self.refuse(["late.tif: page 2:"], images=["i.tif", "late.tif"])

    def test_a_loop_of_pages_ends(self):
        data = bytearray(support.tiff_bytes(self.images(2, 6, 4)))
        first = struct.unpack_from("<I", data, 4)[0]
        second = struct.unpack_from("<I", data, first + 2 + 12 * 10)[0]
        struct.pack_into("<I", data, second + 2 + 12 * 10, first)
        (self.folder / "loop.tif").write_bytes(data)
        self.refuse(["loop.tif: page 3:"], images=["loop.tif"])

    def test_a_page_that_claims_four_billion_pixels_costs_nothing(self):
        self.write("huge.tif", self.images(1, 6, 4), tags={256: (4, [65535]), 257: (4, [32767])})
        self.refuse(["huge.tif: page 1:"], images=["huge.tif"])
        self.refuse(["huge.tif: page 1:"], darks=["huge.tif"])

    def test_outputs_that_cannot_be(self):
        self.refuse(["nofolder/o.tif", "folder"], output="nofolder/o.tif")
        self.refuse(["/dev/null"], output="/dev/null")
        self.refuse(["i.tif", "input"], output="i.tif")
        self.refuse(["d.tif", "input"], output="./d.tif")
        self.refuse([], output="")
        # Before anything is read.
        too_long = "is longer than the 255 characters" if support.UNDER_WINE else "its name is too long"
        for output, says in (("n" * 253 + ".tif", too_long), ("n" * 300 + "/", too_long), ("d.tif/n/", "d.tif: is not a folder")):
            self.refuse([says], output=output, darks=["none.tif"])

    @support.not_under_wine("it knows no words for a file beyond the allowed size")
    def test_a_full_disk_leaves_the_old_output(self):
        self.write("big.tif", self.images(8, 200, 200))
        self.write("dark.tif", self.images(1, 200, 200))
        (self.folder / "o.tif").write_bytes(b"old")

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))
        result = self.run_tool("correct", "--dark", "dark.tif", *conditions(), "big.tif", "-o", "o.tif",
                               "--overwrite", preexec_fn=limit)
        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertIn("o.tif: page 2: cannot be written: File too large", result.stderr)
        self.assertEqual((self.folder / "o.tif").read_bytes(), b"old")
        self.assertEqual(len(list(self.folder.iterdir())), 5)

    def test_a_library_that_is_not_there(self):
        self.refused("--library", "/nowhere/lib.so", "correct", "--dark", "d.tif", *conditions(), "i.tif", "-o",
                     "o.tif", says=["/nowhere/lib.so"])


class AtTheTerminal(ToolTest):
    def start(self, **how):
        self.write("d.tif", self.images(1, 300, 300))
        self.write("i.tif", self.images(1, 300, 300) * 400)
        return subprocess.Popen([TOOL, *map(str, ["correct", "--dark", "d.tif", *conditions(), "i.tif", "-o", "o.tif"])],
                                cwd=self.folder, stdout=subprocess.PIPE, **how)

    def test_a_progress_bar_is_drawn_on_a_terminal_only(self):
        master, terminal = pty.openpty()
        process = self.start(stderr=terminal, env={**os.environ, "TERM": "xterm"})
        os.close(terminal)
        drawn = b""
        try:
            while chunk := os.read(master, 4096):
                drawn += chunk
        except OSError:  # the other side was closed
            pass
        os.close(master)
        process.communicate()
        self.assertEqual(process.returncode, 0)
        self.assertIn(b"Correcting [", drawn)
        self.assertIn(b"100 %", drawn)
        self.assertTrue(drawn.endswith(b"\x1b[K"), "the bar is wiped at the end")
        (self.folder / "o.tif").unlink()
        process = self.start(stderr=subprocess.PIPE)
        self.assertEqual(process.communicate()[1], b"")


@support.not_sanitized
class Memory(ToolTest):
    def test_does_not_grow_with_the_number_of_pages(self):
        page = self.images(1, 256, 256)
        self.write("d.tif", page)
        self.write("few.tif", page * 4)
        self.write("many.tif", page * 400)  # 50 MB
        few = self.peak_kilobytes("correct", "--dark", "d.tif", *conditions(), "few.tif", "-o", "o.tif")
        many = self.peak_kilobytes("correct", "--dark", "d.tif", *conditions(), "many.tif", "-o", "o.tif", "--overwrite")
        print(f"peak memory: 4 pages {few} kB, 400 pages {many} kB")
        self.assertEqual(len(self.read("o.tif")), 400)
        self.assertLess(many, few + 6000)


if __name__ == "__main__":
    support.main()
