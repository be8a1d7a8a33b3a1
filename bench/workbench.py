#!/usr/bin/env python3
"""Measures the workbench against what people use instead, on a RAM disk: a script of numpy and tifffile, one of OpenCV,
Siril, and ccdproc. Prints a table in Markdown.

workbench.py QXBACKGROUND [--rounds N] [--folder /dev/shm] [--size 2048] [--rivals numpy,opencv,siril,ccdproc]

Wants python3-numpy, python3-tifffile, python3-opencv; and siril and python3-ccdproc for their columns. All take turns, on
one core and on all. All are timed as whole processes, from the command to its end; scripts, also without the start of
Python and without their imports. Siril and ccdproc work on FITS, which is theirs, and are held against the workbench on the
same FITS files; the others on TIFF."""
import argparse
import importlib.util
import json
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

CONDITIONS = ["--exposure", "10", "--intensity", "100"]
DARKS, MANY_DARKS, LIGHTS = 20, 200, 100
DISTINCT = 20  # files of their own; the others are further names of them
OWN_RIVALS = {"numpy": "tif", "opencv": "tif", "siril": "fits", "ccdproc": "fits"}
TITLES = {"numpy": "numpy + tifffile", "opencv": "OpenCV (Python)", "siril": "Siril", "ccdproc": "ccdproc"}
WORKS = {"dark20": f"master dark of {DARKS}", "dark20-plain": f"master dark of {DARKS}, `--no-provenance`",
         "correct": f"correct {LIGHTS} lights, as it comes",
         "correct-plain": f"correct {LIGHTS} lights, `--no-statistics`", "dark200": f"master dark of {MANY_DARKS}",
         "dark200-plain": f"master dark of {MANY_DARKS}, `--no-provenance`"}


# ---- the rivals: each at its best that is as short as a script is -------------------------------------------------------

def files_in(folder, count=None):
    return [str(path) for path in sorted(Path(folder).iterdir())][:count]


def numpy_rival(work, folder, out):
    import numpy as np
    import tifffile
    yield
    if work.startswith("dark"):
        files = files_in(folder / "darks.tif", int(work[4:]))
        total = tifffile.imread(files[0]).astype(np.float32)
        for file in files[1:]:
            total += tifffile.imread(file)
        tifffile.imwrite(out / "master.tif", np.rint(total / len(files)).astype(np.uint16))
        return
    dark = tifffile.imread(folder / "master.tif")
    for file in files_in(folder / "lights.tif"):
        light = tifffile.imread(file)
        light -= np.minimum(light, dark)
        tifffile.imwrite(out / Path(file).name, light)


def opencv_rival(work, folder, out):
    import cv2
    import numpy as np
    yield
    plain = [cv2.IMWRITE_TIFF_COMPRESSION, 1]
    if work.startswith("dark"):
        files = files_in(folder / "darks.tif", int(work[4:]))
        total = cv2.imread(files[0], cv2.IMREAD_UNCHANGED).astype(np.float32)
        for file in files[1:]:
            cv2.accumulate(cv2.imread(file, cv2.IMREAD_UNCHANGED), total)
        cv2.imwrite(str(out / "master.tif"), np.rint(total / len(files)).astype(np.uint16), plain)
        return
    dark = cv2.imread(str(folder / "master.tif"), cv2.IMREAD_UNCHANGED)
    for file in files_in(folder / "lights.tif"):
        light = cv2.imread(file, cv2.IMREAD_UNCHANGED)
        cv2.subtract(light, dark, light)
        cv2.imwrite(str(out / Path(file).name), light, plain)


def ccdproc_rival(work, folder, out):
    import warnings
    warnings.simplefilter("ignore")
    import ccdproc
    import numpy as np
    from astropy.nddata import CCDData
    yield
    if work.startswith("dark"):
        files = files_in(folder / "darks.fits", int(work[4:]))
        master = ccdproc.combine(files, method="average", unit="adu", dtype=np.float32, mem_limit=1e9)
        master.data = np.rint(master.data).astype(np.uint16)
        master.mask = master.uncertainty = None
        master.write(out / "master.fits")
        return
    dark = CCDData.read(folder / "master.fits", unit="adu")
    for file in files_in(folder / "lights.fits"):
        light = ccdproc.subtract_bias(CCDData.read(file, unit="adu"), dark)
        light.data = np.clip(light.data, 0, 65535).astype(np.uint16)
        light.write(out / Path(file).name)


def run_rival(name, work, folder, out):
    """In a process of its own. Prints what it took, without the imports."""
    steps = {"numpy": numpy_rival, "opencv": opencv_rival, "ccdproc": ccdproc_rival}[name](work, folder, out)
    next(steps)
    start = time.perf_counter()
    for _ in steps:
        pass
    print(json.dumps(time.perf_counter() - start))


def siril_script(work, folder, out, cores):
    if work.startswith("dark"):
        count = int(work[4:])
        steps = [f"cd {folder}/darks{count}.siril", f"link d -out={out}", f"cd {out}",
                 "stack d mean none -nonorm -out=master"]
    else:
        steps = [f"cd {folder}/lights.fits", f"link l -out={out}", f"cd {out}", f"preprocess l -dark={folder}/master.fits"]
    return "\n".join(["requires 1.0.0", "setext fits", "set16bits", f"setcpu {cores}", *steps, "close", ""])


# ---- the frames ---------------------------------------------------------------------------------------------------------

def write_frames(folder, size):
    import numpy as np
    import tifffile
    from astropy.io import fits
    random = np.random.default_rng(1)
    pattern = random.normal(1000, 30, (size, size))
    header = fits.Header({"EXPTIME": 10.0})
    for kind, count, level, noise in (("darks", MANY_DARKS, 0, 10), ("lights", LIGHTS, 500, 40)):
        for ending in ("tif", "fits"):
            (folder / f"{kind}.{ending}").mkdir()
        for number in range(count):
            names = [folder / f"{kind}.{ending}/{kind}{number:04}.{ending}" for ending in ("tif", "fits")]
            if number >= DISTINCT:
                for name in names:
                    os.link(name.with_name(f"{kind}{number % DISTINCT:04}{name.suffix}"), name)
                continue
            page = np.clip(pattern + level + random.normal(0, noise, pattern.shape), 0, 65535).astype(np.uint16)
            tifffile.imwrite(names[0], page)
            fits.PrimaryHDU(page, header).writeto(names[1])
    for count in (DARKS, MANY_DARKS):
        (folder / f"darks{count}.siril").mkdir()
        for path in files_in(folder / "darks.fits", count):
            os.link(path, folder / f"darks{count}.siril" / Path(path).name)
    master = np.clip(pattern, 0, 65535).astype(np.uint16)
    tifffile.imwrite(folder / "master.tif", master)
    fits.PrimaryHDU(master).writeto(folder / "master.fits")


# ---- measuring ----------------------------------------------------------------------------------------------------------

class Measurement:
    def __init__(self):
        self.wall, self.cpu, self.work, self.mebibytes = [], [], [], 0

    def add(self, wall, cpu, work, kilobytes):
        self.wall.append(wall)
        self.cpu.append(cpu)
        self.work.append(work)
        self.mebibytes = max(self.mebibytes, kilobytes // 1024)

    def median(self, what):
        return statistics.median(getattr(self, what))


def measure(command, cores, timed_itself=False):
    """What one process took: seconds of the clock, seconds of its cores, those of the clock that it says its work took
    once it was started, kilobytes."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               preexec_fn=lambda: os.sched_setaffinity(0, cores))
    with process.stdout, process.stderr:
        output, error = process.stdout.read(), process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{command} failed: {output.decode()[-500:]}{error.decode()[-500:]}")
    work = json.loads(output.decode().splitlines()[-1]) if timed_itself else wall
    return wall, usage.ru_utime + usage.ru_stime, work, usage.ru_maxrss


def tool_command(tool, work, folder, out, ending):
    if work.startswith("dark"):
        pattern = "darks00[01]?" if work in ("dark20", "dark20-plain") else "darks*"
        more = ["--no-provenance"] if work.endswith("-plain") else []
        return [tool, "build", f"{out}/master.qxb", "--key", "k", *CONDITIONS, *more,
                f"{folder}/darks.{ending}/{pattern}.{ending}"]
    more = ["--no-statistics"] if work == "correct-plain" else []
    return [tool, "apply", f"{folder}/master.{ending}.qxb", "--key", "k", *CONDITIONS, *more, f"{folder}/lights.{ending}",
            "-o", f"{out}/"]


def run_one(name, work, folder, tool, cores):
    out = Path(tempfile.mkdtemp(prefix="out", dir=folder))
    try:
        if name in ("tif", "fits"):
            return measure(tool_command(tool, work, folder, out, name), cores)
        rival_work = work.split("-")[0]
        if name == "siril":
            script = out / "script.ssf"
            script.write_text(siril_script(rival_work, folder, out, len(cores)))
            return measure(["siril-cli", "-s", str(script)], cores)
        return measure([sys.executable, __file__, "--rival", name, rival_work, str(folder), str(out)], cores, True)
    finally:
        shutil.rmtree(out)


def available(name):
    if name == "siril":
        return shutil.which("siril-cli") is not None
    modules = {"numpy": "tifffile", "opencv": "cv2", "ccdproc": "ccdproc"}
    return importlib.util.find_spec(modules[name]) is not None


def table(found, rivals, cores_text):
    print(f"\n| {cores_text} | workbench (TIFF; FITS) | memory | " + " | ".join(TITLES[r] for r in rivals) + " |")
    print("|---" * (3 + len(rivals)) + "|")
    for work, title in WORKS.items():
        own = {ending: found[work, ending] for ending in ("tif", "fits")}
        cells = [title, "; ".join(f"{m.median('wall'):.2f} s ({m.median('cpu'):.2f})" for m in own.values()),
                 f"{own['tif'].mebibytes} MiB"]
        for rival in rivals:
            its, ours = found[work, rival], own[OWN_RIVALS[rival]]
            without_start = "" if rival == "siril" else f" ({its.median('work') / ours.median('wall'):.2f})"
            cells.append(f"**{its.median('wall') / ours.median('wall'):.2f}**{without_start}, {its.mebibytes} MiB")
        print("| " + " | ".join(cells) + " |")


def main():
    if sys.argv[1:2] == ["--frames"]:
        write_frames(Path(sys.argv[2]), int(sys.argv[3]))
        return
    if sys.argv[1:2] == ["--rival"]:
        name, work, folder, out = sys.argv[2:]
        run_rival(name, work, Path(folder), Path(out))
        return
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tool")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--folder", default="/dev/shm")
    parser.add_argument("--size", type=int, default=2048)
    parser.add_argument("--rivals", default=",".join(OWN_RIVALS))
    parser.add_argument("--works", default=",".join(WORKS))
    options = parser.parse_args()
    rivals = [name for name in options.rivals.split(",") if name and available(name)]
    for work in list(WORKS):
        if work not in options.works.split(","):
            del WORKS[work]
    tool = str(Path(options.tool).resolve())
    all_cores = sorted(os.sched_getaffinity(0))
    with tempfile.TemporaryDirectory(prefix="qxworkbench", dir=options.folder) as name:
        folder = Path(name)
        # In a process of its own: what is resident here would count as the memory of every process that is measured.
        subprocess.run([sys.executable, __file__, "--frames", name, str(options.size)], check=True)
        for ending in ("tif", "fits"):
            subprocess.run([tool, "build", folder / f"master.{ending}.qxb", "--key", "k", *CONDITIONS,
                            folder / f"master.{ending}"], check=True, stdout=subprocess.DEVNULL)
        print(f"Measured on {time.strftime('%Y-%m-%d')}: {platform.machine()}, {len(all_cores)} cores; frames of {options.size} "
              f"x {options.size} on {options.folder}; medians of {options.rounds} rounds; load before: "
              f"{os.getloadavg()[0]:.1f}.\n\nThe rival's time by the workbench's: above 1 the workbench is faster. Both are whole "
              "processes; in brackets the rival's without the start of Python and its imports. The workbench's own column "
              "has seconds for TIFF and for FITS, in brackets those that its cores worked. Memory is the most that was "
              "resident.")
        # The last core alone: the first one takes most interrupts.
        for cores, text in (({all_cores[-1]}, "one core"), (set(all_cores), f"{len(all_cores)} cores")):
            found = {}
            for _ in range(options.rounds):
                for work in WORKS:
                    for who in ["tif", "fits", *rivals]:
                        found.setdefault((work, who), Measurement()).add(*run_one(who, work, folder, tool, cores))
            table(found, rivals, text)
        print(f"\nLoad after: {os.getloadavg()[0]:.1f}.")


if __name__ == "__main__":
    main()
