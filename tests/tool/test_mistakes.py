"""The mistakes of mistakes.txt: each gets the line that stands there, exit status 2, and costs no file.

After a change of wording, `test_mistakes.py --write` (with the environment of the test) writes the lines anew; read
what became of them before they are committed."""
import re
import shlex
import sys
import unittest
from pathlib import Path

import numpy as np

import support
from support import ToolTest
from test_files import file_bytes

TABLE = Path(__file__).with_name("mistakes.txt")


class Mistakes(ToolTest):
    """The folder in which they are made is described at the top of the table."""

    def setUp(self):
        super().setUp()
        flat = np.full((4, 6), 300, np.uint16)
        put = {"empty.tif": b"", "text.txt": b"just some text\n", "p.png": b"\x89PNG\r\n\x1a\n" + bytes(50),
               "f.fits": b"SIMPLE  =                    T" + bytes(2850), "j.jpg": b"\xff\xd8\xff\xe0" + bytes(50),
               "c.qxb": file_bytes([(b"d", 1, 100, flat), (b"e", 2, 100, flat)]), "empty.qxb": b"",
               "cut.qxb": file_bytes([(b"d", 1, 100, flat), (b"e", 2, 100, flat)])[:-1],
               "protected.qxb": file_bytes([(b"d", 1, 100, flat)]), "o.tif": b"an older output"}
        for gain in (1, 2):
            put[f"cam_Gain_{gain}"] = file_bytes([(b"Gain,%d" % gain, 1, 100, flat)], 2, [b"Gain"])
        for name, data in put.items():
            (self.folder / name).write_bytes(data)
        (self.folder / "protected.qxb").chmod(0o444)
        (self.folder / "folder").mkdir()
        for name, other in (("circle", "circle.2"), ("circle.2", "circle")):
            (self.folder / name).symlink_to(other)
        self.write("d.tif", [flat] * 3)
        self.write("d2.tif", [flat] * 2)
        self.write("-d.tif", [flat])
        self.write("i.tif", [flat] * 2)
        self.write("wide.tif", [np.full((4, 7), 300, np.uint16)])
        self.write("eight.tif", [flat % 256], bits=8)
        self.write("color.tif", [flat], tags={277: (3, [3])})
        (self.folder / "cut.tif").write_bytes(support.tiff_bytes([flat])[:-30])

    def entries(self):
        """(command, line) for each mistake of the table."""
        lines = TABLE.read_text().splitlines()
        found = []
        for index, line in enumerate(lines):
            if line.startswith("$ "):
                answer = lines[index + 1] if index + 1 < len(lines) else ""
                found.append((line[2:], answer.strip() if answer.startswith("    ") else ""))
        return found

    def answer(self, command):
        words = shlex.split(command)
        self.assertEqual(words[0], "qxbackground")
        before = self.contents()
        result = self.run_tool(*words[1:])
        self.assertEqual(result.returncode, 2, f"{command}: {result.stdout}")
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertEqual(self.contents(), before, "the mistake cost a file or left one")
        self.assertTrue(result.stderr.startswith("qxbackground: "))
        return result.stderr[len("qxbackground: "):-1]

    def test_each_gets_its_line(self):
        entries = self.entries()
        self.assertGreater(len(entries), 100)
        self.assertEqual(len({command for command, _ in entries}), len(entries), "a mistake stands there twice")
        for command, line in entries:
            with self.subTest(command=command):
                self.assertEqual(self.answer(command), line)

    def write_table(self):
        lines, skip = [], False
        for line in TABLE.read_text().splitlines():
            if not (skip and line.startswith("    ")):
                lines.append(line)
            skip = line.startswith("$ ")
            if skip:
                try:
                    lines.append("    " + self.answer(line[2:]))
                except AssertionError as error:
                    lines.append("    !!! " + re.sub(r"\s+", " ", str(error)))
        TABLE.write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    if sys.argv[1:] == ["--write"]:
        writer = Mistakes("write_table")
        sys.exit(0 if unittest.TextTestRunner().run(writer).wasSuccessful() else 1)
    support.main()
