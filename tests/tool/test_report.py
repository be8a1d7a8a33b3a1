"""qxbackground report: its figures against numpy and against a simulated camera whose truth is known."""
import csv
import io
import json
import os
import subprocess
import unittest

import numpy as np

import support
from support import ToolTest
from test_files import file_bytes


class ReportTest(ToolTest):
    def report(self, *arguments):
        return json.loads(self.tool("report", *arguments, "--json"))

    def calibration(self, corrections, name="c.qxb"):
        """corrections: (key, exposure, intensity, image)"""
        (self.folder / name).write_bytes(file_bytes([(k.encode(), e, i, p) for k, e, i, p in corrections]))
        return name


def scaled(stored, reference, wanted):
    """As the library scales: single precision, rounded half up, cut to 16 bits."""
    f = np.float32
    factor = (f(wanted[1]) * f(wanted[0])) / (f(reference[1]) * f(reference[0]))
    rounded = np.floor((stored.astype(f) * factor).astype(np.float64) + 0.5)
    return np.clip(rounded, 0, 65535).astype(np.int64)


class CrossCheck(ReportTest):
    CONDITIONS = {"a": (0.1, 100), "b": (0.3, 100), "c": (1, 50), "d": (2, 7)}

    def setUp(self):
        super().setUp()
        self.stored = {k: self.images(1, 37, 29, 20, 3000)[0] for k in self.CONDITIONS}
        self.calibration([(k, *self.CONDITIONS[k], p) for k, p in self.stored.items()])
        self.found = self.report("c.qxb")

    def test_residuals_are_those_of_numpy(self):
        for i, (source, reference) in enumerate(self.CONDITIONS.items()):
            for j, (target, wanted) in enumerate(self.CONDITIONS.items()):
                cell = self.found["scaling"]["cross"][i][j]
                if i == j:
                    self.assertIsNone(cell)
                    continue
                left = self.stored[target].astype(np.int64) - scaled(self.stored[source], reference, wanted)
                self.assertAlmostEqual(cell["mean"], left.mean(), delta=1e-9)
                self.assertAlmostEqual(cell["spread"], left.std(), delta=1e-6)

    def test_figures_are_those_of_numpy(self):
        for one in self.found["corrections"]:
            image = self.stored[one["key"]].astype(float)
            s = one["statistics"]
            self.assertEqual((s["minimum"], s["average"], s["maximum"]), (image.min(), int(image.mean()), image.max()))
            self.assertAlmostEqual(s["mean"], image.mean(), delta=1e-9)
            self.assertAlmostEqual(s["standardDeviation"], image.std(), delta=1e-6)
            self.assertEqual(s["median"], np.median(image))
            np.testing.assert_allclose(one["profiles"]["rows"]["values"], image.mean(axis=1), atol=6e-4)
            np.testing.assert_allclose(one["profiles"]["columns"]["values"], image.mean(axis=0), atol=6e-4)
            h = one["histogram"]
            edges = [h["from"] + n * h["step"] for n in range(len(h["counts"]) + 1)]
            expected = np.histogram(image, edges)[0]
            expected[-1] -= (image == edges[-1]).sum()  # numpy's last bin takes its upper edge as well
            self.assertEqual(h["counts"], expected.tolist())
            self.assertEqual(h["below"], (image < edges[0]).sum())
            self.assertEqual(h["above"], (image >= edges[-1]).sum())

    def test_corrections_of_other_sizes_are_not_compared(self):
        self.calibration([("a", 1, 100, np.full((4, 6), 50, np.uint16)), ("b", 2, 100, np.full((5, 6), 50, np.uint16))])
        found = self.report("c.qxb")
        self.assertEqual(found["scaling"]["cross"], [[None, None], [None, None]])
        self.assertEqual(len(found["scaling"]["fits"]), 2)

    def test_of_many_corrections_some_are_compared(self):
        image = np.full((1, 1), 50, np.uint16)
        self.calibration([(f"k{n}", n + 1, 100, image) for n in range(100)])
        cross = self.report("c.qxb")["scaling"]["cross"]
        for to in range(100):
            compared = [n for n in range(100) if cross[n][to]]
            self.assertEqual(compared, [n for n in range(100) if n % 2 == to % 2 and n != to])

    def test_of_a_store_is_that_of_a_file(self):
        for key in self.CONDITIONS:
            (self.folder / f"s_Gain_{key}").write_bytes(
                file_bytes([(f"Gain,{key}".encode(), *self.CONDITIONS[key], self.stored[key])], 2, [b"Gain"]))
        of_store = self.report("s", "--group", "Gain")
        self.assertEqual(of_store["source"]["kind"], "store")
        found = {one["key"]: n for n, one in enumerate(of_store["corrections"])}
        keys = list(self.CONDITIONS)
        for i, source in enumerate(keys):
            for j, target in enumerate(keys):
                self.assertEqual(of_store["scaling"]["cross"][found[f"Gain,{source}"]][found[f"Gain,{target}"]],
                                 self.found["scaling"]["cross"][i][j])


class Marks(ReportTest):
    def checks(self, image, exposure=1, intensity=100):
        self.calibration([("k", exposure, intensity, image)])
        one = self.report("c.qxb")["corrections"][0]
        return one["mark"], {c["name"]: c for c in one["checks"]}

    def normal(self):
        return self.random.normal(300, 3, (64, 64)).round().astype(np.uint16)

    def test_a_usual_correction_is_good(self):
        mark, checks = self.checks(self.normal())
        self.assertEqual(mark, "good")
        self.assertEqual({c["reason"] for c in checks.values()}, {""})

    def test_saturated_and_zero_pixels(self):
        for value, name in ((65535, "saturated"), (0, "zero")):
            for rows, mark in ((1, "look"), (40, "bad")):
                image = self.normal()
                image[:rows, :10 if rows == 1 and value else 64] = value
                if value and rows == 1:
                    image[0, 2:] = 300
                with self.subTest(name=name, rows=rows):
                    found, checks = self.checks(image)
                    self.assertEqual(checks[name]["mark"], mark)
                    self.assertRegex(checks[name]["reason"], r"above [\d.]+: ")
                    self.assertEqual(checks[name]["value"], 100 * (image == value).mean())
                    self.assertEqual(found, mark)

    def test_an_image_without_any_structure(self):
        self.assertEqual(self.checks(np.full((8, 8), 7, np.uint16))[1]["flat"]["mark"], "look")

    def test_hot_and_dead_pixels_are_found_where_they_are(self):
        image = self.normal()
        image[10:12, 20:22] = 900
        image[40, 63] = 5
        self.calibration([("k", 1, 100, image)])
        unusual = self.report("c.qxb")["corrections"][0]["unusual"]
        self.assertEqual((unusual["hot"], unusual["dead"]), (4, 1))
        self.assertEqual({tuple(p[:3]) for p in unusual["hotPixels"]},
                         {(x, y, 900) for x in (20, 21) for y in (10, 11)})
        self.assertEqual(unusual["deadPixels"][0][:3], [63, 40, 5])

    def test_a_pixel_between_two_hot_ones_is_not_dead(self):
        image = self.normal()
        image[30, 20] = image[30, 26] = 900
        self.calibration([("k", 1, 100, image)])
        unusual = self.report("c.qxb")["corrections"][0]["unusual"]
        self.assertEqual((unusual["hot"], unusual["dead"]), (2, 0))

    def test_a_gradient_is_nothing_unusual(self):
        image = np.add.outer(np.arange(64) * 40, np.arange(64) * 25).astype(np.uint16) + self.normal()
        self.calibration([("k", 1, 100, image)])
        unusual = self.report("c.qxb")["corrections"][0]["unusual"]
        self.assertEqual((unusual["hot"], unusual["dead"]), (0, 0))


class Camera(ReportTest):
    EXPOSURES = ("0.25", "1", "4")

    def setUp(self):
        super().setUp()
        self.tool("simulate", "-o", ".", "--width", 256, "--height", 256, "--frames", 8, "--exposure", *self.EXPOSURES,
                  "--seed", 3)
        for exposure in self.EXPOSURES:
            self.tool("build", "c.qxb", "--key", exposure, "--exposure", exposure, "--intensity", 100,
                      f"dark_{exposure}s.tif")
        self.darks = [f"dark_{e}s.tif" for e in self.EXPOSURES]
        self.truth = {e: self.read(f"truth_background_{e}s.tif")[0].astype(float) for e in self.EXPOSURES}
        self.usual = self.truth["4"] < 3 * np.median(self.truth["4"])

    def test_offset_and_slope_are_the_cameras(self):
        line = self.report("c.qxb")["scaling"]["fits"][0]["line"]
        x = np.array([float(e) * 100 for e in self.EXPOSURES])
        slope, offset = np.polyfit(x, [self.truth[e][self.usual].mean() for e in self.EXPOSURES], 1)
        # A mean over 65536 pixels of eight frames each is known to some 0.02 ADU.
        self.assertAlmostEqual(line["offset"], offset, delta=0.1)
        self.assertAlmostEqual(line["slope"], slope, delta=0.001)
        self.assertLess(line["offsetError"], 0.1)

    def test_read_noise_and_dark_current_within_three_percent(self):
        camera = self.report("c.qxb", "--dark", *self.darks, "--dark-exposure", *self.EXPOSURES)["darks"]["camera"]
        current = (self.truth["4"] - self.truth["1"])[self.usual].mean() / 3
        for name, truth in (("readNoiseElectrons", 6), ("readNoiseAdu", 3), ("electronsPerAdu", 2),
                            ("darkCurrentAduPerSecond", current), ("darkCurrentElectronsPerSecond", 2 * current)):
            with self.subTest(name=name):
                self.assertAlmostEqual(camera[name]["value"] / truth, 1, delta=0.03)
                self.assertLess(abs(camera[name]["value"] - truth), 5 * camera[name]["error"] + 0.003 * truth)

    def test_hot_pixels_and_cosmic_rays_do_not_count_as_noise(self):
        self.tool("simulate", "-o", "hot", "--width", 256, "--height", 256, "--frames", 4, "--exposure", 0.25, 1, 4,
                  "--hot-pixels", 0.02)
        darks = [f"hot/dark_{e}s.tif" for e in self.EXPOSURES]
        for name in darks:
            pages = [p.copy() for p in self.read(name)]
            for page in pages:
                hits = self.random.integers(0, 256, (2, 200))
                page[hits[0], hits[1]] = np.minimum(page[hits[0], hits[1]].astype(int) + 400, 65535)
            self.write(name, pages)
        camera = self.report("c.qxb", "--dark", *darks, "--dark-exposure", *self.EXPOSURES)["darks"]["camera"]
        self.assertAlmostEqual(camera["readNoiseElectrons"]["value"] / 6, 1, delta=0.03)
        self.assertAlmostEqual(camera["electronsPerAdu"]["value"] / 2, 1, delta=0.03)

    def test_fits_frames_say_their_exposure(self):
        self.tool("simulate", "-o", "f", "--width", 64, "--height", 64, "--frames", 2, "--exposure", 1, 2, "--format",
                  "fits")
        for name, exposure in (("bias", 0), ("text", "1 min")):
            support.write_fits(self.folder / f"{name}.fits", np.full((64, 64), 100, np.uint16), EXPTIME=exposure)
        support.write_fits(self.folder / "light.fits", self.read("light_4s.tif")[0], EXPTIME="4 s")
        found = self.report("c.qxb", "--dark", "f/dark_1s.fits", "f/dark_2s.fits", "bias.fits", "text.fits", "--against",
                            "light.fits")
        stacks = found["darks"]["stacks"]
        self.assertEqual([s["exposureSeconds"] for s in stacks], [None, 0, 1, 2])
        self.assertEqual(stacks[0]["remarks"][-1],
                         "text.fits: page 1: EXPTIME is '1 min', not a number of seconds; --dark-exposure gives it.")
        one = found["against"][0]
        self.assertEqual((one["exposureFrom"], one["exposureNote"]),
                         ("correction", "EXPTIME is '4 s', not a number of seconds"))

    def test_frames_that_are_off_and_drift(self):
        frames = [p + np.uint16(n) for n, p in enumerate(self.read("dark_1s.tif"))]
        frames[5] += np.uint16(40)
        self.write("moved.tif", frames)
        stack = self.report("c.qxb", "--dark", "moved.tif")["darks"]["stacks"][0]
        self.assertEqual(stack["off"], [5])
        self.assertIn("moved.tif: page 6.", stack["remarks"][-1])
        self.write("moved.tif", frames[:5])
        stack = self.report("c.qxb", "--dark", "moved.tif")["darks"]["stacks"][0]
        self.assertAlmostEqual(stack["drift"]["aduPerFrame"], 1, delta=0.05)
        self.assertEqual(stack["off"], [])
        self.assertRegex(" ".join(stack["remarks"]), r"^The level drifts by 4 ADU")
        steady = self.report("c.qxb", "--dark", "dark_1s.tif")["darks"]["stacks"][0]
        self.assertEqual((steady["off"], steady["remarks"]), ([], []))

    def test_drifting_frames_make_the_whole_worth_a_look(self):
        self.tool("build", "one.qxb", "--key", "k", "--exposure", 1, "--intensity", 100, "dark_1s.tif")
        self.write("moved.tif", [p + np.uint16(n) for n, p in enumerate(self.read("dark_1s.tif"))])
        self.assertEqual(self.report("one.qxb", "--dark", "dark_1s.tif")["mark"], "good")
        self.assertEqual(self.report("one.qxb", "--dark", "moved.tif")["mark"], "look")

    def test_the_sentence_names_the_offset(self):
        sentences = self.report("c.qxb")["scaling"]["sentences"]
        self.assertRegex(sentences[1], r"^'4' from '0\.25' \(times 16\) leaves -3\d\d ADU: the camera's offset of 2\d\.\d ADU")

    def test_images_before_and_after(self):
        one = self.report("c.qxb", "--against", "light_4s.tif", "--exposure", 4, "--key", "1")["against"][0]
        before = self.read("light_4s.tif")[0]
        self.tool("apply", "c.qxb", "--key", "1", "--exposure", 4, "--intensity", 100, "light_4s.tif", "-o", "o.tif")
        after = self.read("o.tif")[0]
        self.assertEqual((one["correction"], one["factor"]), (1, 4))
        for name, image in (("before", before), ("after", after)):
            self.assertAlmostEqual(one[name]["mean"], image.mean(), delta=1e-9)
            self.assertEqual(one[name]["maximum"], image.max())
        # Of a dark frame half the pixels are below the background.
        one = self.report("c.qxb", "--against", "dark_1s.tif", "--exposure", 1)["against"][0]
        self.library("dump", "c.qxb", "out.raw")
        background = np.fromfile(self.folder / "out.raw", "<u2").reshape(3, 256, 256)[1]
        self.assertEqual(one["clipped"], (background > self.read("dark_1s.tif")[0]).sum())
        self.assertEqual(one["clippedPercent"], 100 * one["clipped"] / background.size)

    def test_the_nearest_correction_is_taken(self):
        for exposure, index in ((0.3, 0), (0.8, 1), (9, 2)):
            one = self.report("c.qxb", "--against", "light_4s.tif", "--exposure", exposure)["against"][0]
            self.assertEqual(one["correction"], index)


class Files(ReportTest):
    def setUp(self):
        super().setUp()
        self.calibration([('a,"b"</script>', 1, 100, np.full((4, 6), 300, np.uint16)), ("b", 2, 50, self.images(1, 6, 4)[0])])

    def test_the_table_holds_the_figures(self):
        self.tool("report", "c.qxb", "--csv", "t.csv")
        rows = list(csv.DictReader(io.StringIO((self.folder / "t.csv").read_text())))
        found = self.report("c.qxb")["corrections"]
        self.assertEqual([r["key"] for r in rows], [one["key"] for one in found])
        for row, one in zip(rows, found):
            self.assertEqual(float(row["mean"]), one["statistics"]["mean"])
            self.assertEqual(row["mark"], one["mark"])

    def test_shape(self):
        self.write("d.tif", self.images(2, 6, 4))
        found = self.report("c.qxb", "--dark", "d.tif", "--against", "d.tif")
        self.assertEqual((found["format"], found["version"]), ("qxbackground-report", 1))
        self.assertEqual(set(found), {"format", "version", "tool", "made", "thresholds", "darks", "source", "scaling",
                                      "against", "corrections", "mark"})
        described = (support.SOURCE / "docs" / "report.md").read_text()

        def names(value):
            if isinstance(value, dict):
                for key, inner in value.items():
                    yield key
                    yield from names(inner)
            elif isinstance(value, list):
                for inner in value:
                    yield from names(inner)

        for name in set(names(found)):
            self.assertIn(f"`{name}`", described, "is not described")

    def test_nothing_in_the_data_ends_the_pages_script(self):
        self.tool("report", "c.qxb", "-o", "r.html")
        page = (self.folder / "r.html").read_text()
        self.assertNotIn('b"</script>', page)
        self.assertNotIn("QXBACKGROUND-DATA", page)
        data = page.split('<script type="application/json" id="data">')[1].split("</script>")[0]
        self.assertEqual(json.loads(data)["corrections"][0]["key"], 'a,"b"</script>')

    def test_refusals(self):
        self.refused("report", "c.qxb", says=["nothing was asked for"])
        self.refused("report", "nothing.qxb", "--json")
        self.write("wide.tif", [np.zeros((4, 7), np.uint16)])
        self.refused("report", "c.qxb", "--against", "wide.tif", "-o", "r.html", says=["wide.tif: is 7 x 4 pixels"])
        self.refused("report", "c.qxb", "--against", "wide.tif", "--key", "none", "--json", says=["no correction 'none'"])
        self.write("d.tif", [np.zeros((4, 6), np.uint16)])
        self.refused("report", "c.qxb", "--dark", "d.tif", "--dark-exposure", 1, 2, "--json", says=["2 exposure times"])

    def test_built_without_the_page(self):
        before = self.contents()
        def run(*arguments):
            return subprocess.run([os.environ["QX_WITHOUT_PAGE"], "--library", os.environ["QX_LIBRARY"], "report", "c.qxb",
                                   *arguments], cwd=self.folder, capture_output=True, text=True)
        result = run("-o", "r.html")
        self.assertEqual((result.returncode, result.stderr.count("\n"), self.contents()), (2, 1, before))
        self.assertIn("libjs-chart.js", result.stderr)
        self.assertEqual(len(json.loads(run("--json").stdout)["corrections"]), 2)

    def test_ten_corrections_stay_below_five_megabytes(self):
        # Noise hardly shrinks, so that this is the worst that there can be.
        self.calibration([(f"k{n}", n + 1, 100, image) for n, image in enumerate(self.images(10, 600, 500, 100, 4000))])
        self.tool("report", "c.qxb", "-o", "r.html")
        self.assertLess((self.folder / "r.html").stat().st_size, 5_000_000)


if __name__ == "__main__":
    support.main()
