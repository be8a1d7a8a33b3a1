"""What is recorded beside calibration files: all that a correction was built from, in step with the file; check says in
what it is not true; and nothing ever depends on it."""
import hashlib
import json
import os
import shutil

import numpy as np

import support
from support import not_under_wine
from test_files import FileTest, file_bytes

CONDITIONS = ["--exposure", 0.1, "--intensity", 50]
DATE = {"SOURCE_DATE_EPOCH": "1700000000"}
GROUP = ("--group", "A")


class ProvenanceTest(FileTest):
    def setUp(self):
        super().setUp()
        os.environ.update(DATE)
        self.addCleanup(os.environ.pop, "SOURCE_DATE_EPOCH")
        (self.folder / "darks").mkdir()
        self.write("darks/a.tif", self.images(2, 12, 10, 900, 1100))
        self.write("darks/b.tif", self.images(3, 12, 10, 900, 1100))

    def record(self, name="c.qxb.json"):
        return json.loads((self.folder / name).read_text(encoding="utf-8"))

    def entries(self, name="c.qxb.json"):
        return {entry["key"]: entry for entry in self.record(name)["corrections"]}

    def file_of(self, name):
        data = (self.folder / name).read_bytes()
        return {"name": name, "bytes": len(data), "sha256": hashlib.sha256(data).hexdigest()}

    def build_from_folder(self, key, name="c.qxb", *more):
        return self.tool("build", name, "--key", key, *CONDITIONS, "darks", *more)

    def add(self, key, base="s", *more):
        return self.tool("store", "add", base, *GROUP, "--key", key, *CONDITIONS, "darks", *more)

    def check(self, *names, status=0):
        """What is said of the record, one line each, without the record's name."""
        lines = self.tool("check", *names, status=status).splitlines()
        return [line.split(".json: ", 1)[1] for line in lines if ".json: " in line]


class Recorded(ProvenanceTest):
    def test_everything_that_a_correction_was_built_from(self):
        self.write("bias.tif", self.images(4, 12, 10, 80, 120))
        said = self.build_from_folder("60 s", "c.qxb", "--reject", "sigma:2.5,4", "--combine", "median", "--bias",
                                      "bias.tif")
        self.assertIn("Recorded in c.qxb.json", said)
        pixels = (self.folder / "c.qxb").read_bytes()[-240:]
        record = self.record()
        entry = record["corrections"][0]
        built = entry.pop("built")
        self.assertEqual(record, {"format": "qxbackground-provenance", "version": 1, "corrections": [
            {"key": "60 s", "width": 12, "height": 10, "exposureSeconds": 0.1, "lightIntensityPercent": 50,
             "pixelsSha256": hashlib.sha256(pixels).hexdigest()}]})
        self.assertEqual(built.pop("hotPixels").keys(), {"sigma", "hot", "dead"})
        self.assertTrue(built.pop("tool").startswith("qxbackground "))
        self.assertIn("Rejected", built["notes"][0])
        self.assertIn("the average of 4 bias frames", built.pop("notes")[-1])
        self.assertEqual(built, {"date": "2023-11-14T22:13:20Z", "combine": "median", "reject": "sigma:2.5,4",
                                 "darks": {"frames": 5, "files": [self.file_of(f"darks/{name}.tif") for name in "ab"]},
                                 "bias": {"frames": 4, "files": [self.file_of("bias.tif")]}, "warnings": []})
        self.assertEqual(self.check("c.qxb"), ["1 correction of 1 recorded; 3 frame files compared; nothing differs"])

    def test_the_same_command_gives_the_same_bytes(self):
        self.build_from_folder("k")
        first = (self.folder / "c.qxb.json").read_bytes()
        for name in ("c.qxb", "c.qxb.json"):
            (self.folder / name).unlink()
        self.build_from_folder("k")
        self.assertEqual((self.folder / "c.qxb.json").read_bytes(), first)

    def test_pixels_that_stand_out_and_what_looked_wrong(self):
        dark = np.full((40, 50), 1000, np.uint16)
        dark[::2] += 2
        dark[5, 5] = dark[20, 30] = 9000
        dark[30, 7] = 10
        self.write("hot.tif", [dark] * 3 + [dark + np.uint16(5000)])
        said = self.tool("build", "c.qxb", "--key", "k", *CONDITIONS, "hot.tif")
        built = self.record()["corrections"][0]["built"]
        self.assertEqual(built["hotPixels"], {"sigma": 5, "hot": 2, "dead": 1})
        self.assertEqual(["Warning: " + warning for warning in built["warnings"]],
                         [line for line in said.splitlines() if line.startswith("Warning")])
        self.assertTrue(built["warnings"])

    def test_frames_without_a_format(self):
        (self.folder / "d.raw").write_bytes(bytes(4) + self.random.bytes(2 * 6 * 5))
        self.tool("build", "c.qxb", "--key", "k", *CONDITIONS, "--raw", "6x5+4", "d.raw")
        self.assertEqual(self.record()["corrections"][0]["built"]["raw"], "6x5+4")

    def test_names_hold_when_a_tree_of_folders_is_moved(self):
        (self.folder / "night").mkdir()
        shutil.move(self.folder / "darks", self.folder / "night")
        self.tool("build", "night/c.qxb", "--key", "near", *CONDITIONS, "night/darks/a.tif")
        far = (self.folder / "night" / "darks" / "b.tif").resolve()
        self.tool("build", "night/c.qxb", "--key", "far", *CONDITIONS, far)
        names = {key: entry["built"]["darks"]["files"][0]["name"]
                 for key, entry in self.entries("night/c.qxb.json").items()}
        self.assertEqual(names["near"], "darks/a.tif")
        self.assertTrue(names["far"].endswith(far.as_posix()), names)
        shutil.move(self.folder / "night", self.folder / "day")
        self.assertEqual(self.check("day/c.qxb"),
                         ["2 corrections of 2 recorded; 1 frame file compared, 1 not found; nothing differs"])

    @not_under_wine("names are text there")
    def test_keys_that_are_no_text(self):
        key = "k\udcff"
        self.build_from_folder(key)
        self.assertIn("nothing differs", self.check("c.qxb")[0])
        self.tool("rename", "c.qxb", "--key", key, "text")
        self.assertEqual(list(self.entries()), ["text"])


class Checked(ProvenanceTest):
    def test_what_differs_is_said(self):
        for key in ("same", "pixels", "size", "exposure", "gone"):
            self.build_from_folder(key)
        self.write("other.tif", self.images(1, 12, 10, 900, 1100))
        self.tool("build", "c.qxb", "--key", "frames", *CONDITIONS, "other.tif")
        # Another program changes the file, and somebody a frame.
        image, = self.images(1, 12, 10)
        data = (self.folder / "c.qxb").read_bytes()
        each = (len(data) - 46) // 6
        same, frames = (data[46 + number * each:46 + (number + 1) * each] for number in (0, 5))
        one = file_bytes([(b"pixels", 0.1, 50, image), (b"size", 0.1, 50, image[:5]), (b"exposure", 0.3, 50, image),
                          (b"new", 1, 1, image)])
        (self.folder / "c.qxb").write_bytes(one[:42] + bytes([6, 0, 0, 0]) + same + frames + one[46:])
        (self.folder / "other.tif").write_bytes((self.folder / "other.tif").read_bytes()[:-1] + b"!")
        lines = self.check("c.qxb", status=1)
        self.assertEqual(sorted(lines), sorted([
            "'pixels': its pixels are not those that were recorded: what is recorded is not true of it",
            "'size': its size is 12 x 5 pixels, recorded is 12 x 10: what is recorded is not true of it",
            "'exposure': its exposure is 0.3 s, recorded is 0.1 s: what is recorded is not true of it",
            "'new': nothing is recorded", "'gone': is recorded, but not in c.qxb",
            f"'frames': other.tif has other content than the frame that was used (its SHA-256 differs)",
            "5 corrections of 6 recorded; 3 frame files compared"]))
        (self.folder / "other.tif").write_bytes(b"short")
        self.assertIn(f"'frames': other.tif has 5 bytes, not", "\n".join(self.check("c.qxb", status=1)))
        self.assertEqual(self.check("c.qxb", "--no-provenance"), [])

    def test_a_file_without_a_record_is_checked_as_ever(self):
        (self.folder / "c.qxb").write_bytes(file_bytes([(b"k", 1, 1, self.images(1, 3, 3)[0])]))
        self.assertEqual(self.tool("check", "c.qxb").count("\n"), 1)
        self.assertIsNone(json.loads(self.tool("check", "c.qxb", "--json"))["files"][0]["provenance"])
        self.assertIsNone(json.loads(self.tool("list", "c.qxb", "--json"))["provenance"])

    def test_the_same_as_json(self):
        built = json.loads(self.build_from_folder("k", "c.qxb", "--json"))
        self.assertEqual(built["provenance"], "c.qxb.json")
        self.assertEqual(self.listed()["provenance"], "c.qxb.json")
        self.write("darks/a.tif", self.images(1, 12, 10))
        (self.folder / "darks" / "b.tif").unlink()
        found = json.loads(self.tool("check", "c.qxb", "--json", status=1))["files"][0]
        self.assertTrue(found["whole"])
        remark, = found["provenance"].pop("remarks")
        self.assertEqual(found["provenance"], {"file": "c.qxb.json", "recorded": 1, "framesCompared": 1,
                                               "framesNotFound": 1})
        self.assertEqual((remark["key"], remark["differs"]), ("k", True))
        self.assertIn("darks/a.tif has ", remark["text"].replace("\\", "/"))
        (self.folder / "c.qxb.json").write_text("{")
        found = json.loads(self.tool("check", "c.qxb", "--json", status=1))["files"][0]["provenance"]
        self.assertIn("c.qxb.json: is damaged", found["complaint"])
        deleted = json.loads(self.tool("delete", "c.qxb", "--key", "k", "--json"))
        self.assertIsNone(deleted["provenance"])
        self.assertIn("c.qxb.json: is damaged", deleted["warnings"][0])

    def test_frames_that_are_gone_are_no_difference(self):
        self.build_from_folder("k")
        shutil.rmtree(self.folder / "darks")
        self.assertEqual(self.check("c.qxb"),
                         ["1 correction of 1 recorded; 0 frame files compared, 2 not found; nothing differs"])

    def test_a_record_that_cannot_be_read(self):
        self.build_from_folder("k")
        good = (self.folder / "c.qxb.json").read_text()
        for text, says in ((good[:200], "damaged: no JSON from byte"), ("", "damaged"), ("[1]", "something else"),
                           ('{"night": 4}', "something else"),
                           (good.replace('"version": 1', '"version": 2'), "later version"),
                           (good.replace('"bytes"', '"weight"'), "damaged: something is missing"),
                           (good.replace('"width": 12', '"width": "wide"'), "damaged: something is missing"),
                           ("[" * 100000, "damaged")):
            (self.folder / "c.qxb.json").write_text(text)
            lines = self.check("c.qxb", status=1)
            self.assertEqual(len(lines), 1, lines)
            self.assertIn(says, lines[0])


class InStep(ProvenanceTest):
    def test_rename_and_delete(self):
        for key in ("one", "two"):
            self.build_from_folder(key)
        before = self.entries()["one"]
        self.tool("rename", "c.qxb", "--key", "ONE", "first")
        self.assertEqual(self.entries()["first"], {**before, "key": "first"})
        self.tool("delete", "c.qxb", "--key", "TWO")
        self.assertEqual(list(self.entries()), ["first"])
        self.assertIn("nothing differs", self.check("c.qxb")[0])
        self.tool("delete", "c.qxb", "--key", "first")
        self.assertEqual(self.record()["corrections"], [])

    def test_import_takes_along_what_is_known(self):
        for key in ("one", "two"):
            self.build_from_folder(key)
        (self.folder / "sub").mkdir()
        self.tool("build", "sub/d.qxb", "--key", "TWO", *CONDITIONS, "darks/a.tif")
        (self.folder / "host.qxb").write_bytes(file_bytes([(b"host", 1, 1, self.images(1, 3, 3)[0])]))
        self.tool("import", "sub/d.qxb", "c.qxb")
        self.tool("import", "sub/d.qxb", "host.qxb")
        entries = self.entries("sub/d.qxb.json")
        self.assertEqual(list(entries), ["TWO", "one", "host"])
        self.assertNotIn("importedFrom", entries["TWO"])
        self.assertEqual(entries["one"]["importedFrom"], "../c.qxb")
        self.assertEqual([file["name"] for file in entries["one"]["built"]["darks"]["files"]],
                         ["../darks/a.tif", "../darks/b.tif"])
        self.assertIsNone(entries["host"]["built"])
        self.assertEqual(self.check("sub/d.qxb"), [
            "'host': copied from ../host.qxb; what it was built from is not known",
            "3 corrections of 3 recorded; 3 frame files compared; nothing differs"])
        self.tool("import", "sub/d.qxb", "c.qxb", "--overwrite")
        self.assertEqual(self.entries("sub/d.qxb.json")["two"]["importedFrom"], "../c.qxb")

    def test_salvage_takes_along_what_is_known_of_what_it_saves(self):
        for key in ("one", "two"):
            self.build_from_folder(key)
        data = (self.folder / "c.qxb").read_bytes()
        (self.folder / "c.qxb").write_bytes(data[:-1])
        self.tool("import", "d.qxb", "c.qxb", "--salvage")
        self.assertEqual(list(self.entries("d.qxb.json")), ["one"])
        self.assertIn("nothing differs", self.check("d.qxb")[0])

    def test_a_record_of_other_pixels_stays_one_of_other_pixels(self):
        """Copying and renaming make nothing true."""
        self.build_from_folder("k")
        image, = self.images(1, 12, 10)
        (self.folder / "c.qxb").write_bytes(file_bytes([(b"k", 0.1, 50, image)]))
        self.tool("rename", "c.qxb", "--key", "k", "other")
        self.tool("import", "d.qxb", "c.qxb")
        self.assertIn("not those that were recorded", self.check("d.qxb", status=1)[0])

    def test_no_provenance_leaves_the_record_alone(self):
        self.build_from_folder("k", "c.qxb", "--no-provenance")
        self.add("A,1", "s", "--no-provenance")
        self.assertEqual([name for name in self.contents() if name.endswith(".json")], [])
        self.build_from_folder("l")
        before = (self.folder / "c.qxb.json").read_bytes()
        for command in (["rename", "c.qxb", "--key", "l", "m"], ["delete", "c.qxb", "--key", "m"],
                        ["import", "c.qxb", "s.one"]):
            if command[0] == "import":
                (self.folder / "s.one").write_bytes(file_bytes([(b"x", 1, 1, self.images(1, 3, 3)[0])]))
            self.tool(*command, "--no-provenance")
            self.assertEqual((self.folder / "c.qxb.json").read_bytes(), before)


class Stores(ProvenanceTest):
    def test_one_record_for_a_store_that_is_no_group_file(self):
        self.add("A,1")
        self.add("A,1,more")
        self.add("A,2")
        self.assertEqual([(e["group"], e["key"]) for e in self.record("s.json")["corrections"]],
                         [("s_A_1", "A,1"), ("s_A_1", "A,1,more"), ("s_A_2", "A,2")])
        listing = json.loads(self.tool("store", "list", "s", *GROUP, "--json"))
        self.assertEqual([os.path.basename(g["file"]) for g in listing["groups"]], ["s_A_1", "s_A_2"])
        self.assertEqual(self.check("s_A_1", "s_A_2"),
                         ["2 corrections of 2 recorded; 4 frame files compared; nothing differs",
                          "1 correction of 1 recorded; 2 frame files compared; nothing differs"])
        self.tool("store", "delete", "s", *GROUP, "--key", "A,1,MORE")
        self.assertEqual(list(self.entries("s.json")), ["A,1", "A,2"])

    def test_import_and_copy(self):
        self.build_from_folder("A,1,single")
        self.add("A,1")
        self.tool("store", "import", "s", "c.qxb", *GROUP)
        self.assertEqual({key: entry.get("importedFrom") for key, entry in self.entries("s.json").items()},
                         {"A,1": None, "A,1,single": "c.qxb"})
        (self.folder / "sub").mkdir()
        self.tool("store", "copy", "s", "sub/t", *GROUP)
        entries = self.entries("sub/t.json")
        self.assertEqual({entry["group"] for entry in entries.values()}, {"t_A_1"})
        self.assertEqual(entries["A,1"]["importedFrom"], "../s")
        self.assertEqual(self.check("sub/t_A_1"),
                         ["2 corrections of 2 recorded; 4 frame files compared; nothing differs"])
        self.add("A,9", "sub/t")
        self.tool("store", "import", "u", "sub/t", "--group", "A")
        self.assertEqual(sorted(self.entries("u.json")), ["A,1", "A,1,single", "A,9"])
        self.tool("store", "copy", "s", "sub/t", *GROUP, "--overwrite")
        self.assertEqual(sorted(self.entries("sub/t.json")), ["A,1", "A,1,single"])


    def test_rename_and_export(self):
        self.add("A,1")
        self.add("A,1,more")
        self.tool("store", "rename", "s", *GROUP, "--key", "A,1,more", "A,2")
        self.assertEqual([(e["group"], e["key"]) for e in self.record("s.json")["corrections"]],
                         [("s_A_1", "A,1"), ("s_A_2", "A,2")])
        self.assertIn("nothing differs", self.check("s_A_2")[0])
        self.tool("store", "export", "s", *GROUP, "-o", "one.qxb")
        entries = self.entries("one.qxb.json")
        self.assertEqual({key: entry["importedFrom"] for key, entry in entries.items()}, {"A,1": "s", "A,2": "s"})
        self.assertNotIn("group", entries["A,1"])
        self.assertEqual(self.check("one.qxb"),
                         ["2 corrections of 2 recorded; 4 frame files compared; nothing differs"])
        self.tool("store", "export", "s", *GROUP, "--key", "A,2", "-o", "one.qxb", "--overwrite")
        self.assertEqual(list(self.entries("one.qxb.json")), ["A,2"])


class Harmless(ProvenanceTest):
    def test_what_cannot_be_recorded_is_said_and_stops_nothing(self):
        self.build_from_folder("k")
        good = (self.folder / "c.qxb.json").read_text()
        for number, (text, says) in enumerate([("{", "is damaged"), ('{"mine": 1}', "something else"),
                                               (good.replace('"version": 1', '"version": 9'), "later version"),
                                               (None, "no file"), (good, "write-protected")]):
            path = self.folder / "c.qxb.json"
            if path.exists():
                path.chmod(0o600)
                path.unlink()
            if text is None:
                path.mkdir()
            else:
                path.write_text(text)
                if says == "write-protected":
                    path.chmod(0o400)
            for command in (["build", "c.qxb", "--key", f"n{number}", *CONDITIONS, "darks"],
                            ["rename", "c.qxb", "--key", f"n{number}", f"r{number}"],
                            ["import", "c.qxb", "other.qxb", "--overwrite"],
                            ["delete", "c.qxb", "--key", f"r{number}"]):
                if command[0] == "import":
                    (self.folder / "other.qxb").write_bytes(file_bytes([(b"x", 1, 1, self.images(1, 3, 3)[0])]))
                said = self.tool(*command)
                # Where nothing was recorded of the key, there is nothing to be changed.
                if not (says == "write-protected" and command[0] in ("rename", "delete")):
                    self.assertRegex(said, f"Warning: c.qxb.json: .*{says}.*; what was done here is not recorded")
            self.assertEqual(self.keys(), ["k", "x"])
            if text is None:
                path.rmdir()
            else:
                self.assertEqual(path.read_text(), text)
        self.assertEqual([name for name in self.contents() if name.startswith(".")], [])

    def test_no_command_writes_it_over_another_path(self):
        self.build_from_folder("k")
        shutil.copy(self.folder / "darks" / "a.tif", self.folder / "d.qxb.json")
        self.refused("build", "d.qxb", "--key", "n", *CONDITIONS, "d.qxb.json",
                     says=["d.qxb.json", "is an input as well", "choose another name"])
        self.refused("export", "c.qxb", "--key", "k", "-o", "c.qxb.json", "--overwrite", says=["is an input as well"])
        self.refused("import", "c.qxb.json", "c.qxb", says=["c.qxb.json"])

    def test_a_link_leads_to_the_record_of_its_file(self):
        (self.folder / "sub").mkdir()
        self.build_from_folder("k", "sub/c.qxb")
        try:
            (self.folder / "link.qxb").symlink_to("sub/c.qxb")
        except OSError:
            self.skipTest("no links here")
        self.build_from_folder("l", "link.qxb")
        self.assertEqual(list(self.entries("sub/c.qxb.json")), ["k", "l"])
        self.assertFalse((self.folder / "link.qxb.json").exists())


if __name__ == "__main__":
    support.main()
