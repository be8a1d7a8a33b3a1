"""The tutorial is what its script gives, the guide's examples run, and what both name exists."""
import os
import re
import subprocess
import sys

import numpy as np

import python_support
import qx_backgroundcorrection
from python_support import SOURCE, PythonTest


class Tutorial(PythonTest):
    def test_is_what_the_script_gives(self):
        result = subprocess.run([sys.executable, str(SOURCE / "scripts" / "make-python-tutorial.py"), str(self.folder)],
                                capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        made, kept = ((folder / "python-tutorial.md").read_text().split("\n") for folder in (self.folder, SOURCE / "docs"))
        self.assertEqual(made, kept, "run scripts/make-python-tutorial.py")
        pictures = sorted(path.name for path in self.folder.glob("*.png"))
        self.assertEqual(pictures, sorted(path.name for path in (SOURCE / "docs").glob("python-tutorial-*.png")))
        self.assertEqual(pictures, re.findall(r"\((python-tutorial-\d\.png)\)", "\n".join(kept)))
        for name in pictures:  # their pixels hang on the fonts that are installed
            self.assertGreater((self.folder / name).stat().st_size, 5000)


class Guide(PythonTest):
    text = (SOURCE / "docs" / "python.md").read_text(encoding="utf-8")

    def test_examples_run(self):
        blocks = re.findall(r"```python\n(.*?)```", self.text, re.S)
        self.assertGreater(len(blocks), 4)
        path, darks = self.calibration("dark")
        names = {"np": np, "darks": darks, "images": np.array(self.images(3, 40, 30)), "path": path}
        before = os.getcwd()
        os.chdir(self.folder)
        try:
            for number, block in enumerate(blocks):
                with self.subTest(number=number):
                    exec(compile(block, f"block {number} of python.md", "exec"), names)
        finally:
            os.chdir(before)

    def test_every_public_name_is_there(self):
        for name in qx_backgroundcorrection.__all__:
            self.assertIn(name, self.text)


if __name__ == "__main__":
    python_support.main()
