"""What is particular about the workbench on Windows: names, locks, interrupts, files that others have open. Under Wine."""
import filecmp
import json
import os
import pty
import re
import shutil
import subprocess
import time
import unittest
import unittest.mock
from pathlib import Path

import support
from support import TOOL, ToolTest, wait_for

COMPANION = os.environ["QX_COMPANION"]
CONSOLE = os.environ["QX_CONSOLE"]
NATIVE = os.environ["QX_NATIVE_WORKBENCH"]
ODD = ["Темнота", "暗電流", "🌑 night", "Grün & 50%"]
CONDITIONS = ["--exposure", 1, "--intensity", 100]
DARK_CONDITIONS = ["--dark-exposure", 1, "--dark-intensity", 100]


def native_is_built():
    sources = (support.SOURCE / "tools" / "qxbackground").rglob("*.*")
    return os.access(NATIVE, os.X_OK) and Path(NATIVE).stat().st_mtime > max(s.stat().st_mtime for s in sources)


class WindowsTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("d.tif", self.images(3, 12, 9, 0, 2000))
        self.write("i.tif", self.images(2, 12, 9))

    def build(self, name, key="k", darks="d.tif"):
        return self.tool("build", name, "--key", key, *CONDITIONS, darks)

    def start(self, program, *arguments):
        process = subprocess.Popen([program, *map(str, arguments)], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        return process

    def keys(self, name):
        return [c["key"] for c in json.loads(self.tool("list", name, "--json"))["corrections"]]

    def names(self):
        return sorted(str(p.relative_to(self.folder)) for p in self.folder.rglob("*"))


class SameAsOnLinux(WindowsTest):
    @unittest.skipUnless(native_is_built(), "preset linux is not built, or not anew: nothing to compare with")
    def test_every_verb_writes_the_same_bytes(self):
        """Two folders, the same commands in both; what differs is what the commands print of paths, at most."""
        commands = [
            ["simulate", "-o", "sim", "--width", 33, "--height", 21, "--frames", 4, "--lights", 3, "--seed", 11],
            ["correct", "--dark", "sim/dark_1s.tif", *DARK_CONDITIONS, "--exposure", 2, "--intensity", 90, "--level", 37,
             "sim/light_2s.tif", "-o", "corrected.tif", "--picture", "three.png"],
            ["build", "c.qxb", "--key", "flüssig", *CONDITIONS, "sim/dark_1s.tif"],
            ["build", "c.qxb", "--key", "two", "--exposure", 2, "--intensity", 50, "sim/dark_2s.tif"],
            ["build", "c2.qxb", "--key", "three", *CONDITIONS, "sim/dark_2s.tif"],
            ["import", "c.qxb", "c2.qxb"],
            ["delete", "c.qxb", "--key", "TWO"],
            ["list", "c.qxb", "--json"],
            ["check", "c.qxb"],
            ["show", "c.qxb", "--key", "three", "--picture", "shown.png"],
            ["statistics", "corrected.tif"],
            ["apply", "c.qxb", "--key", "Three", *CONDITIONS, "--region", "3,4,20,10", "region.tif", "-o", "applied.tif"],
            ["store", "add", "s", "--group", "A", "--group", "B", "--key", "A,1,B,x,k", *CONDITIONS, "sim/dark_1s.tif"],
            ["store", "add", "s", "--group", "A", "--group", "B", "--key", "A,2,B,x,k", *CONDITIONS, "sim/dark_2s.tif"],
            ["store", "delete", "s_A_1_B_x", "--key", "A,1,B,x,k"],
            ["store", "copy", "s", "t", "--group", "A", "--group", "B"],
            ["store", "import", "t", "c.qxb", "--group", "A", "--group", "B"],  # refused: its keys name no group
            ["store", "apply", "t", "--group", "A", "--group", "B", "--key", "A,2,B,x,k", *CONDITIONS, "sim/light_1s.tif",
             "-o", "stored.tif"],
            ["store", "list", "t", "--group", "A", "--group", "B", "--json"],
            ["store", "show", "t_A_2_B_x", "--key", "A,2,B,x,K", "-o", "of store.png"],
            ["store", "rename", "t_A_2_B_x", "--key", "A,2,B,x,k", "A,3,B,x,k"],
            ["store", "export", "t_A_3_B_x", "--where", "A=3", "-o", "of store.qxb"],
        ]
        region = self.images(1, 20, 10)
        printed = {}
        for name, program in (("native", NATIVE), ("windows", TOOL)):
            folder = self.folder / name
            folder.mkdir()
            support.write_tiff(folder / "region.tif", region)
            printed[name] = []
            for command in commands:
                result = subprocess.run([program, *map(str, command)], cwd=folder, capture_output=True,
                                        env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})  # for the records' dates
                printed[name].append((result.returncode, result.stdout, result.stderr))
        self.assertEqual([status for status, _, _ in printed["native"]], [0] * 16 + [2, 0, 0, 0, 0, 0], printed["native"])
        for command, one, other in zip(commands, printed["native"], printed["windows"]):
            self.assertEqual(one, other, command)
        one, other = self.folder / "native", self.folder / "windows"
        files = sorted(p.relative_to(one) for p in one.rglob("*") if p.is_file())
        self.assertEqual(files, sorted(p.relative_to(other) for p in other.rglob("*") if p.is_file()))
        self.assertEqual(filecmp.cmpfiles(one, other, files, shallow=False)[1:], ([], []))
        self.assertGreater(len(files), 15)


class Names(WindowsTest):
    def test_of_any_letters_for_files_and_folders(self):
        plain = self.library_corrects(self.read("d.tif"), (1, 100), self.read("i.tif"), (1, 100))
        for odd in ODD:
            with self.subTest(name=odd):
                (self.folder / odd).mkdir()
                shutil.copy(self.folder / "d.tif", self.folder / odd / f"{odd} dark.tif")
                shutil.copy(self.folder / "i.tif", self.folder / odd / f"{odd} light.tif")
                said = self.tool("correct", "--dark", f"{odd}/{odd} dark.tif", *DARK_CONDITIONS, *CONDITIONS,
                                 f"{odd}/{odd} light.tif", "-o", f"{odd}/{odd}.tif", "--picture", f"{odd}/{odd}.png")
                self.assertIn(f"{odd}/{odd}.tif", said)
                self.assert_same_pages(self.read(f"{odd}/{odd}.tif"), plain)
                self.assertTrue((self.folder / odd / f"{odd}.png").read_bytes().startswith(b"\x89PNG"))

    def test_of_any_letters_for_calibration_files(self):
        """The library takes narrow names: it gets the short one of a file whose own the code page cannot spell."""
        self.build("plain.qxb")
        for odd in ODD:
            with self.subTest(name=odd):
                name = f"{odd}.qxb"
                self.build(name)
                self.assertEqual((self.folder / name).read_bytes(), (self.folder / "plain.qxb").read_bytes())
                self.assertIn("loads whole", self.tool("check", name))
                self.tool("import", name, "plain.qxb", "--overwrite")
                self.assertEqual(self.keys(name), ["k"])
                self.tool("rename", name, "--key", "k", "new")
                self.assertEqual(self.keys(name), ["new"])
                self.tool("delete", name, "--key", "new")
                self.assertEqual(self.keys(name), [])
        self.assertEqual([n for n in self.names() if "qxbackground" in n], [])

    def test_stores_in_folders_of_any_letters_and_groups_by_bytes(self):
        groups = ["--group", "A"]
        for odd in ODD:
            (self.folder / odd).mkdir()
            self.tool("store", "add", f"{odd}/s", *groups, "--key", "A,1,k", *CONDITIONS, "d.tif")
            self.tool("store", "apply", f"{odd}/s", *groups, "--key", "A,1,k", *CONDITIONS, "i.tif", "-o", f"{odd}/o.tif")
            listed = json.loads(self.tool("store", "list", f"{odd}/s", *groups, "--json"))
            self.assertEqual([c["key"] for g in listed["groups"] for c in g["corrections"]], ["A,1,k"])
        # The library takes the bytes of a key for letters of the code page: so does whoever looks for the file.
        self.tool("store", "add", "s", *groups, "--key", "A,é,k", *CONDITIONS, "d.tif")
        self.assertTrue((self.folder / "s_A_Ã©").exists(), self.names())
        self.tool("store", "apply", "s", *groups, "--key", "A,é,k", *CONDITIONS, "i.tif", "-o", "o.tif")

    def test_a_store_that_the_code_page_cannot_spell_gets_a_line(self):
        said = self.refused("store", "add", "暗", "--group", "A", "--key", "A,1", *CONDITIONS, "d.tif",
                            says=["暗: the library cannot be given this name: the system's code page (1252)"])
        self.assertNotIn("?", said)

    def test_paths_are_written_with_both_separators(self):
        (self.folder / "sub").mkdir()
        shutil.move(self.folder / "d.tif", self.folder / "sub" / "d.tif")
        self.build("sub\\c.qxb", darks="sub\\d.tif")
        self.build("sub/c.qxb", key="l", darks=f"{self.folder}/sub/d.tif")  # not taken for an option
        self.build(f"Z:{self.folder}\\sub/c.qxb".replace("/", "\\"), key="m", darks="sub/d.tif")
        self.assertEqual(self.keys("sub/c.qxb"), ["k", "l", "m"])
        self.assertEqual(self.names(), ["i.tif", "sub", "sub/c.qxb", "sub/c.qxb.json", "sub/d.tif"])

    def test_letter_case_makes_no_other_file(self):
        correct = ["correct", "--dark", "d.tif", *DARK_CONDITIONS, *CONDITIONS, "i.tif", "-o"]
        self.refused(*correct, "I.TIF", "--overwrite", says=["I.TIF: is an input as well"])
        self.refused(*correct, "new.tif", "--picture", "NEW.tif", says=["is written by"])

    def test_that_no_file_can_have_are_refused(self):
        correct = ["correct", "--dark", "d.tif", *DARK_CONDITIONS, *CONDITIONS, "i.tif", "--overwrite", "-o"]
        for name, why in (("nul", "names a device"), ("COM1", "names a device"), ("new.tif:b", "holds a character"),
                          ("what?.tif", "holds a character"), ("o.tif.", "ends in a character"),
                          ("o.tif ", "ends in a character")):
            with self.subTest(name=name):
                self.refused(*correct, name, says=[f"{name}: {why}"])
        self.refused("build", "nul", "--key", "k", *CONDITIONS, "d.tif", says=["names a device"])

    def test_a_library_by_its_path(self):
        (self.folder / "lib 1").mkdir()
        shutil.copy(os.environ["QX_LIBRARY"], self.folder / "lib 1" / "other.dll")
        self.build("c.qxb")
        for path in ("lib 1/other.dll", "lib 1\\other.dll", f"{self.folder}/lib 1/other.dll"):
            self.assertIn("1 correction", self.tool("--library", path, "list", "c.qxb"))
        self.refused("--library", "lib 1\\none.dll", "list", "c.qxb", says=["Cannot load lib 1\\none.dll"])


class OtherProcesses(WindowsTest):
    def test_builds_at_the_same_time_lose_nothing(self):
        running = [self.start(TOOL, "build", "c.qxb", "--key", f"k{index}", *CONDITIONS, "d.tif") for index in range(6)]
        for process in running:
            _, complaint = process.communicate(timeout=300)
            self.assertEqual(process.returncode, 0, complaint)
        self.assertEqual(sorted(self.keys("c.qxb")), [f"k{index}" for index in range(6)])
        self.assertEqual(self.names(), ["c.qxb", "c.qxb.json", "d.tif", "i.tif"])

    def test_who_waits_says_so_and_what_ends_gives_its_lock_up(self):
        self.build("c.qxb")
        holder = self.start(COMPANION, "lock", ".c.qxb.qxbackground-lock")
        self.assertEqual(holder.stdout.readline(), "held\n")
        waiting = self.start(TOOL, "build", "c.qxb", "--key", "n", *CONDITIONS, "d.tif")
        self.assertEqual(waiting.stderr.readline(),
                         "qxbackground: waiting for another process that is changing c.qxb\n")
        self.assertIsNone(waiting.poll())
        holder.kill()  # it takes no leave
        holder.communicate()
        said, complaint = waiting.communicate(timeout=60)
        self.assertEqual((waiting.returncode, complaint), (0, ""), said)
        self.assertEqual(self.keys("c.qxb"), ["k", "n"])
        self.assertEqual(self.names(), ["c.qxb", "c.qxb.json", "d.tif", "i.tif"])

    def test_a_lock_file_that_was_left_is_in_nobody_s_way(self):
        (self.folder / ".c.qxb.qxbackground-lock").write_bytes(b"")
        self.build("c.qxb")
        self.assertEqual(self.names(), ["c.qxb", "c.qxb.json", "d.tif", "i.tif"])

    def test_a_file_that_is_being_read_is_replaced_when_its_reader_is_done(self):
        self.build("c.qxb")
        reader = self.start(COMPANION, "hold", "c.qxb", 1500)
        self.assertEqual(reader.stdout.readline(), "held\n")
        start = time.monotonic()
        self.build("c.qxb", key="n")
        self.assertEqual(reader.wait(60), 0)
        self.assertGreater(time.monotonic() - start, 0.5, "nothing was in the way")
        self.assertEqual(self.keys("c.qxb"), ["k", "n"])

    def test_a_protected_file_stays_as_it_is(self):
        self.build("c.qxb")
        (self.folder / "c.qxb").chmod(0o444)
        self.refused("build", "c.qxb", "--key", "n", *CONDITIONS, "d.tif", says=["c.qxb: is write-protected"])
        shutil.copy(self.folder / "i.tif", self.folder / "o.tif")
        (self.folder / "o.tif").chmod(0o444)
        self.refused("correct", "--dark", "d.tif", *DARK_CONDITIONS, *CONDITIONS, "i.tif", "-o", "o.tif", "--overwrite",
                     says=["o.tif: is write-protected"])


class Console(WindowsTest):
    """On a console with a keyboard: the question before a new group, and what the screen shows."""

    ADD = ["store", "add", "Größe", "--group", "A", *CONDITIONS, "d.tif", "--key"]
    QUESTION = ("Größe_A_ 1 would be a new group: ' 1' differs from the '1' of Größe_A_1 only by letter case or blanks. "
                "Make it? [y/N] ")
    UNDERSTANDS_ESCAPES = 4  # of a console's mode: ENABLE_VIRTUAL_TERMINAL_PROCESSING

    def played(self, *scenes):
        """(TERM, text to wait for, keys, arguments) each: (exit status, mode meanwhile, screen) of each."""
        program = "Z:" + os.environ["QX_WORKBENCH"].replace("/", "\\")
        lines = []
        for term, awaited, keys, arguments in scenes:
            lines += [term, awaited, keys, subprocess.list2cmdline([program, *map(str, arguments)])]
        (self.folder / "scenes").write_text("\n".join(lines) + "\n", encoding="utf-8")
        subprocess.run([CONSOLE, "scenes", "results"], cwd=self.folder, check=True, timeout=300)
        found = []
        for line in (self.folder / "results").read_text(encoding="utf-8").split("\n")[:-1]:
            if line.startswith(">"):
                found[-1][2].append(line[1:])
                continue
            _, status, _, before, during, after, _, page, page_after = line.split()
            self.assertEqual((after, page_after), (before, page), "the console is not as it was before")
            found.append((int(status), int(during), []))
        self.assertEqual(len(found), len(scenes))
        return [(status, during, "\n".join(screen)) for status, during, screen in found]

    def test_a_new_group_is_asked_about(self):
        add, asked = [*self.ADD, "A, 1,k"], "[y/N]"
        first, no, nothing, stopped, ended, plain, yes, gone = self.played(
            ("", "", "", [*self.ADD, "A,1,k"]), ("", asked, "n^M", add), ("", asked, "^M", add), ("", asked, "^C", add),
            ("dumb", asked, "^Z^M", add), ("dumb", asked, "no^M", add), ("dumb", asked, "Yes^M", add),
            ("", "", "", ["list", "Nö.qxb"]))
        self.assertEqual(first[0], 0, first)
        self.assertIn("to the group file Größe_A_1\nRecorded in Größe.json", first[2])
        refused = "qxbackground: Größe_A_ 1: the new group was not wanted; nothing was changed"
        interrupted = "qxbackground: interrupted; no unfinished file was left"
        for (status, mode, screen), shown in ((no, self.QUESTION + "n\n" + refused),
                                              (nothing, self.QUESTION.rstrip() + "\n" + refused),
                                              (stopped, self.QUESTION.rstrip() + "\n" + interrupted)):
            # Colours, on a console that was told to understand them; Wine's shows them all the same.
            self.assertTrue(mode & self.UNDERSTANDS_ESCAPES, screen)
            self.assertEqual((status, re.sub(r"\033\[[0-9;]*m", "", screen)), (2, shown))
        self.assertEqual((gone[0], re.sub(r"\033\[[0-9;]*m", "", gone[2])), (2, "qxbackground: Nö.qxb: does not exist"))
        for _, mode, screen in (ended, plain, yes):
            self.assertFalse(mode & self.UNDERSTANDS_ESCAPES, screen)
            self.assertNotIn("\033", screen)
        self.assertEqual((ended[0], ended[2].split("\n")[1:]), (2, [refused]))
        self.assertEqual((plain[0], plain[2]), (2, self.QUESTION + "no\n" + refused))
        self.assertEqual((yes[0], yes[2].split("\n")[0]), (0, self.QUESTION + "Yes"))
        self.assertTrue(yes[2].split("\n")[1].startswith("Added 'A, 1,k' from 3 dark frames"), yes)
        self.assertEqual(self.names(), ["Größe.json", "Größe_A_ 1", "Größe_A_1", "d.tif", "i.tif", "results", "scenes"])


class Endings(WindowsTest):
    def test_an_interrupt_leaves_nothing_but_what_was_there(self):
        self.write("many.tif", self.images(60, 512, 512))
        self.write("dark.tif", self.images(1, 512, 512))
        (self.folder / "out").mkdir()
        before = self.contents()
        keyboard, console = pty.openpty()
        self.addCleanup(os.close, keyboard)
        process = subprocess.Popen([TOOL, "correct", "--dark", "dark.tif", *map(str, DARK_CONDITIONS + CONDITIONS),
                                    "many.tif", "-o", "out/o.tif"], cwd=self.folder, stdin=console, stderr=subprocess.PIPE,
                                   stdout=subprocess.PIPE, text=True, start_new_session=True)
        os.close(console)
        wait_for(lambda: list((self.folder / "out").iterdir()) or process.poll() is not None)
        os.write(keyboard, b"\x03")
        said, complaint = process.communicate(timeout=120)
        self.assertEqual((process.returncode, said, complaint),
                         (2, "", "qxbackground: interrupted; no unfinished file was left\n"))
        self.assertEqual(self.contents(), before)

    def test_an_exception_of_the_library_ends_with_a_line(self):
        """And leaves neither its lock nor what it had begun to write."""
        self.build("c.qxb")
        for where in ("create", "save"):
            with self.subTest(where), unittest.mock.patch.dict(os.environ, QX_THROWS_IN=where):
                self.refused("--library", os.environ["QX_THROWING_LIBRARY"], "build", "c.qxb", "--key", "n",
                             *CONDITIONS, "d.tif", says=["there is not enough memory"])


class Program(unittest.TestCase):
    def test_needs_nothing_that_windows_lacks(self):
        listing = subprocess.run(["llvm-readobj-19", "--coff-imports", os.environ["QX_WORKBENCH"]], check=True,
                                 capture_output=True, text=True).stdout
        needed = {line.split()[1].lower() for line in listing.splitlines() if line.strip().startswith("Name:")}
        self.assertLessEqual(needed, {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "shell32.dll"})
        self.assertIn("kernel32.dll", needed)

    def test_is_hardened(self):
        check = Path(os.environ["QX_SOURCE_DIR"]) / "tests" / "structure" / "check_hardening.py"
        subprocess.run([check, os.environ["QX_WORKBENCH"]], check=True)


if __name__ == "__main__":
    support.main()
