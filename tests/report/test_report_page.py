"""The report's page in headless Chromium: it shows the tool's figures, asks nobody for anything, and works by mouse and
by keyboard; axe finds nothing wrong in either theme, at any width."""
import json
import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(os.environ["QX_SOURCE_DIR"]) / "tests" / "tool"))

import numpy as np

import support
from browser import Browser, program
from support import ToolTest
from test_files import file_bytes

HERE = Path(__file__).resolve().parent
# What scrolls sideways, in the page.
WIDE = "[...document.querySelectorAll('.scroll')].filter((s) => s.scrollWidth > s.clientWidth).map((s) => s.ariaLabel)"


def read_colours(path):
    """The pixels of a picture in red, green and blue, by ImageMagick."""
    raw = subprocess.run(["convert", str(path), "-background", "white", "-alpha", "remove", "-depth", "8", "ppm:-"],
                         check=True, capture_output=True).stdout
    _, size, _, pixels = raw.split(b"\n", 3)
    width, height = map(int, size.split())
    return np.frombuffer(pixels, np.uint8).reshape(height, width, 3)


def axe():
    """The text of axe-core, as the lock file pins it, or None where npm cannot bring it."""
    place = Path.cwd() / "report-npm"
    script = place / "node_modules" / "axe-core" / "axe.min.js"
    lock = (HERE / "package-lock.json").read_bytes()
    if not (script.exists() and (place / "package-lock.json").read_bytes() == lock):
        if shutil.which("npm") is None:
            return None
        place.mkdir(exist_ok=True)
        for name in ("package.json", "package-lock.json"):
            shutil.copy(HERE / name, place)
        done = subprocess.run(["npm", "ci", "--ignore-scripts", "--no-audit", "--no-fund"], cwd=place, capture_output=True,
                              text=True, timeout=200)
        if done.returncode != 0:
            return None
    return script.read_text(encoding="utf-8")


@unittest.skipUnless(program(), "chromium is not installed")
class Page(ToolTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        super().setUp()
        self.browser.requests.clear()
        self.browser.complaints.clear()
        self.browser.scheme("light")
        self.browser.size(1400)

    def js(self, expression):
        return self.browser.evaluate(expression)

    def open(self, name="r.html"):
        self.browser.open(self.folder / name)
        self.js("qx.ready")

    def make(self, width=60, height=40, exposure=0.2):
        """Two corrections and an image, nothing about which is smooth."""
        random = self.random
        self.stored = [random.integers(100, 60000, (height, width)).astype(np.uint16) for _ in range(2)]
        self.stored[0][5:7, 8:10] = 65000
        (self.folder / "c.qxb").write_bytes(file_bytes([(b"first", 0.3, 70, self.stored[0]),
                                                        (b"<b>second", 1.7, 70, self.stored[1])]))
        self.image = random.integers(0, 65536, (height, width)).astype(np.uint16)
        self.write("i.tif", [self.image])
        self.write("d.tif", self.images(4, width, height, 100, 130))
        self.write("d2.tif", self.images(4, width, height, 100, 160))
        self.exposure = exposure
        self.how = ["c.qxb", "--against", "i.tif", "--exposure", exposure, "--key", "first", "--dark", "d.tif", "d2.tif",
                    "--dark-exposure", 1, 2]
        self.tool("report", *self.how, "-o", "r.html")
        self.open()

    def corrected(self, level):
        """What the workbench, and so the library, makes of the image."""
        self.tool("apply", "c.qxb", "--key", "first", "--exposure", self.exposure, "--intensity", 70, "--level", level, "i.tif", "-o",
                  "o.tif", "--overwrite", "--no-statistics")
        return self.read("o.tif")[0]

    def test_no_complaint_and_no_request(self):
        self.make()
        self.js("""(async () => { for (const theme of ["dark", "light"]) { document.getElementById("theme").value = theme;
            document.getElementById("theme").dispatchEvent(new Event("change")); }
            for (const b of document.querySelectorAll("button")) if (!b.id.startsWith("save")) b.click(); })()""")
        self.assertEqual(self.browser.complaints, [])
        outside = [url for url in self.browser.requests if not url.startswith(("data:", "blob:"))]
        self.assertEqual(outside, [(self.folder / "r.html").resolve().as_uri()])

    def test_figures_are_the_tools(self):
        self.make()
        found = json.loads(self.tool("report", *self.how, "--json"))
        shown = self.js("qx.figures(qx.report)")
        for one in (found, shown):
            del one["made"]
        self.assertEqual(shown, found)
        rows = self.js("""[...document.querySelectorAll("#summary-table tbody tr")].map(
            (row) => [...row.cells].map((cell) => cell.textContent))""")
        for row, one in zip(rows, found["corrections"]):
            s = one["statistics"]
            self.assertEqual([row[0], row[1], *map(float, row[5:8]), *map(float, row[9:11])],
                             [one["key"], one["mark"], s["minimum"], s["average"], s["maximum"], one["unusual"]["hot"],
                              one["unusual"]["dead"]])
            self.assertEqual(row[2], " ".join(c["reason"] for c in one["checks"] if c["reason"]) or "–")
        cell = self.js("""document.querySelector('#cross td[data-from="0"][data-to="1"]').firstChild.textContent""")
        mean = found["scaling"]["cross"][0][1]["mean"]
        self.assertAlmostEqual(float(cell.replace("−", "-")), mean, delta=abs(mean) * 5e-4)
        for sentence in found["scaling"]["sentences"]:
            self.assertIn(sentence, self.js("document.getElementById('scaling').textContent"))
        noise = found["darks"]["stacks"][0]["noise"]["value"]
        self.assertIn(f"{noise:.4g}", self.js("document.getElementById('darks').textContent"))
        self.tool("report", *self.how, "--csv", "t.csv")
        self.assertEqual(self.js("qx.csv(qx.report)").splitlines()[0], (self.folder / "t.csv").read_text().splitlines()[0])

    def test_pixels_are_the_corrections(self):
        self.make()
        for index, stored in enumerate(self.stored):
            shown = self.js(f"Array.from(qx.correctionSections[{index}].viewer.state.view.pixels)")
            np.testing.assert_array_equal(np.array(shown).reshape(stored.shape), stored)

    def test_every_level_gives_the_librarys_pixels(self):
        self.make()
        for level in range(101):
            shown = self.js(f"Array.from(qx.againstSections[0].correctedAt({level}))")
            np.testing.assert_array_equal(np.array(shown).reshape(self.image.shape), self.corrected(level), f"level {level}")

    def test_pixels_that_are_picked_out_of_a_large_image_are_corrected_alike(self):
        self.make(1300, 1100, exposure=0.7)  # much of the scaled background is above 65535
        step = self.js("qx.report.against[0].picture.step")
        self.assertGreater(step, 1)
        shown = np.array(self.js("Array.from(qx.againstSections[0].correctedAt(61))"))
        expected = self.corrected(61)[::step, ::step]
        np.testing.assert_array_equal(shown.reshape(expected.shape), expected)
        detail = self.js("qx.report.corrections[0].detail")
        pixels = self.js("qx.unpack(qx.report.corrections[0].detail).then((p) => Array.from(p))")
        top, left = detail["top"], detail["left"]
        np.testing.assert_array_equal(np.array(pixels).reshape(detail["height"], detail["width"]),
                                      self.stored[0][top:top + detail["height"], left:left + detail["width"]])

    def median_after(self):
        text = self.js("document.querySelector('output[for=against-0-level]').textContent")
        return int(re.search(r"median after (\d+) ADU", text).group(1))

    def test_level_and_slider_by_keyboard_and_mouse(self):
        self.make()
        median = {level: np.sort(self.corrected(level), axis=None)[(self.image.size - 1) // 2] for level in (100, 98, 50)}
        self.assertEqual(len(set(median.values())), 3)
        self.assertEqual(self.median_after(), median[100])
        self.js("document.getElementById('against-0-level').focus()")
        for _ in range(2):
            self.browser.key("ArrowLeft", 37)
        self.assertEqual(self.median_after(), median[98])
        self.browser.click(*self.browser.centre("#against-0-level"))
        self.assertEqual(self.js("document.getElementById('against-0-level').value"), "50")
        self.assertEqual(self.median_after(), median[50])

        def is_before(x):  # whether the picture shows the image itself at that column
            return self.js(f"""(() => {{ const section = qx.againstSections[0], c = document.getElementById("against-0-picture");
                const pixel = (canvas) => canvas.getContext("2d").getImageData({x}, 0, 1, 40).data.join();
                return pixel(c) === pixel(section.state.left) ? "before" : pixel(c) === pixel(section.state.right) ? "after" : "?";
                }})()""")
        self.assertEqual((is_before(10), is_before(50)), ("before", "after"))
        self.js("document.getElementById('against-0-split').focus()")
        self.browser.key("Home", 36)
        self.assertEqual(is_before(10), "after")
        self.browser.key("End", 35)
        self.assertEqual(is_before(50), "before")
        self.browser.click(*self.browser.centre("#against-0-picture", 0.25))
        self.assertEqual((is_before(5), is_before(40)), ("before", "after"))

    def test_the_value_under_the_pointer_and_by_keys(self):
        self.make()
        canvas = "#correction-1 canvas.picture"
        read = "document.querySelector('#correction-1 output').textContent"
        x, y = self.browser.centre(canvas)
        self.browser.mouse("mouseMoved", x, y)
        text = self.js(read)
        column, row = map(int, re.match(r"x (\d+), y (\d+)", text).groups())
        self.assertEqual((column, row), (30, 20))
        self.assertIn(f": {self.stored[1][row, column]} ADU", text)
        self.js(f"document.querySelector('{canvas}').focus()")
        self.browser.key("ArrowRight", 39)
        self.browser.key("ArrowUp", 38)
        self.assertEqual(self.js(read), f"x 31, y 19: {self.stored[1][19, 31]} ADU")
        for _ in range(5):
            self.browser.key("+", 187, "+")
        state = self.js("(({zoom, x, y}) => [zoom, x, y])(qx.correctionSections[1].viewer.state)")
        self.assertEqual(state[0], 7.5)  # eight pixels across: single ones can be told
        self.assertTrue(state[1] <= 31 < state[1] + 8)
        self.assertEqual(self.js(read), f"x 31, y 19: {self.stored[1][19, 31]} ADU")

    def test_sorting_by_keyboard(self):
        self.make()
        keys = "[...document.querySelectorAll('#summary-table tbody th')].map((e) => e.textContent)"
        self.assertEqual(self.js(keys), ["first", "<b>second"])
        self.js("document.querySelectorAll('#summary-table thead button')[2].focus()")
        for order in (["first", "<b>second"], ["<b>second", "first"]):
            self.browser.key("Enter", 13, "\r")
            self.assertEqual(self.js(keys), order)
        self.assertEqual(self.js("document.querySelectorAll('#summary-table thead th')[3].getAttribute('aria-sort')"),
                         "descending")

    def test_logarithmic_histogram(self):
        self.make()
        scale = "qx.charts.find((c) => c.canvas.closest('#correction-0')).chart.options.scales.y.type"
        self.assertEqual(self.js(scale), "linear")
        self.js("document.querySelector('#correction-0 button[aria-pressed]').click()")
        self.assertEqual(self.js(scale), "logarithmic")

    def test_axe_finds_nothing_and_nothing_sticks_out(self):
        script = axe()
        self.make()
        for theme, width in (("light", 1400), ("dark", 800), ("light", 360), ("dark", 360)):
            self.browser.scheme(theme)
            self.browser.size(width)
            self.open()
            self.js("for (const d of document.querySelectorAll('details')) d.open = true")
            if width == 360:  # tables that do not fit are lists there, and say all that they said
                self.js("new Promise((done) => setTimeout(done, 100))")  # details tell later that they were opened
                self.assertEqual(self.js(WIDE), [])
                self.assertEqual(self.js("[...document.querySelectorAll('.stacked td')].filter((c) => !c.dataset.label).length"), 0)
                self.assertTrue(self.js("document.getElementById('summary-table').matches('.stacked')"))
            self.assertEqual(self.js("document.documentElement.dataset.theme"), theme)
            self.assertLessEqual(self.js("document.documentElement.scrollWidth"), width, f"{theme} {width}")
            if script:
                self.js(script + "\n;0")
                found = self.js("""axe.run(document).then((r) => r.violations.map(
                    (v) => [v.id, v.help, v.nodes.slice(0, 3).map((n) => n.html)]))""")
                self.assertEqual(found, [], f"{theme}, {width} pixels wide")
        if not script:
            self.skipTest("npm cannot bring axe-core")

    @unittest.skipUnless(shutil.which("pdftotext"), "poppler-utils is not installed")
    def test_printed_nothing_is_cut_off_or_blank(self):
        self.make()
        self.browser.scheme("dark")  # paper is white all the same
        self.browser.print(self.folder / "r.pdf")
        text = subprocess.run(["pdftotext", "-layout", "r.pdf", "-"], cwd=self.folder, capture_output=True, text=True,
                              check=True).stdout
        words = " ".join(text.split())
        for part in ("Dead pixels", "What the marks mean", "clusters that the median filter did not take out",
                     "Background against exposure", "standard deviation", "pixels at 65535", "Level 100 %: factor",
                     "exposure × intensity, s·%", "value, ADU", "mean of each column", "frame (2 s)"):  # on diagrams
            self.assertIn(part, words)
        for part in ("Press a title", "arrow keys", "Theme", "Save figures"):
            self.assertNotIn(part, words)
        for one in self.js("qx.report.corrections.map((c) => [c.key, c.statistics.maximum, c.unusual.dead])"):
            self.assertRegex(text, rf"\n *{one[0]}.* {one[1]} .* {one[2]}\n")
        subprocess.run(["pdfimages", "-png", "r.pdf", "printed"], cwd=self.folder, check=True)
        images = [read_colours(path) for path in sorted(self.folder.glob("printed-*.png"))]
        self.assertGreaterEqual(sum(image.std() > 5 for image in images),
                                self.js("document.querySelectorAll('main canvas.picture').length"))
        subprocess.run(["pdftoppm", "-r", "20", "r.pdf", "page"], cwd=self.folder, check=True)
        for path in self.folder.glob("page-*.ppm"):
            shades = read_colours(path)
            self.assertTrue((shades[:, :6] == 255).all() and (shades[:, -6:] == 255).all(), "something is in the margin")
        # As on paper, so on the way there; and as before afterwards.
        self.assertEqual(self.js("document.documentElement.className + document.documentElement.dataset.theme"), "dark")
        self.js("dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(self.js(WIDE), [])
        self.js("dispatchEvent(new Event('afterprint'))")

    def test_every_picture_and_diagram_says_what_it_shows(self):
        self.make()
        labels = self.js("[...document.querySelectorAll('main canvas')].map((c) => c.getAttribute('aria-label'))")
        self.assertGreater(len(labels), 8)
        for label in labels:
            self.assertRegex(label or "", r"\w{3}.*\d|before")


if __name__ == "__main__":
    support.main()
