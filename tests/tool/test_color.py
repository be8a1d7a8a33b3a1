"""Colours: on a terminal that knows them, for what stands out, and nowhere else."""
import os
import pty
import subprocess
import unittest

import numpy as np

import support
from support import TOOL, ToolTest, not_under_wine

ERROR, WARNING, HEADING, END = "\033[1;31m", "\033[1;33m", "\033[1m", "\033[0m"
FLAT = np.full((4, 6), 300, np.uint16)


class Color(ToolTest):
    def setUp(self):
        super().setUp()
        self.write("d.tif", [FLAT] * 3)
        self.write("i.tif", [FLAT] * 2)
        # Dark frames of less exposure: there is a warning.
        self.warned = ["correct", "--dark", "d.tif", "--dark-exposure", 1, "--dark-intensity", 100, "--exposure", 2,
                       "--intensity", 100, "i.tif", "-o", "o.tif", "--overwrite"]

    def shown(self, *arguments, **variables):
        """Both streams of the workbench on a terminal."""
        environment = {**os.environ, "TERM": "xterm", **variables}
        environment = {name: value for name, value in environment.items() if value is not None}
        ours, theirs = pty.openpty()
        process = subprocess.Popen([TOOL, *map(str, arguments)], cwd=self.folder, stdin=subprocess.DEVNULL, stdout=theirs,
                                   stderr=theirs, env=environment)
        os.close(theirs)
        shown = b""
        try:
            while chunk := os.read(ours, 4096):
                shown += chunk
        except OSError:  # Linux: the other end is closed
            pass
        os.close(ours)
        process.wait()
        return shown.decode().replace("\r\n", "\n")

    @not_under_wine("a terminal is no console there")
    def test_on_a_terminal(self):
        self.assertIn(f"{ERROR}qxbackground:{END} gone.qxb", self.shown("list", "gone.qxb"))
        shown = self.shown(*self.warned)
        self.assertIn(f"\n{WARNING}Warning:{END} the background is scaled up", shown)
        help_ = self.shown("list", "--help")
        self.assertIn(f"\n{HEADING}Usage:{END} qxbackground list", help_)
        self.assertIn(f"\n{HEADING}Arguments:{END}\n", help_)
        self.assertEqual(help_.replace(HEADING, "").replace(END, ""), self.tool("list", "--help"))

    @not_under_wine("a terminal is no console there")
    def test_not_where_they_are_not_wanted(self):
        for variables in ({"NO_COLOR": "1"}, {"TERM": "dumb"}, {"TERM": None}, {"TERM": ""}):
            for arguments in (["list", "gone.qxb"], self.warned, ["--help"]):
                # A progress bar is no colour, but a terminal that understands no escapes gets none of its own either.
                shown = self.shown(*arguments, **variables)
                self.assertNotIn("\033[1", shown, (variables, arguments))
                if "NO_COLOR" not in variables:
                    self.assertNotIn("\033", shown, (variables, arguments))
        self.assertIn(ERROR, self.shown("list", "gone.qxb", NO_COLOR=""))

    def test_not_in_files_and_pipes(self):
        environment = {**os.environ, "TERM": "xterm"}
        for arguments in (["list", "gone.qxb"], self.warned, ["--help"], ["help", "correct"]):
            result = subprocess.run([TOOL, *map(str, arguments)], cwd=self.folder, capture_output=True, env=environment)
            self.assertNotIn(b"\033", result.stdout + result.stderr, arguments)

    @not_under_wine("a terminal is no console there")
    def test_each_stream_for_itself(self):
        environment = {**os.environ, "TERM": "xterm"}
        ours, theirs = pty.openpty()
        result = subprocess.run([TOOL, "list", "gone.qxb"], cwd=self.folder, stdout=theirs, stderr=subprocess.PIPE,
                                env=environment)
        os.close(theirs)
        os.close(ours)
        self.assertNotIn(b"\033", result.stderr)


if __name__ == "__main__":
    support.main()
