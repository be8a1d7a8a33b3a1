"""However a run ends, nothing half done is left: signals, full disks, protected files and folders."""
import os
import resource
import shutil
import signal
import subprocess
import time
import unittest

import numpy as np

import support
from support import TOOL, ToolTest
from test_files import file_bytes

SHIM = os.environ["QX_POOR_FOLDER_LIBRARY"]
NAMELESS = {}
NAMED = {"LD_PRELOAD": SHIM, "QX_POOR_FOLDER": "noname"}


def small_disk(kilobytes):
    """The command in front of another one that gives it a file system of its own at ./disk, or None."""
    wrap = ["unshare", "--user", "--map-root-user", "--mount", "sh", "-c",
            f'mount -t tmpfs -o size={kilobytes}k none disk && cp fill/* disk/ 2>/dev/null; "$@"; s=$?; '
            'rm -rf after; cp -r disk after; exit $s', "sh"]
    return wrap


class EndingTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("d.tif", self.images(1, 300, 300))

    def start(self, environment, arguments=None, **how):
        if arguments is None:
            if not (self.folder / "i.tif").exists():
                self.write("i.tif", self.images(1, 300, 300) * 150)
            arguments = ["correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 1, "--exposure", 1,
                         "--intensity", 1, "i.tif", "-o", "o.tif"]
        return subprocess.Popen([TOOL, *map(str, arguments)], cwd=self.folder, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True, env={**os.environ, **environment}, **how)

    def left(self):
        return sorted(p.name for p in self.folder.iterdir())


class Signals(EndingTest):
    ALL = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT)

    def test_nothing_is_left_after_any_of_them(self):
        for environment in (NAMELESS, NAMED):
            for number in self.ALL:
                with self.subTest(signal=number, environment=environment):
                    process = self.start(environment)
                    support.wait_for(lambda: support.works_on_a_file(process))
                    process.send_signal(number)
                    error = process.communicate()[1]
                    self.assertEqual(process.returncode, 2, error)
                    self.assertIn("interrupted", error)
                    self.assertEqual(self.left(), ["d.tif", "i.tif"])

    def test_a_second_one_ends_at_once_and_leaves_nothing(self):
        """It comes while the lock is held and the file has a hidden name: the worst moment."""
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGQUIT):
            with self.subTest(signal=number):
                process = self.start({**NAMED, "QX_PAUSE_AT_FLUSH": str(self.folder / "pause")},
                                     ["build", "c.qxb", "--key", "k", "--exposure", 1, "--intensity", 1, "d.tif"])
                support.wait_for((self.folder / "pause").exists)
                self.assertEqual(self.left(), [".c.qxb.qxbackground-lock", ".c.qxb.qxbackground-new", "d.tif", "pause"])
                process.send_signal(number)
                time.sleep(0.1)  # two that come together count as one
                process.send_signal(number)
                process.communicate(timeout=30)
                self.assertEqual(process.returncode, -number)
                (self.folder / "pause").unlink()
                self.assertEqual(self.left(), ["d.tif"])

    def test_a_terminal_that_closes_may_tell_it_twice(self):
        process = self.start(NAMED)
        support.wait_for(lambda: support.works_on_a_file(process))
        process.send_signal(signal.SIGHUP)
        time.sleep(0.001)
        process.send_signal(signal.SIGHUP)
        process.communicate()
        self.assertEqual((process.returncode, self.left()), (2, ["d.tif", "i.tif"]))

    def test_what_nohup_ignores_stays_ignored(self):
        process = self.start(NAMELESS, preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        support.wait_for(lambda: support.works_on_a_file(process))
        process.send_signal(signal.SIGHUP)
        self.assertEqual((process.communicate()[1], process.returncode), ("", 0))

    def test_a_file_has_no_name_before_it_is_whole(self):
        process = self.start(NAMELESS)
        support.wait_for(lambda: support.works_on_a_file(process))
        self.assertEqual(self.left(), ["d.tif", "i.tif"])
        process.communicate()
        self.assertEqual((process.returncode, self.left()), (0, ["d.tif", "i.tif", "o.tif"]))

    def test_a_file_beyond_the_allowed_size(self):
        """SIGXFSZ would end the process at once; it is a failure of writing like any other."""
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))
        for environment in (NAMELESS, NAMED):
            for arguments in (None, ["build", "c.qxb", "--key", "k", "--exposure", 1, "--intensity", 1, "d.tif"]):
                process = self.start(environment, arguments, preexec_fn=limit)
                error = process.communicate()[1]
                self.assertEqual(process.returncode, 2, error)
                self.assertIn("cannot be written: File too large", error)
                self.assertEqual([n for n in self.left() if n not in ("d.tif", "i.tif")], [])


class FullDisks(EndingTest):
    def setUp(self):
        super().setUp()
        (self.folder / "disk").mkdir()
        (self.folder / "fill").mkdir()
        probe = subprocess.run([*small_disk(64), "true"], cwd=self.folder, capture_output=True)
        if probe.returncode != 0:
            self.skipTest("no file system can be mounted here")

    def on_disk(self, kilobytes, *arguments):
        result = subprocess.run([*small_disk(kilobytes), TOOL, *map(str, arguments)], cwd=self.folder, text=True,
                                capture_output=True)
        after = {p.name: p.read_bytes() for p in (self.folder / "after").iterdir()}
        return result, after

    def fill(self, name, data):
        (self.folder / "fill" / name).write_bytes(data)

    def refused_for_space(self, kilobytes, *arguments, names):
        before = {p.name: p.read_bytes() for p in (self.folder / "fill").iterdir()}
        result, after = self.on_disk(kilobytes, *arguments)
        self.assertEqual(result.returncode, 2, result.stdout + result.stderr)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertIn("No space left on device", result.stderr)
        self.assertNotIn(".qxbackground-", result.stderr)
        self.assertNotIn("/proc/self", result.stderr)
        for name in names:
            self.assertIn(name, result.stderr)
        self.assertEqual(after, before)

    def test_every_kind_of_output_says_so_under_the_name_that_was_given(self):
        self.fill("c.qxb", file_bytes([(b"k", 1, 1, np.ones((2, 2)))]))
        self.write("i.tif", self.images(3, 300, 300))
        build = ["--exposure", 1, "--intensity", 1, "d.tif"]
        self.refused_for_space(100, "build", "disk/c.qxb", "--key", "n", *build, names=["disk/c.qxb", "old file"])
        self.refused_for_space(100, "build", "disk/new.qxb", "--key", "n", *build, names=["disk/new.qxb"])
        self.refused_for_space(100, "correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 1,
                               "--exposure", 1, "--intensity", 1, "i.tif", "-o", "disk/o.tif", names=["disk/o.tif"])
        self.tool("build", "src.qxb", "--key", "n", *build)
        self.refused_for_space(100, "import", "disk/c.qxb", "src.qxb", names=["disk/c.qxb"])
        self.refused_for_space(40, "show", "src.qxb", "--key", "n", "-o", "disk/p.png", names=["disk/p.png"])

    def test_the_verbs_of_a_store_say_so(self):
        big = np.ones((100, 100), np.uint16)
        self.fill("s_A_1", file_bytes([(b"A,1", 1, 1, big), (b"A,1,x", 1, 1, big)], 2, [b"A"]))
        self.write("x.tif", self.images(1, 300, 300))
        self.refused_for_space(72, "store", "delete", "disk/s", "--group", "A", "--key", "A,1",
                               names=["disk/s", "unchanged"])
        self.refused_for_space(72, "store", "add", "disk/s", "--group", "A", "--key", "A,2", "--exposure", 1,
                               "--intensity", 1, "x.tif", names=["disk/s", "unchanged"])
        self.refused_for_space(72, "store", "copy", "disk/s", "disk/t", "--group", "A", names=["disk/t", "unchanged"])


class Reports(EndingTest):
    def test_a_report_that_cannot_be_printed(self):
        with open("/dev/full", "w") as full:
            result = subprocess.run([TOOL, "build", "c.qxb", "--key", "k", "--exposure", "1", "--intensity", "1", "d.tif"],
                                    cwd=self.folder, stdout=full, stderr=subprocess.PIPE, text=True)
        self.assertEqual(result.returncode, 2)
        self.assertIn("the command itself was carried out", result.stderr)
        self.assertIn("loads whole", self.tool("check", "c.qxb"))


@unittest.skipIf(os.geteuid() != 0 or not shutil.which("setpriv"), "needs to become another user")
class Permissions(EndingTest):
    """As a user without rights; root may do everything."""

    def setUp(self):
        super().setUp()
        self.folder.chmod(0o755)
        self.write("i.tif", self.images(1, 300, 300))
        self.tool("build", "c.qxb", "--key", "k", "--exposure", 1, "--intensity", 1, "d.tif")

    def refused_to_others(self, *arguments, says):
        before = self.contents()
        result = subprocess.run(["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", TOOL,
                                 *map(str, arguments)], cwd=self.folder, capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stderr.count("\n")), (2, 1), result.stderr)
        for text in says:
            self.assertIn(text, result.stderr)
        self.assertEqual(self.contents(), before)

    def test_are_told_with_the_file(self):
        if subprocess.run(["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", TOOL, "--version"],
                          capture_output=True).returncode != 0:
            self.skipTest("another user cannot run the workbench here")
        correct = ["correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 1, "--exposure", 1,
                   "--intensity", 1, "i.tif", "-o"]
        self.refused_to_others(*correct, "o.tif", says=["o.tif: cannot be created: Permission denied"])
        self.refused_to_others("build", "new.qxb", "--key", "n", "--exposure", 1, "--intensity", 1, "d.tif",
                               says=["new.qxb", "Permission denied"])
        self.refused_to_others("delete", "c.qxb", "--key", "k", says=["c.qxb", "Permission denied"])
        (self.folder / "d.tif").chmod(0o600)
        self.refused_to_others(*correct, "o.tif", says=["d.tif: cannot be opened: Permission denied"])
        (self.folder / "c.qxb").chmod(0o600)
        self.refused_to_others("list", "c.qxb", says=["c.qxb: cannot be opened: Permission denied"])
        (self.folder / "closed").mkdir(mode=0o700)
        shutil.copy(self.folder / "i.tif", self.folder / "closed")
        self.refused_to_others("statistics", "closed/i.tif", says=["closed/i.tif: cannot be opened: Permission denied"])
        self.refused_to_others("check", "closed/c.qxb", says=["closed/c.qxb: cannot be opened: Permission denied"])
        self.refused_to_others("statistics", "closed", says=["closed: cannot be listed: Permission denied"])
        self.refused_to_others("store", "list", "closed/s", "--group", "A",
                               says=["closed: cannot be listed: Permission denied"])

    def test_a_protected_file_in_an_open_folder_stays(self):
        self.folder.chmod(0o777)
        (self.folder / "o.tif").write_bytes(b"not yours")
        (self.folder / "o.tif").chmod(0o644)
        self.refused_to_others("correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 1, "--exposure",
                               1, "--intensity", 1, "i.tif", "-o", "o.tif", "--overwrite",
                               says=["o.tif", "write-protected"])
        self.refused_to_others("delete", "c.qxb", "--key", "k", says=["c.qxb", "write-protected"])

    def test_owner_and_rights_of_a_changed_file_stay(self):
        os.chown(self.folder / "c.qxb", 65534, 65534)
        (self.folder / "c.qxb").chmod(0o640)
        self.tool("delete", "c.qxb", "--key", "k")
        found = (self.folder / "c.qxb").stat()
        self.assertEqual((found.st_uid, found.st_gid, found.st_mode & 0o777), (65534, 65534, 0o640))


if __name__ == "__main__":
    support.main()
