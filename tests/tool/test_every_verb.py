"""What every verb does on a full disk, on one that cannot be written, when it is interrupted at whatever moment, and when
two do the same at once. Which verbs there are, and which files they write, the workbench tells itself: see test_paths."""
import hashlib
import random
import re
import shutil
import signal
import subprocess
import time

import support
from support import TOOL, ToolTest
from test_paths import DESCRIPTION, Scene, paths_of, writes

# Runs a command on a disk of its own that holds what lies in ./fill; what became of that lies in ./after then.
ON_DISK = ["unshare", "--user", "--map-root-user", "--mount", "sh", "-c",
           'mount -t tmpfs -o size=8m none disk && cp -a fill/. disk/ && cd disk || exit 99; eval "$0"; "$@"; s=$?; '
           'rm -rf ../after; cp -a . ../after; exit $s']
FULL = "cat /dev/zero >filler 2>../filled; rm ../filled"
READ_ONLY = "mount -o remount,ro ."


# Reports and records say when they were made.
WHEN = re.compile(rb"20\d\d-\d\d-\d\d[T ]\d\d:\d\d(:\d\d)?")


class EveryVerb(ToolTest):
    def writing(self):
        """The verbs that write something, by their names."""
        return [(" ".join(verb["verb"]), verb) for verb in DESCRIPTION["verbs"] if any(map(writes, paths_of(verb)))]

    def scene(self, verb):
        """A fresh folder with all that the verb needs."""
        shutil.rmtree(self.folder)
        (self.folder / "fill" / "sub").mkdir(parents=True)
        (self.folder / "disk").mkdir()
        return Scene(self.folder / "fill", verb)

    def tree(self, folder="fill"):
        """A digest of each file but for dates, and None for each folder."""
        found = {}
        for path in (self.folder / folder).rglob("*"):
            if path.name != "filler":
                found[str(path.relative_to(self.folder / folder))] = (
                    hashlib.sha256(WHEN.sub(b"", path.read_bytes())).hexdigest() if path.is_file() else None)
        return found

    def start(self, scene):
        return subprocess.Popen([TOOL, *scene.command()], cwd=scene.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                text=True)

    def done(self, verb):
        """What the folder looks like when the verb has run, and how long that took."""
        start = time.monotonic()
        process = self.start(self.scene(verb))
        self.assertEqual(process.communicate()[1], "")
        return self.tree(), time.monotonic() - start

    def on_disk(self, prepare, says):
        self.scene(DESCRIPTION["verbs"][0])
        if subprocess.run([*ON_DISK, prepare, "true"], cwd=self.folder, capture_output=True).returncode != 0:
            self.skipTest("no file system can be mounted here")
        for name, verb in self.writing():
            with self.subTest(verb=name):
                scene = self.scene(verb)
                result = subprocess.run([*ON_DISK, prepare, TOOL, *scene.command()], cwd=self.folder, text=True,
                                        capture_output=True)
                self.assertEqual((result.returncode, result.stderr.count("\n")), (2, 1), result.stdout + result.stderr)
                self.assertIn(says, result.stderr)
                named = [scene.places[option["name"]] for option in paths_of(verb) if writes(option)]
                self.assertTrue(any(text in result.stderr for text in named), f"{result.stderr} names none of {named}")
                self.assertEqual(self.tree("after"), self.tree())

    def test_a_full_disk_costs_nothing(self):
        self.on_disk(FULL, "No space left on device")

    def test_a_disk_that_cannot_be_written(self):
        self.on_disk(READ_ONLY, "Read-only file system")

    def test_an_interrupt_leaves_all_or_nothing(self):
        generator, ended = random.Random(5), {}
        for name, verb in self.writing():
            done, seconds = self.done(verb)
            for _ in range(3):
                with self.subTest(verb=name):
                    scene = self.scene(verb)
                    before = self.tree()
                    process = self.start(scene)
                    time.sleep(generator.random() * 0.7 * seconds)
                    process.send_signal(signal.SIGINT)
                    error = process.communicate()[1]
                    ended[process.returncode] = ended.get(process.returncode, 0) + 1
                    after = self.tree()
                    if process.returncode == 0:  # it came too late
                        self.assertEqual((after, error), (done, ""))
                        continue
                    if process.returncode == 2:
                        self.assertEqual(error.count("\n"), 1, error)
                        self.assertIn("interrupted", error)
                    else:  # before the program had begun
                        self.assertEqual(process.returncode, -signal.SIGINT, error)
                    if name == "simulate":  # of its many files those that were whole stay
                        self.assertLessEqual(after.items(), done.items())
                    else:
                        self.assertEqual(after, before)
        print("interrupted, by exit status:", ended)

    def test_two_at_once_are_as_good_as_one(self):
        for name, verb in self.writing():
            with self.subTest(verb=name):
                done, _ = self.done(verb)
                scene = self.scene(verb)
                processes = [self.start(scene) for _ in range(2)]
                errors = [process.communicate()[1] for process in processes]
                statuses = sorted(process.returncode for process in processes)
                self.assertIn(statuses, ([0, 0], [0, 2]), errors)  # the second one may find its work done
                for error in errors:
                    self.assertLessEqual(error.count("\n"), 1, error)
                self.assertEqual(self.tree(), done)


if __name__ == "__main__":
    support.main()
