"""Delegates: the host's own functions, which apply() hands its work to."""
from __future__ import annotations

from typing import Callable, Optional, Union

from ._arrays import Image, seen_from_outside
from ._library import PROCESS_IN_PLACE, SUBTRACT_IN_PLACE, SUBTRACT_INTO, DelegateFunctions

# image, background (None: there is nothing to subtract), where the result goes (may be image itself)
Subtraction = Callable[[Image, Optional[Image], Image], object]

OPERATION_FAILED = 1024


class Delegate:
    """Does the subtraction in the library's place, when it is given to apply(). To derive from.

    The arrays are those of the library and of the caller: they are valid during the call only. A method returns None or
    0 after success, or a code of its own, with which apply() then fails. An exception leaves apply() as it is. Methods
    may call the object back, but must not wait for another thread that does.

    Where one function is enough, apply() takes any callable of (image, background, out) as well; background is None
    when there is nothing to subtract.

    >>> import numpy as np
    >>> from qx_backgroundcorrection import Processor
    >>> def brighten(image, background, out):
    ...     np.subtract(image + np.uint16(1), background, out=out)
    >>> with Processor() as processor:
    ...     processor.add("dark", np.full((1, 2), 100, np.uint16), exposure=1)
    ...     processor.active = "dark"
    ...     processor.set_exposure_and_intensity(1)
    ...     processor.apply(np.array([[500, 600]], np.uint16), delegate=brighten)
    array([[401, 501]], dtype=uint16)
    """

    def subtract_in_place(self, image: Image, background: Image, processing: bool, option: bool) -> Optional[int]:
        """Subtracts `background` from `image`. Flags as given to apply()."""
        raise NotImplementedError("this delegate does not subtract in place")

    def subtract_into(self, output: Image, image: Image, background: Image, processing: bool,
                      option: bool) -> Optional[int]:
        """Writes `image` minus `background` to `output`."""
        raise NotImplementedError("this delegate does not subtract into another image")

    def process_in_place(self, image: Image) -> Optional[int]:
        """Does whatever else the host does; called when there is nothing to subtract."""
        raise NotImplementedError("this delegate does not process images")


class _Callable(Delegate):
    def __init__(self, function: Subtraction) -> None:
        self._function = function

    def _result(self, image: Image, background: Optional[Image], out: Image) -> Optional[int]:
        result = self._function(image, background, out)
        return result if isinstance(result, int) else None

    def subtract_in_place(self, image: Image, background: Image, processing: bool, option: bool) -> Optional[int]:
        return self._result(image, background, image)

    def subtract_into(self, output: Image, image: Image, background: Image, processing: bool,
                      option: bool) -> Optional[int]:
        return self._result(image, background, output)

    def process_in_place(self, image: Image) -> Optional[int]:
        return self._result(image, None, image)


class Handover:
    """A delegate as the flat interface takes it, for one call. No exception may go through the library: it is kept."""

    def __init__(self, delegate: Union[Delegate, Subtraction]) -> None:
        if not isinstance(delegate, Delegate):
            if not callable(delegate):
                raise TypeError(f"the delegate is a {type(delegate).__name__}: neither a Delegate nor callable")
            delegate = _Callable(delegate)
        self._delegate: Delegate = delegate
        self._happened: Optional[BaseException] = None
        self.functions = DelegateFunctions(None, SUBTRACT_IN_PLACE(self._in_place), SUBTRACT_INTO(self._into),
                                           PROCESS_IN_PLACE(self._process))

    def raise_what_happened(self) -> None:
        if self._happened is not None:
            try:
                raise self._happened
            finally:
                self._happened = None  # or it would keep itself alive

    def _guarded(self, work: Callable[[], Optional[int]]) -> int:
        try:
            return (work() or 0) & 0xFFFFFFFF
        except BaseException as exception:
            self._happened = exception
            return OPERATION_FAILED

    def _in_place(self, user: object, image: int, background: int, width: int, height: int, processing: int,
                  option: int) -> int:
        shape = (height, width)
        return self._guarded(lambda: self._delegate.subtract_in_place(
            seen_from_outside(image, shape, True), seen_from_outside(background, shape, False), bool(processing),
            bool(option)))

    def _into(self, user: object, output: int, image: int, background: int, width: int, height: int, processing: int,
              option: int) -> int:
        shape = (height, width)
        return self._guarded(lambda: self._delegate.subtract_into(
            seen_from_outside(output, shape, True), seen_from_outside(image, shape, False),
            seen_from_outside(background, shape, False), bool(processing), bool(option)))

    def _process(self, user: object, image: int, width: int, height: int) -> int:
        return self._guarded(lambda: self._delegate.process_in_place(seen_from_outside(image, (height, width), True)))
