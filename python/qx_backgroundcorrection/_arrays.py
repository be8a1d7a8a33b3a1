"""What may go to the library: checks with an error that says what is wrong, and addresses."""
from __future__ import annotations

import ctypes
from typing import Any, Optional, Tuple

import numpy as np
import numpy.typing as npt

Image = npt.NDArray[np.uint16]
UINT16 = np.dtype(np.uint16)


def spell(shape: Tuple[int, ...]) -> str:
    """A shape in words: (2, 480, 640) is "2 x 640 x 480 pixels", width first as everywhere in the library."""
    return " x ".join(str(n) for n in (*shape[:-2], *reversed(shape[-2:]))) + " pixels"


def check_type(name: str, array: Any) -> None:
    if not isinstance(array, np.ndarray):
        raise TypeError(f"{name} is a {type(array).__name__}, not a numpy array")
    if array.dtype != UINT16:
        swapped = array.dtype.kind == "u" and array.dtype.itemsize == 2
        raise TypeError(f"{name} has dtype {array.dtype}{' (other byte order)' if swapped else ''}, not uint16; "
                        f"convert it with .astype(numpy.uint16)")


def check_frame(name: str, array: Any, shape: Optional[Tuple[int, int]], writes: bool) -> None:
    """One image: type, size, order, and whether it may be written. `shape` None: any size."""
    check_type(name, array)
    if array.ndim != 2:
        raise ValueError(f"{name} has {array.ndim} dimensions, not two (height, width)")
    if shape is not None and array.shape != shape:
        raise ValueError(f"{name} has {spell(array.shape)}, but the region has {spell(shape)}")
    if not array.flags.c_contiguous:
        raise ValueError(f"{name} is not contiguous in memory, row by row: copy it with numpy.ascontiguousarray()")
    if not array.flags.aligned:
        raise ValueError(f"{name} does not begin at an even address: copy it")
    if writes and not array.flags.writeable:
        raise ValueError(f"{name} is read-only and would be written to")


def address(array: Image) -> int:
    return int(array.ctypes.data)


def seen_from_outside(pointer: int, shape: Tuple[int, int], writes: bool) -> Image:
    """Memory of the library as an array, which is valid as long as that memory is."""
    count = shape[0] * shape[1]
    array: Image = np.frombuffer(memoryview((ctypes.c_uint16 * count).from_address(pointer)), np.uint16).reshape(shape)
    array.flags.writeable = writes
    return array


def overlap(one: npt.NDArray[Any], other: npt.NDArray[Any]) -> bool:
    """Whether two arrays share memory but are not the very same pixels."""
    same = (one.shape == other.shape and one.strides == other.strides
            and one.ctypes.data == other.ctypes.data)
    return not same and np.may_share_memory(one, other)
