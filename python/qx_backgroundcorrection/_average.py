"""The library's average of dark frames, one frame at a time.

The library adds the frames in their order in single precision, divides in single precision and rounds half up. numpy's
additions are the same ones, so that the bits agree as long as the order does. Sums of at most EXACT_FRAMES frames are
whole numbers below 2^24: exact in single precision, whatever the order.
"""
from __future__ import annotations

from typing import Any, Iterable, Optional

import numpy as np
import numpy.typing as npt

from ._arrays import Image

Sums = npt.NDArray[np.float32]
EXACT_FRAMES = 256


def add_frames(sums: Optional[Sums], frames: Iterable[Any]) -> Sums:
    """The sums with further frames added, in a new array."""
    own: Optional[Sums] = None if sums is None else sums.copy()
    for frame in frames:
        if own is None:
            own = np.array(frame, np.float32)
        else:
            np.add(own, frame, out=own)
    if own is None:
        raise ValueError("darks: there is no frame")
    return own


def average_of(sums: Sums, count: int) -> Image:
    with np.errstate(all="ignore"):
        mean = sums / np.float32(count)
    rounded = np.floor(mean.astype(np.float64) + 0.5).astype(np.int32)
    average: Image = (rounded & 0xFFFF).astype(np.uint16)
    return average
