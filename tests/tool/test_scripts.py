"""The scripts around the workbench: what the demo prints can be pasted, a bad machine gets one line, nothing hangs
silently, and what once failed is tried again."""
import json
import os
import re
import shutil
import subprocess
from pathlib import Path

import support
from support import SOURCE, TOOL, ToolTest

SCRIPTS = SOURCE / "scripts"


class ScriptTest(ToolTest):
    def run_shell(self, text, folder=None, **environment):
        return subprocess.run(["bash", "-c", text], cwd=folder or self.folder, capture_output=True, text=True,
                              timeout=120, stdin=subprocess.DEVNULL, env={**os.environ, **environment})


class Demo(ScriptTest):
    def commands(self, printed):
        """The commands that the demo shows, continued lines joined as a shell does."""
        found, going_on = [], False
        for line in printed.splitlines():
            if line.startswith("$ ") or going_on:
                found.append(line[2:] if not going_on else line)
                going_on = line.endswith("\\")
        return "\n".join(found)

    def test_its_commands_can_be_pasted_and_do_the_same_again(self):
        (self.folder / "one").mkdir()
        (self.folder / "two & ' three").mkdir()
        shown = self.run_shell(f"'{SCRIPTS}/demo-steps.sh' '{Path(TOOL).parent}' one", SOURCE_DATE_EPOCH="1000000000")
        self.assertEqual(shown.returncode, 0, shown.stderr)
        commands = self.commands(shown.stdout)
        self.assertGreater(commands.count("qxbackground "), 15)
        pasted = self.run_shell("set -e\n" + commands, self.folder / "two & ' three", SOURCE_DATE_EPOCH="1000000000")
        self.assertEqual(pasted.returncode, 0, pasted.stderr)

        def files(folder):
            return {str(p.relative_to(folder)): p.read_bytes() for p in folder.rglob("*") if p.is_file()}
        one, two = files(self.folder / "one"), files(self.folder / "two & ' three")
        self.assertEqual(sorted(one), sorted(two))
        for name, data in one.items():
            self.assertEqual(two[name], data, name)

    def test_the_folder_of_real_frames_may_be_relative(self):
        (self.folder / "here" / "inside").mkdir(parents=True)
        result = self.run_shell(f". '{SCRIPTS}/helpers.sh'; absolute_sample_data; cd inside; echo $QX_SAMPLE_DATA",
                                self.folder / "here", QX_SAMPLE_DATA="../data")
        self.assertEqual(os.path.normpath(result.stdout.strip()), str(self.folder / "data"))
        for script in ("demo.sh", "test.sh", "scripts/demo-steps.sh"):
            lines = (SOURCE / script).read_text().splitlines()
            used = next(n for n, line in enumerate(lines) if line.strip() == "absolute_sample_data")
            moved = next(n for n, line in enumerate(lines) if line.startswith("cd "))
            self.assertLess(used, moved, script)


class Presets(ScriptTest):
    def test_every_preset_with_tests_is_run_by_a_script_and_told_of(self):
        presets = [preset["name"] for preset in json.loads((SOURCE / "CMakePresets.json").read_text())["testPresets"]]
        scripts = "".join(path.read_text() for path in [SOURCE / "test.sh", *sorted(SCRIPTS.glob("*.sh"))])
        told = (SOURCE / "README.md").read_text()
        for preset in presets:
            self.assertTrue(re.search(rf"(?<![\w-]){preset}(?![\w-])", scripts), f"no script runs {preset}")
            self.assertIn(f"`{preset}`", re.findall(r"`[\w-]+`", told), f"the README does not tell of {preset}")

    def test_more_runs_presets_that_there_are(self):
        presets = [preset["name"] for preset in json.loads((SOURCE / "CMakePresets.json").read_text())["testPresets"]]
        more = (SCRIPTS / "test-more.sh").read_text().splitlines()[-1].split('test.sh"')[1].split()
        self.assertGreater(len(more), 2)
        self.assertEqual([preset for preset in more if preset not in presets], [])


class Helpers(ScriptTest):
    def test_long_silent_steps_show_that_they_are_alive(self):
        result = self.run_shell(f". '{SCRIPTS}/helpers.sh'; patiently 'sleeping' sleep 2.3", QX_TICK_SECONDS="0.5")
        self.assertEqual(result.returncode, 0)
        self.assertGreaterEqual(result.stdout.count("sleeping: "), 2)

    def test_a_failing_step_shows_its_output_and_fails(self):
        result = self.run_shell(f". '{SCRIPTS}/helpers.sh'; patiently x bash -c 'echo out; echo err >&2; exit 3'; echo $?")
        self.assertEqual((result.stdout, result.stderr), ("3\n", "out\nerr\n"))
        quiet = self.run_shell(f". '{SCRIPTS}/helpers.sh'; patiently x echo out")
        self.assertEqual((quiet.stdout, quiet.stderr), ("", ""))

    def test_sources_are_found_without_git(self):
        for name in ("a.cpp", "inside/b.h", "build/c.cpp", "d.c"):
            (self.folder / name).parent.mkdir(exist_ok=True)
            (self.folder / name).write_text("")
        result = self.run_shell(f". '{SCRIPTS}/helpers.sh'; list_sources", GIT_DIR="/nonexistent")
        self.assertEqual(sorted(result.stdout.split()), ["./a.cpp", "./d.c", "./inside/b.h"])

    def test_root_in_another_s_clone_is_told_once(self):
        fake = self.fake_programs(id="echo 0", stat="echo somebody")
        result = self.run_shell(f". '{SCRIPTS}/helpers.sh'; note_foreign_folder", PATH=f"{fake}:{os.environ['PATH']}")
        self.assertEqual(result.stdout.count("\n"), 1)
        self.assertIn("su somebody -c", result.stdout)

    def fake_programs(self, **programs):
        folder = self.folder / "fake"
        folder.mkdir()
        for name, text in programs.items():
            (folder / name.replace("_", "-")).write_text("#!/bin/bash\n" + text + "\n")
            (folder / name.replace("_", "-")).chmod(0o755)
        return folder

    def install(self, **programs):
        """install-deps.sh on a machine that has these programs and hardly any others."""
        fake = self.fake_programs(dpkg_query="exit 1", **programs)
        for name in ("bash", "grep", "dirname", "mktemp", "rm", "sleep", "tail", "cat"):
            (fake / name).symlink_to(shutil.which(name))
        return self.run_shell(f"'{SCRIPTS}/install-deps.sh' build", PATH=str(fake))

    def test_without_sudo_one_line_says_what_to_run(self):
        result = self.install(id="echo 1000", apt_get="exit 0")
        self.assertEqual((result.returncode, result.stdout, result.stderr.count("\n")), (1, "", 1), result.stderr)
        self.assertIn("apt-get install --no-install-recommends git cmake", result.stderr)

    def test_a_sudo_that_wants_a_password_is_not_waited_for(self):
        result = self.install(id="echo 1000", apt_get="exit 0", sudo="exit 1")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1), result.stderr)
        self.assertIn("sudo apt-get install", result.stderr)

    def test_without_apt_get_the_packages_are_named(self):
        result = self.install(id="echo 0")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1), result.stderr)
        self.assertIn("There is no apt-get here", result.stderr)

    def test_without_a_network_the_last_line_says_so(self):
        result = self.install(id="echo 0", apt_get="echo 'E: Could not resolve host' >&2; exit 100")
        self.assertEqual(result.returncode, 1)
        last = result.stderr.splitlines()[-1]
        self.assertIn("is there a network?", last)
        self.assertIn("Could not resolve host", last)

    def test_skips_are_told_with_their_reasons(self):
        (self.folder / "j.xml").write_text(
            '<testsuite><testcase name="A.One" status="notrun"><system-out>x.cpp:3: Skipped\nno such locale\n'
            '</system-out></testcase><testcase name="A.Two" status="notrun"><system-out>x.cpp:9: Skipped\n'
            'no such locale\n</system-out></testcase><testcase name="tool.x" status="run"><system-out>ok\n'
            'skipped: needs another user [test_x]\n</system-out></testcase><testcase name="good" status="run">'
            '<system-out>fine</system-out></testcase></testsuite>')
        result = self.run_shell(f"'{SCRIPTS}/skipped-tests.py' j.xml")
        self.assertEqual(result.stdout, "skipped 1 test: needs another user [test_x] (tool.x)\n"
                                        "skipped 2 tests: no such locale (A.One, A.Two)\n")


class Locales(ScriptTest):
    def test_a_failed_localedef_is_tried_again(self):
        """It leaves an empty folder, as the real one does where the sources of its locales are not installed."""
        localedef = self.folder / "localedef"
        make = f"cmake -DLOCALEDEF={localedef} -DFOLDER={self.folder}/locale -P {SOURCE}/tests/make-locales.cmake"
        localedef.write_text('#!/bin/sh\nfor last; do :; done\nmkdir -p "$last"\nexit 4\n')
        localedef.chmod(0o755)
        self.assertEqual(self.run_shell(make).returncode, 0)
        self.assertEqual(list((self.folder / "locale").iterdir()), [])
        localedef.write_text('#!/bin/sh\nfor last; do :; done\nmkdir "$last" && touch "$last/LC_CTYPE"\n')
        self.assertEqual(self.run_shell(make).returncode, 0)
        made = sorted(p.parent.name for p in (self.folder / "locale").rglob("LC_CTYPE"))
        self.assertEqual(made, ["de_DE.ISO-8859-1", "de_DE.UTF-8"])
        localedef.write_text("#!/bin/sh\nexit 9\n")  # not run again for what is there
        self.run_shell(make)
        self.assertEqual(len(list((self.folder / "locale").rglob("LC_CTYPE"))), 2)


if __name__ == "__main__":
    support.main()
