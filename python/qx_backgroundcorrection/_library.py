"""Finds and loads the flat interface of the library, and declares its functions to ctypes."""
from __future__ import annotations

import ctypes
import os
import sys
import threading
from ctypes import POINTER, c_char_p, c_float, c_int, c_uint, c_uint16, c_void_p
from pathlib import Path
from typing import Any, Iterator, List, Optional, Union

from ._errors import LibraryError, make_error

ON_WINDOWS = sys.platform == "win32"
FILE_NAME = "QX_BACKGROUNDCORRECTION_C.dll" if ON_WINDOWS else "libQX_BACKGROUNDCORRECTION_C.so"
VARIABLE = "QX_BACKGROUNDCORRECTION_LIBRARY"
NO_LIBRARY = 65537

SUBTRACT_IN_PLACE = ctypes.CFUNCTYPE(c_uint, c_void_p, c_void_p, c_void_p, c_int, c_int, c_int, c_int)
SUBTRACT_INTO = ctypes.CFUNCTYPE(c_uint, c_void_p, c_void_p, c_void_p, c_void_p, c_int, c_int, c_int, c_int)
PROCESS_IN_PLACE = ctypes.CFUNCTYPE(c_uint, c_void_p, c_void_p, c_int, c_int)


class DelegateFunctions(ctypes.Structure):
    """QXBC_Delegate."""

    _fields_ = [("user", c_void_p), ("subtractInPlace", SUBTRACT_IN_PLACE), ("subtractInto", SUBTRACT_INTO),
                ("processInPlace", PROCESS_IN_PLACE)]


_FLOATS = [POINTER(c_float), POINTER(c_float)]
_VALUES = [POINTER(c_uint16)] * 3
_FUNCTIONS: List[Any] = [
    # name, result, arguments
    ("LoadLibrary", c_uint, [c_char_p, c_uint]),
    ("DescribeCode", c_char_p, [c_uint]),
    ("CreateProcessor", c_uint, [POINTER(c_void_p)]),
    ("CreateStore", c_uint, [POINTER(c_char_p), c_int, POINTER(c_void_p)]),
    ("Delete", c_uint, [c_void_p]),
    ("GetLastDeletionError", c_char_p, []),
    ("AddCorrection", c_uint, [c_void_p, c_char_p, POINTER(c_void_p), c_int, c_int, c_int, c_float, c_float]),
    ("SetActiveCorrection", c_uint, [c_void_p, c_char_p]),
    ("GetActiveCorrectionKey", c_char_p, [c_void_p]),
    ("GetCorrectionKey", c_char_p, [c_void_p, c_uint]),
    ("GetNumberOfCorrections", c_uint, [c_void_p]),
    ("ClearCorrections", c_uint, [c_void_p]),
    ("DeleteCorrection", c_uint, [c_void_p, c_char_p]),
    ("SetCorrectionLevel", c_uint, [c_void_p, c_int]),
    ("GetCorrectionLevel", c_int, [c_void_p]),
    ("SetExposureAndIntensity", c_uint, [c_void_p, c_float, c_float]),
    ("GetExposureAndIntensity", c_uint, [c_void_p, *_FLOATS]),
    ("GetReferenceExposureAndIntensity", c_uint, [c_void_p, *_FLOATS]),
    ("GetCorrectionStatistics", c_uint, [c_void_p, *_VALUES]),
    ("GetScaledCorrectionStatistics", c_uint, [c_void_p, *_VALUES]),
    ("ApplyCorrection", c_uint, [c_void_p, c_void_p, c_int, c_void_p, c_int, c_void_p, c_int, c_int, c_int]),
    ("SetRegion", c_uint, [c_void_p, c_int, c_int, c_int, c_int]),
    ("GetRegion", c_uint, [c_void_p, *[POINTER(c_int)] * 4]),
    ("ImportCorrections", c_uint, [c_void_p, c_void_p, c_int]),
    ("LoadFileHeaderOnly", c_uint, [c_void_p, c_char_p]),
    ("LoadFile", c_uint, [c_void_p, c_char_p]),
    ("SaveFile", c_uint, [c_void_p, c_char_p]),
    ("GetLastErrorMessage", c_char_p, [c_void_p]),
]


class FlatLibrary:
    """The functions of the flat interface, as attributes without their QXBC_."""

    def __init__(self, path: str) -> None:
        try:
            self._module = ctypes.CDLL(path)
            for name, result, arguments in _FUNCTIONS:
                function = getattr(self._module, "QXBC_" + name)
                function.restype, function.argtypes = result, arguments
                setattr(self, name, function)
            # ctypes converts arguments that it knows the types of slowly. For callers that hand over the right ones:
            # pointers by byref() or as c_void_p, and numbers that an int holds.
            self.apply_quickly = self._module["QXBC_ApplyCorrection"]
            self.apply_quickly.restype = c_uint
        except (OSError, AttributeError) as error:
            raise make_error("loading the library", NO_LIBRARY, str(error)) from None
        self.path = path
        reason = ctypes.create_string_buffer(1024)
        code = self.LoadLibrary(reason, len(reason))
        if code:
            raise make_error("loading the library", code, reason.value.decode("utf-8", "replace"))

    def __getattr__(self, name: str) -> Any:  # only for what is not there
        raise AttributeError(name)


_lock = threading.Lock()
_library: Optional[FlatLibrary] = None


def _file_at(place: Union[str, "os.PathLike[str]"]) -> str:
    """The library's absolute path, given itself or its folder."""
    path = Path(place).absolute()
    return str(path / FILE_NAME if path.is_dir() else path)


def _places() -> Iterator[str]:
    """Where the library may be when nobody has said it, best first: files, at last the plain name for the system."""
    package = Path(__file__).resolve().parent
    folders = [package]
    if ON_WINDOWS:
        folders += [Path(prefix) / "Library" / "bin" for prefix in (sys.prefix, sys.base_prefix)]
    else:  # lib/python3/dist-packages/qx_backgroundcorrection: the tree may be moved
        folders += [package.parents[2], Path(sys.prefix) / "lib"]
    for folder in folders:
        if (folder / FILE_NAME).is_file():
            yield str(folder / FILE_NAME)
    yield FILE_NAME


def _load(place: Optional[str]) -> FlatLibrary:
    path = place if place is not None else next(_places())
    if sys.platform == "win32" and os.path.isabs(path):
        os.add_dll_directory(os.path.dirname(path))
    try:
        return FlatLibrary(path)
    except LibraryError as error:
        if place is not None or os.path.isabs(path):
            raise
        raise make_error("loading the library", NO_LIBRARY, f"{error.text}; install it, set {VARIABLE} to its file or "
                         f"folder, or call use_library()") from None


def use_library(place: Union[str, "os.PathLike[str]"]) -> None:
    """Says where the library is: the file of the flat interface, or its folder.

    Only needed where it is neither installed, nor beside this package, nor named by the environment variable
    QX_BACKGROUNDCORRECTION_LIBRARY. Call it before anything else: a process keeps the library that it has loaded.

    Raises
    ------
    LibraryError
        It cannot be loaded, or another one is loaded already.
    """
    global _library
    path = _file_at(place)
    with _lock:
        if _library is None:
            _library = _load(path)
        elif _library.path != path:
            raise make_error("loading the library", NO_LIBRARY, f"{_library.path} is loaded already")


def library() -> FlatLibrary:
    """The library, loaded when it is first needed."""
    global _library
    if _library is None:
        with _lock:
            if _library is None:
                told = os.environ.get(VARIABLE)
                _library = _load(_file_at(told) if told else None)
    return _library


def library_path() -> str:
    """Where the library was loaded from; a plain name when the system found it."""
    return library().path
