#!/usr/bin/env python3
"""The tutorial of the Python package as a program. docs/python-tutorial.md is made of it, by
scripts/make-python-tutorial.py: each cell begins at "# %%", its comment becomes text, what it prints and draws is shown.

Runs as it is:  python3 examples/python_tutorial.py   (numpy, dask and matplotlib)
"""
# %%
# # From dark frames to the figures of a report
#
# A camera's images contain more than light: an offset that differs from column to column, and a dark current that grows
# with the exposure. Dark frames show just that. This tutorial simulates a camera, so that we know what is true, builds a
# correction from dark frames, corrects images, and looks at what is left.
import os
import tempfile

import matplotlib.pyplot as plt
import numpy as np

from qx_backgroundcorrection import Processor, correct, master_dark, read_calibration

random = np.random.default_rng(2026)
folder = tempfile.TemporaryDirectory()

HEIGHT, WIDTH, GAIN = 240, 320, 2.0  # GAIN in electrons per count
offset = 100 + random.normal(0, 4, WIDTH)[np.newaxis, :]
dark_current = 240 * (1 + 0.5 * np.linspace(0, 1, HEIGHT)[:, np.newaxis] ** 2) * np.ones((1, WIDTH))


def exposures(count, seconds, scene=0.0):
    """Frames of the camera: uint16, as a real one gives them."""
    charge = random.poisson((dark_current + scene) * seconds, (count, HEIGHT, WIDTH))
    values = offset + (charge + random.normal(0, 6, charge.shape)) / GAIN
    return np.clip(np.rint(values), 0, 65535).astype(np.uint16)


# %%
# ## Dark frames
#
# Twenty frames of one second with the shutter closed. One alone is noisy; the library averages them, and filters the
# average with a 3 x 3 median. `master_dark` gives what it makes of them.
darks = exposures(20, 1.0)
truth = offset + dark_current / GAIN
for count in (1, 5, 20):
    error = master_dark(darks[:count]) - truth
    print(f"{count:2} frames: the master dark is off by {error.std():.2f} counts")

# %%
# The picture shows the columns of the offset and the glow at the lower edge.
figure, axes = plt.subplots(1, 2, figsize=(8, 3))
for axis, picture, title in zip(axes, (darks[0], master_dark(darks)), ("one dark frame", "of twenty: the correction")):
    shown = axis.imshow(picture, cmap="gray", vmin=190, vmax=310)
    axis.set_title(title)
    axis.set_axis_off()
figure.colorbar(shown, ax=axes, label="counts")

# %%
# ## A calibration file
#
# A `Processor` is the object that host applications use. Built once, saved, and used on every image afterwards. Its
# picture and figures appear by themselves where it is the last line of a notebook's cell; here is the text.
path = os.path.join(folder.name, "camera.dat")
with Processor() as processor:
    processor.add("1 s", darks, exposure=1.0)
    processor.add("4 s", exposures(20, 4.0), exposure=4.0)
    processor.save(path)
    processor.active = "1 s"
    processor.set_exposure_and_intensity(1.0)
    print(processor)
    print(processor.statistics())

# %%
# Reading it back needs no library, and loads no pixel before it is looked at.
calibration = read_calibration(path)
print(calibration)
for correction in calibration:
    print(correction, "median", np.median(correction.background))

# %%
# ## Correcting images
#
# A scene with a few stars, one second. In one line:
y, x = np.mgrid[:HEIGHT, :WIDTH]
scene = sum(3000 * np.exp(-((y - a) ** 2 + (x - b) ** 2) / 18) for a, b in ((60, 80), (150, 210), (200, 60), (90, 260)))
images = exposures(8, 1.0, scene)
corrected = correct(images, calibration=path, key="1 s", exposure=1.0)

figure, axes = plt.subplots(1, 2, figsize=(8, 3))
for axis, picture, title, low in zip(axes, (images[0], corrected[0]), ("as it came", "corrected"), (200, 0)):
    axis.imshow(picture, cmap="gray", vmin=low, vmax=low + 150)
    axis.set_title(title)
    axis.set_axis_off()

# %%
# ## The figures of a report
#
# How much of what is left is no light? Where there is no star, the corrected image should be 0. Counts below 0 do not
# exist, so that noise around 0 leaves a small positive mean. And the median filter, which takes single hot pixels out of
# a correction, also smooths columns that differ from their neighbours: some of their difference stays.
empty = scene < 0.1
before, after = images[:, empty], corrected[:, empty]
print(f"background before {before.mean():7.2f} counts")
print(f"background after  {after.mean():7.2f} counts")
print(f"columns differ before by {images.mean(0)[empty.all(1)].mean(0).std():.2f}, "
      f"after by {corrected.mean(0)[empty.all(1)].mean(0).std():.2f} counts")

figure, axis = plt.subplots(figsize=(6, 3))
bins = np.arange(0, 330, 3)
axis.hist(before.ravel(), bins, histtype="step", label="as they came")
axis.hist(after.ravel(), bins, histtype="step", label="corrected")
axis.set_yscale("log")
axis.set_xlabel("counts where there is no star")
axis.set_ylabel("pixels")
axis.legend()
figure.tight_layout()

# %%
# ## Exposures that differ
#
# The library scales the whole background with the exposure, the constant offset included. Dark frames of another exposure
# than the images' therefore leave an error: the offset, once for each time that it was scaled.
long = exposures(4, 4.0, scene)
for key in ("1 s", "4 s"):
    left = correct(long, calibration=path, key=key, exposure=4.0)[:, empty]
    print(f"4 s images with the dark frames of {key}: mean {left.mean():6.2f} counts, {np.mean(left == 0):4.0%} are 0")

# %%
# ## More than memory holds
#
# The same function takes dask arrays: one task a chunk, and the same bits. `python -m qx_backgroundcorrection correct`
# does whole zarr stores.
import dask.array as da

lazy = correct(da.from_array(images, chunks=(2, HEIGHT, WIDTH)), calibration=path, key="1 s", exposure=1.0)
print(lazy.chunks[0], np.array_equal(lazy.compute(scheduler="threads"), corrected))
lazy_dark = master_dark(da.from_array(darks, chunks=(5, 120, 160)))
print(np.array_equal(lazy_dark.compute(scheduler="threads"), calibration["1 s"].background))
folder.cleanup()
