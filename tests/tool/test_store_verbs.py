"""store show, export and rename; new groups that are probably slips of the keyboard, and what may be in their names."""
import os
import pty
import signal
import subprocess
import time

import numpy as np

import support
from support import TOOL, not_under_wine
from test_files import file_bytes
from test_store import GROUPS, StoreTest

CONDITIONS = ["--exposure", 1, "--intensity", 100]


class StoreVerbsTest(StoreTest):
    def setUp(self):
        super().setUp()
        self.pixels = {}

    def group(self, file, *corrections, names=(b"A", b"B")):
        """A group file by the book. corrections: keys, each with random pixels and exposures from 1 on."""
        listed = []
        for number, key in enumerate(corrections):
            self.pixels[key] = self.images(1, 7, 5)[0]
            listed.append((key.encode(), number + 1, 100, self.pixels[key]))
        (self.folder / file).write_bytes(file_bytes(listed, 2, names))

    def store(self):
        self.group("s_A_1_B_x", "A,1,B,x", "A,1,B,x,flat")
        self.group("s_A_1_B_y", "B,y,A,1")
        self.group("s_A_2_B_x", "A,2,B,x")


class Show(StoreVerbsTest):
    def test_tells_of_a_store_what_it_tells_of_a_file(self):
        self.store()
        self.tool("store", "export", "s", *GROUPS, "-o", "all.qxb")
        for key in ("A,1,B,x,flat", "A,1,B,x,FLAT"):
            told = self.tool("show", "all.qxb", "--key", key, "-o", "file.png", "--overwrite")
            shown = self.tool("store", "show", "s", *GROUPS, "--key", key, "-o", "store.png", "--overwrite")
            self.assertIn("'A,1,B,x,flat' in s_A_1_B_x: 7 x 5 pixels, taken at 2 s, 100 %\n", shown)
            self.assertEqual(shown.replace("s_A_1_B_x:", "all.qxb:").replace("store.png", "file.png"), told)
            self.assertEqual((self.folder / "store.png").read_bytes(), (self.folder / "file.png").read_bytes())
        self.assertIn(str(self.pixels["A,1,B,x,flat"].max()), shown)
        self.assertTrue((self.folder / "store.png").read_bytes().startswith(b"\x89PNG"))

    def test_refuses_what_is_not_there(self):
        self.store()
        self.refused("store", "show", "s", *GROUPS, "--key", "A,1,B,x,dark", says=["s_A_1_B_x", "'A,1,B,x,dark'"])
        self.refused("store", "show", "s", *GROUPS, "--key", "A,7,B,x", says=["s_A_7_B_x", "no file"])
        self.refused("store", "show", "s_A_1_B_y", "--key", "flat", says=["no value for the grouping name 'A'"])


class Export(StoreVerbsTest):
    def expected(self, *corrections):
        return file_bytes([(key.encode(), exposure, 100, self.pixels[key]) for key, exposure in corrections])

    def test_all_or_those_chosen_byte_for_byte(self):
        self.store()
        all_of_it = [("A,1,B,x", 1), ("A,1,B,x,flat", 2), ("B,y,A,1", 1), ("A,2,B,x", 1)]
        for options, chosen in [([], all_of_it),
                                (["--where", "A=1"], all_of_it[:3]),
                                (["--where", "B=x"], [*all_of_it[:2], all_of_it[3]]),
                                (["--where", "A=1", "--where", "A=2", "--where", "B=x"], [*all_of_it[:2], all_of_it[3]]),
                                (["--where", "A=1", "--where", "B=y"], all_of_it[2:3]),
                                (["--key", "A,2,B,x", "--key", "a,1,B,X"], None),
                                (["--key", "A,2,B,x", "--key", "A,1,B,x,FLAT"], [all_of_it[3], all_of_it[1]])]:
            with self.subTest(options=options):
                command = ["store", "export", "s", *GROUPS, *options, "-o", "o.qxb", "--overwrite"]
                if chosen is None:
                    self.refused(*command, says=["no value for the grouping name 'A'", "'a' is another name"])
                    continue
                groups = len({key.split(",flat")[0] for key, _ in chosen})
                self.assertIn(f"Exported {len(chosen)} correction{'s' * (len(chosen) > 1)} of {groups} group",
                              self.tool(*command))
                self.assertEqual((self.folder / "o.qxb").read_bytes(), self.expected(*chosen))
        self.tool("store", "import", "t", "o.qxb", *GROUPS)  # and back
        self.assertEqual(self.listed("t"), {"t_A_2_B_x": ["A,2,B,x"], "t_A_1_B_x": ["A,1,B,x,flat"]})

    def test_the_files_of_another_store_stay_out(self):
        self.store()
        self.group("s2_A_1_B_x", "A,1,B,x,other")
        self.assertIn("4 corrections of 3 groups", self.tool("store", "export", "s", *GROUPS, "-o", "o.qxb"))

    def test_nothing_is_left_out_in_silence(self):
        self.store()
        damaged = self.folder / "s_A_1_B_y"
        whole = damaged.read_bytes()
        for data in (whole[:-1], whole[:26] + b"\7" + whole[27:], b"no calibration file"):
            damaged.write_bytes(data)
            self.refused("store", "export", "s", *GROUPS, "-o", "o.qxb", says=["s_A_1_B_y"])

    def test_refusals(self):
        self.store()
        export = ["store", "export", "s", *GROUPS, "-o", "o.qxb"]
        self.refused(*export, "--where", "C=1", says=["--where: 'C=1' is not NAME=VALUE", "(A B)"])
        self.refused(*export, "--where", "A", says=["--where: 'A' is not NAME=VALUE"])
        self.refused(*export, "--where", "A=3", says=["s: holds no correction with these values", "store list"])
        self.refused(*export, "--where", "A=1", "--key", "A,1,B,x", says=["--where", "--key"])
        self.refused(*export, "--key", "A,1,B,x,dark", says=["s_A_1_B_x: there is no correction 'A,1,B,x,dark'"])
        self.refused("store", "export", "none", *GROUPS, "-o", "o.qxb", says=["none: there is no group file"])

    @not_under_wine("there its files would be one")
    def test_keys_that_are_one_in_a_single_file(self):
        self.group("s_A_1_B_x", "A,1,B,x")
        self.group("s_A_1_B_X", "A,1,B,X")
        self.refused("store", "export", "s", *GROUPS, "-o", "o.qxb", says=["'A,1,B,x' and 'A,1,B,X' are one key"])
        self.tool("store", "export", "s", *GROUPS, "--where", "B=X", "-o", "o.qxb")
        self.assertEqual((self.folder / "o.qxb").read_bytes(), self.expected(("A,1,B,X", 1)))


class Rename(StoreVerbsTest):
    def rename(self, key, new, *more):
        return self.tool("store", "rename", "s", *GROUPS, "--key", key, new, *more)

    def assert_group(self, file, *corrections):
        listed = [(key.encode(), exposure, 100, self.pixels[pixels]) for key, pixels, exposure in corrections]
        self.assertEqual((self.folder / file).read_bytes(), file_bytes(listed, 2, (b"A", b"B")))

    def test_within_its_group_nothing_but_the_key_changes(self):
        self.store()
        said = self.rename("A,1,B,x", "B,x,A,1,Exposure,60")
        self.assertEqual(said, "Renamed 'A,1,B,x' to 'B,x,A,1,Exposure,60' in s_A_1_B_x\n")
        self.assert_group("s_A_1_B_x", ("B,x,A,1,Exposure,60", "A,1,B,x", 1), ("A,1,B,x,flat", "A,1,B,x,flat", 2))
        self.rename("A,1,B,x,flat", "A,1,B,x,Flat")
        self.assert_group("s_A_1_B_x", ("B,x,A,1,Exposure,60", "A,1,B,x", 1), ("A,1,B,x,Flat", "A,1,B,x,flat", 2))

    def test_into_another_group(self):
        self.store()
        other = (self.folder / "s_A_2_B_x").read_bytes()
        self.assertEqual(self.rename("A,1,B,x,flat", "A,1,B,y,flat"),
                         "Renamed 'A,1,B,x,flat' to 'A,1,B,y,flat' in s_A_1_B_y; s_A_1_B_x holds 1 correction\n")
        self.assert_group("s_A_1_B_y", ("B,y,A,1", "B,y,A,1", 1), ("A,1,B,y,flat", "A,1,B,x,flat", 2))
        self.assert_group("s_A_1_B_x", ("A,1,B,x", "A,1,B,x", 1))
        self.rename("A,1,B,x", "A,9,B,z")
        self.assert_group("s_A_9_B_z", ("A,9,B,z", "A,1,B,x", 1))
        self.assert_group("s_A_1_B_x")
        self.assertEqual((self.folder / "s_A_2_B_x").read_bytes(), other)
        self.assertEqual(self.files(), ["s_A_1_B_x", "s_A_1_B_y", "s_A_2_B_x", "s_A_9_B_z"])

    def test_refusals_change_nothing(self):
        self.store()
        rename = ["store", "rename", "s", *GROUPS, "--key"]
        for key, new, says in [("A,1,B,x", "A,1,B,x,FLAT", "s_A_1_B_x: has a correction 'A,1,B,x,flat' already"),
                               ("A,1,B,x", "b,y,a,1", "no value for the grouping name 'A'"),
                               ("A,1,B,x", "B,y,A,1", "s_A_1_B_y: has a correction 'B,y,A,1' already"),
                               ("A,1,B,x,dark", "A,1,B,x,new", "s_A_1_B_x: has no correction 'A,1,B,x,dark'"),
                               ("A,7,B,x", "A,1,B,x,new", "s_A_7_B_x: the group of key 'A,7,B,x' has no file"),
                               ("A,1,B,x", "flat", "no value for the grouping name 'A'"),
                               ("A,1,B,x", "A,../x,B,x", "'../x'"), ("A,1,B,x", "", "new-key: the key is empty"),
                               ("A,1,B,x", "A,1,B,x,\t", "new-key: the key has a control character"),
                               ("A,1,B,x", "A,1,B, X", "would be a new group")]:
            with self.subTest(key=key, new=new):
                self.refused(*rename, key, new, says=[says])
        (self.folder / "s_A_2_B_x").write_bytes((self.folder / "s_A_2_B_x").read_bytes()[:-1])
        self.refused(*rename, "A,1,B,x", "A,2,B,x,new", says=["s_A_2_B_x: does not load whole"])

    @not_under_wine("it is loaded before the program as Linux does")
    def test_it_is_in_the_new_group_before_it_leaves_the_old_one(self):
        """Ended between the two files: the correction is there twice, and not gone."""
        self.store()
        process = subprocess.Popen([TOOL, "store", "rename", "s", *GROUPS, "--key", "A,2,B,x", "A,1,B,x,new"],
                                   cwd=self.folder, env={**os.environ, "LD_PRELOAD": os.environ["QX_POOR_FOLDER_LIBRARY"],
                                                         "QX_END_AT_RENAME": "2"})
        self.assertEqual(process.wait(), 9)
        self.assertEqual(self.listed()["s_A_1_B_x"][-1], "A,1,B,x,new")
        self.assertEqual(self.listed()["s_A_2_B_x"], ["A,2,B,x"])


class NewGroups(StoreVerbsTest):
    """Names and values that differ from others by what is easily mistyped."""

    def add_command(self, key, *more, base="s", groups=GROUPS):
        self.write("d.tif", [np.full((5, 7), 9, np.uint16)])
        return ["store", "add", base, *groups, "--key", key, *CONDITIONS, *more, "d.tif"]

    def slip(self, command, given, known, file):
        self.refused(*command, says=[f"'{given}' differs from the '{known}' of {file} only by letter case or blanks",
                                     f"write '{known}', or --new-group if it is meant"])

    def test_values_are_held_against_all_that_a_name_has(self):
        self.group("s_A_1_B_fast", "A,1,B,fast")
        for value in ("Fast", " fast", "fa st", "FAST", "fast\u00a0", "fas\u2009t"):
            if not support.UNDER_WINE or value.isascii():
                self.slip(self.add_command(f"A,2,B,{value}"), value, "fast", "s_A_1_B_fast")
        self.tool(*self.add_command("A,2,B,faster"))
        self.tool(*self.add_command("A,2,B,fast"))
        self.tool(*self.add_command("A,2,B,Slow"))
        self.slip(self.add_command("A,3,B,slow"), "slow", "Slow", "s_A_2_B_Slow")
        self.tool(*self.add_command("A,3,B,slow", "--new-group"))
        self.tool(*self.add_command("A,4,B,slow"))  # is a value of its own by now

    def test_grouping_names_and_base_names_too(self):
        self.group("s_Gain_1_Mode_x", "Gain,1,Mode,x", names=(b"Gain", b"Mode"))
        groups = ("--group", "Gain", "--group", "mode")
        self.slip(self.add_command("Gain,7,mode,y", groups=groups), "mode", "Mode", "s_Gain_1_Mode_x")
        self.slip(self.add_command("Gain,7,Mode,y", base="S", groups=("--group", "Gain", "--group", "Mode")), "S", "s",
                  "s_Gain_1_Mode_x")
        self.tool(*self.add_command("Gain,7,mode,y", "--new-group", groups=groups))
        self.tool(*self.add_command("Gain,8,mode,y", groups=groups))
        self.refused("store", "list", "s", "--group", "A", "--group", "A", says=["--group 'A': is given twice"])

    def test_imports_and_renames_ask_as_well(self):
        self.group("s_A_1_B_fast", "A,1,B,fast")
        pixels = self.images(1, 7, 5)[0]
        (self.folder / "src.qxb").write_bytes(file_bytes([(b"A,1,B,fast,new", 1, 100, pixels), (b"A,1,B,Fast", 1, 100, pixels)]))
        self.slip(["store", "import", "s", "src.qxb", *GROUPS], "Fast", "fast", "s_A_1_B_fast")
        self.slip(["store", "rename", "s", *GROUPS, "--key", "A,1,B,fast", "A,3,B,FAST"], "FAST", "fast", "s_A_1_B_fast")
        (self.folder / "src.qxb").write_bytes(file_bytes([(b"A,1,B,slow", 1, 100, pixels), (b"A,2,B,Slow", 1, 100, pixels)]))
        self.slip(["store", "import", "s", "src.qxb", *GROUPS], "Slow", "slow", "s_A_1_B_slow")
        self.tool("store", "import", "s", "src.qxb", *GROUPS, "--new-group")
        self.assertEqual(len(self.listed()), 3)

    def test_one_file_system_may_have_one_name_for_both(self):
        self.group("s_A_1_B_fast", "A,1,B,fast")
        command = self.add_command("A,1,B,Fast", "--new-group")
        if (self.folder / "S_A_1_B_FAST").exists() or support.UNDER_WINE:
            self.refused(*command, says=["is one file with another one of that name here", "write 'fast'"])
        else:
            self.tool(*command)
            self.assertEqual(self.files(), ["d.tif", "s_A_1_B_Fast", "s_A_1_B_fast"])

    def test_nothing_leads_out_of_the_folder(self):
        (self.folder / "sub").mkdir()
        for value in ("../x", "..\\x", "/x", "x/y", "\\x", "C:\\x", "C:/x"):
            with self.subTest(value=value):
                self.refused(*self.add_command(f"A,{value},B,2", base="sub/s"), says=["could not be read back"])
                self.refused(*self.add_command(f"A,1,B,{value},flat", "--new-group", base="sub/s"), says=[value])
        for value in ("..", "nul", "con", "."):  # are names like others behind the base
            self.tool(*self.add_command(f"A,{value},B,1", base="sub/s"))
        self.assertEqual(sorted(self.listed("sub/s")), sorted(f"s_A_{value}_B_1" for value in ("..", "nul", "con", ".")))
        self.assertEqual(self.files(), sorted(["d.tif", "sub", *(f"sub/s_A_{v}_B_1" for v in ("..", "nul", "con", "."))]))

    def test_names_that_windows_does_not_have(self):
        """Files are carried from one system to the other."""
        for value, says in [("C:", "holds a character"), ("a:b", "holds a character"), ("what?", "holds a character"),
                            ("1.", "ends in a character"), ("..", "ends in a character"), ("x ", "ends in a character")]:
            with self.subTest(value=value):
                self.refused(*self.add_command(f"A,1,B,{value}"), says=["would be a new group", says])
        self.refused(*self.add_command("A,1,B,2", base="nul.dat"), says=["names a device"])
        if support.UNDER_WINE:
            self.refused(*self.add_command("A,1,B,a:b", "--new-group"), says=["holds a character"])
        else:
            self.tool(*self.add_command("A,1,B,a:b", "--new-group"))
            self.tool(*self.add_command("A,1,B,a:b,more"))  # is there by now
            self.assertEqual(self.listed(), {"s_A_1_B_a:b": ["A,1,B,a:b", "A,1,B,a:b,more"]})

    def test_control_characters(self):
        for character in ("\t", "\n", "\x7f", "\x1b", "\u009b"):
            with self.subTest(character=character):
                self.refused(*self.add_command(f"A,1,B,2,x{character}y", "--new-group"), says=["--key", "control character"])
                self.refused(*self.add_command("A,1,B,2", groups=("--group", "A", "--group", f"B{character}")),
                             says=["--group", "control character"])
        pixels = self.images(1, 7, 5)[0]
        (self.folder / "src.qxb").write_bytes(file_bytes([(b"A,1,B,2\t", 1, 100, pixels)]))
        self.refused("store", "import", "s", "src.qxb", *GROUPS, "--new-group", says=["control character"])


@not_under_wine("the terminal is one of Linux")
class Asked(StoreVerbsTest):
    def setUp(self):
        super().setUp()
        self.group("s_A_1_B_fast", "A,1,B,fast")
        self.write("d.tif", [np.full((5, 7), 9, np.uint16)])

    def ask(self, answer, key="A,1,B,Fast"):
        """The status and what stood on the terminal, which gets the answer when it was asked."""
        keyboard, terminal = pty.openpty()
        self.addCleanup(os.close, keyboard)
        process = subprocess.Popen([TOOL, "store", "add", "s", *GROUPS, "--key", key, *map(str, CONDITIONS), "d.tif"],
                                   cwd=self.folder, stdin=terminal, stderr=terminal, stdout=subprocess.PIPE, text=True)
        os.close(terminal)
        text = b""
        while b"[y/N]" not in text:
            text += os.read(keyboard, 4096)
        if answer is signal.SIGINT:
            time.sleep(0.05)
            process.send_signal(answer)
        else:
            os.write(keyboard, answer)
        process.communicate(timeout=60)
        try:
            while more := os.read(keyboard, 4096):
                text += more
        except OSError:
            pass
        return process.returncode, text.decode()

    def test_a_terminal_is_asked(self):
        before = self.contents()
        for answer, says in [(b"\n", "the new group was not wanted; nothing was changed"), (b"n\n", "not wanted"),
                             (b"\x04", "not wanted"), (signal.SIGINT, "interrupted")]:
            with self.subTest(answer=answer):
                status, text = self.ask(answer)
                self.assertIn("s_A_1_B_Fast would be a new group: 'Fast' differs from the 'fast' of s_A_1_B_fast only by "
                              "letter case or blanks. Make it? [y/N]", text)
                self.assertEqual((status, self.contents()), (2, before), text)
                self.assertIn("qxbackground:", text)
                self.assertIn(says, text)
        self.assertEqual(self.ask(b"y\n")[0], 0)
        self.assertEqual(self.listed()["s_A_1_B_Fast"], ["A,1,B,Fast"])


if __name__ == "__main__":
    support.main()
