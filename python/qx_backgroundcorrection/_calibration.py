"""Calibration files, read without the library: numpy views over a memory map."""
from __future__ import annotations

import hashlib
import mmap
import os
import struct
from typing import Iterator, List, NoReturn, Optional, Tuple, Union

import numpy as np

from ._arrays import Image
from ._spelling import folded

SIGNATURE = b"Background Correction File"
MOST_PIXELS = 2**31 - 1
MOST_NAMES = 65536

Bytes = Union[bytes, bytearray, memoryview]


class CalibrationFormatError(ValueError):
    """A calibration file departs from the format; the text names the byte."""


class Correction:
    """One correction of a calibration file.

    Attributes
    ----------
    key : str
    exposure, intensity : float
        At which it was taken: seconds, percent.
    background : uint16 array (height, width)
        Read-only; memory of the file.
    """

    def __init__(self, key: str, exposure: float, intensity: float, background: Image, raw: memoryview) -> None:
        self.key = key
        self.exposure = exposure
        self.intensity = intensity
        self.background = background
        self._raw = raw

    @property
    def shape(self) -> Tuple[int, int]:
        """(height, width)"""
        height, width = self.background.shape
        return height, width

    def digest(self) -> str:
        """SHA-256 over all that makes the correction: key, size, exposure, intensity and pixels."""
        return hashlib.sha256(self._raw).hexdigest()

    def file_bytes(self) -> bytes:
        """A calibration file (structure version 1) of this correction alone."""
        return SIGNATURE + struct.pack("<IIIII", 1, 61, 1, 4, 1) + bytes(self._raw)

    def __repr__(self) -> str:
        height, width = self.shape
        return f"<Correction {self.key!r}: {width} x {height}; taken at {self.exposure:g} s {self.intensity:g} %>"

    def _repr_png_(self) -> Optional[bytes]:
        from ._pictures import png

        return png(self.background) if self.background.size else None

    def _repr_html_(self) -> str:
        from ._pictures import html

        return html(repr(self)[1:-1], self.background)


class Calibration:
    """What a calibration file holds. Corrections are reached by key (letter case ignored) or by position."""

    def __init__(self, structure_version: int, grouping_names: List[str], corrections: List[Correction],
                 path: Optional[str]) -> None:
        self.structure_version = structure_version
        self.grouping_names = grouping_names
        self.corrections = corrections
        self.path = path

    def keys(self) -> List[str]:
        return [correction.key for correction in self.corrections]

    def __len__(self) -> int:
        return len(self.corrections)

    def __iter__(self) -> Iterator[Correction]:
        return iter(self.corrections)

    def __contains__(self, key: object) -> bool:
        return isinstance(key, str) and any(folded(c.key) == folded(key) for c in self.corrections)

    def __getitem__(self, key: Union[str, int]) -> Correction:
        if isinstance(key, int):
            return self.corrections[key]
        for correction in self.corrections:
            if folded(correction.key) == folded(key):
                return correction
        raise KeyError(key)

    def __repr__(self) -> str:
        count = len(self)
        return f"<Calibration: {count} correction{'' if count == 1 else 's'}: {', '.join(map(repr, self.keys()))}>"

    def _repr_html_(self) -> str:
        from html import escape

        return f"<div>{escape(repr(self)[1:-1])}</div>" + "".join(c._repr_html_() for c in self.corrections[:8])


class _Walk:
    def __init__(self, data: memoryview) -> None:
        self.data = data
        self.at = 0

    def fail(self, at: int, what: str) -> NoReturn:
        raise CalibrationFormatError(f"byte {at}: {what}")

    def take(self, count: int, what: str) -> memoryview:
        if len(self.data) - self.at < count:
            self.fail(self.at, f"the file ends inside {what}")
        self.at += count
        return self.data[self.at - count:self.at]

    def record(self, identifier: int, version: int, length: int, what: str) -> memoryview:
        start = self.at
        found = struct.unpack("<III", self.take(12, what))
        if found != (identifier, version, length):
            self.fail(start, f"{what} is record {found}, not {(identifier, version, length)}")
        return self.take(length, what)

    def number(self, identifier: int, version: int, what: str) -> int:
        return int(struct.unpack("<I", self.record(identifier, version, 4, what))[0])

    def text(self, identifier: int, version: int, length: int, what: str) -> str:
        data = bytes(self.record(identifier, version, length, what)).split(b"\0")[0]
        return data.decode("utf-8", "surrogateescape")

    def real(self, identifier: int, what: str) -> float:
        return float(struct.unpack("<f", self.record(identifier, 1, 4, what))[0])

    def correction(self) -> Correction:
        start = self.at
        # Record 62 has no data, and nobody needs its length.
        if struct.unpack("<III", self.take(12, "the start of a correction"))[:2] != (62, 1):
            self.fail(start, "no correction starts here")
        key = self.text(63, 1, 512, "a key")
        if not key:
            self.fail(start, "a correction has an empty key")
        width = self.number(64, 1, "a width")
        height = self.number(65, 1, "a height")
        if width * height > MOST_PIXELS:
            self.fail(start, f"a correction of {width} x {height} pixels is too large")
        exposure = self.real(66, "an exposure")
        intensity = self.real(67, "an intensity")
        if np.float32(exposure) * np.float32(intensity) == 0:
            self.fail(start, "exposure times light intensity is 0")
        pixels = self.record(68, 1, 2 * width * height, "the pixels")
        background: Image = np.frombuffer(pixels, "<u2").reshape(height, width)
        if background.dtype != np.uint16:  # a machine of the other byte order
            background = background.astype(np.uint16)
        background.flags.writeable = False
        return Correction(key, exposure, intensity, background, self.data[start:self.at])


def parse_calibration(data: Bytes, path: Optional[str] = None) -> Calibration:
    """Reads a calibration file's content."""
    walk = _Walk(memoryview(data))
    if bytes(walk.data[:len(SIGNATURE)]) != SIGNATURE:
        walk.fail(0, "this is not a calibration file")
    walk.at = len(SIGNATURE)
    version = int(struct.unpack("<I", walk.take(4, "the structure version"))[0])
    if version not in (1, 2):
        walk.fail(26, f"structure version {version} is not known")
    names: List[str] = []
    if version == 2:
        count = walk.number(69, 2, "the number of grouping names")
        if count > MOST_NAMES:
            walk.fail(walk.at, f"{count} grouping names are too many")
        names = [walk.text(70, 2, 16, "a grouping name") for _ in range(count)]
    count = walk.number(61, 1, "the number of corrections")
    corrections: List[Correction] = []
    seen = set()
    for _ in range(count if count < 2**31 else 0):  # a signed number: below 0 there are none
        start = walk.at
        correction = walk.correction()
        if folded(correction.key) in seen:
            walk.fail(start, f"the key {correction.key!r} is there twice")
        seen.add(folded(correction.key))
        corrections.append(correction)
    return Calibration(version, names, corrections, path)


def read_calibration(path: Union[str, "os.PathLike[str]"]) -> Calibration:
    """Reads a calibration file, or a group file of an offline store, without the library.

    The backgrounds are views over a memory map: pixels are read from the disk when they are looked at, and the file
    stays mapped as long as one of them is there. Do not let the file be changed in place meanwhile, as a Processor's
    save() does; replacing it under its name, as the workbench does, is harmless.

    Raises
    ------
    OSError
        The file cannot be read.
    CalibrationFormatError
        It departs from the format. The library steps over damaged corrections; this function does not.

    >>> import numpy as np, tempfile, os
    >>> from qx_backgroundcorrection import Processor
    >>> folder = tempfile.TemporaryDirectory()
    >>> path = os.path.join(folder.name, "night.dat")
    >>> with Processor() as processor:
    ...     processor.add("dark", np.full((2, 3), 100, np.uint16), exposure=0.5)
    ...     processor.save(path)
    >>> calibration = read_calibration(path)
    >>> calibration
    <Calibration: 1 correction: 'dark'>
    >>> calibration["DARK"]
    <Correction 'dark': 3 x 2; taken at 0.5 s 100 %>
    >>> calibration["dark"].background
    array([[100, 100, 100],
           [100, 100, 100]], dtype=uint16)
    >>> folder.cleanup()
    """
    with open(path, "rb") as file:
        if os.fstat(file.fileno()).st_size == 0:  # cannot be mapped
            raise CalibrationFormatError("byte 0: this is not a calibration file")
        data = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
    return parse_calibration(memoryview(data), os.path.abspath(os.fspath(path)))
