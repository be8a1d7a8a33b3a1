#!/usr/bin/env python3
"""How near corrected images come to the truth: on simulated cameras, whose truth is known, and on real dark frames of which
one is left out of the stack. Prints tables in Markdown.

quality.py QXBACKGROUND [--real FOLDER] [--rivals numpy,siril,ccdproc]

An image of 2 s is corrected by ten dark frames: of 1 s, with ten bias frames, and of 2 s. Every way gets the same files. All
results are held as whole numbers, which 16-bit files have. Pixels whose light goes beyond what the camera can count are left
out, and rivals that are not installed."""
import argparse
import importlib.util
import itertools
import math
import shutil
import subprocess
import tempfile
from pathlib import Path

import numpy as np
import tifffile

CAMERAS = {
    "usual": [],
    "strong glow": ["--glow", "20"],
    "many hot pixels": ["--hot-pixels", "0.01"],
    "cosmic rays in the darks": ["--cosmic-rays", "30"],
    "drifting level": ["--drift", "10"],
    "12 bits": ["--bits", "12", "--gain", "4", "--offset", "100"],
}
SHARP = "strong glow, many hot pixels, a sharp scene"
SHARP_CAMERA = ["--glow", "20", "--hot-pixels", "0.01"]
PEDESTAL = 500
ALL = "all"
WAYS = {
    "plain": [],
    "`--reject sigma`": ["--reject", "sigma"],
    "`--repair-hot`": ["--repair-hot"],
    "`--bias`": ["--bias"],
    "`--bias --repair-hot`": ["--bias", "--repair-hot"],
    "`--bias --reject sigma --unfiltered`": ["--bias", "--reject", "sigma", "--pedestal", str(PEDESTAL), "--unfiltered"],
    "the same, `--repair-hot`": ["--bias", "--reject", "sigma", "--pedestal", str(PEDESTAL), "--unfiltered", "--repair-hot"],
    ALL: ["--bias", "--reject", "sigma", "--align-levels", "--pedestal", str(PEDESTAL), "--unfiltered", "--repair-hot",
          "--repair-noisy"],
}


class Errors:
    """Of an image against the truth, where `valid`. Sources are what stands out of the sky by more than 100 ADU: how many of
    their pixels are off, and how much of their light is left."""

    def __init__(self, image, truth, valid):
        error = np.where(valid, image.astype(float) - truth, 0)
        inside = error[valid]
        self.off = int((np.abs(inside) > 100).sum())
        self.median = float(np.median(inside))
        self.spread = 1.4826 * float(np.median(np.abs(inside - self.median)))
        self.deviation = float(inside.std())
        self.rows = float(np.median(error, axis=1).std())
        self.columns = float(np.median(error, axis=0).std())
        sky = np.median(truth)
        sources = valid & (truth > sky + 100)
        self.sources_off = int((np.abs(error[sources]) > 100).sum())
        self.light = 100 + 100 * float(error[sources].sum() / (truth[sources] - sky).sum()) if sources.any() else None

    def row(self, name):
        return (f"| {name} | {self.off} | {self.median:+.2f} | {self.spread:.2f} | {self.deviation:.1f} | "
                f"{self.rows:.2f} | {self.columns:.2f} |" +
                (" | |" if self.light is None else f" {self.sources_off} | {self.light:.2f} % |"))


HEADER = ("| way | pixels > 100 ADU off | median error | spread | standard deviation | row pattern | column pattern | "
          "of sources: off | light |\n|---|---|---|---|---|---|---|---|---|")


def run(*command):
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True)
    if result.returncode != 0:
        raise SystemExit(f"{command} failed: {result.stdout[-500:]}{result.stderr[-500:]}")


def corrected(tool, folder, how, dark_seconds, seconds):
    """By the workbench. The pedestal is taken off again."""
    words = []
    for word in how:
        words += ["--bias", folder / "bias.tif"] if word == "--bias" else [word]
    run(tool, "correct", "--dark-exposure", dark_seconds, "--dark-intensity", 100, "--exposure", seconds, "--intensity",
        100, "--no-statistics", *words, "--dark", folder / "darks.tif", "--overwrite", "-o", folder / "out.tif",
        folder / "light.tif")
    return tifffile.imread(folder / "out.tif").astype(float) - (PEDESTAL if "--pedestal" in how else 0)


def mean_of(folder, name):
    return tifffile.imread(folder / name).reshape(-1, *tifffile.imread(folder / "light.tif").shape).mean(axis=0)


def by_numpy(folder, factor, has_bias):
    light = tifffile.imread(folder / "light.tif").astype(float)
    yield "numpy: image - factor x dark", light - factor * mean_of(folder, "darks.tif")
    if has_bias:
        bias = mean_of(folder, "bias.tif")
        yield "numpy: with the bias", light - bias - factor * (mean_of(folder, "darks.tif") - bias)


def write_fits(folder, has_bias):
    from astropy.io import fits
    for name in ("darks", "light", "bias"):
        pages = tifffile.imread(folder / f"{name}.tif") if name != "bias" or has_bias else []
        (folder / name).mkdir()
        if name == "light":
            pages = [pages, pages]  # Siril makes no sequence of one
        for number, page in enumerate(pages):
            fits.PrimaryHDU(page).writeto(folder / name / f"{name}{number:03}.fits")


def by_siril(folder, factor, has_bias):
    from astropy.io import fits
    work = folder / "siril"
    work.mkdir()
    steps = ["requires 1.0.0", "setext fits", "set32bits", "setcpu 1"]
    for name in ("darks", "light") + (("bias",) if has_bias else ()):
        steps += [f"cd {folder / name}", f"link {name} -out={work}"]
    steps += [f"cd {work}", "stack darks rej 3 3 -nonorm -out=masterdark"]
    if has_bias:
        steps += ["stack bias rej 3 3 -nonorm -out=masterbias"]
    steps += ["preprocess light -dark=masterdark -cc=dark 3 3" + (" -bias=masterbias -opt" if has_bias else ""), "close", ""]
    script = folder / "siril.ssf"
    script.write_text("\n".join(steps))
    run("siril-cli", "-s", script)
    image = fits.getdata(sorted(work.glob("pp_light_*1.fits"))[0]).astype(float)
    yield "Siril: rejection, bias, cosmetic" if has_bias else "Siril: rejection, cosmetic", image * 65535


def by_ccdproc(folder, factor, has_bias):
    import warnings
    warnings.simplefilter("ignore")
    import astropy.units as u
    import ccdproc
    from astropy.nddata import CCDData
    from astropy.stats import mad_std

    def master(name):
        files = sorted(str(path) for path in (folder / name).glob(f"{name}*.fits") if path.is_file())
        return ccdproc.combine(files, method="average", unit="adu", sigma_clip=True, sigma_clip_low_thresh=5,
                               sigma_clip_high_thresh=5, sigma_clip_func=np.ma.median, sigma_clip_dev_func=mad_std)
    light = CCDData.read(str(folder / "light" / "light000.fits"), unit="adu")
    dark = master("darks")
    if has_bias:
        bias = master("bias")
        light, dark = ccdproc.subtract_bias(light, bias), ccdproc.subtract_bias(dark, bias)
    light = ccdproc.subtract_dark(light, dark, dark_exposure=1 * u.s, data_exposure=factor * u.s, scale=True)
    yield "ccdproc: sigma clipping" + (", bias" if has_bias else ""), light.data


RIVALS = {"numpy": by_numpy, "siril": by_siril, "ccdproc": by_ccdproc}


def available(name):
    if name == "siril":
        return shutil.which("siril-cli") is not None and importlib.util.find_spec("astropy") is not None
    return importlib.util.find_spec(name) is not None


def compare(tool, folder, truth, valid, dark_seconds, seconds, rivals, has_bias=True, ways=tuple(WAYS)):
    """Each way's name and errors; the workbench's come first."""
    found = []
    for name in ways:
        how = WAYS[name]
        if not has_bias:
            if "--bias" in how and "--unfiltered" not in how:
                continue
            name, how = name.replace("`--bias ", "`"), [word for word in how if word != "--bias"]
        found.append((name, Errors(corrected(tool, folder, how, dark_seconds, seconds), truth, valid)))
    if {"siril", "ccdproc"} & set(rivals):
        write_fits(folder, has_bias)
    for rival in rivals:
        for name, image in RIVALS[rival](folder, seconds / dark_seconds, has_bias):
            found.append((name, Errors(np.rint(image), truth, valid)))
    return found


def simulated(tool, folder, camera, dark_seconds, more=()):
    """Files of a camera, named as `compare` wants them; the truth, and where an image can tell it."""
    frames = [] if "--frames" in camera else ["--frames", 10]
    run(tool, "simulate", "-o", folder, "--exposure", "0.0001,1,2", *frames, "--lights", 1, *camera, *more)
    for name, other in (("bias", "dark_0.0001s"), ("darks", f"dark_{dark_seconds}s"), ("light", "light_2s")):
        (folder / f"{other}.tif").rename(folder / f"{name}.tif")
    scene = tifffile.imread(folder / "truth_scene_2s.tif").astype(float)
    background = tifffile.imread(folder / "truth_background_2s.tif").astype(float)
    light = tifffile.imread(folder / "light.tif")
    highest = 2 ** int(camera[camera.index("--bits") + 1]) - 1 if "--bits" in camera else 65535
    return scene, background, (light < highest) & (scene + background < highest)


def sharp_scene(shape):
    """A flat sky with all that a repair might take for noise: bars, edges, discs and single points, weak and strong, all
    over the image. ADU."""
    y, x = np.mgrid[:shape[0], :shape[1]]
    cell = 32
    patterns = [(x % 4 < 2), (y % 8 < 4), (x + y) % cell < cell // 2, np.hypot(x % cell - 15.5, y % cell - 15.5) < 8,
                (x % 8 == 4) & (y % 8 == 4), np.exp(-(((x % 16 - 8) ** 2 + (y % 16 - 8) ** 2) / 3.0)), y % 16 == 5]
    kind = (x // cell + 3 * (y // cell)) % (len(patterns) + 2)  # two are sky alone
    strength = np.array([150, 400, 1200, 4000])[(x // cell + y // cell) % 4]
    scene = np.full(shape, 250.0)
    for number, pattern in enumerate(patterns):
        scene += np.where(kind == number, pattern * strength, 0)
    return np.rint(scene)


def lit(dark, scene, electrons_per_adu):
    """A dark frame into which light has fallen, with the noise that light has."""
    random = np.random.default_rng(5)
    return np.clip(np.rint(dark + random.poisson(scene * electrons_per_adu) / electrons_per_adu), 0, 65535)


def sharp(tool, folder, camera, dark_seconds):
    """As `simulated`, with the sharp scene before the camera."""
    _, background, _ = simulated(tool, folder, [*camera, "--frames", 11], dark_seconds)
    darks = tifffile.imread(folder / "darks.tif")
    dark = darks[10] if dark_seconds == 2 else tifffile.imread(folder / "dark_2s.tif")[10]
    tifffile.imwrite(folder / "darks.tif", darks[:10])
    tifffile.imwrite(folder / "bias.tif", tifffile.imread(folder / "bias.tif")[:10])
    scene = sharp_scene(dark.shape)
    tifffile.imwrite(folder / "light.tif", lit(dark, scene, 2).astype(np.uint16))
    return scene, background, scene + background < 65000


def without_rays(frame, others):
    """Where no cosmic ray has hit this very frame: what is far brighter than in all others stands for light, which no dark
    frame can take away."""
    middle = np.median(others, axis=0)
    spread = np.maximum(1.4826 * np.median(np.abs(others - middle), axis=0), others.std(axis=0))
    usual = np.median(spread)
    hit = frame - middle > 8 * np.maximum(spread, usual)
    padded = np.pad(hit, 1)
    height, width = hit.shape
    return ~np.any([padded[dy:dy + height, dx:dx + width] for dy in range(3) for dx in range(3)], axis=0)


def of_the_light(truth, valid, electrons_per_adu, read_noise=3):
    """How many pixels are expected to be off by the light's own noise and the camera's read noise, without any dark current:
    no correction can get below that without taking light for noise."""
    spread = np.sqrt(truth[valid] / electrons_per_adu + read_noise ** 2)
    levels, counts = np.unique(spread, return_counts=True)
    return float(sum(count * math.erfc(100 / level / math.sqrt(2)) for level, count in zip(levels, counts)))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tool", type=Path)
    parser.add_argument("--real", type=Path, help="folder with dark_60s_*.tif")
    parser.add_argument("--rivals", default="numpy,siril,ccdproc")
    options = parser.parse_args()
    tool = options.tool.resolve()
    rivals = [name for name in options.rivals.split(",") if available(name)]
    for dark_seconds, title in itertools.product((1, 2), [*CAMERAS, SHARP]):
        with tempfile.TemporaryDirectory(prefix="qxquality") as folder:
            folder = Path(folder)
            if title == SHARP:
                scene, background, valid = sharp(tool, folder, SHARP_CAMERA, dark_seconds)
            else:
                scene, background, valid = simulated(tool, folder, CAMERAS[title], dark_seconds)
            light = tifffile.imread(folder / "light.tif").astype(float)
            print(f"\n## {title.capitalize()}; dark frames of {dark_seconds} s, image of 2 s\n\n{HEADER}")
            gain = 4 if title == "12 bits" else 2
            print(f"| *the noise of the light alone, expected* | {of_the_light(scene, valid, gain):.1f} | | | | | | | |")
            print(Errors(light - background, scene, valid).row("*the noise of the image itself*"))
            for name, errors in compare(tool, folder, scene, valid, dark_seconds, 2, rivals, dark_seconds != 2):
                print(errors.row(name), flush=True)
    if options.real:
        darks = [tifffile.imread(path) for path in sorted(options.real.glob("dark_60s_*.tif"))]
        scene = sharp_scene(darks[0].shape)
        others = np.stack(darks[:5] + darks[6:])
        valid = without_rays(darks[5].astype(float), others.astype(float))
        for title, truth in (("one against the nine others", np.zeros(darks[0].shape)),
                             ("one with a sharp scene put into it, against the nine others", scene)):
            with tempfile.TemporaryDirectory(prefix="qxquality") as folder:
                folder = Path(folder)
                tifffile.imwrite(folder / "darks.tif", others)
                light = darks[5] if truth is not scene else lit(darks[5], scene, 0.78).astype(np.uint16)
                tifffile.imwrite(folder / "light.tif", light)
                print(f"\n## Real dark frames of 60 s: {title}\n\n{HEADER}")
                print(f"| *hit by cosmic rays, left out* | {(~valid).sum()} | | | | | | | |")
                for name, errors in compare(tool, folder, truth, valid, 60, 60, rivals, has_bias=False):
                    print(errors.row(name), flush=True)


if __name__ == "__main__":
    main()
