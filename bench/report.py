#!/usr/bin/env python3
"""How long a calibration report takes, and how much memory: "qxbackground report" over corrections of a simulated camera.

report.py QXBACKGROUND [--corrections 20] [--side 2048] [--seconds 10] [--mebibytes 300]

Prints both, with the size of the page; fails above the given limits. Needs numpy.
"""
import argparse
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np


def make_calibration(tool, folder, count, side):
    """A file of so many corrections, each added by the tool itself out of one raw frame."""
    random = np.random.default_rng(1)
    glow = np.add.outer(np.arange(side) * 40 / side, np.arange(side) * 20 / side)
    for number in range(count):
        exposure = 0.1 * (number + 1)
        frame = 24 + exposure * (130 + glow) + random.normal(0, 1.5, (side, side))
        frame.round().astype("<u2").tofile(folder / "frame.raw")
        subprocess.run([tool, "build", folder / f"{number}.qxb", "--key", f"{exposure:.1f} s", "--exposure", f"{exposure:.1f}",
                        "--intensity", "100", "--raw", f"{side}x{side}", folder / "frame.raw"],
                       check=True, stdout=subprocess.DEVNULL)
        if number:
            subprocess.run([tool, "import", folder / "0.qxb", folder / f"{number}.qxb"], check=True,
                           stdout=subprocess.DEVNULL)
            (folder / f"{number}.qxb").unlink()
    return folder / "0.qxb"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tool")
    parser.add_argument("--corrections", type=int, default=20)
    parser.add_argument("--side", type=int, default=2048)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--mebibytes", type=float, default=300)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        file = make_calibration(options.tool, folder, options.corrections, options.side)
        start = time.monotonic()
        process = subprocess.Popen([options.tool, "report", file, "-o", folder / "report.html"], stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.monotonic() - start
        if status != 0:
            return "the report failed"
        mebibytes = usage.ru_maxrss / 1024
        page = (folder / "report.html").stat().st_size / 1e6
        print(f"{options.corrections} corrections of {options.side} x {options.side}: {seconds:.1f} s "
              f"({usage.ru_utime + usage.ru_stime:.1f} s of processor), {mebibytes:.0f} MiB, page {page:.1f} MB")
        if seconds > options.seconds or mebibytes > options.mebibytes:
            return f"above the limit of {options.seconds:g} s or {options.mebibytes:g} MiB"
    return 0


if __name__ == "__main__":
    sys.exit(main())
