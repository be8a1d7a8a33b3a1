"""Processor and Store: the objects of the library."""
from __future__ import annotations

import ctypes
from ctypes import byref, c_void_p
from typing import Sequence

from ._errors import make_error
from ._library import library
from ._object import LibraryObject
from ._spelling import key_bytes


class Processor(LibraryObject):
    """A live processor: keeps every correction in memory.

    >>> import numpy as np
    >>> with Processor() as processor:
    ...     processor.add("dark", np.full((4, 6), 100, np.uint16), exposure=0.5)
    ...     processor.active = "dark"
    ...     processor.set_exposure_and_intensity(1.0)
    ...     print(processor)
    <Processor: 1 correction; active 'dark'; taken at 0.5 s 100 %; for 1 s 100 %; level 100 %; region 6 x 4 at 0, 0>
    """

    def __init__(self) -> None:
        handle = c_void_p()
        code = library().CreateProcessor(byref(handle))
        if code or handle.value is None:
            raise make_error("Processor", code, "")
        super().__init__(handle.value)

    def __enter__(self) -> Processor:
        return self


class Store(LibraryObject):
    """An offline store: spreads its corrections over one calibration file per group.

    Parameters
    ----------
    grouping_names : sequence of str
        What tells the groups apart, such as "Gain". A key then names its value: "Gain,4,Mode,fast". At least one.

    >>> import numpy as np
    >>> with Store(["Gain"]) as store:
    ...     store.add("Gain,4", np.full((4, 6), 100, np.uint16), exposure=0.5)
    ...     store.add("Gain,8", np.full((4, 6), 200, np.uint16), exposure=0.5)
    ...     store
    <Store: 2 corrections; none active>
    """

    def __init__(self, grouping_names: Sequence[str]) -> None:
        if isinstance(grouping_names, str):
            raise TypeError("grouping_names is a str, not a sequence of them")
        names = [key_bytes(name) for name in grouping_names]
        handle = c_void_p()
        code = library().CreateStore((ctypes.c_char_p * len(names))(*names), len(names), byref(handle))
        if code or handle.value is None:
            raise make_error("Store", code, "")
        super().__init__(handle.value)

    def __enter__(self) -> Store:
        return self
