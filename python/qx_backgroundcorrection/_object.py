"""What processors and stores have in common: the operations of the interface."""
from __future__ import annotations

import weakref
from ctypes import addressof, byref, c_float, c_int, c_uint16, c_void_p
from typing import Any, Iterator, List, NamedTuple, NoReturn, Optional, Sequence, Tuple, Union

import numpy as np

from ._arrays import UINT16, Image, address, check_frame, overlap, spell
from ._delegates import Delegate, Subtraction, Handover
from ._errors import CorrectionError, make_error
from ._frames import Frames, stack_of
from ._library import library
from ._spelling import Path, folded, key_bytes, key_text, path_bytes

_ndarray = np.ndarray
_pixel_of: Any = c_uint16.from_buffer


class Region(NamedTuple):
    """The rectangle of a correction that images show, in pixels."""

    left: int
    top: int
    width: int
    height: int


class Reference(NamedTuple):
    """Exposure in seconds and light intensity in percent."""

    exposure: float
    intensity: float


class Statistics(NamedTuple):
    """Of pixels; the average is truncated, not rounded."""

    minimum: int
    maximum: int
    average: int


class LibraryObject:
    """What processors and stores have in common. See QX_BackgroundCorrection.h for what the operations do.

    Calls on one object are serialised by the library; Python's own lock is free while it works. Do not close an object
    that another thread is using.
    """

    _handle: Optional[int]
    _shape: Optional[Tuple[int, int]]  # of the images that apply() takes; None: the library decides

    def __init__(self, handle: int) -> None:
        self._library = library()
        self._apply = self._library.ApplyCorrection
        self._apply_quickly = self._library.apply_quickly
        self._handle = handle
        self._pointer = c_void_p(handle)
        self._finalizer = weakref.finalize(self, self._library.Delete, handle)
        self._look_at_region()

    # Life

    def close(self) -> None:
        """Destroys the object; what was not saved is lost. A second call does nothing."""
        self._handle = None
        self._pointer = c_void_p()
        self._finalizer()

    @property
    def closed(self) -> bool:
        return self._handle is None

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __reduce__(self) -> NoReturn:
        raise TypeError(f"a {type(self).__name__} belongs to its process and cannot be pickled or copied")

    # Errors

    def _check(self, operation: str, code: int) -> None:
        if code:
            # The flat interface leaves no text for its own codes.
            text = None if self._handle is None or 65537 <= code <= 65541 else self.last_error
            raise make_error(operation, code, text or "")

    @property
    def last_error(self) -> str:
        """The text of the last failure; empty when there was none, or a store has none."""
        text: Optional[bytes] = self._library.GetLastErrorMessage(self._handle)
        return "" if text is None else text.decode("utf-8", "replace")

    def _look_at_region(self) -> None:
        # Kept for apply(), which has no time to ask.
        region = self._read_region()
        self._shape = (region.height, region.width) if region is not None and region.height > 0 else None

    # Corrections

    def add(self, key: str, frames: Frames, *, exposure: float, intensity: float = 100) -> None:
        """Builds a correction from dark frames and stores it at the end of the list; it does not become active.

        Parameters
        ----------
        key : str
            Name of the correction. Letter case does not count; 512 characters are kept.
        frames : array or iterable of arrays
            Array (height, width) or (frames, height, width), a sequence of arrays (height, width), or an iterator,
            whose frames are added one by one and not kept. uint16.
        exposure : float
            Of the frames, in seconds, above 0.
        intensity : float
            Of the frames, in percent, above 0.

        >>> import numpy as np
        >>> from qx_backgroundcorrection import Processor
        >>> dark = np.array([[100, 102], [104, 106]], np.uint16)
        >>> with Processor() as processor:
        ...     processor.add("dark", [dark, dark + 2], exposure=0.1)
        ...     processor.keys()
        ['dark']
        """
        name = key_bytes(key)
        stack = stack_of(frames)
        height, width = stack[0].shape
        pointers = (c_void_p * len(stack))(*(address(frame) for frame in stack))
        code = self._library.AddCorrection(self._handle, name, pointers, len(stack), width, height, exposure, intensity)
        self._look_at_region()  # a store may have changed its group
        self._check("add", code)

    def set_active(self, key: Optional[str]) -> None:
        """Makes a correction the active one, and its whole image the region. None deactivates."""
        code = self._library.SetActiveCorrection(self._handle, None if key is None else key_bytes(key))
        self._look_at_region()
        self._check("set_active", code)

    @property
    def active(self) -> Optional[str]:
        """The key of the active correction, or None. Setting it is set_active()."""
        return key_text(self._library.GetActiveCorrectionKey(self._handle))

    @active.setter
    def active(self, key: Optional[str]) -> None:
        self.set_active(key)

    def keys(self) -> List[str]:
        """The keys of all corrections, in the order of adding."""
        found: List[str] = []
        for index in range(len(self)):
            key = key_text(self._library.GetCorrectionKey(self._handle, index))
            if key is None:  # another thread deleted some
                break
            found.append(key)
        return found

    def __len__(self) -> int:
        return int(self._library.GetNumberOfCorrections(self._handle))

    def __bool__(self) -> bool:  # an object without corrections is not nothing
        return True

    def __iter__(self) -> Iterator[str]:
        return iter(self.keys())

    def __contains__(self, key: object) -> bool:
        return isinstance(key, str) and folded(key) in {folded(name) for name in self.keys()}

    def delete(self, key: str) -> None:
        """Removes a correction. The active one is refused."""
        code = self._library.DeleteCorrection(self._handle, key_bytes(key))
        self._look_at_region()
        self._check("delete", code)

    def clear(self) -> None:
        """Removes every correction, but no file."""
        code = self._library.ClearCorrections(self._handle)
        self._look_at_region()
        self._check("clear", code)

    def import_from(self, source: LibraryObject, *, overwrite: bool = False) -> None:
        """Copies the corrections of another object. Keys that are here already are skipped, or with `overwrite`
        replaced. A processor takes processors only."""
        if not isinstance(source, LibraryObject):
            raise TypeError(f"the source is a {type(source).__name__}, not a Processor or Store")
        code = self._library.ImportCorrections(self._handle, source._handle, overwrite)
        self._look_at_region()
        source._look_at_region()  # a store went through its groups
        self._check("import_from", code)

    # Settings

    @property
    def level(self) -> int:
        """How much of the background is subtracted, in percent. Some values read back one lower (29 as 28)."""
        return int(self._library.GetCorrectionLevel(self._handle))

    @level.setter
    def level(self, percent: int) -> None:
        self._check("level", self._library.SetCorrectionLevel(self._handle, percent))

    def set_exposure_and_intensity(self, exposure: float, intensity: float = 100) -> None:
        """Sets exposure (seconds) and light intensity (percent) of the images to come. Do it before the first image."""
        self._check("set_exposure_and_intensity",
                    self._library.SetExposureAndIntensity(self._handle, exposure, intensity))

    @property
    def exposure_and_intensity(self) -> Reference:
        """The values last set; -1 for what was never set."""
        return self._two_floats("exposure_and_intensity", self._library.GetExposureAndIntensity)

    @property
    def reference(self) -> Optional[Reference]:
        """Exposure and intensity at which the active correction was taken; None when none is active."""
        return (None if self.active is None
                else self._two_floats("reference", self._library.GetReferenceExposureAndIntensity))

    def _two_floats(self, operation: str, function: Any) -> Reference:
        exposure, intensity = c_float(-1), c_float(-1)
        self._check(operation, function(self._handle, byref(exposure), byref(intensity)))
        return Reference(exposure.value, intensity.value)

    def set_region(self, left: int, top: int, width: int, height: int) -> None:
        """Sets the rectangle of the active correction that images show, in pixels."""
        code = self._library.SetRegion(self._handle, left, top, width, height)
        self._look_at_region()
        self._check("set_region", code)

    @property
    def region(self) -> Region:
        """The rectangle of the active correction that images show. Can be set to any four numbers."""
        numbers = [c_int(-1) for _ in range(4)]
        self._check("region", self._library.GetRegion(self._handle, *map(byref, numbers)))
        return Region(*(number.value for number in numbers))

    @region.setter
    def region(self, region: Sequence[int]) -> None:
        self.set_region(*region)

    def _read_region(self) -> Optional[Region]:
        numbers = [c_int(-1) for _ in range(4)]
        code = self._library.GetRegion(self._handle, *map(byref, numbers))
        return None if code else Region(*(number.value for number in numbers))

    # Pixels

    def statistics(self) -> Optional[Statistics]:
        """Of the active correction's whole stored image; None when none is active."""
        return self._three_values("statistics", self._library.GetCorrectionStatistics)

    def scaled_statistics(self) -> Optional[Statistics]:
        """Of what apply() subtracts."""
        return self._three_values("scaled_statistics", self._library.GetScaledCorrectionStatistics)

    def _three_values(self, operation: str, function: Any) -> Optional[Statistics]:
        values = [c_uint16() for _ in range(3)]
        self._check(operation, function(self._handle, *map(byref, values)))
        return None if self.active is None else Statistics(*(value.value for value in values))

    def apply(self, image: Image, out: Optional[Image] = None, *,
              delegate: Union[Delegate, Subtraction, None] = None, processing: bool = False,
              option: bool = False) -> Image:
        """Subtracts the background from an image, in place or into `out`, without a copy. Results below 0 become 0.

        Parameters
        ----------
        image : uint16 array (height, width) of the region's size, contiguous
            Changed unless `out` is given.
        out : None or array like `image`
            Receives the result. `image` itself, or memory that `image` has no part in.
        delegate : Delegate, callable or None
            Does the work in the library's place; see Delegate.
        processing, option : bool
            Handed to the delegate. With `processing` it also gets images when nothing is to be subtracted.

        Returns
        -------
        `out`, or `image` when that is None.

        Raises
        ------
        TypeError, ValueError
            The array has another dtype, order or size, or is read-only. Nothing was written.
        CorrectionError
            The library refused.

        >>> import numpy as np
        >>> from qx_backgroundcorrection import Processor
        >>> with Processor() as processor:
        ...     processor.add("dark", np.full((2, 2), 100, np.uint16), exposure=1)
        ...     processor.set_active("dark")
        ...     processor.set_exposure_and_intensity(2)
        ...     processor.apply(np.array([[1000, 700], [300, 100]], np.uint16))
        array([[800, 500],
               [100,   0]], dtype=uint16)
        """
        # Images of a live view come here: the usual ones shall cost next to nothing. All others, and what is wrong, are
        # looked at below.
        if delegate is None and type(image) is _ndarray and image.dtype is UINT16 and image.shape == self._shape:
            try:
                pixel = _pixel_of(image)  # only of contiguous memory that may be written
                size = image.size
                if out is None:
                    code = self._apply_quickly(self._pointer, byref(pixel), size, None, 0, None, 0, 0, 0)
                    if not code:
                        return image
                    self._check("apply", code)
                elif type(out) is _ndarray and out.dtype is UINT16 and out.shape == self._shape:
                    first = _pixel_of(out)
                    distance = addressof(pixel) - addressof(first)
                    if distance == 0 or distance >= 2 * size or -distance >= 2 * size:
                        code = self._apply_quickly(self._pointer, byref(pixel), size, byref(first), size, None, 0, 0, 0)
                        if not code:
                            return out
                        self._check("apply", code)
            except (TypeError, ValueError, BufferError) as error:
                if isinstance(error, CorrectionError):
                    raise
        return self._apply_with_care(image, out, delegate, processing, option)

    def _apply_with_care(self, image: Image, out: Optional[Image], delegate: Union[Delegate, Subtraction, None],
                         processing: bool, option: bool) -> Image:
        check_frame("the image", image, self._shape, out is None)
        pointer, length = None, 0
        if out is not None:
            check_frame("out", out, None, True)
            if out.shape != image.shape:
                raise ValueError(f"out has {spell(out.shape)}, but the image has {spell(image.shape)}")
            if overlap(image, out):
                raise ValueError("out shares memory with the image and is not the image itself")
            pointer, length = address(out), out.size
        if delegate is None:
            self._check("apply", self._apply(self._handle, address(image), image.size, pointer, length,
                                             None, 0, 0, 0))
        else:
            handover = Handover(delegate)
            code = self._apply(self._handle, address(image), image.size, pointer, length,
                               byref(handover.functions), 1, processing, option)
            handover.raise_what_happened()
            self._check("apply", code)
        return image if out is None else out

    def background(self) -> Image:
        """What apply() subtracts, as an array of the region's size: scaled to exposure, intensity and level.

        >>> import numpy as np
        >>> from qx_backgroundcorrection import Processor
        >>> with Processor() as processor:
        ...     processor.add("dark", np.full((1, 2), 100, np.uint16), exposure=1)
        ...     processor.set_active("dark")
        ...     processor.set_exposure_and_intensity(3)
        ...     processor.background()
        array([[300, 300]], dtype=uint16)
        """
        shape = self._shape or (1, 1)
        white: Image = np.full(shape, 65535, np.uint16)
        self.apply(white)
        return np.subtract(np.uint16(65535), white)

    # Files

    def load(self, path: Path) -> None:
        """Loads a calibration file whole; a store takes its base name or any of its files."""
        self._load("load", self._library.LoadFile, path)

    def load_header_only(self, path: Path) -> None:
        """Loads a calibration file without its pixels: keys can be listed, and nothing changed or applied."""
        self._load("load_header_only", self._library.LoadFileHeaderOnly, path)

    def _load(self, operation: str, function: Any, path: Path) -> None:
        code = function(self._handle, path_bytes(path))
        self._look_at_region()
        self._check(operation, code)

    def save(self, path: Path) -> None:
        """Writes all corrections; an older file is replaced. A store writes its group files, see offline-store.md."""
        code = self._library.SaveFile(self._handle, path_bytes(path))
        self._look_at_region()
        self._check("save", code)

    # To look at

    def _description(self) -> List[str]:
        if self.closed:
            return ["closed"]
        count = len(self)
        parts = [f"{count} correction{'' if count == 1 else 's'}"]
        key, region = self.active, self._read_region()
        if region is None:
            return parts + ["header only"]
        if key is None:
            return parts + ["none active"]
        parts.append(f"active {key!r}")
        reference = self.reference
        if reference is not None:
            parts.append(f"taken at {reference.exposure:g} s {reference.intensity:g} %")
        now = self.exposure_and_intensity
        parts.append(f"for {now.exposure:g} s {now.intensity:g} %" if now != (-1, -1)
                     else "exposure of the images not set")
        parts.append(f"level {self.level} %")
        parts.append(f"region {region.width} x {region.height} at {region.left}, {region.top}")
        return parts

    def __repr__(self) -> str:
        return f"<{type(self).__name__}: {'; '.join(self._description())}>"

    def _repr_html_(self) -> str:
        from ._pictures import html

        image = self.background() if not self.closed and self._read_region() and self.active is not None else None
        return html(f"{type(self).__name__}: {'; '.join(self._description())}", image)
