"""What a correction run does to each image, in a form that travels to other processes."""
from __future__ import annotations

import math
import operator
import os
import tempfile
from dataclasses import dataclass
from functools import cached_property
from hashlib import sha256
from typing import Any, Iterable, Optional, Tuple, Union

import numpy as np

from ._arrays import Image, check_frame, check_type, spell
from ._calibration import Calibration, Correction, parse_calibration, read_calibration
from ._object import Region
from ._objects import Processor
from ._spelling import Path

CalibrationSource = Union[Path, bytes, Calibration]


class CalibrationChangedError(ValueError):
    """The calibration file is no longer what it was when the work was planned."""


@dataclass(frozen=True)
class InFile:
    """A correction in a file that every worker can read; `digest` says what has to be in it."""

    path: str
    key: str
    digest: str

    def prepare(self, processor: Processor, frame: Optional[Image]) -> None:
        calibration = read_calibration(self.path)
        if self.key not in calibration or calibration[self.key].digest() != self.digest:
            raise CalibrationChangedError(f"the correction {self.key!r} in {self.path} is not the one that the work "
                                          f"was planned with")
        load_alone(processor, calibration[self.key].file_bytes(), self.key)


@dataclass(frozen=True)
class AsBytes:
    """A correction that travels itself: the bytes of a calibration file that holds nothing else."""

    data: bytes
    key: str
    digest: str

    def __repr__(self) -> str:  # it stands in the errors of a cluster
        return f"AsBytes({self.key!r}, {len(self.data)} bytes)"

    def prepare(self, processor: Processor, frame: Optional[Image]) -> None:
        load_alone(processor, self.data, self.key)


@dataclass(frozen=True)
class FromFrame:
    """A correction made of one dark frame, which comes with the images."""

    exposure: float
    intensity: float
    digest: str
    key = "darks"

    def prepare(self, processor: Processor, frame: Optional[Image]) -> None:
        assert frame is not None
        processor.add(self.key, frame, exposure=self.exposure, intensity=self.intensity)


def load_alone(processor: Processor, data: bytes, key: str) -> None:
    with tempfile.TemporaryDirectory(prefix="qx-correction-") as folder:
        path = os.path.join(folder, "calibration")
        with open(path, "wb") as file:
            file.write(data)
        processor.load(path)


@dataclass(frozen=True)
class Recipe:
    """Everything that decides what an image becomes."""

    source: Union[InFile, AsBytes, FromFrame]
    exposure: float
    intensity: float
    level: int
    region: Optional[Region]

    @cached_property
    def token(self) -> str:
        settings: Tuple[object, ...] = (type(self.source).__name__, self.source.digest, self.exposure, self.intensity,
                                        self.level, self.region)
        if isinstance(self.source, FromFrame):
            settings += (self.source.exposure, self.source.intensity)
        return sha256(repr(settings).encode()).hexdigest()

    def processor(self, frame: Optional[Image] = None) -> Processor:
        """A processor that is ready for images."""
        processor = Processor()
        try:
            self.source.prepare(processor, frame)
            self.set_up(processor, self.source.key)
        except BaseException:
            processor.close()
            raise
        return processor

    def set_up(self, processor: Processor, key: str) -> None:
        processor.set_exposure_and_intensity(self.exposure, self.intensity)
        processor.level = self.level
        processor.set_active(key)
        if self.region is not None:
            processor.region = self.region


# Arguments, refused by name before any work.

def positive(name: str, value: Any) -> float:
    try:
        number = float(value)
    except (TypeError, ValueError):
        raise TypeError(f"{name} is {value!r}, not a number") from None
    if not (math.isfinite(number) and number > 0):
        raise ValueError(f"{name} is {value!r}; it has to be above 0")
    return number


def percentage(value: Any) -> int:
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"level is {value!r}, not a whole number") from None
    if not 0 <= number <= 100:
        raise ValueError(f"level is {number}; it has to be 0 to 100 percent")
    return number


def check_region(region: Any, shape: Tuple[int, int]) -> Optional[Region]:
    """`shape` is the correction's."""
    if region is None:
        return None
    try:
        left, top, width, height = map(operator.index, region)
    except (TypeError, ValueError):
        raise TypeError(f"region is {region!r}, not (left, top, width, height) in pixels") from None
    if left < 0 or top < 0 or width < 1 or height < 1 or left + width > shape[1] or top + height > shape[0]:
        raise ValueError(f"region is {(left, top, width, height)}, which does not lie in the correction's "
                         f"{spell(shape)}")
    return Region(left, top, width, height)


def choose(calibration: Calibration, key: Optional[str]) -> Correction:
    where = calibration.path or "the calibration"
    listed = ", ".join(map(repr, calibration.keys())) or "none"
    if key is None:
        if len(calibration) != 1:
            raise ValueError(f"key: {where} holds {len(calibration)} corrections, say which one: {listed}")
        return calibration[0]
    if not isinstance(key, str):
        raise TypeError(f"key is a {type(key).__name__}, not a str")
    if key not in calibration:
        raise ValueError(f"key: {where} has no correction {key!r}, only: {listed}")
    return calibration[key]


def from_calibration(calibration: CalibrationSource,
                     key: Optional[str]) -> Tuple[Union[InFile, AsBytes], Tuple[int, int]]:
    """The chosen correction and its shape."""
    if isinstance(calibration, (str, os.PathLike)):
        read = read_calibration(calibration)
        correction = choose(read, key)
        assert read.path is not None
        return InFile(read.path, correction.key, correction.digest()), correction.shape
    if isinstance(calibration, (bytes, bytearray, memoryview)):
        calibration = parse_calibration(bytes(calibration))
    if not isinstance(calibration, Calibration):
        raise TypeError(f"calibration is a {type(calibration).__name__}, not a path, the bytes of a calibration file "
                        f"or what read_calibration() gives")
    correction = choose(calibration, key)
    return AsBytes(correction.file_bytes(), correction.key, correction.digest()), correction.shape


def as_bytes(processor: Processor, key: str) -> AsBytes:
    """A processor's only correction, to travel."""
    with tempfile.TemporaryDirectory(prefix="qx-correction-") as folder:
        path = os.path.join(folder, "calibration")
        processor.save(path)
        with open(path, "rb") as file:
            data = file.read()
    return AsBytes(data, key, parse_calibration(data)[key].digest())


def check_images(shape: Tuple[int, ...], correction: Tuple[int, int], region: Optional[Region]) -> None:
    """`correction` is the shape of the correction."""
    wanted = correction if region is None else (region.height, region.width)
    if len(shape) < 2:
        raise ValueError(f"images has {len(shape)} dimensions, not two or more (..., height, width)")
    if tuple(shape[-2:]) != tuple(wanted):
        hint = "" if region is not None else "; region=(left, top, width, height) says which part they show"
        raise ValueError(f"images are of {spell(tuple(shape[-2:]))}, but the "
                         f"{'correction' if region is None else 'region'} has {spell(wanted)}{hint}")


def apply_to_stack(processor: Processor, images: Image, out: Image) -> None:
    """Corrects images (..., height, width) into `out`, which may be the images themselves."""
    in_place = out is images
    # Chunks mostly have one leading axis; numpy's walk over indices costs more than a small image.
    indices: Iterable[Any] = range(images.shape[0])
    if images.ndim != 3:
        indices = np.ndindex(images.shape[:-2])
    for index in indices:
        if in_place:
            processor.apply(images[index])
        else:
            # An input may lie in memory as it likes: a frame that is not contiguous is copied first.
            processor.apply(np.ascontiguousarray(images[index]), out=out[index])


def check_output(out: Any, shape: Tuple[int, ...]) -> None:
    check_type("out", out)
    if out.shape != shape:
        raise ValueError(f"out has the shape {out.shape}, but the images have {shape}")
    if out.size:
        check_frame("a frame of out", out[(0,) * (out.ndim - 2)], None, True)
