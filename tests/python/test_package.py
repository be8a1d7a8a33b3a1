"""The package as such: types, the examples in its texts, installed by pip without a network, versions that agree."""
import doctest
import importlib
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import python_support
from python_support import SOURCE, PythonTest
import qx_backgroundcorrection

VERSION = os.environ["QX_VERSION"]
FOLDER = SOURCE / "python" / "qx_backgroundcorrection"
MODULES = sorted(path.stem for path in FOLDER.glob("*.py") if path.stem not in ("__main__", "__init__"))


class Texts(PythonTest):
    def test_examples_do_what_they_say(self):
        tried = 0
        for name in ("qx_backgroundcorrection", *(f"qx_backgroundcorrection.{module}" for module in MODULES)):
            found = doctest.testmod(importlib.import_module(name))
            self.assertEqual(found.failed, 0, name)
            tried += found.attempted
        self.assertGreater(tried, 20)

    def test_public_names_are_described(self):
        for name in qx_backgroundcorrection.__all__:
            thing = getattr(qx_backgroundcorrection, name)
            self.assertTrue(thing.__doc__, name)
            for attribute, value in vars(thing).items() if isinstance(thing, type) else ():
                if not attribute.startswith("_") and (callable(value) or isinstance(value, property)):
                    if thing.__name__ in ("Processor", "Store", "Delegate"):
                        self.assertTrue(value.__doc__, f"{name}.{attribute}")

    def test_modules_import_what_stands_above_them_in_the_guide(self):
        guide = (SOURCE / "docs" / "structure.md").read_text(encoding="utf-8").split("## The Python package")[1]
        rows = re.findall(r"^\| (`_[^|]+) \|", guide, re.M)
        ranks = {module: rank for rank, row in enumerate(rows) for module in re.findall(r"`(\w+)`", row)}
        ranks["_version"] = 0
        self.assertEqual(set(ranks), {*MODULES, "__main__"})
        for module, rank in ranks.items():
            for other in re.findall(r"^ *from \.(\w+) import", (FOLDER / f"{module}.py").read_text(encoding="utf-8"), re.M):
                self.assertLessEqual(ranks[other], rank, f"{module} imports {other}")

    def test_sources_are_of_a_size_to_be_read(self):
        for path in FOLDER.glob("*.py"):
            lines = path.read_text(encoding="utf-8").splitlines()
            self.assertLess(len(lines), 450, path)
            self.assertLess(max(map(len, lines)), 121, path)


class Types(PythonTest):
    def mypy(self, *arguments):
        return subprocess.run(["/usr/bin/mypy", "--python-executable", "/usr/bin/python3",
                               "--cache-dir", os.path.join(os.environ["QX_BUILD"], "mypy"), *arguments],
                              cwd=SOURCE / "python", capture_output=True, text=True)

    def test_the_package_is_typed_strictly(self):
        result = self.mypy()
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertIn(f"in {len(list(FOLDER.glob('*.py')))} source files", result.stdout)

    def test_whoever_uses_it_is_told_of_mistakes(self):
        user = self.folder / "user.py"
        user.write_text("import numpy as np\nfrom qx_backgroundcorrection import Processor, read_calibration\n"
                        "p = Processor()\np.level = 'high'\nkey: int = read_calibration('a')[0].key\n"
                        "image: np.ndarray[int, np.dtype[np.uint16]] = read_calibration('a')[0].background\np.aply(5)\n")
        result = self.mypy(str(user))
        self.assertEqual([int(line) for line in re.findall(r"user.py:(\d+): error", result.stdout)], [4, 5, 7], result.stdout)


class Installed(PythonTest):
    def test_by_pip_without_a_network(self):
        # As in the checkout, which stays clean: setuptools writes beside what it installs.
        for name in ("python", "include"):
            shutil.copytree(SOURCE / name, self.folder / name, ignore=shutil.ignore_patterns("build", "*.egg-info"))
        run = dict(cwd=self.folder, check=True, capture_output=True, text=True,
                   env={name: value for name, value in os.environ.items() if name != "PYTHONPATH"})
        subprocess.run([sys.executable, "-m", "venv", "--without-pip", "--system-site-packages", "venv"], **run)
        python = str(self.folder / "venv/bin/python")
        subprocess.run([sys.executable, "-m", "pip", "--python", python, "install", "--no-build-isolation", "--no-index",
                        "--no-deps", "./python"], **run)
        shutil.rmtree(self.folder / "include")
        said = subprocess.run([python, "-c", "import qx_backgroundcorrection as q, importlib.metadata as m, numpy as n\n"
                               "print(q.__file__, q.__version__, m.version('qx_backgroundcorrection'))\n"
                               "z = n.full((2, 2), 9, n.uint16)\nprint(q.correct(z, darks=z, dark_exposure=2, exposure=1).sum())"],
                              **run).stdout.split()
        package = Path(said[0]).parent
        self.assertEqual(said[1:], [VERSION, VERSION, "16"])
        self.assertTrue(package.is_relative_to(self.folder / "venv"))
        self.assertEqual({path.name for path in package.iterdir() if path.name != "__pycache__"},
                         {path.name for path in FOLDER.iterdir() if path.name != "__pycache__"})

    def test_the_version_is_the_librarys(self):
        self.assertEqual(qx_backgroundcorrection.__version__, VERSION)
        with self.assertRaises(AttributeError):
            qx_backgroundcorrection.nothing
        library = Path(qx_backgroundcorrection.library_path()).parent / "libQX_BACKGROUNDCORRECTION.so"
        self.assertIn(f'"version":"{VERSION}"', library.read_bytes().decode("latin-1"))


if __name__ == "__main__":
    python_support.main()
