"""Corrects a whole zarr store into another one: in pieces, on as many processes as there are, and on from where an
interrupted run ended.

The new store is built under the name OUT.unfinished and gets its own name when it is whole. Each of its chunks appears
whole or not at all (zarr renames them into place), so that the chunks that are there are what is done already. Tasks
write what they write anew when they are repeated: a worker that dies costs its time only.
"""
from __future__ import annotations

import json
import os
import shutil
from dataclasses import dataclass
from hashlib import sha256
from itertools import product
from typing import Any, Callable, Dict, Iterator, List, NamedTuple, Optional, Sequence, Tuple

import numpy as np
import zarr
from zarr.storage import DirectoryStore

from ._arrays import UINT16, Image
from ._calibration import read_calibration
from ._pool import pool
from ._recipe import Recipe, apply_to_stack, check_images, check_region, from_calibration

PLAN = ".qx-run.json"
FULL_AXES = ("t", "c", "z", "y", "x")


class RunError(Exception):
    """A run is refused; nothing was written."""


class Level(NamedTuple):
    """An array of the store, and how it comes about."""

    path: str
    shape: Tuple[int, ...]
    factors: Tuple[int, ...]  # to the level before; empty for the one that is corrected


@dataclass(frozen=True)
class Job:
    """What all tasks of a run share."""

    source: str
    target: str
    levels: Tuple[Level, ...]
    recipe: Recipe


Box = Tuple[slice, ...]


def _array(store: str, path: str, mode: str) -> Any:
    # Chunks of zeros are written as well: what is not there is not done.
    return zarr.open_array(DirectoryStore(store), path=path, mode=mode, write_empty_chunks=True)


# Tasks

def correct_box(job: Job, box: Box) -> int:
    """Corrects whole frames, all chunks of them. Returns their number."""
    level = job.levels[0]
    images: Image = np.ascontiguousarray(_array(job.source, level.path, "r")[box], UINT16)
    with pool.processor(job.recipe) as processor:
        apply_to_stack(processor, images, images)
    _array(job.target, level.path, "r+")[box] = images
    return int(np.prod(images.shape[:-2]))


def shrink_box(job: Job, number: int, box: Box) -> int:
    """Makes a chunk of a lower level out of the level before."""
    level, before = job.levels[number], job.levels[number - 1]
    larger = tuple(slice(part.start * factor, min(part.stop * factor, size) if part.stop < own else size)
                   for part, factor, size, own in zip(box, level.factors, before.shape, level.shape))
    pixels = _array(job.target, before.path, "r")[larger]
    _array(job.target, level.path, "r+")[box] = means(pixels, level.factors,
                                                      tuple(part.stop - part.start for part in box))
    return 0


def means(pixels: Any, factors: Sequence[int], shape: Sequence[int]) -> Image:
    """Blocks of `factors` pixels as their means, rounded half up; what is left at the ends counts as far as it goes,
    or, where `shape` has no room for a block of its own, to the last one."""
    sums = pixels.astype(np.uint64)
    counts = np.ones((1,) * pixels.ndim, np.uint64)
    for axis, (factor, size) in enumerate(zip(factors, shape)):
        starts = np.arange(size) * factor
        lengths = np.diff(np.append(starts, sums.shape[axis])).astype(np.uint64)
        sums = np.add.reduceat(sums, starts, axis)
        counts = counts * lengths.reshape([-1 if a == axis else 1 for a in range(pixels.ndim)])
    result: Image = ((sums + counts // 2) // counts).astype(np.uint16)
    return result


# What there is to do

def _boxes(array: Any, shape: Sequence[int], whole_frames: bool) -> Iterator[Tuple[Box, List[str]]]:
    """The parts that tasks write, with the names of their chunks. With `whole_frames` all chunks of a frame are one."""
    chunks = array.chunks
    counts = [-(-size // chunk) for size, chunk in zip(shape, chunks)]
    outer = len(shape) - 2 if whole_frames else len(shape)
    for index in product(*map(range, counts[:outer])):
        box = tuple(slice(i * chunk, min((i + 1) * chunk, size)) for i, chunk, size in zip(index, chunks, shape))
        box += tuple(slice(0, size) for size in shape[outer:])
        names = [array._chunk_key((*index, *inner)) for inner in product(*map(range, counts[outer:]))]
        yield box, names


def _undone(job: Job, number: int) -> Tuple[List[Box], int]:
    """The boxes of a level that are not all there, and how many boxes there are."""
    store = DirectoryStore(job.target)
    level = job.levels[number]
    every = list(_boxes(_array(job.target, level.path, "r"), level.shape, number == 0))
    return [box for box, names in every if not all(name in store for name in names)], len(every)


def _levels(source: str) -> Tuple[Tuple[Level, ...], str]:
    """The arrays to make: of an OME-Zarr image the one of full resolution and the lower ones, else the one there is.
    And what the store is."""
    store = DirectoryStore(source)
    if ".zarray" in store:
        return (Level("", zarr.open_array(store, mode="r").shape, ()),), "array"
    if ".zgroup" not in store:
        raise RunError(f"{source} is no zarr store")
    attributes = zarr.open_group(store, mode="r").attrs.asdict()
    if "plate" in attributes or "bioformats2raw.layout" in attributes:
        raise RunError(f"{source} is a collection of images; name one of them, such as {source}/0")
    scales = attributes.get("multiscales")
    if not isinstance(scales, list) or not scales:
        raise RunError(f"{source} is a group and no OME-Zarr image; name one of its arrays")
    if len(scales) != 1:
        raise RunError(f"{source} has {len(scales)} images in one; only one is supported")
    _check_axes(source, scales[0])
    levels: List[Level] = []
    for dataset in scales[0].get("datasets", ()):
        path = str(dataset["path"]).strip("/")
        try:
            shape = zarr.open_array(store, path=path, mode="r").shape
        except Exception as error:
            raise RunError(f"{source}: level {path!r} cannot be opened: {error}") from None
        levels.append(Level(path, shape, _factors(levels[-1], path, shape) if levels else ()))
    if not levels:
        raise RunError(f"{source} lists no arrays")
    return tuple(levels), "OME-Zarr"


def _check_axes(source: str, scale: Dict[str, Any]) -> None:
    axes = [str(axis.get("name") if isinstance(axis, dict) else axis).lower() for axis in scale.get("axes", FULL_AXES)]
    if len(axes) < 2 or axes[-2:] != ["y", "x"]:
        raise RunError(f"{source} has the axes {', '.join(axes)}; the last two have to be y and x")


def _factors(before: Level, path: str, shape: Sequence[int]) -> Tuple[int, ...]:
    factors = []
    for large, small in zip(before.shape, shape):
        factor = max(1, round(large / max(small, 1)))
        if len(before.shape) != len(shape) or small not in (large // factor, -(-large // factor)):
            raise RunError(f"level {path!r} has the shape {tuple(shape)}, which is no whole part of {before.shape} "
                           f"before it: it cannot be rebuilt")
        factors.append(factor)
    return tuple(factors)


# The store around the pixels

def _copy_all_but_chunks(source: str, target: str, levels: Sequence[Level]) -> None:
    """Attributes, metadata, and whatever else lies in the store (labels), byte for byte."""
    arrays = [os.path.normpath(os.path.join(source, level.path)) for level in levels]
    for folder, folders, names in os.walk(source):
        inside = [array for array in arrays if folder == array or folder.startswith(array + os.sep)]
        if inside:
            if folder in arrays:
                names = [name for name in names if name.startswith(".z")]
            else:
                folders[:] = [name for name in folders
                              if any(array.startswith(os.path.join(folder, name)) for array in arrays)]
                names = []
        place = os.path.join(target, os.path.relpath(folder, source))
        if names or not inside:
            os.makedirs(place, exist_ok=True)
        for name in names:
            shutil.copyfile(os.path.join(folder, name), os.path.join(place, name))


def _remove_scraps(target: str) -> None:
    """Chunks that a process was killed over."""
    for folder, _, names in os.walk(target):
        for name in names:
            if name.endswith(".partial"):
                os.unlink(os.path.join(folder, name))


class _Lock:
    """One run at a time on an output; the lock is gone with the process."""

    def __init__(self, folder: str) -> None:
        self._descriptor = -1
        try:
            import fcntl
        except ImportError:  # Windows
            return
        self._descriptor = os.open(folder, os.O_RDONLY)
        try:
            fcntl.flock(self._descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            os.close(self._descriptor)
            raise RunError(f"another run is working on {folder}") from None
        except OSError:
            pass  # a file system without locks

    def release(self) -> None:
        if self._descriptor >= 0:
            os.close(self._descriptor)


Runner = Callable[[str, Callable[..., int], Job, List[Tuple[Any, ...]]], None]


def correct_store(source: str, target: str, *, calibration: str, key: Optional[str], exposure: float, intensity: float,
                  level: int, region: Optional[Sequence[int]], send: bool, overwrite: bool, run: Runner,
                  say: Callable[[str], None]) -> None:
    """Corrects the store `source` into a new one. `run` does the tasks, `say` gets lines for the user."""
    source, target = os.path.abspath(source), os.path.abspath(target)
    real, real_target = os.path.realpath(source), os.path.realpath(target)
    if real == real_target or (real + os.sep).startswith(real_target + os.sep) or \
            (real_target + os.sep).startswith(real + os.sep):
        raise RunError(f"{target} and {source} lie in one another")
    if not os.path.isdir(source):
        raise RunError(f"{source} is no folder")
    if os.path.lexists(target):
        if not overwrite:
            raise RunError(f"{target} exists already; --overwrite replaces it")
        if not any(os.path.exists(os.path.join(target, name)) for name in (".zarray", ".zgroup")):
            raise RunError(f"{target} is no zarr store and is not replaced")
    levels, kind = _levels(source)
    image = _array(source, levels[0].path, "r")
    if image.dtype.kind != "u" or image.dtype.itemsize != 2:
        raise RunError(f"{source} has pixels of type {image.dtype}, not uint16")
    # A path is what every worker opens; sent, the correction goes with the tasks.
    correction, shape = from_calibration(read_calibration(calibration) if send else calibration, key)
    rectangle = check_region(region, shape)
    check_images(image.shape, shape, rectangle)
    recipe = Recipe(correction, exposure, intensity, level, rectangle)

    unfinished = target + ".unfinished"
    plan = {"input": source, "arrays": [_digest(os.path.join(source, part.path, ".zarray")) for part in levels],
            "correction": correction.digest, "exposure": exposure, "intensity": intensity, "level": level,
            "region": rectangle}
    plan = json.loads(json.dumps(plan))
    resumes = _begin(source, unfinished, plan, levels)
    lock = _Lock(unfinished)
    try:
        _remove_scraps(unfinished)
        job = Job(source, unfinished, levels, recipe)
        for number, part in enumerate(levels):
            boxes, every = _undone(job, number)
            if resumes and number == 0 and len(boxes) < every:
                say(f"going on: {every - len(boxes)} of {every} pieces are there already")
            if number == 0:
                run("correcting", correct_box, job, [(box,) for box in boxes])
            else:
                run(f"level {part.path}", shrink_box, job, [(number, box) for box in boxes])
            if _undone(job, number)[0]:
                raise RunError(f"pieces of {unfinished} are missing in the end: does anybody else write to it?")
        if os.path.lexists(target):
            shutil.rmtree(target)
        os.rename(unfinished, target)
        os.unlink(os.path.join(target, PLAN))
    finally:
        lock.release()
    frames = int(np.prod(levels[0].shape[:-2]))
    lower = f", {len(levels) - 1} lower level{'s' if len(levels) > 2 else ''}" if len(levels) > 1 else ""
    say(f"{target}: {frames} image{'' if frames == 1 else 's'} of {levels[0].shape[-1]} x {levels[0].shape[-2]} pixels"
        f"{lower} ({kind})")


def _digest(path: str) -> str:
    with open(path, "rb") as file:
        return sha256(file.read()).hexdigest()


def _begin(source: str, unfinished: str, plan: Dict[str, Any], levels: Sequence[Level]) -> bool:
    """Makes the unfinished store, or finds it from an earlier run of the same plan: then true."""
    path = os.path.join(unfinished, PLAN)
    if os.path.lexists(unfinished):
        try:
            with open(path, encoding="utf-8") as file:
                found = json.load(file)
        except (OSError, ValueError):
            raise RunError(f"{unfinished} is there and tells of no run; remove it to begin anew") from None
        differing = [name for name in plan if found.get(name) != plan[name]]
        if differing:
            raise RunError(f"{unfinished} is of a run with other settings ({', '.join(differing)}); remove it to begin "
                           f"anew")
        return True
    os.makedirs(os.path.dirname(unfinished), exist_ok=True)
    # The plan comes last: without it nothing is gone on with.
    scratch = f"{unfinished}.{os.getpid()}"
    try:
        _copy_all_but_chunks(source, scratch, levels)
        with open(os.path.join(scratch, PLAN), "w", encoding="utf-8") as file:
            json.dump(plan, file)
        os.rename(scratch, unfinished)
    except BaseException:
        shutil.rmtree(scratch, ignore_errors=True)
        raise
    return False
