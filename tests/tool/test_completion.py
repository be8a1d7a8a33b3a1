"""What shells offer while a command line is typed: asked of the program itself, and of bash, zsh and fish as they are."""
import json
import os
import pty
import re
import select
import shlex
import shutil
import subprocess
import time
import unittest
from pathlib import Path

import numpy as np

import support
from support import TOOL, ToolTest, not_under_wine
from test_files import file_bytes

FLAT = np.full((4, 6), 300, np.uint16)
SCRIPTS = support.SOURCE / "tools/qxbackground/commandline/completion"


class CompletionTest(ToolTest):
    def setUp(self):
        super().setUp()
        for name in ("light.tif", "lights.fits", "notes.txt", "night.qxb"):
            (self.folder / name).write_bytes(b"")
        (self.folder / "lib").mkdir()
        keys = [b"dark 60", b"dark:120", b"it's 5", b"Dark"]
        (self.folder / "c.qxb").write_bytes(file_bytes([(key, 1, 100, FLAT) for key in keys]))
        for gain in (1, 2):
            (self.folder / f"cam_Gain_{gain}").write_bytes(file_bytes([(b"Gain,%d,x" % gain, 1, 100, FLAT)], 2, [b"Gain"]))


class Asked(CompletionTest):
    """By --complete, as the scripts ask."""

    def asked(self, *words):
        lines = self.tool("--complete", *words).splitlines()
        return lines[0], [line.split("\t")[0] for line in lines[1:]]

    def words(self, *words):
        kind, found = self.asked(*words)
        self.assertEqual(kind, "words")
        return found

    def test_verbs(self):
        described = json.loads(self.tool("--describe"))["verbs"]
        self.assertEqual(sorted(self.words("")), sorted({v["verb"][0] for v in described} | {"help"}))
        self.assertEqual(self.words("c"), ["correct", "check", "convert", "completion"])
        self.assertEqual(self.words("help", "co"), ["correct", "convert", "completion"])
        self.assertEqual(sorted(self.words("store", "")), sorted(v["verb"][1] for v in described if v["verb"][0] == "store"))
        self.assertEqual(self.words("nonsense", ""), self.words("")[:-1])
        self.assertIn("list\tList a calibration file", self.tool("--complete", "li"))

    def test_options_of_every_verb(self):
        for verb in json.loads(self.tool("--describe"))["verbs"]:
            wanted = [o["name"] for o in verb["options"] if not o["positional"]]
            self.assertEqual(self.words(*verb["verb"], "--"), [*wanted, "--help"], verb["verb"])
        self.assertEqual(self.words("--v"), ["--version"])
        self.assertEqual(self.words("--library", "x.so", "list", "--"), ["--json", "--help"])

    def test_options_that_are_given_or_excluded_are_no_more_offered(self):
        self.assertNotIn("--json", self.words("list", "c.qxb", "--json", "--"))
        offered = self.words("apply", "c.qxb", "--key", "Dark", "--no-statistics", "--")
        self.assertEqual({"--key", "--auto", "--no-statistics", "--full-statistics"} & set(offered), set())
        self.assertIn("--group", self.words("store", "list", "cam", "--group", "Gain", "--g"))

    def test_values(self):
        self.assertIn("fits", self.words("convert", "--format", ""))
        self.assertEqual(self.words("correct", "--combine", "m"), ["median"])
        self.assertEqual(self.words("correct", "--combine=m"), ["--combine=median"])
        self.assertEqual(self.words("correct", "--reject", ""), ["sigma", "winsor", "minmax:"])
        self.assertEqual(self.words("completion", ""), ["bash", "zsh", "fish"])
        self.assertEqual(self.asked("correct", "--level", "")[0].split(":")[0], "value\tPERCENT")

    def test_files_by_what_they_are_for(self):
        images = "files tif tiff fit fits fts fz png pgm ser raw"
        self.assertEqual(self.asked("list", ""), ("files qxb", []))
        self.assertEqual(self.asked("list", "--", "-"), ("files qxb", []))
        self.assertEqual(self.asked("correct", "--dark", "d.tif", "")[0], images)
        self.assertEqual(self.asked("correct", "--dark", "d.tif", "--level", "50", "")[0], images)
        self.assertEqual(self.asked("correct", "-o", "")[0], images)
        self.assertEqual(self.asked("correct", "--output=x")[0], images)
        self.assertEqual(self.asked("report", "c.qxb", "-o", "")[0], "files html")
        self.assertEqual(self.asked("report", "c.qxb", "--darks", "")[0], images)
        self.assertEqual(self.asked("simulate", "-o", "")[0], "folders")
        self.assertEqual(self.asked("store", "list", "")[0], "files")
        self.assertEqual(self.asked("import", "a.qxb", "")[0], "files qxb")
        self.assertEqual(self.words("import", "a.qxb", "b.qxb", "")[0], "--salvage")

    def test_keys_that_the_file_has(self):
        self.assertEqual(self.words("show", "c.qxb", "--key", ""), ["dark 60", "dark:120", "it's 5", "Dark"])
        self.assertEqual(self.words("apply", "c.qxb", "--exposure", "1", "--key", "dark"), ["dark 60", "dark:120"])
        self.assertEqual(self.words("delete", "c.qxb", "--key=D"), ["--key=Dark"])
        self.assertEqual(self.words("store", "delete", "cam_Gain_1", "--key", ""), ["Gain,1,x", "Gain,2,x"])
        self.assertEqual(self.words("store", "apply", "cam", "--group", "Gain", "--key", "Gain,2"), ["Gain,2,x"])
        # Of a new correction the key has to be another one.
        self.assertEqual(self.asked("build", "c.qxb", "--key", "")[0].split(":")[0], "value\tKEY")
        for file in ("gone.qxb", "night.qxb", "notes.txt", "lib"):
            self.assertEqual(self.words("show", file, "--key", ""), [])
        self.assertEqual(self.words("show", "--key", ""), [])

    def test_whatever_is_typed_it_fails_quietly(self):
        for words in ([], ["-"], ["--"], ["--", "--"], ["=", "="], ["--=", ""], ["show", "--key"], ["store"],
                      ["help", "help", ""], ["list", "\x01\n", ""], ["--complete", ""], ["show", "c.qxb", "--key=", ""]):
            result = self.run_tool("--complete", *words)
            self.assertEqual((result.returncode, result.stderr), (0, ""), words)
            self.assertRegex(result.stdout, r"\A(words|files|folders|value)\b", words)

    def test_the_scripts_are_printed(self):
        for shell in ("bash", "zsh", "fish"):
            self.assertEqual(self.tool("completion", shell), (SCRIPTS / f"qxbackground.{shell}").read_text())
        self.refused("completion", "csh", says=["none of bash, zsh and fish"])


class ShellTest(CompletionTest):
    """A shell in a terminal, in which things are typed."""

    START = []

    def setUp(self):
        super().setUp()
        if not shutil.which(self.START[0]):
            self.skipTest(f"no {self.START[0]} here")
        environment = {**os.environ, "PATH": f"{Path(TOOL).parent}:{os.environ['PATH']}", "TERM": "dumb", "PS1": "> ",
                       "HOME": str(self.folder), "ZDOTDIR": str(self.folder), "LC_ALL": "C.UTF-8", "HISTFILE": "",
                       "XDG_CONFIG_HOME": str(self.folder / "config"), "XDG_DATA_HOME": str(self.folder / "data")}
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.chdir(self.folder)
            os.execvpe(self.START[0], self.START, environment)
        self.addCleanup(self.end)

    def end(self):
        os.close(self.terminal)
        os.waitpid(self.pid, 0)

    def read_until(self, mark, seconds=20):
        """What the terminal shows, up to the mark."""
        shown, deadline = b"", time.monotonic() + seconds
        while mark not in shown:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self.terminal], [], [], left)[0]:
                raise AssertionError(f"{self.START[0]} shows {shown!r}, and no {mark!r}")
            try:
                shown += os.read(self.terminal, 4096)
            except OSError as error:
                raise AssertionError(f"{self.START[0]} has ended: {shown!r}") from error
        return shown

    def type(self, text):
        os.write(self.terminal, text.encode())

    def completed(self, typed):
        """The words that the shell has in the end, where tabs were typed."""
        self.type(typed + "\r")
        shown = self.read_until(b"]END").decode()
        return re.findall(r"\[([^\]]*)\]", shown[shown.rindex("BEGIN["):])


# A function that takes the program's place when the line is run, but not when the completion asks.
SHOW_WORDS = "qxbackground() { printf BEG''IN; printf '[%s]' \"$@\"; printf 'EN''D\\n'; }"


@not_under_wine("it is a matter of shells")
class Bash(ShellTest):
    START = ["bash", "--norc", "--noprofile", "-i"]

    def ask(self, cases):
        """What is offered for each line, without a terminal: all cases in one bash."""
        script = [f"source {shlex.quote(str(SCRIPTS / 'qxbackground.bash'))}"]
        for line in cases:
            script.append(f"COMP_LINE={shlex.quote(line)} COMP_POINT={len(line.encode())}; COMPREPLY=(); _qxbackground; "
                          "printf '%s\\n' \"${COMPREPLY[@]}\"; echo ==")
        result = subprocess.run(["bash", "--norc", "-c", "\n".join(script)], cwd=self.folder, capture_output=True,
                                text=True, env={**os.environ, "PATH": f"{Path(TOOL).parent}:{os.environ['PATH']}"})
        self.assertEqual(result.stderr, "")
        return [sorted(part.split("\n")[:-1]) for part in ("\n" + result.stdout).replace("\n==\n", "\n==\n\n").split("==\n")
                ][:-1]

    def test_offers(self):
        cases = {
            "qxbackground sh": ["show"],
            "qxbackground store ": ["add", "apply", "copy", "delete", "import", "list"],
            "qxbackground list c.qxb --": ["--help", "--json"],
            "qxbackground list c.q": ["c.qxb"],
            "qxbackground list ": ["c.qxb", "lib", "night.qxb"],
            "qxbackground list n": ["night.qxb"],
            "qxbackground list ca": ["cam_Gain_1", "cam_Gain_2"],
            "qxbackground correct --dark li": ["lib", "light.tif", "lights.fits"],
            "qxbackground simulate -o l": ["lib"],
            "qxbackground show c.qxb --key ": ["Dark", "dark 60", "dark:120", "it's 5"],
            "qxbackground show 'c.qxb' --key D": ["Dark"],
            "qxbackground show c.qxb --key dark\\ ": ["dark 60"],
            "qxbackground show c.qxb --key dark:": ["120"],
            "qxbackground convert --format=": ["fits", "tiff"],
            "qxbackground correct --reject m": ["minmax:"],
        }
        for line, found in zip(cases, self.ask(cases)):
            wanted = cases[line]
            with self.subTest(line=line):
                self.assertLessEqual(set(wanted), set(found) - {""})
                if "store" not in line and "--format" not in line:
                    self.assertEqual(wanted, [word for word in found if word])

    def test_typed(self):
        self.type(f"source '{SCRIPTS}/qxbackground.bash'; {SHOW_WORDS}; bind 'set bell-style none'; echo REA''DY\r")
        self.read_until(b"READY")
        for typed, words in (("sho\tc.\t--key it\t", ["show", "c.qxb", "--key", "it's 5"]),
                             ("show c.qxb --key 'dark 6\t", ["show", "c.qxb", "--key", "dark 60"]),
                             ("show c.qxb --key dark\\ \t", ["show", "c.qxb", "--key", "dark 60"]),
                             ("show c.qxb --key dark:\t", ["show", "c.qxb", "--key", "dark:120"]),
                             ("correct --comb\tmed\t", ["correct", "--combine", "median"]),
                             ("correct --combine=me\t", ["correct", "--combine=median"]),
                             ("list ni\t", ["list", "night.qxb"])):
            with self.subTest(typed=typed):
                self.assertEqual([word for word in self.completed("qxbackground " + typed) if word], words)


@not_under_wine("it is a matter of shells")
class Zsh(ShellTest):
    START = ["zsh", "-f", "-i"]

    def test_typed(self):
        # As it is installed, under the name by which zsh looks for it; that it can be sourced, another line tries.
        shutil.copy(SCRIPTS / "qxbackground.zsh", self.folder / "lib/_qxbackground")
        self.type("PS1='> '; unsetopt prompt_cr zle_bracketed_paste; setopt no_beep; fpath=($PWD/lib $fpath); "
                  f"autoload -Uz compinit; compinit -u -D; {SHOW_WORDS}; echo REA''DY\r")
        self.read_until(b"READY")
        for typed, words in (("sho\tc.\t--key it\t", ["show", "c.qxb", "--key", "it's 5"]),
                             ("show c.qxb --key 'dark 6\t", ["show", "c.qxb", "--key", "dark 60"]),
                             ("show c.qxb --key dark:\t", ["show", "c.qxb", "--key", "dark:120"]),
                             ("correct --comb\tmed\t", ["correct", "--combine", "median"]),
                             ("correct --combine=me\t", ["correct", "--combine=median"]),
                             ("list ni\t", ["list", "night.qxb"]),
                             ("simulate -o l\t", ["simulate", "-o", "lib"]),
                             ("correct --output=lights\t", ["correct", "--output=lights.fits"])):
            with self.subTest(typed=typed):
                self.assertEqual([word for word in self.completed("qxbackground " + typed) if word], words)
        self.type(f"compdef -d qxbackground; source '{SCRIPTS}/qxbackground.zsh'; echo REA''DY\r")
        self.read_until(b"READY")
        self.assertEqual(self.completed("qxbackground list ni\t")[:2], ["list", "night.qxb"])


@not_under_wine("it is a matter of shells")
@unittest.skipUnless(shutil.which("fish"), "no fish here")
class Fish(CompletionTest):
    def test_offers(self):
        cases = {
            "qxbackground sh": ["show"],
            "qxbackground list c.qxb --": ["--help", "--json"],
            "qxbackground list n": ["night.qxb"],
            "qxbackground list c": ["c.qxb"],
            "qxbackground list ca": ["cam_Gain_1", "cam_Gain_2"],
            "qxbackground correct --dark li": ["lib/", "light.tif", "lights.fits"],
            "qxbackground simulate -o l": ["lib/"],
            "qxbackground show c.qxb --key ": ["Dark", "dark 60", "dark:120", "it's 5"],
            "qxbackground show c.qxb --key it": ["it's 5"],
            "qxbackground correct --combine ": ["average", "median"],
            "qxbackground correct --combine=": ["--combine=average", "--combine=median"],
            "qxbackground correct --output=lights": ["--output=lights.fits"],
        }
        script = [f"source {shlex.quote(str(SCRIPTS / 'qxbackground.fish'))}"]
        for line in cases:
            script.append(f"complete -C {shlex.quote(line)}; echo ==")
        result = subprocess.run(["fish", "--no-config", "-c", "\n".join(script)], cwd=self.folder, capture_output=True,
                                text=True, env={**os.environ, "PATH": f"{Path(TOOL).parent}:{os.environ['PATH']}",
                                                "HOME": str(self.folder)})
        self.assertEqual(result.stderr, "")
        parts = result.stdout.split("==\n")
        for line, part in zip(cases, parts):
            with self.subTest(line=line):
                self.assertEqual(sorted(word.split("\t")[0] for word in part.splitlines()), cases[line])


if __name__ == "__main__":
    support.main()
