"""No command writes over a file that it reads, or twice over the same file, however the file is spelled.

Which verbs there are, and what becomes of each of their paths, the workbench tells itself (qxbackground --describe): a
verb that is added later is tried without a change here."""
import itertools
import json
import os
import shutil
import subprocess
import unittest

import numpy as np

import support
from support import TOOL, ToolTest
from test_files import file_bytes

DESCRIPTION = json.loads(subprocess.run([TOOL, "--describe"], capture_output=True, text=True, check=True).stdout)
GROUPS = ("A", "B")
OLD_KEY, NEW_KEY = "A,1,B,2", "A,1,B,2,new"  # they name their group, and will do for any file
IMAGE = np.full((4, 6), 300, np.uint16)


def paths_of(verb):
    """The verb's own options that name files, and the program's."""
    return [o for o in DESCRIPTION["options"] + verb["options"] if "path" in o]


def writes(option):
    return option["path"]["use"] != "reads"


class Scene:
    """A folder with what each option of a verb needs, and the command line that works there."""

    def __init__(self, folder, verb):
        self.folder, self.verb = folder, verb
        self.places = {}  # option name: the text on the command line
        self.files = {}   # option name: the file that is read or written, relative to the folder
        for index, option in enumerate(paths_of(verb)):
            self.prepare(option, f"p{index}")

    def prepare(self, option, name):
        use, kind = option["path"]["use"], option["path"]["kind"]
        place = file = name
        correction = (OLD_KEY.encode(), 1, 100, IMAGE)
        if kind == "library":
            place = file = f"./{name}" + os.path.splitext(os.environ["QX_LIBRARY"])[1]
            shutil.copy(os.environ["QX_LIBRARY"], self.folder / file)
        elif kind == "store":
            file = f"{name}_A_1_B_2"
            if use != "creates":
                (self.folder / file).write_bytes(file_bytes([correction], 2, [g.encode() for g in GROUPS]))
        elif kind == "folder":
            file = f"{name}/simulation.json"
        elif use == "creates":
            pass
        elif kind == "image":
            support.write_tiff(self.folder / name, [IMAGE])
        elif kind == "pixels":
            (self.folder / name).write_text("size 6 4\n1 1 hot\n")
        elif kind in ("calibration", "calibration or store"):
            (self.folder / name).write_bytes(file_bytes([correction]))
        else:
            raise AssertionError(f"{option['name']}: no scene for what {use} {kind}")
        self.places[option["name"]], self.files[option["name"]] = place, file

    def command(self):
        """Positionals first: an option that takes a list would swallow them."""
        builds = any("Dark frames" in o["help"] and o["positional"] for o in self.verb["options"])
        global_, named, positional = [], [], []
        for option in DESCRIPTION["options"] + self.verb["options"]:
            name = option["name"]
            if "path" in option:
                words = [self.places[name]]
            elif name == "--overwrite":
                named.append(name)
                continue
            elif name == "--group":
                words = []
                named += [word for group in GROUPS for word in ("--group", group)]
                continue
            elif name == "--key":
                words = [NEW_KEY if builds else OLD_KEY]
            elif name == "new-key":
                words = [NEW_KEY]
            elif name.endswith("exposure") and "headers say it" in option["help"]:  # which the files of the scene do not
                words = ["1"]
            elif not option["required"]:
                continue
            elif option["choices"]:
                words = option["choices"][:1]
            elif option["type"] == "number":
                words = ["1"]
            else:
                raise AssertionError(f"{name}: no value for it")
            if option["positional"]:
                positional += words
            elif option in DESCRIPTION["options"]:
                global_ += [name, *words]
            else:
                named += [name, *words]
        return [*global_, *self.verb["verb"], *positional, *named]


class Crossed(ToolTest):
    """Every path that is written, laid upon every other path of its command."""

    def scene(self, verb):
        shutil.rmtree(self.folder)
        self.folder.mkdir()
        (self.folder / "sub").mkdir()
        return Scene(self.folder, verb)

    def run_in(self, scene):
        return self.run_tool(*scene.command())

    def test_the_scenes_are_good(self):
        """Each command works where nothing is laid upon anything; otherwise the refusals below would mean nothing."""
        for verb in DESCRIPTION["verbs"]:
            with self.subTest(verb=verb["verb"]):
                scene = self.scene(verb)
                result = self.run_in(scene)
                self.assertEqual(result.returncode, 0, f"{scene.command()}: {result.stderr}")

    def spell(self, scene, written, other, how):
        """Makes the written path lead to the other's file. False where there is no such way."""
        file = self.folder / scene.files[other["name"]]
        target = self.folder / scene.files[written["name"]]
        kind = written["path"]["kind"]
        if how in ("hard link", "symbolic link"):
            if not file.exists():
                return False
            target.parent.mkdir(exist_ok=True)
            if target.exists():
                target.unlink()
            if how == "hard link":
                os.link(file, target)
            else:
                target.symlink_to(os.path.relpath(file, target.parent))
            return True
        if kind == "folder":
            return False  # its files have names of their own
        if kind == "store":
            if other["path"]["kind"] in ("store", "calibration or store"):
                # Both name the same store: the one that is there, or else the one that is read.
                kept, moved = (other, written) if other["path"]["kind"] == "store" else (written, other)
                base = scene.places[kept["name"]]
                scene.places[moved["name"]] = base if how == "same name" else f"sub/../{base}"
                return True
            # The other path gets a name of the store.
            name = scene.files[other["name"]]
            if target.exists():
                target.unlink()
            if (self.folder / name).exists():
                (self.folder / name).rename(target)
            spelled = scene.files[written["name"]]
            scene.places[other["name"]] = f"./{spelled}" if how == "same name" else f"sub/../{spelled}"
            return True
        spelled = scene.files[other["name"]]
        if target.exists() and target != file:
            target.unlink()
        scene.places[written["name"]] = {"same name": spelled, "another spelling": f"sub/../{spelled}"}[how]
        return True

    def test_every_written_path_upon_every_other(self):
        tried = {}
        for verb in DESCRIPTION["verbs"]:
            options = paths_of(verb)
            for written, other in itertools.product(options, options):
                if written is other or not writes(written):
                    continue
                for how in ("same name", "another spelling", "hard link", "symbolic link"):
                    scene = self.scene(verb)
                    if not self.spell(scene, written, other, how):
                        continue
                    with self.subTest(verb=" ".join(verb["verb"]), written=written["name"], upon=other["name"], how=how):
                        before = self.contents()
                        result = self.run_in(scene)
                        self.assertEqual(self.contents(), before, "a file was lost")
                        self.assertEqual(result.returncode, 2, scene.command())
                        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
                        self.assertRegex(result.stderr, "choose another name", scene.command())
                    name = " ".join(verb["verb"])
                    tried[name] = tried.get(name, 0) + 1
        print("paths laid upon one another:", tried)
        changing = {" ".join(v["verb"]) for v in DESCRIPTION["verbs"] if any(map(writes, paths_of(v)))}
        self.assertEqual(set(tried), changing)

    def test_existing_files_stay_without_overwrite(self):
        tried = 0
        for verb in DESCRIPTION["verbs"]:
            for written in paths_of(verb):
                if written["path"]["use"] != "creates":
                    continue
                scene = self.scene(verb)
                target = self.folder / scene.files[written["name"]]
                target.parent.mkdir(exist_ok=True)
                target.write_bytes(file_bytes([], 2, [g.encode() for g in GROUPS]))
                with self.subTest(verb=" ".join(verb["verb"]), written=written["name"]):
                    command = scene.command()
                    command.remove("--overwrite")
                    before = self.contents()
                    result = self.run_tool(*command)
                    self.assertEqual((result.returncode, self.contents()), (2, before), result.stderr)
                    self.assertIn("--overwrite replaces it", result.stderr)
                    self.assertEqual(result.stderr.count("\n"), 1)
                    target.chmod(0o444)
                    result = self.run_in(scene)
                    self.assertEqual((result.returncode, self.contents()), (2, before), result.stderr)
                    self.assertIn("write-protected", result.stderr)
                    target.chmod(0o644)
                    self.assertEqual(self.run_in(scene).returncode, 0)
                tried += 1
        self.assertGreaterEqual(tried, 8)

    def test_what_is_changed_may_be_protected(self):
        for verb in DESCRIPTION["verbs"]:
            for changed in paths_of(verb):
                if changed["path"]["use"] != "changes":
                    continue
                with self.subTest(verb=" ".join(verb["verb"])):
                    scene = self.scene(verb)
                    target = self.folder / scene.files[changed["name"]]
                    target.chmod(0o444)
                    before = self.contents()
                    result = self.run_in(scene)
                    self.assertEqual((result.returncode, self.contents()), (2, before), result.stderr)
                    self.assertIn("write-protected", result.stderr)


class SomeMore(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("d.tif", [IMAGE])
        (self.folder / "c.qxb").write_bytes(file_bytes([(b"d", 1, 100, IMAGE)]))
        for group in ("2", "3"):
            (self.folder / f"cam_Gain_{group}").write_bytes(
                file_bytes([(b"Gain," + group.encode(), 1, 100, IMAGE)], 2, [b"Gain"]))
        self.correct = ["correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 1, "--exposure", 1,
                        "--intensity", 1, "d.tif"]

    def test_outputs_behind_links_to_files_that_are_not_there_yet(self):
        (self.folder / "link.tif").symlink_to("o.tif")
        self.refused(*self.correct, "-o", "link.tif", "--picture", "o.tif", says=["as well", "choose another name"])

    def test_two_files_of_a_simulation_that_are_one(self):
        (self.folder / "s").mkdir()
        (self.folder / "s" / "dark_1s.tif").write_bytes(b"precious")
        os.link(self.folder / "s" / "dark_1s.tif", self.folder / "s" / "light_1s.tif")
        self.refused("simulate", "-o", "s", "--width", 8, "--height", 8, "--exposure", 1, "--overwrite",
                     says=["light_1s.tif", "choose another name"])

    def test_pictures_upon_any_group_of_a_store_there_or_not(self):
        apply = ["store", "apply", "cam", "--group", "Gain", "--key", "Gain,2", "--exposure", 1, "--intensity", 1,
                 "d.tif", "--overwrite"]
        for name in ("cam_Gain_2", "cam_Gain_3", "./cam_Gain_77", str(self.folder / "cam_Gain_3")):
            self.refused(*apply, "-o", "o.tif", "--picture", name, says=[name, "store cam", "another name"]
                         if "77" in name else [name, "another name"])
            self.refused(*apply, "-o", name, says=[name, "another name"])

    def test_the_folder_of_a_simulation_is_made_when_nothing_is_in_the_way(self):
        self.tool("simulate", "-o", "new/deep", "--width", 8, "--height", 8, "--exposure", 1)
        self.assertTrue((self.folder / "new/deep/simulation.json").exists())

    def test_a_file_that_appears_while_the_command_runs_stays(self):
        """The name is free when the command starts and taken when the output is whole."""
        self.write("many.tif", self.images(1, 300, 300) * 300)
        self.write("d300.tif", self.images(1, 300, 300))
        command = ["correct", "--dark", "d300.tif", *self.correct[3:-1], "many.tif", "-o", "o.tif"]
        process = subprocess.Popen([TOOL, *map(str, command)], cwd=self.folder, stderr=subprocess.PIPE, text=True)
        support.wait_for(lambda: support.works_on_a_file(process))
        (self.folder / "o.tif").write_bytes(b"another's")
        error = process.communicate()[1]
        self.assertEqual(process.returncode, 2, error)
        self.assertIn("exists by now", error)
        self.assertEqual((self.folder / "o.tif").read_bytes(), b"another's")


if __name__ == "__main__":
    support.main()
