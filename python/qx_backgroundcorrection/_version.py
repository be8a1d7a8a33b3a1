"""The package's version: in a checkout the one of the public header, installed the one it was installed with."""
from __future__ import annotations

import re
from importlib import metadata
from pathlib import Path


def version() -> str:
    header = Path(__file__).resolve().parents[2] / "include" / "QX_BackgroundCorrection.h"
    if header.is_file():
        numbers = re.findall(r"^#define QX_BACKGROUNDCORRECTION_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$",
                             header.read_text(encoding="utf-8"), re.M)
        return ".".join(numbers)
    return metadata.version("qx_backgroundcorrection")
