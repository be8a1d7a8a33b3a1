"""Stacks of any length: averaged frame by frame to the bits of the library's own average, in the memory of a few frames;
and the statistics of long runs."""
import contextlib
import hashlib
import json
import os
import unittest

import numpy as np
from astropy.io import fits

import formats
import support
from support import ToolTest

CONDITIONS = ["--exposure", 1, "--intensity", 100]
CORRECT = ["correct", "--dark-exposure", 1, "--dark-intensity", 100, *CONDITIONS]


def fits_of(path, pages):
    fits.PrimaryHDU(pages[0]).writeto(path, overwrite=True)


def signed_fits_of(path, pages):
    fits.PrimaryHDU(pages[0].astype(np.int16)).writeto(path, overwrite=True)


def pgm_of(path, pages):
    height, width = pages[0].shape
    path.write_bytes(f"P5 # dark\n{width} {height}\n65535\n".encode() + pages[0].astype(">u2").tobytes())


@contextlib.contextmanager
def one_processor():
    if not hasattr(os, "sched_setaffinity"):
        raise unittest.SkipTest("processors cannot be chosen here")
    before = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {max(before)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, before)


class Averages(ToolTest):
    SIZE = (23, 17)

    def assert_as_the_library(self, frames):
        """White images show the whole correction."""
        white = [np.full(self.SIZE[::-1], 65535, np.uint16)]
        self.write("white.tif", white)
        expected = self.library_corrects(frames, (1, 100), white, (1, 100))
        half = len(frames) // 2
        darks = [self.write("d1.tif", frames[:half])] if half else []
        darks.append(self.write("d2.tif", frames[half:]))
        self.tool(*CORRECT, "--dark", *darks, "--overwrite", "-o", "o.tif", "white.tif")
        self.assert_same_pages(self.read("o.tif"), expected)
        return darks

    def test_equal_the_librarys_for_every_small_number_of_frames(self):
        for count in list(range(1, 12)) + [16, 31]:
            with self.subTest(frames=count):
                self.assert_as_the_library(self.images(count, *self.SIZE))

    def test_equal_where_halves_are_rounded(self):
        for count in (2, 4, 6, 8):
            with self.subTest(frames=count):
                self.assert_as_the_library(self.images(count, *self.SIZE, low=1000, high=1002))

    def test_equal_where_sums_lose_bits(self):
        """Above 2^24 a single-precision sum does, and the order of the frames then counts."""
        for count in (255, 256, 257, 300, 517, 1030):
            for low in (65000, 65535) if count > 500 else (0, 65000):
                with self.subTest(frames=count, low=low):
                    self.assert_as_the_library(self.images(count, *self.SIZE, low=low))

    def test_the_order_counts_and_is_kept(self):
        frames = self.images(600, *self.SIZE, low=60000)
        one = list(np.sort(frames, axis=0))
        self.assert_as_the_library(one)
        rising = self.read("o.tif")
        self.assert_as_the_library(one[::-1])
        self.assertFalse(np.array_equal(rising[0], self.read("o.tif")[0]), "these frames do not show the order")

    def test_a_file_and_a_store_hold_the_same(self):
        frames = self.images(301, *self.SIZE, low=60000)
        darks = self.assert_as_the_library(frames)
        expected = self.read("o.tif")
        self.assertIn("from 301 dark frames of 23 x 17", self.tool("build", "c.qxb", "--key", "k", *CONDITIONS, *darks))
        self.tool("apply", "c.qxb", "--key", "k", *CONDITIONS, "white.tif", "-o", "file.tif")
        self.assertIn("from 301 dark frames of 23 x 17",
                      self.tool("store", "add", "s", "--group", "A", "--key", "A,1", *CONDITIONS, *darks))
        self.tool("store", "apply", "s", "--group", "A", "--key", "A,1", *CONDITIONS, "white.tif", "-o", "store.tif")
        self.assert_same_pages(self.read("file.tif"), expected)
        self.assert_same_pages(self.read("store.tif"), expected)

    def test_what_the_library_refuses_is_still_said(self):
        self.write("d.tif", self.images(2, *self.SIZE))
        self.tool("build", "c.qxb", "--key", "k", *CONDITIONS, "d.tif")
        self.refused("build", "c.qxb", "--key", "K", *CONDITIONS, "d.tif", says=["not unique", "[code"])


class FramesInFilesOfTheirOwn(ToolTest):
    """Plain ones are read side by side, some rows of each at a time; from the first that is not plain on, whole."""
    SIZE = (301, 211)  # more than one piece of each, whose last one is shorter
    WHITE = [np.full(SIZE[::-1], 65535, np.uint16)]
    # As programs write them: bytes before the pixels and behind them, either order of bytes.
    PLAIN = {"little.tif": formats.plain_tiff, "big.tif": formats.by_tifffile(byteorder=">"),
             "end.tif": formats.by_tiffcp("-r", "16"), "n.fits": fits_of, "n.pgm": pgm_of}
    WHOLE = {"packed.tif": formats.by_tifffile(compression="zlib"), "tiles.tif": formats.by_tifffile(tile=(16, 16)),
             "signed.fits": signed_fits_of}

    def write_all(self, frames, kinds):
        """The frames in turn as one of the kinds each."""
        names = list(kinds)
        paths = [self.folder / f"{number:03}{names[number % len(names)]}" for number in range(len(frames))]
        for number, (path, frame) in enumerate(zip(paths, frames)):
            kinds[names[number % len(names)]](path, [frame])
        return paths

    def assert_as_the_library(self, frames, paths, *more):
        self.write("white.tif", self.WHITE)
        self.tool("build", "c.qxb", "--key", "k", *CONDITIONS, *more, *paths)
        self.tool("apply", "c.qxb", "--key", "k", *CONDITIONS, "white.tif", "--overwrite", "-o", "o.tif")
        self.assert_same_pages(self.read("o.tif"), self.library_corrects(frames, (1, 100), self.WHITE, (1, 100)))
        built = json.loads((self.folder / "c.qxb.json").read_text())["corrections"][0]["built"]
        self.assertEqual([file["sha256"] for file in built["darks"]["files"]],
                         [hashlib.sha256(path.read_bytes()).hexdigest() for path in paths])
        for name in ("c.qxb", "c.qxb.json"):
            (self.folder / name).unlink()

    def test_are_averaged_as_the_library_does_and_digested_whole(self):
        for count in (1, 2, 3, 15, 16, 17, 35):
            with self.subTest(frames=count):
                frames = self.images(count, *self.SIZE)
                self.assert_as_the_library(frames, self.write_all(frames, self.PLAIN))

    def test_on_one_processor(self):
        frames = self.images(19, *self.SIZE)
        paths = self.write_all(frames, self.PLAIN)
        with one_processor():
            self.assert_as_the_library(frames, paths)

    def test_with_others_among_them(self):
        frames = self.images(24, *self.SIZE, high=32768)
        for before in (0, 1, 16, 18):
            with self.subTest(plain_ones_before=before):
                paths = self.write_all(frames[:before], self.PLAIN)
                paths += self.write_all(frames[before:], self.WHOLE | {"plain.tif": formats.plain_tiff})
                self.assert_as_the_library(frames, paths)

    def test_without_a_format(self):
        frames = self.images(5, *self.SIZE)
        paths = [self.folder / f"{number}.raw" for number in range(5)]
        for path, frame in zip(paths, frames):
            path.write_bytes(b"head" * 21 + frame.tobytes())
        self.assert_as_the_library(frames, paths, "--raw", f"{self.SIZE[0]}x{self.SIZE[1]}+84")

    def test_the_order_counts_where_sums_lose_bits(self):
        frames = sorted(self.images(300, *self.SIZE, low=60000, high=65536)[:300], key=lambda frame: int(frame[0, 0]))
        paths = self.write_all(frames, {"n.tif": formats.plain_tiff})
        self.assert_as_the_library(frames, paths)
        rising = self.read("o.tif")
        self.assert_as_the_library(frames[::-1], paths[::-1])
        self.assertFalse(np.array_equal(rising[0], self.read("o.tif")[0]), "these frames do not show the order")

    def test_one_of_another_size_is_named_wherever_it_is(self):
        frames = self.images(20, *self.SIZE)
        for place in (1, 15, 16, 19):
            with self.subTest(place=place):
                paths = self.write_all(frames, self.PLAIN)
                formats.plain_tiff(paths[place], self.images(1, 30, 20))
                self.refused("build", "c.qxb", "--key", "k", *CONDITIONS, *paths,
                             says=[paths[place].name, "is 30 x 20 pixels, the frames before it are 301 x 211"])

    def test_one_that_cannot_be_read_is_named(self):
        frames = self.images(20, *self.SIZE)
        for place in (0, 3, 17):
            for damage in (lambda data: data[:5], lambda data: data[:-70000], lambda data: b"no image" * 100):
                with self.subTest(place=place):
                    paths = self.write_all(frames, self.PLAIN)
                    paths[place].write_bytes(damage(paths[place].read_bytes()))
                    self.refused("build", "c.qxb", "--key", "k", *CONDITIONS, *paths, says=[paths[place].name])


@support.not_sanitized
class Memory(ToolTest):
    def test_does_not_grow_with_the_number_of_frames(self):
        page = self.images(1, 256, 256)
        self.write("few.tif", page * 8)
        self.write("many.tif", page * 400)  # 50 MB
        few = self.peak_kilobytes("build", "c.qxb", "--key", "few", *CONDITIONS, "few.tif")
        many = self.peak_kilobytes("build", "c.qxb", "--key", "many", *CONDITIONS, "many.tif")
        self.assertLess(many, few + 6000)


class Statistics(ToolTest):
    def test_medians_of_lines_are_exact_whatever_their_shape(self):
        shapes = [(1, 1), (1, 2), (2, 1), (7, 130), (130, 7), (64, 65), (3, 70001), (70001, 2)]
        for height, width in shapes:
            for low, high in ((0, 65536), (65530, 65536), (1000, 1040)):
                with self.subTest(shape=(height, width), low=low):
                    page = self.random.integers(low, high, (height, width)).astype(np.uint16)
                    self.write("i.tif", [page])
                    report = json.loads(self.tool("statistics", "i.tif", "--json"))["files"][0]
                    self.assertAlmostEqual(report["rowPattern"], np.median(page, axis=1).std(), places=6)
                    self.assertAlmostEqual(report["columnPattern"], np.median(page, axis=0).std(), places=6)
                    self.assertAlmostEqual(report["median"], np.median(page), places=6)

    def test_columns_that_differ_much_from_their_neighbours(self):
        page = self.random.integers(1000, 1040, (40, 300)).astype(np.uint16)
        page[:, 70:90] += 30000
        page[:, 200] = 65535
        page[:, 290] = 0
        self.write("i.tif", [page])
        report = json.loads(self.tool("statistics", "i.tif", "--json"))["files"][0]
        self.assertAlmostEqual(report["columnPattern"], np.median(page, axis=0).std(), places=6)

    def test_of_a_long_run_some_pages_count(self):
        pages = self.images(45, 500, 500)
        self.write("i.tif", pages)
        self.write("d.tif", self.images(1, 500, 500))
        counted = [page for i, page in enumerate(pages) if i < 16 or i % 40 == 0]  # 16 pages are 4 million pixels
        correct = [*CORRECT, "--dark", "d.tif", "--overwrite", "-o", "o.tif", "i.tif"]
        said = self.tool(*correct)
        self.assertIn("Statistics of 17 of these pages: of the first 4 million pixels, then of every 40th page", said)
        self.assertEqual([line.split()[:3] for line in said.splitlines() if line.startswith("  i.tif ")],
                         [["i.tif", str(i + 1), f"{np.median(pages[i]):.2f}"] for i in [*range(16), 40]])
        for more, expected in (([], counted), (["--full-statistics"], pages)):
            report = json.loads(self.tool(*correct, "--json", *more))
            self.assertEqual((report["pages"], report["statisticsPages"]), (45, len(expected)))
            values = np.concatenate(expected)
            self.assertEqual(report["before"]["median"], np.median(values))
            self.assertEqual(report["before"]["pixels"], values.size)
            self.assertAlmostEqual(report["before"]["rowPattern"],
                                   np.mean([np.median(p, axis=1).std() for p in expected]), places=6)
            self.assertEqual([(one["input"], pages[one["page"] - 1] is page, one["before"]["median"])
                              for one, page in zip(report["perPage"], expected)],
                             [("i.tif", True, np.median(page)) for page in expected])
        self.assertNotIn("Statistics of", self.tool(*correct, "--full-statistics"))

    def test_each_page_has_its_figures_and_all_together_theirs(self):
        pages = self.images(3, 31, 23, 0, 3000)
        pages[1] = pages[1] // 2
        self.write("ä.tif", pages[:2])
        self.write("b.tif", pages[2:])

        def figures(*those):
            values = np.concatenate([page.ravel() for page in those])
            deviations = np.abs(values - np.median(values))
            return {"pixels": values.size, "median": np.median(values), "mean": values.mean(),
                    "spread": 1.4826 * np.median(deviations), "standardDeviation": values.std(),
                    "rowPattern": np.mean([np.median(page, axis=1).std() for page in those]),
                    "columnPattern": np.mean([np.median(page, axis=0).std() for page in those]),
                    "minimum": values.min(), "maximum": values.max(), "pixelsAtZero": (values == 0).sum()}

        def check(found, *those):
            for name, value in figures(*those).items():
                self.assertAlmostEqual(found[name], value, places=6, msg=name)
        found = json.loads(self.tool("statistics", "ä.tif", "b.tif", "--json"))
        self.assertEqual([one["file"] for one in found["files"]], ["ä.tif", "b.tif"])
        for one, those in zip(found["files"], (pages[:2], pages[2:])):
            check(one, *those)
            for page, expected in zip(one["perPage"], those, strict=True):
                check(page, expected)
        check(found["summary"], *pages)
        self.assertEqual(found["summary"]["pages"], 3)
        lines = self.tool("statistics", "ä.tif", "b.tif").splitlines()
        head = ["image", "page", "median", "mean", "spread", "row", "pattern", "column", "pattern", "minimum", "maximum"]
        self.assertEqual(lines[0].split()[:len(head)], head)
        for line, name, number, those in zip(lines[1:], ["ä.tif"] * 3 + ["b.tif"], ["1", "2", "all", "1"],
                                             [pages[:1], pages[1:2], pages[:2], pages[2:]]):
            f = figures(*those)
            self.assertEqual(line.split(), [name, number, *(f"{f[key]:.2f}" for key in (
                "median", "mean", "spread", "rowPattern", "columnPattern")), str(f["minimum"]), str(f["maximum"]),
                f"{100 * f['pixelsAtZero'] / f['pixels']:.2f}", "%"])
            self.assertEqual(len(line), len(lines[0]))
        self.assertEqual(lines[5], "All 2 files, pages: 3")
        self.assertIn(f"{figures(*pages)['median']:.2f}", lines[-10])
        self.assertIn("stripes", lines[-1])  # what nobody can know is told

        self.write("d.tif", [np.full((23, 31), 7, np.uint16)])
        correct = [*CORRECT, "ä.tif", "b.tif", "--dark", "d.tif", "-o", "out/", "--overwrite"]
        report = json.loads(self.tool(*correct, "--json"))
        for one, page, (name, number) in zip(report["perPage"], pages, (("ä.tif", 1), ("ä.tif", 2), ("b.tif", 1)),
                                             strict=True):
            self.assertEqual((one["input"], one["page"]), (name, number))
            check(one["before"], page)
            check(one["after"], np.where(page > 7, page - 7, 0))
        self.assertRegex(self.tool(*correct), r"\n  ä.tif +2 .*\n  b.tif +1 .*\nThese 3 pages together:\n")

    def test_none_are_made_where_none_are_asked_for(self):
        for name in ("d.tif", "i.tif"):
            self.write(name, self.images(1, 20, 20))
        report = json.loads(self.tool(*CORRECT, "--dark", "d.tif", "--no-statistics", "--json", "-o", "o.tif", "i.tif"))
        self.assertEqual(set(report), {"output", "pages", "corrections"})


if __name__ == "__main__":
    support.main()
