"""The store verbs: group files as the format says, nothing lost, and nothing removed that is not the store's own."""
import json
import os
import resource
import signal

import numpy as np

import support
from support import ToolTest
from test_files import file_bytes

GROUPS = ("--group", "A", "--group", "B")


class StoreTest(ToolTest):
    def add(self, key, base="s", groups=GROUPS, value=None, exposure=1.0):
        """A correction whose pixels are all `value`."""
        image = np.full((3, 4), 500 if value is None else value, np.uint16)
        self.write("dark.tif", [image])
        self.tool("store", "add", base, *groups, "--key", key, "--exposure", exposure, "--intensity", 100, "dark.tif")
        (self.folder / "dark.tif").unlink()
        return image

    def group_bytes(self, *corrections, names=(b"A", b"B")):
        return file_bytes([(key.encode(), exposure, 100, image) for key, exposure, image in corrections], 2, names)

    def files(self):
        """All but the records of what corrections were built from, which are no files of a store."""
        return sorted(str(p.relative_to(self.folder)) for p in self.folder.rglob("*") if p.suffix != ".json")

    def listed(self, base="s", groups=GROUPS):
        listing = json.loads(self.tool("store", "list", base, *groups, "--json"))
        return {os.path.basename(g["file"].replace("\\", "/")): [c["key"] for c in g["corrections"]] for g in listing["groups"]}


class Groups(StoreTest):
    def test_files_are_byte_for_byte_the_format(self):
        one = self.add("A,1,B,2", exposure=0.5)
        two = self.add("B,2,A,1,flat", value=700)
        three = self.add("A,1,B,3", value=900)
        self.assertEqual(self.files(), ["s_A_1_B_2", "s_A_1_B_3"])
        self.assertEqual((self.folder / "s_A_1_B_2").read_bytes(),
                         self.group_bytes(("A,1,B,2", 0.5, one), ("B,2,A,1,flat", 1, two)))
        self.assertEqual((self.folder / "s_A_1_B_3").read_bytes(), self.group_bytes(("A,1,B,3", 1, three)))

    def test_list_by_base_and_by_any_file(self):
        for key in ("A,1,B,2", "A,1,B,3", "A,1,B,3,x"):
            self.add(key)
        expected = {"s_A_1_B_2": ["A,1,B,2"], "s_A_1_B_3": ["A,1,B,3", "A,1,B,3,x"]}
        self.assertEqual(self.listed(), expected)
        self.assertEqual(self.listed("s_A_1_B_3", ()), expected)
        self.assertIn("3 corrections in 2 files", self.tool("store", "list", "s", *GROUPS))

    def test_apply_finds_the_group_by_the_key(self):
        for value in (100, 200, 300):
            self.add(f"A,{value},B,x", value=value)
        image = self.images(2, 4, 3)
        self.write("i.tif", image)
        for base, groups in (("s", GROUPS), ("s_A_300_B_x", ())):
            self.tool("store", "apply", base, *groups, "--key", "A,200,B,x",
                      "--exposure", 2, "--intensity", 50, "--level", 50, "i.tif", "-o", "o.tif", "--overwrite")
            self.assert_same_pages(self.read("o.tif"), [np.maximum(p.astype(int) - 100, 0) for p in image])

    def test_folders_with_awkward_names(self):
        for name in ("run_A_1", "with space", "Größe", "a,b"):
            (self.folder / name).mkdir()
            self.add("A,1,B,2", f"{name}/s")
            self.add("A,2,B,2", str(self.folder / name / "s"))
            self.assertEqual(self.listed(f"{name}/s_A_1_B_2", ()), {"s_A_1_B_2": ["A,1,B,2"], "s_A_2_B_2": ["A,2,B,2"]})

    def test_delete_ignores_letter_case_and_leaves_the_other_groups_alone(self):
        self.add("A,1,B,2,Flat")
        self.add("A,1,B,2,dark")
        self.add("A,1,B,3")
        other = (self.folder / "s_A_1_B_3").read_bytes()
        self.tool("store", "delete", "s", *GROUPS, "--key", "A,1,B,2,FLAT")
        self.assertEqual(self.listed(), {"s_A_1_B_2": ["A,1,B,2,dark"], "s_A_1_B_3": ["A,1,B,3"]})
        self.assertEqual((self.folder / "s_A_1_B_3").read_bytes(), other)

    def test_import_from_files_and_stores(self):
        image = np.full((3, 4), 9, np.uint16)
        keys = ["A,1,B,1", "A,1,B,2", "A,2,B,1", "A,1,B,1,more"]
        (self.folder / "src.qxb").write_bytes(file_bytes([(k.encode(), 1, 100, image) for k in keys]))
        self.add("A,1,B,1", value=77)
        self.assertIn("3 added, 1 already there", self.tool("store", "import", "s", "src.qxb", *GROUPS))
        expected = {"s_A_1_B_1": ["A,1,B,1", "A,1,B,1,more"], "s_A_1_B_2": ["A,1,B,2"], "s_A_2_B_1": ["A,2,B,1"]}
        self.assertEqual(self.listed(), expected)
        self.assertIn(b"M\0" * 12, (self.folder / "s_A_1_B_1").read_bytes())
        self.tool("store", "import", "s", "src.qxb", *GROUPS, "--overwrite")
        self.assertNotIn(b"M\0" * 12, (self.folder / "s_A_1_B_1").read_bytes())
        before = self.contents()
        self.assertIn("4 added", self.tool("store", "import", "t", "s_A_1_B_2", *GROUPS))  # a store, by one of its files
        self.assertIn("4 added", self.tool("store", "import", "u", "s", *GROUPS))          # and by its base
        self.assertIn("4 added", self.tool("store", "import", "v", "s_A_1_B_2", "--group", "B"))  # grouped otherwise
        after = self.contents()
        for name, data in before.items():
            self.assertEqual(after[name], data)
        for name, data in before.items():
            if name.startswith("s_"):
                self.assertEqual(sorted(self.listed("t")["t" + name[1:]]), sorted(self.listed()[name]))
                self.assertEqual(after["t" + name[1:]], after["u" + name[1:]])
        self.assertEqual({k: len(v) for k, v in self.listed("v", ("--group", "B")).items()}, {"v_B_1": 3, "v_B_2": 1})


class Copy(StoreTest):
    def setUp(self):
        super().setUp()
        for key in ("A,1,B,1", "A,1,B,2", "A,2,B,1"):
            self.add(key)

    def copy(self, target, *more):
        return self.tool("store", "copy", "s", target, *GROUPS, *more)

    def test_copies_every_group_byte_for_byte(self):
        self.copy("t")
        for name in ("_A_1_B_1", "_A_1_B_2", "_A_2_B_1"):
            self.assertEqual((self.folder / ("t" + name)).read_bytes(), (self.folder / ("s" + name)).read_bytes())
        self.assertEqual(len(self.files()), 6)

    def test_replaces_a_store_of_that_name_and_says_what_goes(self):
        self.add("A,9,B,9", "t")
        self.refused("store", "copy", "s", "t", *GROUPS, says=["t: there is a store of that name", "--overwrite"])
        self.assertIn("t_A_9_B_9", self.copy("t", "--overwrite"))
        self.assertEqual(sorted(self.listed("t")), ["t_A_1_B_1", "t_A_1_B_2", "t_A_2_B_1"])

    def test_refuses_to_remove_files_of_another_store_without_force(self):
        self.add("A,9,B,9", "target2")  # the rule of base "target" claims it
        (self.folder / "targetA_A_1_B_note").write_text("a note")
        before = self.contents()
        result = self.run_tool("store", "copy", "s", "target", *GROUPS)
        self.assertEqual(result.returncode, 2)
        self.assertIn("target2_A_9_B_9   (no group file of this store)", result.stdout)
        self.assertIn("targetA_A_1_B_note   (no group file of this store)", result.stdout)
        self.assertIn("--force", result.stderr)
        self.assertEqual(self.contents(), before)
        self.copy("target", "--force")
        self.assertNotIn("target2_A_9_B_9", self.files())
        self.assertEqual(sorted(self.listed("target")), ["target_A_1_B_1", "target_A_1_B_2", "target_A_2_B_1"])

    def test_the_claims_are_those_of_the_library(self):
        """What the library lists as a store's files, the workbench lists too."""
        self.add("A,9,B,9", "sother")
        self.assertEqual(sorted(self.listed()), ["s_A_1_B_1", "s_A_1_B_2", "s_A_2_B_1", "sother_A_9_B_9"])
        self.refused("store", "copy", "s", "t", *GROUPS, says=["sother_A_9_B_9", "claimed"])

    def test_never_removes_the_store_that_is_copied(self):
        before = self.contents()
        for target in ("s", "./s", "s_A_1_B_1"):
            result = self.run_tool("store", "copy", "s", target, *GROUPS, "--force")
            self.assertEqual(result.returncode, 2)
            self.assertEqual(self.contents(), before)
        self.add("A,1,B,1", "ss")
        before = self.contents()
        result = self.run_tool("store", "copy", "ss", "s", *GROUPS, "--force")
        self.assertEqual(result.returncode, 2)
        self.assertIn("ss_A_1_B_1", result.stderr)
        self.assertEqual(self.contents(), before)

    def test_into_another_folder(self):
        (self.folder / "sub").mkdir()
        self.copy("sub/s")
        self.assertEqual((self.folder / "sub/s_A_2_B_1").read_bytes(), (self.folder / "s_A_2_B_1").read_bytes())


class Refusals(StoreTest):
    def setUp(self):
        super().setUp()
        self.add("A,1,B,2")
        self.write("d.tif", self.images(1, 4, 3))

    def refuse_add(self, says, key="A,1,B,3", base="s", groups=GROUPS, darks="d.tif"):
        self.refused("store", "add", base, *groups, "--key", key, "--exposure", 1, "--intensity", 100, darks, says=says)

    def test_of_keys_without_a_group(self):
        self.refuse_add(["s: key 'A,1'", "'B'"], key="A,1")
        self.refuse_add(["'A,,B,2'", "'B'"], key="A,,B,2")
        self.refuse_add(["'a,1,B,2'", "'A'"], key="a,1,B,2")
        for value in ("x_y", "../../x", "a\\b"):
            self.refuse_add([value], key=f"A,{value},B,2")

    def test_of_taken_and_unknown_keys_names_key_group_and_file(self):
        self.refuse_add(["s_A_1_B_2: key 'A,1,B,2'", "not unique"], key="A,1,B,2")
        self.refused("store", "delete", "s", *GROUPS, "--key", "A,1,B,2,x", says=["s_A_1_B_2: key 'A,1,B,2,x'"])
        self.refused("store", "delete", "s", *GROUPS, "--key", "A,7,B,2", says=["s_A_7_B_2", "no file"])
        self.refused("store", "apply", "s", *GROUPS, "--key", "A,7,B,2", "--exposure", 1, "--intensity", 1, "d.tif", "-o",
                     "o.tif", says=["s_A_7_B_2", "no file"])

    def test_of_bases_and_names(self):
        self.refuse_add(["--group"], groups=())
        self.refuse_add(["16 bytes"], groups=("--group", "x" * 17))
        self.refuse_add(["--group"], groups=("--group", "a_b"))
        self.refuse_add(["nofolder/s"], base="nofolder/s")
        self.refuse_add(["_A_"], base="x_A_1")
        self.refuse_add(["other grouping names"], base="s_A_1_B_2", groups=("--group", "A"))
        self.refused("store", "list", "nothing", *GROUPS, says=["nothing"])
        (self.folder / "single").write_bytes(file_bytes([]))
        self.refused("store", "list", "single", *GROUPS, says=["single calibration file"])

    def test_a_damaged_group_is_named_and_not_changed(self):
        path = self.folder / "s_A_1_B_2"
        path.write_bytes(path.read_bytes()[:-3])
        self.refuse_add(["s_A_1_B_2", "does not load whole"], key="A,1,B,2,x")
        self.refused("store", "list", "s", *GROUPS, says=["s"])
        self.refused("store", "copy", "s", "t", *GROUPS, says=["s_A_1_B_2"])
        self.refused("store", "apply", "s", *GROUPS, "--key", "A,1,B,2", "--exposure", 1, "--intensity", 1, "d.tif", "-o",
                     "o.tif", says=["s_A_1_B_2"])

    def test_an_import_that_fails_half_way_changes_nothing(self):
        image = np.full((3, 4), 9, np.uint16)
        (self.folder / "src.qxb").write_bytes(
            file_bytes([(b"A,1,B,2,n", 1, 1, image), (b"A,5,B,5", 1, 1, image), (b"no group", 1, 1, image)]))
        self.refused("store", "import", "s", "src.qxb", *GROUPS, says=["'no group'"])

    def test_a_full_disk_leaves_the_old_files(self):
        self.write("big.tif", self.images(1, 400, 300))
        before = self.contents()

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))
        for key in ("A,1,B,2,big", "A,8,B,8"):
            result = self.run_tool("store", "add", "s", *GROUPS, "--key", key, "--exposure", 1, "--intensity", 1,
                                   "big.tif", preexec_fn=limit)
            self.assertEqual(result.returncode, 2)
            self.assertEqual(self.contents(), before)


if __name__ == "__main__":
    support.main()
