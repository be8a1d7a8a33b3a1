"""The command line: python -m qx_backgroundcorrection correct IN.zarr OUT.zarr --calibration FILE --exposure SECONDS"""
from __future__ import annotations

import argparse
import logging
import os
import sys
from contextlib import nullcontext, redirect_stdout
from typing import Any, Callable, List, NoReturn, Optional, Sequence, Tuple

from . import __version__
from ._calibration import CalibrationFormatError
from ._errors import CorrectionError
from ._recipe import CalibrationChangedError, percentage, positive

PROGRAM = "python -m qx_backgroundcorrection"


class _Parser(argparse.ArgumentParser):
    def error(self, message: str) -> NoReturn:
        _fail(message)


def _fail(message: str) -> NoReturn:
    print(f"qx_backgroundcorrection: {' '.join(message.split())}", file=sys.stderr)
    sys.exit(2)


def _number(name: str) -> Callable[[str], float]:
    def convert(text: str) -> float:
        try:
            return positive(name, text)
        except (TypeError, ValueError) as error:
            raise argparse.ArgumentTypeError(str(error)) from None

    return convert


def _level(text: str) -> int:
    try:
        return percentage(int(text))
    except ValueError:
        raise argparse.ArgumentTypeError(f"level is {text!r}; it has to be a whole number, 0 to 100") from None


def _region(text: str) -> Tuple[int, ...]:
    try:
        left, top, width, height = map(int, text.split(","))
    except ValueError:
        raise argparse.ArgumentTypeError(f"{text!r} is not left,top,width,height") from None
    return left, top, width, height


def _parser() -> argparse.ArgumentParser:
    parser = _Parser(prog=PROGRAM, description="Background correction of images in zarr stores.", allow_abbrev=False)
    parser.add_argument("--version", action="version", version=f"qx_backgroundcorrection {__version__}")
    verbs = parser.add_subparsers(title="verbs", dest="verb", required=True, parser_class=_Parser)
    correct = verbs.add_parser(
        "correct", allow_abbrev=False, help="correct a whole zarr store",
        description="Corrects an array (..., height, width) of uint16, or an OME-Zarr image with its lower levels, "
                    "into a new store with the same attributes. A run that was interrupted goes on when it is started "
                    "again.",
        epilog="Exit status: 0 done, 2 refused or failed, with one line that says why, 130 interrupted.")
    correct.add_argument("input", metavar="IN.zarr", help="zarr store in a folder (format 2)")
    correct.add_argument("output", metavar="OUT.zarr", help="new store; OUT.zarr.unfinished until it is whole")
    correct.add_argument("--calibration", required=True, metavar="FILE", help="calibration file")
    correct.add_argument("--key", help="which correction (letter case ignored); may be left out where there is one")
    correct.add_argument("--exposure", required=True, type=_number("exposure"), metavar="SECONDS", help="of the images")
    correct.add_argument("--intensity", default=100.0, type=_number("intensity"), metavar="PERCENT",
                         help="of the images (100)")
    correct.add_argument("--level", default=100, type=_level, metavar="PERCENT", help="how much is subtracted (100)")
    correct.add_argument("--region", type=_region, metavar="L,T,W,H", help="part of the correction that images show")
    correct.add_argument("--scheduler", metavar="ADDRESS", help="a dask cluster; threads of this process if left out")
    correct.add_argument("--send-calibration", action="store_true",
                         help="send the correction to the workers instead of the file's name")
    correct.add_argument("--threads", type=int, metavar="N", help="without a cluster: as many as there are cores")
    correct.add_argument("--overwrite", action="store_true", help="replace OUT.zarr when all is done")
    correct.add_argument("--quiet", action="store_true", help="no progress bar, even on a terminal")
    return parser


def _runner(scheduler: Optional[str], threads: Optional[int], shows_progress: bool) -> Tuple[Any, Callable[[], None]]:
    """What runs tasks, and what ends it. One task for each piece; what they share is one more."""
    client: Any = None
    if scheduler is not None:
        from distributed import Client
        from distributed.comm.addressing import parse_address
        from distributed.comm.registry import get_backend

        # When a worker dies, a request of the client's own may have been on its way to it, which nobody waits for:
        # that is told when all is done. What matters is raised.
        logging.getLogger("asyncio").setLevel(logging.CRITICAL)
        try:
            get_backend(parse_address(scheduler, strict=True)[0])  # a client that fails over this tells it for a minute
            client = Client(scheduler, timeout="20s", set_as_default=False)
        except (OSError, ValueError) as error:
            _fail(f"--scheduler {scheduler}: {error}")

    def run(what: str, work: Callable[..., int], job: Any, arguments: List[Tuple[Any, ...]]) -> None:
        if not arguments:
            return
        prefix = f"qx-{what.replace(' ', '-')}-{os.getpid()}"
        shared = prefix + "-job"
        graph: Any = {shared: (_itself, job)}
        keys = [(prefix, number) for number in range(len(arguments))]
        for key, given in zip(keys, arguments):
            graph[key] = (_do, work, shared, list(given))
        if shows_progress:
            print(what, file=sys.stderr)
        if client is not None:
            futures = client.get(graph, keys, sync=False)
            if shows_progress:
                from distributed import progress

                with client.as_current(), redirect_stdout(sys.stderr):  # where it looks, and where it draws
                    progress(futures, notebook=False)
                    print()
            client.gather(futures)
            return
        from dask.diagnostics import ProgressBar
        from dask.threaded import get

        with ProgressBar(out=sys.stderr) if shows_progress else nullcontext():
            get(graph, keys, num_workers=threads)

    return run, client.close if client is not None else lambda: None


def _itself(value: Any) -> Any:
    return value


def _do(work: Callable[..., int], job: Any, arguments: List[Any]) -> int:
    return work(job, *arguments)


def main(arguments: Optional[Sequence[str]] = None) -> int:
    given = _parser().parse_args(arguments)
    if given.threads is not None and given.threads < 1:
        _fail("--threads has to be 1 or more")
    try:
        from ._store_run import RunError, correct_store
    except ImportError as error:
        _fail(f"{error.name or error} is not installed: zarr stores want the packages zarr and dask")
    try:
        run, end = _runner(given.scheduler, given.threads, sys.stderr.isatty() and not given.quiet)
        try:
            correct_store(given.input, given.output, calibration=given.calibration, key=given.key,
                          exposure=given.exposure, intensity=given.intensity, level=given.level, region=given.region,
                          send=given.send_calibration, overwrite=given.overwrite, run=run, say=print)
        finally:
            end()
    except (RunError, CorrectionError, CalibrationFormatError, CalibrationChangedError) as error:
        _fail(str(error))
    except (OSError, ValueError, TypeError, MemoryError) as error:
        _fail(f"{type(error).__name__}: {error}" if not str(error) else str(error))
    except Exception as error:
        if given.scheduler is None:
            raise
        _fail(f"the cluster failed, the same command goes on from here: {type(error).__name__}: {error}")
    except KeyboardInterrupt:
        print("qx_backgroundcorrection: interrupted; the same command goes on from here", file=sys.stderr)
        return 130
    return 0


if __name__ == "__main__":
    sys.exit(main())
