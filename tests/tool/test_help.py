"""What the workbench tells of itself: help, version, description, manual page, and that all of it is true: every example
is run, every verb's --json is one document, an option is the same for every verb that has it."""
import json
import os
import re
import shlex
import shutil
import subprocess
import unittest

import numpy as np

import support
from support import TOOL, ToolTest, not_under_wine
from test_files import file_bytes

DESCRIPTION = json.loads(subprocess.run([TOOL, "--describe"], capture_output=True, text=True, check=True).stdout)
VERBS = {" ".join(verb["verb"]): verb for verb in DESCRIPTION["verbs"]}
FLAT = np.full((4, 6), 300, np.uint16)


class Scene(ToolTest):
    """A folder with everything that the examples speak of."""

    def setUp(self):
        super().setUp()
        for name in ("dark.tif", "light.tif", "darks/dark1.tif", "darks/dark2.tif", "bias/bias1.tif", "lights/m31_1.tif",
                     "lights/m31_2.tif", "lights/m31_3.fits"):
            (self.folder / name).parent.mkdir(exist_ok=True)
            pages = [FLAT + page for page in range(3)] if "dark" in name else [FLAT + 400 if "l" in name else FLAT - 200]
            if name.endswith(".fits"):
                from astropy.io import fits
                fits.PrimaryHDU(pages[0]).writeto(self.folder / name)
            else:
                self.write(name, pages)
        (self.folder / "fits").mkdir()
        for number, exposure in ((1, 30), (2, 60)):
            support.write_fits(self.folder / f"fits/m42_{number}.fits", FLAT + 400, EXPTIME=exposure, GAIN=1, CCD__TEMP=-8.2)
        (self.folder / "frame.raw").write_bytes(FLAT.tobytes())
        put = {"night.qxb": [("dark60", 60), ("dark120", 120)], "other.qxb": [("dark10", 10)]}
        for name, corrections in put.items():
            (self.folder / name).write_bytes(file_bytes([(k.encode(), e, 100, FLAT) for k, e in corrections]))
        (self.folder / "damaged.qxb").write_bytes((self.folder / "night.qxb").read_bytes()[:-5])
        for place, gain in (("store", 1), ("other", 2)):
            (self.folder / place).mkdir()
            (self.folder / place / f"cam_Gain_{gain}_Temperature_-8").write_bytes(
                file_bytes([(b"Gain,%d,Temperature,-8,dark60" % gain, 60, 100, FLAT)], 2, [b"Gain", b"Temperature"]))
        self.scene = self.folder.with_name(self.folder.name + "-scene")
        self.folder.rename(self.scene)
        self.addCleanup(shutil.rmtree, self.scene, True)
        self.anew()

    def anew(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        shutil.copytree(self.scene, self.folder)


def told(text):
    """An option's text as help has it, but for what may follow of range and default."""
    return " ".join(text.split()).rstrip(")")


# What an example asks for by its exit status.
STATUS = {"diff": 1}


class Examples(Scene):
    @not_under_wine("each command takes its time to start, and they do the same there")
    def test_each_does_what_it_says(self):
        tried = 0
        for name, verb in {**VERBS, "": {"examples": DESCRIPTION["examples"]}}.items():
            self.assertTrue(verb["examples"], f"'{name}' has no example")
            for example in verb["examples"]:
                command = example["command"]
                with self.subTest(example=command):
                    if name == "completion":  # what it prints, test_completion.py gives to shells
                        command = re.search(r"qxbackground completion \w+", command).group()
                    words = shlex.split(command)
                    self.assertEqual(words[:1 + len(name.split())], ["qxbackground", *name.split()])
                    self.anew()
                    self.tool(*words[1:], status=STATUS.get(name, 0))
                    for option in ("-o", "--picture"):
                        if option in words and "--dry-run" not in words:
                            output = self.folder / words[words.index(option) + 1]
                            self.assertTrue(output.exists(), f"{output} was not written")
                    tried += 1
        self.assertGreaterEqual(tried, 30)

    def test_help_shows_them_as_they_can_be_pasted(self):
        for verb in ("correct", "store add"):
            text = re.sub(r" \\\n +", " ", self.tool(*verb.split(), "--help"))
            for example in VERBS[verb]["examples"]:
                self.assertIn("    " + example["command"] + "\n", text)


class Help(ToolTest):
    def test_of_every_verb_is_whole_and_fits_80_columns(self):
        for name, verb in VERBS.items():
            with self.subTest(verb=name):
                text = self.tool("help", *name.split())
                self.assertEqual([line for line in text.splitlines() if len(line) > 80 or line != line.rstrip()], [])
                self.assertTrue(text.isascii())
                self.assertNotIn("\n\n\n", text)
                self.assertIn(f"\nUsage: qxbackground {name} ", text)
                flat = " ".join(text.split())
                for option in verb["options"]:
                    self.assertIn(told(option["help"]), flat)
                    self.assertRegex(text, rf"(?m)^  (-\w, )?{re.escape(option['name'])}\b")
                for example in verb["examples"]:
                    self.assertIn(example["what"], flat)

    def test_of_the_program(self):
        text = self.tool("--help")
        self.assertEqual(text, self.tool("help"))
        self.assertEqual([line for line in text.splitlines() if len(line) > 80], [])
        for name in {verb["verb"][0] for verb in VERBS.values()}:
            self.assertRegex(text, rf"(?m)^  {name}\b")
        self.assertEqual([term["term"] for term in DESCRIPTION["exitStatus"]], ["0", "1", "2"])
        for term in DESCRIPTION["exitStatus"] + DESCRIPTION["environment"]:
            self.assertIn(term["text"], " ".join(text.split()))
        for name in (verb for verb in VERBS if verb.startswith("store ")):
            self.assertRegex(self.tool("store", "--help"), rf"(?m)^  {name.split()[1]}\b")

    def test_the_guide_has_the_exit_statuses(self):
        page = (support.SOURCE / "docs/command-line.md").read_text()
        self.assertEqual(re.findall(r"(?m)^\| (\d) \| (.*) \|$", page),
                         [(term["term"], term["text"]) for term in DESCRIPTION["exitStatus"]])

    def test_version(self):
        header = (support.SOURCE / "include/QX_BackgroundCorrection.h").read_text()
        parts = [re.search(rf"VERSION_{part} (\d+)", header).group(1) for part in ("MAJOR", "MINOR", "PATCH")]
        self.assertEqual(self.tool("--version"), f"qxbackground {'.'.join(parts)}\n")


class Vocabulary(ToolTest):
    def test_an_option_is_the_same_for_every_verb(self):
        seen = {}
        for name, verb in VERBS.items():
            for option in verb["options"]:
                if option["positional"]:
                    continue
                fields = ["letter", "type", "choices", "heading", *([] if "path" in option else ["value"])]
                what = tuple(str(option[field]) for field in fields)
                first, known = seen.setdefault(option["name"], (name, what))
                self.assertEqual(what, known, f"{option['name']} of {name} and of {first}")
                self.assertNotIn(option["heading"], ("Options", ""), f"{option['name']} is not in the vocabulary")
        self.assertGreater(len(seen), 45)

    def test_a_number_says_its_unit(self):
        for name, verb in VERBS.items():
            for option in verb["options"]:
                if option["type"] == "number":
                    self.assertNotIn(option["value"], ("", "INT", "UINT", "FLOAT", "TEXT"), f"{name} {option['name']}")

    def test_options_stand_in_one_order(self):
        places = {}
        for verb in VERBS.values():
            names = [option["name"] for option in verb["options"] if not option["positional"]]
            for index, name in enumerate(names):
                places.setdefault(name, set()).update(names[:index])
        for name, before in places.items():
            for other in before:
                self.assertNotIn(name, places[other], f"{name} and {other} change places")

    def test_older_names_are_still_understood(self):
        self.write("d.tif", [FLAT, FLAT + 1])
        (self.folder / "c.qxb").write_bytes(file_bytes([(b"k", 1, 100, FLAT)]))
        self.tool("simulate", "-o", "s", "--width", 8, "--height", 8, "--frames", 2, "--exposures", "1,2")
        self.tool("show", "c.qxb", "--key", "k", "-o", "k.png")
        self.assertTrue((self.folder / "k.png").exists())
        self.assertIn('"darks": {', self.tool("report", "c.qxb", "--darks", "d.tif", "--dark-exposure", 1, "--json"))
        for verb, name in (("simulate", "--exposures"), ("show", "--output"), ("report", "--darks")):
            self.assertNotIn(name + " ", self.tool(verb, "--help"))


class Json(Scene):
    """--json: one document on the standard output and nothing beside it."""

    def of(self, *words, status=0):
        text = self.tool(*words, "--json", status=status)
        return json.loads(text.replace("\\\\", "/"))  # in the paths of Windows

    def test_every_verb_that_tells_something_has_it(self):
        without = [name for name, verb in VERBS.items() if "--json" not in [o["name"] for o in verb["options"]]]
        self.assertEqual(without, ["completion"])

    def fields_of_the_guide(self):
        """By verb, what docs/command-line.md tells."""
        page = (support.SOURCE / "docs/command-line.md").read_text()
        told = {}
        for names, fields in re.findall(r"(?m)^\| (`[a-z ]+`(?:, `[a-z ]+`)*) \| (.*) \|$", page):
            for name in re.findall(r"`([^`]+)`", names):
                told[name] = re.findall(r"`(?!simulation\.json|--)(\w+)`", fields)
        return told

    # Fields that are there only where something is not as it should be, or was asked for otherwise.
    RARE = {"input", "why", "overwritten", "byte", "what", "dryRun", "correction", "factor", "x", "y", "kind", "notes",
            "warnings", "statistics"}

    @not_under_wine("each command takes its time to start, and they do the same there")
    def test_is_one_document_for_every_example_with_the_fields_of_the_guide(self):
        told = self.fields_of_the_guide()
        self.assertEqual(set(told), set(VERBS) - {"completion"})
        for name, fields in told.items():
            with self.subTest(verb=name):
                found = set(self.RARE)
                for example in VERBS[name]["examples"]:
                    self.anew()
                    document = self.of(*shlex.split(example["command"])[1:], status=STATUS.get(name, 0))
                    found |= set(re.findall(r'"(\w+)":', json.dumps(document)))
                self.assertEqual([field for field in fields if field not in found], [])

    def test_figures(self):
        shown = self.of("show", "night.qxb", "--key", "DARK60", "--picture", "k.png")
        self.assertEqual((shown["key"], shown["width"], shown["height"], shown["exposureSeconds"], shown["picture"]),
                         ("dark60", 6, 4, 60, "k.png"))
        self.assertEqual(shown["statistics"]["median"], 300)
        self.assertEqual(sum(bar["pixels"] for bar in shown["histogram"]), 24)
        self.assertTrue((self.folder / "k.png").exists())
        checked = self.of("check", "night.qxb", "damaged.qxb", status=1)["files"]
        self.assertEqual([(f["file"], f["whole"], f["corrections"]) for f in checked],
                         [("night.qxb", True, 2), ("damaged.qxb", False, 1)])
        self.assertEqual(len(checked[1]["departures"]), 1)
        differing = self.of("diff", "night.qxb", "other.qxb", status=1)
        self.assertEqual((differing["same"], [d["key"] for d in differing["differences"]]),
                         (0, ["dark60", "dark120", "dark10"]))
        self.assertEqual(self.of("import", "night.qxb", "other.qxb"),
                         {"file": "night.qxb", "source": "other.qxb", "added": 1, "kept": 0, "lost": [],
                          "provenance": "night.qxb.json"})
        self.assertEqual(self.of("delete", "night.qxb", "--key", "dark10")["corrections"], 2)
        built = self.of("build", "night.qxb", "--key", "n", "--exposure", 2, "--intensity", 50, "darks/")
        self.assertEqual((built["frames"], built["combined"], built["corrections"], built["lightIntensityPercent"]),
                         (6, "average", 3, 50))
        self.assertEqual(self.of("hotpixels", "darks/")["pixels"], [])

    def test_of_a_dry_run(self):
        apply = ["apply", "night.qxb", "--key", "dark60", "--exposure", 90, "--intensity", 100]
        self.write("wide.tif", [np.full((4, 7), 9, np.uint16)])
        found = self.of(*apply, "light.tif", "wide.tif", "-o", "out/", "--dry-run", status=1)
        self.assertEqual((found["dryRun"], found["factor"], found["pages"]), (True, 1.5, 1))
        self.assertEqual([f["input"] for f in found["files"]], ["light.tif"])
        self.assertEqual([f["input"] for f in found["failures"]], ["wide.tif"])
        self.assertEqual(len(found["warnings"]), 1)
        self.assertFalse((self.folder / "out").exists())

    def test_of_a_store(self):
        base = "store/cam_Gain_1_Temperature_-8"
        copied = self.of("store", "copy", base, "store/copy")
        self.assertEqual((copied["corrections"], copied["removed"]), (1, []))
        self.assertTrue((self.folder / copied["files"][0]).exists())
        again = self.of("store", "copy", base, "store/copy", "--overwrite")
        self.assertEqual(again["removed"], copied["files"])
        result = self.run_tool("store", "copy", base, "store/copy", "--json", "--overwrite", "--library", "x")
        self.assertEqual((result.stdout, result.returncode), ("", 2))
        result = self.run_tool("store", "delete", base, "--key", "Gain,1,Temperature,-8,no", "--json")
        self.assertEqual((result.stdout, result.returncode), ("", 2))
        self.assertEqual(self.of("store", "delete", base, "--key", "Gain,1,Temperature,-8,dark60"),
                         {"file": base.replace("/", os.sep), "deleted": "Gain,1,Temperature,-8,dark60", "corrections": 0,
                          "provenance": None})


class ManPage(ToolTest):
    def setUp(self):
        super().setUp()
        self.page = subprocess.run([TOOL, "--man-page"], capture_output=True, text=True, check=True,
                                   env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"}).stdout

    def rendered(self, columns):
        shown = subprocess.run(["man", "-l", "-"], input=self.page, capture_output=True, text=True, check=True,
                               env={**os.environ, "MANWIDTH": str(columns), "MANROFFOPT": "-c", "LC_ALL": "C.UTF-8"})
        return re.sub(".\b", "", shown.stdout)

    def test_has_what_help_has(self):
        self.assertRegex(self.page, r'\A\.TH QXBACKGROUND 1 2023-11-14 "qxbackground [\d.]+" ')
        headings = re.findall(r"(?m)^\.SH (.*)$", self.page)
        self.assertEqual(headings, ["NAME", "SYNOPSIS", "DESCRIPTION", "EXAMPLES", "VERBS", "OPTIONS", "EXIT STATUS",
                                    "ENVIRONMENT", "FILES"])
        shown = self.rendered(400)
        flat = " ".join(shown.split())
        for name, verb in VERBS.items():
            self.assertIn(f"\n   {name}\n", shown)
            for option in verb["options"]:
                self.assertIn(option["name"], flat)
                self.assertIn(told(option["help"]), flat)
            for example in verb["examples"]:
                self.assertIn(example["command"].split(" \\")[0][:40], flat)
        for term in DESCRIPTION["exitStatus"] + DESCRIPTION["environment"]:
            self.assertIn(term["text"], flat)

    @unittest.skipUnless(shutil.which("man"), "no man here")
    def test_man_has_nothing_to_complain_of(self):
        (self.folder / "qxbackground.1").write_text(self.page)
        result = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-Tutf8", "-Z", "-l", "qxbackground.1"], cwd=self.folder,
                                capture_output=True, text=True, env={**os.environ, "MANWIDTH": "80", "LC_ALL": "C.UTF-8"})
        self.assertEqual((result.stderr, result.returncode), ("", 0))

    @unittest.skipUnless(shutil.which("man"), "no man here")
    def test_fits_80_columns_with_options_whole(self):
        lines = self.rendered(80).splitlines()
        self.assertGreater(len(lines), 500)
        self.assertEqual([line for line in lines if len(line) > 80 or line.endswith("\u2010")], [])

    @unittest.skipUnless(shutil.which("mandoc"), "no mandoc here")
    def test_mandoc_has_nothing_to_complain_of(self):
        (self.folder / "qxbackground.1").write_text(self.page)
        result = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", "qxbackground.1"], cwd=self.folder,
                                capture_output=True, text=True)
        self.assertEqual(result.stdout + result.stderr, "")


if __name__ == "__main__":
    support.main()
