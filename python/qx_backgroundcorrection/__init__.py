"""Background correction of 16-bit camera images, by the library that host applications load.

`correct` does images in one line; `Processor` and `Store` are the library's own objects; `read_calibration` reads
calibration files without the library.
"""
from __future__ import annotations

from ._calibration import Calibration, CalibrationFormatError, Correction, read_calibration
from ._correct import correct, master_dark
from ._delegates import Delegate
from ._errors import (ArgumentError, ClosedError, CorrectionError, FileError, HeaderOnlyError, LibraryError,
                      OperationFailedError)
from ._library import library_path, use_library
from ._object import Reference, Region, Statistics
from ._objects import Processor, Store
from ._recipe import CalibrationChangedError

__all__ = [
    "ArgumentError", "Calibration", "CalibrationChangedError", "CalibrationFormatError", "ClosedError", "Correction",
    "CorrectionError", "Delegate", "FileError", "HeaderOnlyError", "LibraryError", "OperationFailedError", "Processor",
    "Reference", "Region", "Statistics", "Store", "correct", "library_path", "master_dark", "read_calibration",
    "use_library",
]


def __getattr__(name: str) -> str:
    if name == "__version__":  # looked for when it is asked for, which takes a while
        from ._version import version

        return version()
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
