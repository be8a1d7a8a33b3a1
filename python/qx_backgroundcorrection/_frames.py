"""Dark frames as the library takes them."""
from __future__ import annotations

from typing import Any, Iterable, Iterator, List, Optional, Sequence, Union

import numpy as np

from ._arrays import Image, check_type, spell
from ._average import add_frames, average_of

Frames = Union[Image, Iterable[Image]]


def stack_of(frames: Frames) -> List[Image]:
    """Contiguous frames of one size."""
    if isinstance(frames, np.ndarray):
        check_type("frames", frames)
        if frames.ndim not in (2, 3):
            raise ValueError(f"frames has {frames.ndim} dimensions, not two (height, width) or three (frames, height, "
                             f"width)")
        stack = [frames] if frames.ndim == 2 else list(frames)
    elif isinstance(frames, Sequence):
        stack = list(frames)
    elif isinstance(frames, Iterable):
        return [average_of_iterator(frames)]
    else:
        raise TypeError(f"frames is a {type(frames).__name__}, not an array or a sequence of arrays")
    for index, frame in enumerate(stack):
        check_dark(index, frame, stack[0])
    if not stack:
        raise ValueError("frames: there is none")
    return [np.ascontiguousarray(frame) for frame in stack]


def check_dark(index: int, frame: Any, first: Any) -> None:
    name = f"frame {index}"
    check_type(name, frame)
    if frame.ndim != 2 or frame.size == 0:
        raise ValueError(f"{name} has the shape {frame.shape}, not (height, width)")
    if frame.shape != first.shape:
        raise ValueError(f"{name} has {spell(frame.shape)}, but frame 0 has {spell(first.shape)}")


def average_of_iterator(frames: Iterable[Image]) -> Image:
    """The library's average of frames that come one at a time. It is one frame, which the library takes as it is."""
    count = 0
    first: Optional[Image] = None

    def checked() -> Iterator[Image]:
        nonlocal count, first
        for frame in frames:
            check_dark(count, frame, frame if first is None else first)
            first = frame if first is None else first
            count += 1
            yield frame

    sums = add_frames(None, checked())
    return average_of(sums, count)
