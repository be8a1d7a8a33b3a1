"""Many inputs, one output each: names, order, failures on the way, interrupts, and what is left in the folder then."""
import json
import os
import pty
import shutil
import signal
import struct
import subprocess
import time
import unittest
from pathlib import Path

import numpy as np

import support
from support import TOOL, ToolTest
from test_endings import NAMED, NAMELESS, small_disk

CORRECT = ["correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 100, "--exposure", 1, "--intensity", 100]


class BatchTest(ToolTest):
    SIZE = (24, 16)

    def setUp(self):
        super().setUp()
        self.darks = self.images(3, *self.SIZE, high=20000)
        self.write("d.tif", self.darks)

    def lights(self, names, pages=1):
        """Files of random pages; returns {stem: pages}."""
        made = {}
        for name in names:
            (self.folder / name).parent.mkdir(exist_ok=True)
            made[Path(name).stem] = self.images(pages, *self.SIZE)
            self.write(name, made[Path(name).stem])
        return made

    def corrected(self, pages):
        return self.library_corrects(self.darks, (1, 100), pages, (1, 100))

    def assert_corrected(self, output, pages):
        self.assert_same_pages(self.read(output), self.corrected(pages))

    def names_in(self, folder):
        return sorted(p.name for p in (self.folder / folder).iterdir())

    def start(self, arguments, environment=NAMELESS, **how):
        how = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **how}
        return subprocess.Popen([TOOL, *map(str, arguments)], cwd=self.folder, text=True,
                                env={**os.environ, **environment}, **how)


class Names(BatchTest):
    def test_each_input_has_an_output_of_its_name(self):
        lights = self.lights(["in/l1.tif", "in/l2.TIFF", "in/l10.tif"], pages=2)
        report = json.loads(self.tool(*CORRECT, "in", "-o", "out/", "--json"))
        self.assertEqual([f["input"] for f in report["files"]], ["in/l1.tif", "in/l2.TIFF", "in/l10.tif"])
        self.assertEqual([f["output"] for f in report["files"]], ["out/l1.tif", "out/l2.TIFF", "out/l10.tif"])
        self.assertEqual((report["pages"], report["failures"], report["output"]), (6, [], "out/"))
        self.assertEqual(self.names_in("out"), ["l1.tif", "l10.tif", "l2.TIFF"])
        for file in report["files"]:
            self.assert_corrected(file["output"], lights[Path(file["input"]).stem])

    def test_a_folder_that_is_there_needs_no_separator(self):
        self.lights(["l.tif"])
        (self.folder / "out").mkdir()
        self.assertIn("Corrected 1 file, 1 page of 24 x 16", self.tool(*CORRECT, "l.tif", "-o", "out"))
        self.assertEqual(self.names_in("out"), ["l.tif"])

    def test_the_pattern_of_names_is_filled_in(self):
        self.lights([f"in/l{i}.tif" for i in range(1, 12)])
        self.tool(*CORRECT, "in", "-o", "out", "--name", "{number}-{stem}_corrected{ext}")
        self.assertEqual(self.names_in("out"), [f"{i:02}-l{i}_corrected.tif" for i in range(1, 12)])

    def test_outputs_may_lie_beside_their_inputs(self):
        lights = self.lights(["in/a.tif", "in/b.tif"])
        self.tool(*CORRECT, "in", "-o", "in", "--name", "{stem}_c{ext}")
        self.assertEqual(self.names_in("in"), ["a.tif", "a_c.tif", "b.tif", "b_c.tif"])
        self.assert_corrected("in/b_c.tif", lights["b"])

    def test_the_ending_follows_the_format(self):
        self.lights(["a.tif"])
        page = self.images(1, *self.SIZE)[0]
        (self.folder / "b.pgm").write_bytes(b"P5\n24 16\n65535\n" + page.astype(">u2").tobytes())
        self.tool(*CORRECT, "a.tif", "b.pgm", "-o", "out/")
        self.assertEqual(self.names_in("out"), ["a.tif", "b.tif"])
        self.assert_corrected("out/b.tif", [page])
        self.tool(*CORRECT, "a.tif", "-o", "out/", "--format", "fits")
        self.assertIn("a.fits", self.names_in("out"))
        self.assertEqual((self.folder / "out/a.fits").read_bytes()[:9], b"SIMPLE  =")
        self.tool(*CORRECT, "out/a.fits", "-o", "again/")
        self.assertEqual(self.names_in("again"), ["a.fits"])

    def test_what_a_page_says_is_kept(self):
        page = self.images(1, *self.SIZE)
        self.write("l.tif", page, tags={274: (3, [6])})
        self.tool(*CORRECT, "l.tif", "-o", "out/")
        data = (self.folder / "out/l.tif").read_bytes()
        at = struct.unpack_from("<I", data, 4)[0]
        entries = [struct.unpack_from("<HHII", data, at + 2 + 12 * i) for i in range(struct.unpack_from("<H", data, at)[0])]
        self.assertEqual([e[3] & 0xFFFF for e in entries if e[0] == 274], [6])

    def test_an_older_output_stays_unless_told_otherwise(self):
        lights = self.lights(["a.tif", "b.tif"])
        (self.folder / "out").mkdir()
        (self.folder / "out/b.tif").write_bytes(b"older")
        self.refused(*CORRECT, "a.tif", "b.tif", "-o", "out", says=["out/b.tif: exists already"])
        self.tool(*CORRECT, "a.tif", "b.tif", "-o", "out", "--overwrite")
        self.assert_corrected("out/b.tif", lights["b"])

    def test_a_correction_of_a_file_and_of_a_store_do_the_same(self):
        lights = self.lights(["a.tif", "b.tif"])
        conditions = ["--exposure", 1, "--intensity", 100]
        self.tool("build", "c.qxb", "--key", "k", *conditions, "d.tif")
        self.tool("apply", "c.qxb", "--key", "k", *conditions, "a.tif", "b.tif", "-o", "applied/")
        self.tool("store", "add", "s", "--group", "A", "--key", "A,1", *conditions, "d.tif")
        self.tool("store", "apply", "s", "--group", "A", "--key", "A,1", *conditions, "a.tif", "b.tif", "-o", "stored/")
        for folder in ("applied", "stored"):
            for stem, pages in lights.items():
                self.assert_corrected(f"{folder}/{stem}.tif", pages)


class Inputs(BatchTest):
    def inputs(self, *given):
        shutil.rmtree(self.folder / "out", True)
        return [f["input"] for f in json.loads(self.tool(*CORRECT, *given, "-o", "out/", "--json"))["files"]]

    def test_patterns_are_expanded_in_natural_order(self):
        self.lights(["l1.tif", "l2.tif", "l10.tif", "l1b.tif", ".l3.tif", "m4.tif"])
        self.assertEqual(self.inputs("l*.tif"), ["l1.tif", "l1b.tif", "l2.tif", "l10.tif"])
        self.assertEqual(self.inputs("l?.tif"), ["l1.tif", "l2.tif"])
        self.assertEqual(self.inputs("[!d]?.tif"), ["l1.tif", "l2.tif", "m4.tif"])
        self.assertEqual(self.inputs("[a-l][1-3].t*f"), ["l1.tif", "l2.tif"])
        self.assertEqual(self.inputs("m4.tif", "*b*"), ["m4.tif", "l1b.tif"])
        self.assertEqual(self.inputs(".l*"), [".l3.tif"])

    def test_patterns_may_name_folders(self):
        self.lights(["n1/a.tif", "n2/b.tif", "n10/c.tif", "o/d.tif"])
        self.assertEqual(self.inputs("n*/?.tif"), ["n1/a.tif", "n2/b.tif", "n10/c.tif"])
        self.assertEqual(self.inputs(f"{self.folder}/n[12]/*"), [f"{self.folder}/n1/a.tif", f"{self.folder}/n2/b.tif"])

    def test_a_file_may_be_called_like_a_pattern(self):
        self.lights(["l[1].tif", "l1.tif"])
        self.assertEqual(self.inputs("l[1].tif"), ["l[1].tif"])

    def test_of_a_folder_its_images_are_taken(self):
        self.lights(["in/b.tif", "in/a.TIF", "in/.hidden.tif"])
        (self.folder / "in/notes.txt").write_text("x")
        (self.folder / "in/deeper.tif").mkdir()
        self.assertEqual(self.inputs("in"), ["in/a.TIF", "in/b.tif"])

    def test_dark_frames_and_one_output_for_all_take_them_too(self):
        lights = self.lights(["in/l2.tif", "in/l10.tif"])
        for page in range(3):
            (self.folder / "darks").mkdir(exist_ok=True)
            self.write(f"darks/{page}.tif", [self.darks[page]])
        self.tool(*["darks" if a == "d.tif" else a for a in CORRECT], "in/*.tif", "-o", "o.tif")
        self.assert_corrected("o.tif", lights["l2"] + lights["l10"])


class Help(BatchTest):
    def test_says_what_becomes_of_inputs_that_fail(self):
        for verb in (["correct"], ["apply"], ["store", "apply"]):
            self.assertIn("1 some failed", self.tool(*verb, "--help"))


class Failures(BatchTest):
    def test_the_others_are_done(self):
        lights = self.lights(["a.tif", "m.tif", "z.tif"], pages=2)
        self.write("cut.tif", self.images(2, *self.SIZE))
        whole = (self.folder / "cut.tif").read_bytes()
        (self.folder / "cut.tif").write_bytes(whole[:-20])
        self.write("wide.tif", self.images(1, 25, 16))
        self.write("mixed.tif", self.images(1, *self.SIZE) + self.images(1, 16, 24))
        self.write("eight.tif", self.images(1, *self.SIZE, high=256), bits=8)
        (self.folder / "empty.tif").write_bytes(b"")
        inputs = ["a.tif", "cut.tif", "wide.tif", "m.tif", "mixed.tif", "eight.tif", "empty.tif", "gone.tif", "z.tif"]
        result = self.run_tool(*CORRECT, *inputs, "-o", "out/", "--json")
        self.assertEqual(result.returncode, 1, result.stderr)
        lines = result.stderr.splitlines()
        self.assertEqual([line.split(":")[1].strip() for line in lines],
                         ["cut.tif", "wide.tif", "mixed.tif", "eight.tif", "empty.tif", "gone.tif"])
        for line, says in zip(lines, ["page 2", "25 x 16", "page 2: is 16 x 24", "8 bits", "empty", "No such file"]):
            self.assertTrue(line.startswith("qxbackground: ") and says in line, line)
        report = json.loads(result.stdout)
        self.assertEqual([f["input"] for f in report["failures"]], [i for i in inputs if i[0] not in "am" or i[:2] == "mi"
                                                                    ][:-1])
        self.assertEqual([f["why"] for f in report["failures"]], [line[len("qxbackground: "):] for line in lines])
        self.assertEqual(report["pages"], 6)
        self.assertEqual(self.names_in("out"), ["a.tif", "m.tif", "z.tif"])
        for stem, pages in lights.items():
            self.assert_corrected(f"out/{stem}.tif", pages)
        self.assertIn("Corrected 1 of 2 files, 2 pages",
                      self.tool(*CORRECT, "a.tif", "gone.tif", "-o", "out2/", status=1))

    def test_a_page_that_breaks_late_leaves_no_output(self):
        self.write("late.tif", self.images(3, *self.SIZE))
        data = bytearray((self.folder / "late.tif").read_bytes())
        at = 4
        for _ in range(3):  # to the third page
            directory = struct.unpack_from("<I", data, at)[0]
            at = directory + 2 + 12 * struct.unpack_from("<H", data, directory)[0]
        for entry in range(10):  # its strip lies beyond the end of the file
            if struct.unpack_from("<H", data, directory + 2 + 12 * entry)[0] == 273:
                struct.pack_into("<I", data, directory + 2 + 12 * entry + 8, len(data))
        (self.folder / "late.tif").write_bytes(data)
        lights = self.lights(["a.tif", "b.tif"])
        result = self.run_tool(*CORRECT, "a.tif", "late.tif", "b.tif", "-o", "out/")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1), result.stderr)
        self.assertIn("late.tif: page 3:", result.stderr)
        self.assertEqual(self.names_in("out"), ["a.tif", "b.tif"])
        self.assert_corrected("out/b.tif", lights["b"])

    def test_when_all_fail_no_folder_is_left(self):
        self.write("wide.tif", self.images(1, 25, 16))
        result = self.run_tool(*CORRECT, "wide.tif", "gone.tif", "-o", "new/out/")
        self.assertEqual(result.returncode, 2)
        self.assertIn("none of 2 files could be corrected", result.stderr.splitlines()[-1])
        self.assertEqual(result.stderr.count("\n"), 3)
        self.assertFalse((self.folder / "new").exists())
        self.refused(*CORRECT, "wide.tif", "-o", "out/", says=["wide.tif: page 1"])

    def test_one_output_for_all_is_all_or_nothing(self):
        self.lights(["a.tif"])
        self.write("wide.tif", self.images(1, 25, 16))
        self.refused(*CORRECT, "a.tif", "wide.tif", "-o", "o.tif", says=["wide.tif: page 1"])

    def test_a_full_disk_ends_the_run_and_keeps_what_is_done(self):
        probe = subprocess.run([*small_disk(64), "true"], cwd=self.folder, capture_output=True)
        if probe.returncode != 0:
            self.skipTest("no file system can be mounted here")
        (self.folder / "disk").mkdir()
        (self.folder / "fill").mkdir()
        self.SIZE = (300, 300)
        self.write("d.tif", self.images(1, *self.SIZE))
        self.lights([f"l{i}.tif" for i in range(5)])
        result = subprocess.run([*small_disk(450), TOOL, *map(str, CORRECT), "l?.tif", "-o", "disk"], cwd=self.folder,
                                capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stderr.count("\n")), (2, 1), result.stderr)
        self.assertIn("disk/l2.tif", result.stderr)
        self.assertIn("No space left on device; 2 of 5 files had been corrected", result.stderr)
        self.assertEqual(self.names_in("after"), ["l0.tif", "l1.tif"])
        self.tool(*CORRECT, "l?.tif", "-o", "whole/")
        for name in self.names_in("after"):
            self.assertEqual((self.folder / "after" / name).read_bytes(), (self.folder / "whole" / name).read_bytes())

    @unittest.skipIf(os.geteuid() != 0 or not shutil.which("setpriv"), "needs to become another user")
    def test_a_folder_that_takes_no_files(self):
        other = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", TOOL]
        if subprocess.run([*other, "--version"], capture_output=True).returncode != 0:
            self.skipTest("another user cannot run the workbench here")
        self.folder.chmod(0o755)
        self.lights(["a.tif", "b.tif"])
        (self.folder / "out").mkdir(mode=0o755)
        for output in ("out", "out/new/"):
            result = subprocess.run([*other, *map(str, CORRECT), "a.tif", "b.tif", "-o", output], cwd=self.folder,
                                    capture_output=True, text=True)
            self.assertEqual((result.returncode, result.stderr.count("\n")), (2, 1), result.stderr)
            self.assertIn("Permission denied", result.stderr)
        self.assertEqual(self.names_in("out"), [])


class Endings(BatchTest):
    FILES = 120

    def setUp(self):
        super().setUp()
        self.SIZE = (300, 300)
        self.darks = self.images(1, *self.SIZE)
        self.write("d.tif", self.darks)
        page = self.images(1, *self.SIZE)
        (self.folder / "in").mkdir()
        for i in range(self.FILES):
            self.write(f"in/l{i}.tif", page)
        self.tool(*CORRECT, "in/l0.tif", "-o", "whole.tif")
        self.whole = self.read("whole.tif")

    def assert_only_whole_outputs(self):
        for name in self.names_in("out"):
            self.assertRegex(name, r"^l\d+\.tif$")
            self.assert_same_pages(self.read(f"out/{name}"), self.whole)

    def outputs(self):
        return len(self.names_in("out")) if (self.folder / "out").exists() else 0

    def interrupt(self, environment, times):
        process = self.start([*CORRECT, "in", "-o", "out/", "--full-statistics"], environment)
        support.wait_for(lambda: self.outputs() > 5)
        for _ in range(times):
            process.send_signal(signal.SIGINT)
            time.sleep(0.001)
        return process, process.communicate()[1]

    def test_an_interrupt_keeps_what_is_done(self):
        for environment in (NAMELESS, NAMED):
            with self.subTest(environment=environment):
                process, error = self.interrupt(environment, 1)
                self.assertEqual((process.returncode, error.count("\n")), (2, 1), error)
                self.assertIn(f"interrupted; {self.outputs()} of {self.FILES} files had been corrected", error)
                self.assertLess(self.outputs(), self.FILES)
                self.assert_only_whole_outputs()
                shutil.rmtree(self.folder / "out")

    def test_a_second_one_leaves_nothing_half_done_either(self):
        """With the names that a file system without nameless files has, at whatever moment it comes."""
        for _ in range(5):
            process, _ = self.interrupt({**NAMED}, 2)
            self.assertIn(process.returncode, (2, -signal.SIGINT))
            self.assert_only_whole_outputs()
            shutil.rmtree(self.folder / "out")

    def test_two_at_once_share_the_folder(self):
        """Each output comes from one of them; the other one says so, or refused before it began."""
        processes = [self.start([*CORRECT, "in", "-o", "out/", "--json", "--no-statistics"]) for _ in range(2)]
        done = 0
        for process in processes:
            output, error = process.communicate()
            self.assertIn(process.returncode, (0, 1, 2), error)
            done += len(json.loads(output)["files"]) if output else 0
            for line in error.splitlines():
                self.assertRegex(line, "exists (already|by now)|none of")
        self.assertEqual((done, self.outputs()), (self.FILES, self.FILES))
        self.assert_only_whole_outputs()

    def test_a_terminal_shows_progress_the_time_left_and_failures(self):
        (self.folder / "in/l50.tif").write_bytes(b"broken")
        terminal, slave = pty.openpty()
        process = self.start([*CORRECT, "in", "-o", "out/"], environment={**NAMELESS, "TERM": "xterm", "NO_COLOR": ""},
                             stderr=slave)
        os.close(slave)
        support.wait_for(lambda: self.outputs() > 5)
        process.send_signal(signal.SIGSTOP)  # the time left is told after two seconds, which need not be spent working
        time.sleep(2.2)
        process.send_signal(signal.SIGCONT)
        text = b""
        while True:
            try:
                more = os.read(terminal, 65536)
            except OSError:
                break
            text += more
        os.close(terminal)
        process.communicate()
        self.assertEqual(process.returncode, 1)
        text = text.decode()
        self.assertRegex(text, r"Correcting \[#+ +\] +\d+ %")
        self.assertRegex(text, r"%, \d+ s left")
        self.assertRegex(text, r"\r\x1b\[K\x1b\[1;31mqxbackground:\x1b\[0m in/l50.tif: [^\r\n]+\r?\n")
        self.assertTrue(text.endswith("\r\x1b[K"), "the bar is still there")


class ManyFiles(BatchTest):
    def test_thousands_are_planned_at_once(self):
        """Comparing each path with each took seconds from a thousand files on."""
        self.lights(["l.tif"])
        (self.folder / "in").mkdir()
        for i in range(4000):
            os.link(self.folder / "d.tif", self.folder / f"in/l{i}.tif")
        (self.folder / "out").mkdir()
        (self.folder / "out/l3999.tif").write_bytes(b"older")
        before = os.times().children_user
        result = self.run_tool(*CORRECT, "in", "-o", "out")
        self.assertLess(os.times().children_user - before, 3)
        self.assertEqual(result.returncode, 2)
        self.assertIn("out/l3999.tif: exists already", result.stderr)


if __name__ == "__main__":
    support.main()
