"""The one-liners."""
from __future__ import annotations

import sys
from typing import TYPE_CHECKING, Any, Iterable, Optional, Sequence, Union

import numpy as np

from ._arrays import Image, check_type, overlap
from ._frames import Frames
from ._objects import Processor
from ._recipe import (AsBytes, CalibrationSource, Recipe, apply_to_stack, as_bytes, check_images, check_output,
                      check_region, from_calibration, percentage, positive)

if TYPE_CHECKING:
    from ._recipe import InFile


def is_dask(array: object) -> bool:
    """Whether it is a dask array. Who has one has imported dask."""
    module = sys.modules.get("dask.array")
    return module is not None and isinstance(array, module.Array)


def correct(images: Any, *, calibration: Optional[CalibrationSource] = None, key: Optional[str] = None,
            darks: Union[Frames, Any, None] = None, dark_exposure: Optional[float] = None, dark_intensity: float = 100,
            exposure: float, intensity: float = 100, level: int = 100, region: Optional[Sequence[int]] = None,
            out: Optional[Image] = None) -> Any:
    """Corrects images with a correction from a calibration file, or made of dark frames.

    Parameters
    ----------
    images : uint16 array (height, width) or (..., height, width), of numpy or dask
        A dask array gives a dask array, which is computed when it is asked for.
    calibration : path, bytes or Calibration
        The calibration file, or a group file of a store. For dask: a path is opened by every worker, which checks that
        the correction is the same; bytes, and what read_calibration() gave, travel to the workers themselves.
    key : str, optional
        Which correction of `calibration` (letter case ignored). May be left out where there is only one.
    darks : array or iterable of arrays
        Dark frames instead of a calibration: (frames, height, width), (height, width), an iterable of (height, width),
        or a dask array.
    dark_exposure, dark_intensity : float
        Of the dark frames, in seconds and percent. `dark_exposure` is required with `darks`.
    exposure, intensity : float
        Of the images, in seconds and percent.
    level : int
        How much of the background is subtracted, 0 to 100 percent.
    region : (left, top, width, height), optional
        Which part of the correction the images show, in pixels; the whole if left out.
    out : uint16 array of the shape of `images`, optional
        Receives the result. `images` itself corrects in place. Not with dask.

    Returns
    -------
    The corrected images: `out`, or a new array.

    Raises
    ------
    TypeError, ValueError
        An argument is refused, before any work.
    CalibrationFormatError, OSError
        The calibration cannot be read.
    CorrectionError
        The library refused.

    Each call builds or loads its correction anew. For images that come one by one a Processor is quicker.

    >>> import numpy as np
    >>> darks = np.array([[[100, 200]], [[102, 204]]], np.uint16)
    >>> images = np.array([[[1000, 1000]], [[210, 100]]], np.uint16)
    >>> correct(images, darks=darks, dark_exposure=1, exposure=2)
    array([[[596, 596]],
    <BLANKLINE>
           [[  0,   0]]], dtype=uint16)
    """
    if (calibration is None) == (darks is None):
        raise TypeError("correct() takes either calibration or darks" + ("" if darks is None else ", not both"))
    if calibration is None and key is not None:
        raise TypeError("key names a correction of a calibration and has no meaning with darks")
    if darks is None and dark_exposure is not None:
        raise TypeError("dark_exposure belongs to darks")
    exposure, intensity = positive("exposure", exposure), positive("intensity", intensity)
    level = percentage(level)
    if darks is not None:
        if dark_exposure is None:
            raise TypeError("dark_exposure is missing: at how many seconds the darks were taken")
        dark_exposure = positive("dark_exposure", dark_exposure)
        dark_intensity = positive("dark_intensity", dark_intensity)
    if is_dask(images) or is_dask(darks):
        from ._dask import correct_dask

        return correct_dask(images, calibration, key, darks, dark_exposure, dark_intensity, exposure, intensity, level,
                            region, out)

    check_type("images", images)
    if out is not None:
        check_output(out, images.shape)
        if out is not images and overlap(images, out):
            raise ValueError("out shares memory with the images and is not the images themselves")
    source: Union[InFile, AsBytes]
    if calibration is not None:
        source, shape = from_calibration(calibration, key)
        rectangle = check_region(region, shape)
        check_images(images.shape, shape, rectangle)
        processor = Recipe(source, exposure, intensity, level, rectangle).processor()
    else:
        assert darks is not None and dark_exposure is not None
        processor = Processor()
    with processor:
        if darks is not None and dark_exposure is not None:
            processor.add("darks", darks, exposure=dark_exposure, intensity=dark_intensity)
            processor.set_active("darks")
            shape = (processor.region.height, processor.region.width)
            rectangle = check_region(region, shape)
            check_images(images.shape, shape, rectangle)
            settings = Recipe(AsBytes(b"", "darks", ""), exposure, intensity, level, rectangle)
            settings.set_up(processor, "darks")
        result: Image = np.empty(images.shape, np.uint16) if out is None else out
        apply_to_stack(processor, images, result)
    return result


def travelling_darks(darks: Iterable[Image], exposure: float, intensity: float) -> AsBytes:
    """Dark frames as the correction that the library makes of them, to travel to workers."""
    with Processor() as processor:
        processor.add("darks", darks, exposure=exposure, intensity=intensity)
        return as_bytes(processor, "darks")


def master_dark(darks: Any) -> Any:
    """The background that the library makes of dark frames: averaged, and filtered with a 3 x 3 median.

    Parameters
    ----------
    darks : uint16 array (frames, height, width) or (height, width), of numpy or dask; or an iterable of frames

    Returns
    -------
    uint16 array (height, width); a dask array for a dask array. The bits are those that a Processor keeps, whatever the
    number of frames: dask adds them in the library's order.

    >>> import numpy as np
    >>> master_dark(np.array([[[100, 200]], [[102, 205]]], np.uint16))
    array([[203, 203]], dtype=uint16)
    """
    if is_dask(darks):
        from ._dask import master_dark_dask

        return master_dark_dask(darks)
    with Processor() as processor:
        processor.add("darks", darks, exposure=1)
        processor.set_exposure_and_intensity(1)  # times one: as it is kept
        processor.set_active("darks")
        return processor.background()
