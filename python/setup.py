"""Tells setuptools the version, which the public header of the library has. All else stands in pyproject.toml."""
import re
from pathlib import Path

from setuptools import setup

HERE = Path(__file__).resolve().parent


def version():
    header = HERE.parent / "include" / "QX_BackgroundCorrection.h"
    if header.is_file():
        text = header.read_text(encoding="utf-8")
        return ".".join(re.search(rf"^#define QX_BACKGROUNDCORRECTION_VERSION_{part} (\d+)$", text, re.M).group(1)
                        for part in ("MAJOR", "MINOR", "PATCH"))
    # Out of a source archive, which setuptools gave the version when it was made.
    return re.search(r"^Version: (.+)$", (HERE / "PKG-INFO").read_text(encoding="utf-8"), re.M).group(1)


setup(version=version())
