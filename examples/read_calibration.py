#!/usr/bin/env python3
"""Reads a calibration file of QX_BACKGROUNDCORRECTION into numpy arrays, with numpy and the standard library alone.

As a program:  read_calibration.py FILE   lists what the file holds.
As a module:   for correction in read_calibration(path).corrections: correction.key, correction.background, ...

It is strict: CalibrationError names the byte where a file departs from the format. (The library steps over damage.)
"""
import struct
import sys
from typing import NamedTuple

import numpy as np

SIGNATURE = b"Background Correction File"


class CalibrationError(Exception):
    pass


class Correction(NamedTuple):
    key: bytes               # up to 512 bytes, in whatever encoding the host used
    exposure: np.float32     # seconds
    intensity: np.float32    # percent
    background: np.ndarray   # height x width, unsigned 16-bit


class Calibration(NamedTuple):
    structure_version: int       # 1: corrections only, 2: a group file of an offline store
    grouping_names: list         # of bytes, empty in version 1
    corrections: list            # of Correction, in the order of the file


class _Reader:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def take(self, count, what):
        if len(self.data) - self.at < count:
            raise CalibrationError(f"byte {self.at}: the file ends inside {what}")
        self.at += count
        return self.data[self.at - count:self.at]

    def record(self, identifier, version, length, what):
        """The data of the next record; `length` is what its header must say."""
        found = struct.unpack("<III", self.take(12, what))
        if found != (identifier, version, length):
            raise CalibrationError(f"byte {self.at - 12}: {what} is record {found}, not {identifier, version, length}")
        return self.take(length, what)

    def number(self, identifier, version, what):
        return struct.unpack("<I", self.record(identifier, version, 4, what))[0]

    def correction(self):
        # Record 62 opens a correction. It has no data, and nobody needs its length.
        if struct.unpack("<III", self.take(12, "the start of a correction"))[:2] != (62, 1):
            raise CalibrationError(f"byte {self.at - 12}: no correction starts here")
        key = self.record(63, 1, 512, "a key").split(b"\0")[0]
        width, height = self.number(64, 1, "a width"), self.number(65, 1, "a height")
        exposure = np.frombuffer(self.record(66, 1, 4, "an exposure"), "<f4")[0]
        intensity = np.frombuffer(self.record(67, 1, 4, "an intensity"), "<f4")[0]
        pixels = self.record(68, 1, 2 * width * height, "the pixels")
        return Correction(key, exposure, intensity, np.frombuffer(pixels, "<u2").reshape(height, width))


def read_calibration(path):
    with open(path, "rb") as file:
        reader = _Reader(file.read())
    if reader.take(len(SIGNATURE), "the signature") != SIGNATURE:
        raise CalibrationError("byte 0: this is not a calibration file")
    version = struct.unpack("<I", reader.take(4, "the structure version"))[0]
    if version not in (1, 2):
        raise CalibrationError(f"byte 26: structure version {version} is not known")
    count = reader.number(69, 2, "the number of grouping names") if version == 2 else 0
    names = [reader.record(70, 2, 16, "a grouping name").split(b"\0")[0] for _ in range(count)]
    corrections = [reader.correction() for _ in range(reader.number(61, 1, "the number of corrections"))]
    if reader.at != len(reader.data):
        raise CalibrationError(f"byte {reader.at}: {len(reader.data) - reader.at} bytes follow the last correction")
    return Calibration(version, names, corrections)


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: read_calibration.py FILE")
    try:
        calibration = read_calibration(sys.argv[1])
    except (OSError, CalibrationError) as error:
        sys.exit(f"read_calibration.py: {error}")
    print(f"structure version {calibration.structure_version}, {len(calibration.corrections)} corrections")
    for correction in calibration.corrections:
        print(f"  {correction.key.decode('utf-8', 'replace')}: {correction.background.shape[1]} x "
              f"{correction.background.shape[0]}, {correction.exposure:g} s, "
              f"{correction.intensity:g} %, median {np.median(correction.background):g}")


if __name__ == "__main__":
    main()
