"""Images and dark frames in dask arrays."""
from __future__ import annotations

import warnings
from typing import Any, Dict, List, Optional, Sequence, Tuple, Union

import dask
import dask.array as da
import numpy as np
from dask.base import tokenize
from dask.highlevelgraph import HighLevelGraph

from ._arrays import UINT16, Image
from ._average import EXACT_FRAMES, Sums, add_frames, average_of
from ._correct import is_dask, master_dark, travelling_darks
from ._object import Region
from ._pool import pool
from ._recipe import (AsBytes, CalibrationSource, FromFrame, InFile, Recipe, apply_to_stack, check_images, check_region,
                      from_calibration)


class RechunkWarning(UserWarning):
    """The chunks of a dask array are no whole frames, which costs time and memory."""


def correct_chunk(images: Image, recipe: Recipe, frame: Optional[Image] = None) -> Image:
    """What a worker does with a chunk. The images may belong to somebody else: they stay as they are."""
    out: Image = np.empty(images.shape, np.uint16)
    if out.size:
        with pool.processor(recipe, frame) as processor:
            apply_to_stack(processor, images, out)
    return out


def whole_frames(images: Any) -> Any:
    """The array in chunks of whole frames."""
    if images.ndim < 2:
        raise ValueError(f"images has {images.ndim} dimensions, not two or more (..., height, width)")
    if images.numblocks[-2:] == (1, 1):
        return images
    warnings.warn(f"the chunks of images are {' x '.join(map(str, images.chunksize))}, which is no whole frame: they "
                  f"are put together; chunks of whole frames are quicker and need less memory", RechunkWarning,
                  stacklevel=4)
    return images.rechunk({images.ndim - 2: -1, images.ndim - 1: -1})


def correct_dask(images: Any, calibration: Optional[CalibrationSource], key: Optional[str], darks: Any,
                 dark_exposure: Optional[float], dark_intensity: float, exposure: float, intensity: float, level: int,
                 region: Optional[Sequence[int]], out: Optional[Image]) -> Any:
    if not is_dask(images):  # dark frames in dask, images in numpy
        images_there = da.from_array(images, chunks=-1, name=False)
        result = correct_dask(images_there, None, None, darks, dark_exposure, dark_intensity, exposure, intensity,
                              level, region, None).compute(scheduler="threads")
        if out is None:
            return result
        out[...] = result
        return out
    if out is not None:
        raise TypeError("out cannot be given with a dask array; store the result with .to_zarr() or dask.array.store()")
    if images.dtype != UINT16:
        raise TypeError(f"images has dtype {images.dtype}, not uint16; convert it with .astype(numpy.uint16)")
    frame: Any = None
    source: Union[InFile, AsBytes, FromFrame]
    if calibration is not None:
        source, shape = from_calibration(calibration, key)
    else:
        assert dark_exposure is not None
        if is_dask(darks):
            average = average_darks(darks)
            shape = average.shape
            source = FromFrame(dark_exposure, dark_intensity, average.name)
            # As a value of its own, which travels to each worker once.
            frame = dask.delayed(_one_piece)(average)
        else:
            source = travelling_darks(darks, dark_exposure, dark_intensity)
            shape = from_calibration(source.data, source.key)[1]
    rectangle: Optional[Region] = check_region(region, shape)
    check_images(images.shape, shape, rectangle)
    recipe: Any = Recipe(source, exposure, intensity, level, rectangle)
    images = whole_frames(images)
    name = "qx-correct-" + tokenize(images.name, recipe.token)
    if isinstance(source, AsBytes):
        recipe = dask.delayed(recipe, name="qx-recipe-" + recipe.token, traverse=False)
    return da.map_blocks(correct_chunk, images, recipe=recipe, frame=frame, name=name, dtype=np.uint16,
                         meta=np.empty((0,) * images.ndim, np.uint16))


def _one_piece(array: Image) -> Image:
    return array


# Dark frames

def _checked_darks(darks: Any) -> Any:
    if darks.dtype != UINT16:
        raise TypeError(f"darks has dtype {darks.dtype}, not uint16; convert it with .astype(numpy.uint16)")
    if darks.ndim == 2:
        darks = darks[np.newaxis]
    if darks.ndim != 3 or 0 in darks.shape:
        raise ValueError(f"darks has the shape {darks.shape}, not (frames, height, width)")
    return darks


def _partial(frames: Image) -> Sums:
    return add_frames(None, frames)


def _finish(sums: List[Sums], count: int) -> Image:
    return average_of(add_frames(None, sums), count)


def average_darks(darks: Any) -> Any:
    """The library's average of a dask stack (frames, height, width), before the median filter, as a dask array.

    Up to 256 frames every sum is exact, so that chunks are added on their own. Beyond, each chunk goes on where the one
    before ended, since the library adds in order and rounds each time.
    """
    darks = _checked_darks(darks)
    count = darks.shape[0]
    name = "qx-average-" + tokenize(darks.name)
    graph: Dict[Tuple[Any, ...], Tuple[Any, ...]] = {}
    depth, rows, columns = darks.numblocks
    for row in range(rows):
        for column in range(columns):
            keys: List[Tuple[Any, ...]] = []
            for z in range(depth):
                key = (name + "-sums", z, row, column)
                chunk = (darks.name, z, row, column)
                graph[key] = ((_partial, chunk) if count <= EXACT_FRAMES or z == 0
                              else (add_frames, keys[-1], chunk))
                keys.append(key)
            graph[(name, row, column)] = (_finish, keys if count <= EXACT_FRAMES else keys[-1:], count)
    layers = HighLevelGraph.from_collections(name, graph, dependencies=[darks])
    return da.Array(layers, name, chunks=darks.chunks[1:], dtype=np.uint16, meta=np.empty((0, 0), np.uint16))


def _filtered(average: Image) -> Image:
    filtered: Image = master_dark(average)  # a single frame is taken as it is
    return filtered


def master_dark_dask(darks: Any) -> Any:
    average = average_darks(darks).rechunk(-1)
    return average.map_blocks(_filtered, name="qx-master-" + tokenize(average.name), dtype=np.uint16,
                              meta=np.empty((0, 0), np.uint16))
