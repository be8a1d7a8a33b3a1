"""Many workbenches at once, killed ones among them: no correction is lost, no reader sees half a file."""
import json
import os
import random
import signal
import subprocess
import threading
import time

import numpy as np

import support
from support import TOOL, ToolTest
from test_files import file_bytes

SHIM = os.environ["QX_POOR_FOLDER_LIBRARY"]
AT_A_TIME = 12
# Under the sanitizers, where a start takes seven times as long, fewer rounds walk the same paths: how often a race is run
# is what the other build shows.
MANY = 25 if support.SANITIZED else 100
KILLED_PARTS = 3 if support.SANITIZED else 10
KILLED_IN_STORE = 24 if support.SANITIZED else 80


class ParallelTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("d.tif", [np.full((3, 4), 500, np.uint16)])

    def start(self, *arguments, **environment):
        return subprocess.Popen([TOOL, *map(str, arguments)], cwd=self.folder, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True, env={**os.environ, **environment})

    def build(self, key, name="c.qxb", darks="d.tif"):
        return ["build", name, "--key", key, "--exposure", 1, "--intensity", 100, darks]

    def add(self, key):
        return ["store", "add", "s", "--group", "A", "--key", key, "--exposure", 1, "--intensity", 100, "d.tif"]

    def run_all(self, commands, at_a_time=AT_A_TIME, **environment):
        """All commands, some at a time; their (status, error) in order."""
        results, waiting, lock = [None] * len(commands), list(enumerate(commands)), threading.Lock()

        def work():
            while True:
                with lock:
                    if not waiting:
                        return
                    index, command = waiting.pop()
                process = self.start(*command, **environment)
                results[index] = (process.communicate()[1], process.returncode)[::-1]
        threads = [threading.Thread(target=work) for _ in range(at_a_time)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        return results

    def watch(self, commands):
        """Runs readers until the with block ends, then gives the failures and how many ran."""
        test, stop, failures, count = self, threading.Event(), [], [0]

        class Watch:
            def __enter__(self):
                def work():
                    while not stop.is_set():
                        for command in commands:
                            result = test.run_tool(*command)
                            count[0] += 1
                            if result.returncode != 0:
                                failures.append((command, result.stdout[-300:], result.stderr))
                self.thread = threading.Thread(target=work)
                self.thread.start()
                return failures, count

            def __exit__(self, *_):
                stop.set()
                self.thread.join()
        return Watch()

    def keys(self, name="c.qxb"):
        return [c["key"] for c in json.loads(self.tool("list", name, "--json"))["corrections"]]

    def hidden(self):
        return sorted(p.name for p in self.folder.iterdir() if p.name.startswith("."))


class Locks(ParallelTest):
    def test_many_builds_into_one_file_and_readers_beside(self):
        self.tool(*self.build("first"))
        readers = [["list", "c.qxb", "--json"], ["check", "c.qxb"], ["show", "c.qxb", "--key", "first"]]
        with self.watch(readers) as (failures, count):
            results = self.run_all([self.build(f"k{n}") for n in range(MANY)])
        self.assertEqual({status for status, _ in results}, {0}, results)
        self.assertEqual(sorted(self.keys()), sorted(["first", *(f"k{n}" for n in range(MANY))]))
        self.assertEqual(failures, [])
        self.assertGreater(count[0], MANY // 10)
        self.assertEqual(self.hidden(), [])

    def test_many_adds_to_one_group_and_readers_beside(self):
        self.tool(*self.add("A,1,first"))
        readers = [["store", "list", "s", "--group", "A"], ["check", "s_A_1"]]
        with self.watch(readers) as (failures, count):
            results = self.run_all([self.add(f"A,1,k{n}") for n in range(MANY)])
        self.assertEqual({status for status, _ in results}, {0}, results)
        listed = json.loads(self.tool("store", "list", "s", "--group", "A", "--json"))["groups"]
        self.assertEqual([len(group["corrections"]) for group in listed], [MANY + 1])
        self.assertEqual(failures, [])
        self.assertGreater(count[0], MANY // 10)
        self.assertEqual(self.hidden(), [])

    def test_builds_deletes_and_imports_by_many_names_of_one_file(self):
        """A link, another spelling and an absolute path lock the same."""
        (self.folder / "sub").mkdir()
        (self.folder / "sub" / "link.qxb").symlink_to("../c.qxb")
        names = ["c.qxb", "sub/../c.qxb", "sub/link.qxb", str(self.folder / "c.qxb")]
        (self.folder / "src.qxb").write_bytes(file_bytes([(b"i", 1, 1, np.ones((2, 2)))]))
        self.run_all([self.build(f"d{n}") for n in range(10)])
        commands = [["delete", names[n % 4], "--key", f"d{n}"] for n in range(10)]
        commands += [self.build(f"k{n}", names[n % 4]) for n in range(20)]
        commands.append(["import", names[2], "src.qxb"])
        results = self.run_all(commands)
        self.assertEqual({status for status, _ in results}, {0}, results)
        self.assertEqual(sorted(self.keys()), sorted(["i", *(f"k{n}" for n in range(20))]))
        self.assertTrue((self.folder / "sub" / "link.qxb").is_symlink())

    def pause(self, key, **environment):
        """A build that has written everything and waits before its file takes the old one's place."""
        process = self.start(*self.build(key), LD_PRELOAD=SHIM, QX_PAUSE_AT_FLUSH=str(self.folder / "pause"),
                             **environment)
        support.wait_for((self.folder / "pause").exists)
        return process

    def test_who_waits_says_so_after_a_second(self):
        first = self.pause("one")
        second = self.start(*self.build("two"))
        self.assertIn("waiting for another process that is changing c.qxb", second.stderr.readline())
        (self.folder / "pause").unlink()
        self.assertEqual((first.wait(), second.wait()), (0, 0))
        self.assertEqual(self.keys(), ["one", "two"])
        for process in (first, second):
            process.communicate()

    def test_who_waits_can_be_interrupted(self):
        first = self.pause("one")
        second = self.start(*self.build("two"))
        second.stderr.readline()
        second.send_signal(signal.SIGINT)
        self.assertEqual(second.wait(), 2)
        second.communicate()
        self.assertEqual(self.hidden(), [".c.qxb.qxbackground-lock"])  # the first one's
        (self.folder / "pause").unlink()
        first.communicate()
        self.assertEqual((first.returncode, self.keys(), self.hidden()), (0, ["one"], []))

    def test_a_killed_process_gives_its_lock_up(self):
        first = self.pause("one")
        first.kill()
        first.communicate()
        (self.folder / "pause").unlink()
        start = time.monotonic()
        self.tool(*self.build("two"))
        self.assertLess(time.monotonic() - start, 30)
        self.assertEqual((self.keys(), self.hidden()), (["two"], []))

    def test_a_change_without_the_lock_is_noticed_and_not_undone(self):
        """Another host saves in place, or the folder cannot lock."""
        for environment in ({}, {"QX_POOR_FOLDER": "nolock"}, {"QX_POOR_FOLDER": "nolock noname"}):
            for before in (None, file_bytes([(b"old", 1, 1, np.ones((2, 2)))])):
                with self.subTest(environment=environment, exists=before is not None):
                    (self.folder / "c.qxb").unlink(missing_ok=True)
                    if before is not None:
                        (self.folder / "c.qxb").write_bytes(before)
                    process = self.pause("one", **environment)
                    other = file_bytes([(b"other", 2, 2, np.ones((3, 2)))])
                    (self.folder / "c.qxb").write_bytes(other)
                    (self.folder / "pause").unlink()
                    error = process.communicate()[1]
                    self.assertEqual(process.returncode, 2)
                    self.assertIn("c.qxb: was changed by another process meanwhile", error)
                    self.assertEqual(((self.folder / "c.qxb").read_bytes(), self.hidden()), (other, []))

    def test_a_group_changed_without_the_lock_is_noticed(self):
        self.tool(*self.add("A,1"))
        process = self.start(*self.add("A,1,x"), LD_PRELOAD=SHIM, QX_PAUSE_AT_FLUSH=str(self.folder / "pause"))
        support.wait_for((self.folder / "pause").exists)
        other = file_bytes([(b"A,1,other", 2, 2, np.ones((3, 2)))], 2, [b"A"])
        (self.folder / "s_A_1").write_bytes(other)
        (self.folder / "pause").unlink()
        self.assertIn("s_A_1: was changed by another process", process.communicate()[1])
        self.assertEqual(process.returncode, 2)
        self.assertEqual(((self.folder / "s_A_1").read_bytes(), self.hidden()), (other, []))

    def test_a_folder_that_cannot_lock_loses_nothing_that_was_reported(self):
        results = self.run_all([self.build(f"k{n}") for n in range(6)], at_a_time=1, LD_PRELOAD=SHIM,
                               QX_POOR_FOLDER="nolock")
        self.assertEqual({status for status, _ in results}, {0}, results)
        self.assertEqual((len(self.keys()), self.hidden()), (6, []))

    def test_a_stale_lock_file_of_whatever_rights_is_no_lock(self):
        (self.folder / ".c.qxb.qxbackground-lock").write_bytes(b"")
        (self.folder / ".c.qxb.qxbackground-lock").chmod(0o444)
        self.tool(*self.build("one"))
        self.assertEqual(self.hidden(), [])

    def test_names_as_long_as_file_systems_take(self):
        name = "c" * 251 + ".qxb"
        self.tool(*self.build("one", name))
        self.tool(*self.build("two", name))
        self.assertEqual((self.keys(name), self.hidden()), (["one", "two"], []))


class Killed(ParallelTest):
    """SIGKILL at random times: old or new, whole, and nothing in the way of the next one."""

    def kill_at_random(self, commands, check, times, seconds):
        generator = random.Random(11)
        killed = finished = 0
        for number in range(times):
            process = self.start(*commands(number))
            time.sleep(generator.random() * seconds)
            process.kill()
            process.communicate()
            killed += process.returncode == -signal.SIGKILL
            finished += process.returncode == 0
            seconds *= 0.9 if process.returncode == 0 else 1.05  # the first one may have been slow
            check()
        print(f"killed {killed} of {times}, {finished} had ended")
        return killed, seconds

    def duration(self, command):
        start = time.monotonic()
        self.tool(*command)
        return time.monotonic() - start

    def test_builds(self):
        self.write("big.tif", self.images(4, 300, 200))
        seconds = 1.1 * self.duration(self.build("first", darks="big.tif"))
        before = 1

        def check():
            nonlocal before
            self.assertIn("loads whole", self.tool("check", "c.qxb"))
            count = len(self.keys())
            self.assertIn(count, (before, before + 1))
            before = count
        all_killed = 0
        for part in range(KILLED_PARTS):
            killed, seconds = self.kill_at_random(
                lambda number: self.build(f"{part}-{number}", darks="big.tif"), check, 12, seconds)
            all_killed += killed
            for key in self.keys()[1:]:  # small again, or the file grows and the kills come too early
                self.tool("delete", "c.qxb", "--key", key)
            before = 1
        self.assertGreater(all_killed, 12 * KILLED_PARTS // 10)  # on a busy machine many come too late
        self.tool(*self.build("last"))  # clears away what the killed ones left
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["big.tif", "c.qxb", "c.qxb.json", "d.tif"])

    def test_the_store(self):
        seconds = 1.1 * self.duration(self.add("A,1"))
        before = 1

        def check():
            nonlocal before
            listed = json.loads(self.tool("store", "list", "s", "--group", "A", "--json"))["groups"]
            count = sum(len(group["corrections"]) for group in listed)
            self.assertIn(count, (before, before + 1))
            before = count
        killed, _ = self.kill_at_random(lambda number: self.add(f"A,1,{number}"), check, KILLED_IN_STORE, seconds)
        self.assertGreater(killed, KILLED_IN_STORE // 10)
        self.tool("check", "s_A_1")
        self.tool(*self.add("A,1,last"))
        self.assertEqual(self.hidden(), [])


if __name__ == "__main__":
    support.main()
