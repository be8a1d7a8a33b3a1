#!/usr/bin/python3
"""Measures the Python package: against a C++ host on the same object and memory, against OpenCV, ccdproc and numpy, and
dask against a plain loop. The rivals take turns, round by round, so that noise hits all of them; medians count.

    bench/python.py [--rounds N] [--build FOLDER] [--json FILE] [--once]

--once runs everything small and says nothing about speed. OpenCV (python3-opencv) and ccdproc (python3-ccdproc) are left
out where they are not installed.
"""
import argparse
import ctypes
import json
import os
import random
import statistics
import sys
import tempfile
import time
import warnings
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np

SOURCE = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(SOURCE / "python"))


def measure(rivals, rounds):
    """Median, least and greatest seconds of each, one call of each a round, in turns."""
    times = {name: [] for name in rivals}
    for name, work in rivals.items():
        work()
    order = list(rivals.items())
    for number in range(rounds):
        for name, work in order if number % 2 == 0 else reversed(order):
            start = time.perf_counter()
            work()
            times[name].append(time.perf_counter() - start)
    return {name: (statistics.median(all_), min(all_), max(all_)) for name, all_ in times.items()}


def timed(work):
    """The seconds that work takes on an image."""
    def run(image):
        start = time.perf_counter()
        work(image)
        return time.perf_counter() - start
    return run


class Report:
    def __init__(self, rounds):
        self.rounds = rounds
        self.rows = []

    def row(self, what, rivals, unit=1, rounds=None, aims=None):
        """`unit`: how many images one call does. Ratios are a rival's time by that of the first."""
        self.show(what, measure(rivals, rounds or self.rounds), unit, aims)

    def steps(self, what, rivals, images, each, aims=None):
        """The rivals in turns, each on the next image; `each` samples a round of each. They say how long they took."""
        times = {name: [] for name in rivals}
        order, image, chance = list(rivals.items()), 0, random.Random(3)
        for step in range(self.rounds * each + 1):
            # In any order: who comes after the library finds its background in the cache.
            chance.shuffle(order)
            for name, work in order:
                taken = work(images[image % len(images)])
                assert taken > 0
                if step > 0:
                    times[name].append(taken)
                image += 1
        self.show(what, {name: (statistics.median(all_), min(all_), max(all_)) for name, all_ in times.items()}, 1, aims)

    def show(self, what, found, unit, aims):
        own = next(iter(found))
        print(what)
        for name, (median, least, greatest) in found.items():
            ratio = median / found[own][0]
            print(f"  {name:34} {median / unit * 1e6:11.2f} us  [{least / unit * 1e6:.2f} - {greatest / unit * 1e6:.2f}]"
                  + ("" if name == own else f"   {ratio:6.2f}")
                  + (f"   (aim: {aims[name]:g})" if aims and name in aims else ""))
        sys.stdout.flush()
        self.rows.append({"what": what, "seconds": {name: [value / unit for value in three] for name, three in found.items()}})


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--build", type=Path, default=SOURCE / "build" / "linux")
    parser.add_argument("--json", type=Path)
    parser.add_argument("--once", action="store_true")
    given = parser.parse_args()
    os.environ.setdefault("QX_BACKGROUNDCORRECTION_LIBRARY", str(given.build / "lib"))
    from qx_backgroundcorrection import Processor, library_path

    size, ring_size = (64, 3) if given.once else (2048, 40)
    report = Report(1 if given.once else given.rounds)
    pixels = np.random.default_rng(1)
    dark = pixels.integers(0, 3000, (size, size)).astype(np.uint16)
    print(f"library {library_path()}, numpy {np.__version__}, {len(os.sched_getaffinity(0))} cores, "
          f"{report.rounds} rounds; behind each time its ratio to the first")

    def ready(background):
        processor = Processor()
        processor.add("dark", background, exposure=1)
        processor.active = "dark"
        processor.set_exposure_and_intensity(1)
        return processor

    # What a call costs.
    calls = 10 if given.once else 20000
    tiny = ready(np.zeros((1, 1), np.uint16))
    pixel, other = np.ones((1, 1), np.uint16), np.ones((1, 1), np.uint16)

    def repeated(work):
        def run():
            for _ in range(calls):
                work()
        return run

    report.row("a call, 1 x 1 (aim: 5 us)", {"apply(image)": repeated(lambda: tiny.apply(pixel)),
                                             "apply(image, out)": repeated(lambda: tiny.apply(pixel, other)),
                                             "an empty function": repeated(lambda: None)}, calls)

    # In place, on one image and on a ring of them. The rivals take turns image by image, each on the next of the ring.
    host = ctypes.CDLL(str(given.build / "lib" / "libqxbc_python_host.so")).NanosecondsToApply
    host.restype = ctypes.c_double
    processor = ready(dark)
    background = processor.background()
    handle = ctypes.c_void_p(processor._handle)

    def cpp(frame):  # without the time that the call out of Python takes
        return host(handle, ctypes.c_void_p(frame.ctypes.data), frame.size) * 1e-9

    def lean_numpy(frame):
        np.maximum(frame, background, out=frame)
        np.subtract(frame, background, out=frame)

    def clip_numpy(frame):
        frame[...] = np.clip(frame.astype(np.int32) - background, 0, 65535).astype(np.uint16)

    rivals = {"apply(image)": timed(processor.apply), "C++ host": cpp}
    try:
        import cv2

        cv2.setNumThreads(1)
        rivals["cv2.subtract(image, dark, image)"] = timed(lambda frame: cv2.subtract(frame, background, dst=frame))
    except ImportError:
        print("  (cv2 is not here)")
    rivals["numpy: maximum, subtract"] = timed(lean_numpy)
    aims = {"C++ host": 0.95, "cv2.subtract(image, dark, image)": 1}
    for count, what in ((1, "one image"), (ring_size, f"a ring of {ring_size} frames")):
        frames = [pixels.integers(0, 65536, (size, size)).astype(np.uint16) for _ in range(count)]
        report.steps(f"in place, {size} x {size}, {what}", rivals, frames, 40, aims)
        report.steps(f"clip and subtract, {size} x {size}, {what}",
                     {"apply(image)": timed(processor.apply), "numpy: clip and subtract": timed(clip_numpy)}, frames, 4)
    del frames

    # ccdproc keeps images with units, masks and headers, and copies.
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        try:
            import ccdproc
            from astropy import units

            image = pixels.integers(0, 65536, (size, size)).astype(np.uint16)
            out = np.empty_like(image)
            science, bias = ccdproc.CCDData(image, unit=units.adu), ccdproc.CCDData(background, unit=units.adu)
            report.row(f"into a new image, {size} x {size}", {
                "apply(image, out)": lambda: processor.apply(image, out),
                "ccdproc.subtract_bias": lambda: ccdproc.subtract_bias(science, bias)}, rounds=min(7, report.rounds))
        except ImportError:
            print("  (ccdproc is not here)")

    stores(report, processor, size, 4 if given.once else 32, given.once)
    if given.json:
        given.json.write_text(json.dumps({"rounds": report.rounds, "rows": report.rows}, indent=1) + "\n")


def stores(report, processor, size, count, once):
    """dask against loops over the same zarr store, on the same number of threads."""
    try:
        import dask
        import dask.array as da
        import zarr
    except ImportError:
        print("  (dask and zarr are not here)")
        return
    from qx_backgroundcorrection import correct

    with tempfile.TemporaryDirectory() as folder:
        source = zarr.open(f"{folder}/in.zarr", "w", shape=(count, size, size), chunks=(1, size, size), dtype="u2",
                           compressor=None)
        pixels = np.random.default_rng(2)
        frame = pixels.integers(0, 65536, (size, size)).astype(np.uint16)
        for index in range(count):
            source[index] = frame
        target = zarr.open(f"{folder}/out.zarr", "w", shape=source.shape, chunks=source.chunks, dtype="u2",
                           compressor=None)
        processor.save(f"{folder}/c.dat")
        background = processor.background()
        clones = {}

        def own():
            import threading

            from qx_backgroundcorrection import Processor

            name = threading.get_ident()
            if name not in clones:
                clones[name] = Processor()
                clones[name].load(f"{folder}/c.dat")
                clones[name].active = "dark"
                clones[name].set_exposure_and_intensity(1)
            return clones[name]

        def one(index):
            image = source[index]
            own().apply(image)
            target[index] = image

        def by_loop():
            for index in range(count):
                one(index)

        def by_pool(pool):
            return lambda: list(pool.map(one, range(count)))

        lazy = correct(da.from_zarr(source), calibration=f"{folder}/c.dat", exposure=1)

        def by_dask(threads):
            def run():
                with dask.config.set(scheduler="threads", num_workers=threads):
                    da.store(lazy, target, lock=False)
            return run

        report.row(f"zarr to zarr, {count} frames of {size} x {size}, one thread",
                   {"dask": by_dask(1), "plain loop": by_loop}, count, rounds=min(7, report.rounds), aims={"plain loop": 0.85})
        with ThreadPoolExecutor(2) as pool:
            report.row(f"zarr to zarr, {count} frames of {size} x {size}, two threads",
                       {"dask": by_dask(2), "plain loop in two threads": by_pool(pool)}, count,
                       rounds=min(7, report.rounds), aims={"plain loop in two threads": 0.85})
        assert (target[count - 1] == np.subtract(np.maximum(frame, background), background)).all()
        images = da.from_array(np.broadcast_to(frame, (count, size, size)).copy(), chunks=(1, size, size), name=False)
        in_memory = correct(images, calibration=f"{folder}/c.dat", exposure=1)
        array = np.broadcast_to(frame, (count, size, size)).copy()

        def memory_loop():
            with Loaded(folder) as loaded:
                return [loaded.apply(image, np.empty_like(image)) for image in array]

        def memory_dask():
            return dask.compute(*in_memory.to_delayed().ravel(), scheduler="threads", num_workers=1)

        report.row(f"memory to memory, {count} frames of {size} x {size}, one thread",
                   {"dask": memory_dask, "plain loop": memory_loop}, count,
                   rounds=2 * report.rounds + 1,  # new memory comes from the system quickly or slowly, by chance
                   aims={"plain loop": 0.85})


class Loaded:
    """A processor out of the file, as a loop would have it."""

    def __init__(self, folder):
        from qx_backgroundcorrection import Processor

        self.processor = Processor()
        self.processor.load(f"{folder}/c.dat")
        self.processor.active = "dark"
        self.processor.set_exposure_and_intensity(1)

    def __enter__(self):
        return self.processor

    def __exit__(self, *exception):
        self.processor.close()


if __name__ == "__main__":
    main()
