"""python -m qx_backgroundcorrection correct: whole stores, on threads and on a cluster whose workers die, interrupted and
gone on with, against the one-machine path."""
import contextlib
import fcntl
import io
import os
import pty
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest.mock

import numpy as np
import zarr
from distributed import Client, LocalCluster

import python_support
from python_support import PythonTest, wait_for
from qx_backgroundcorrection import Processor, correct
from qx_backgroundcorrection.__main__ import main

MODULE = [sys.executable, "-m", "qx_backgroundcorrection"]
# A worker's limit, and images that are more than it. A process with dask and numpy alone takes 0.1 GB.
LIMIT = 250e6
LARGE = (124, 1024, 1024)
IS_LARGE = "QX_LARGE_RUN" in os.environ  # scripts/python-large.sh
if IS_LARGE:
    LIMIT = 1e9
    LARGE = (512, 2048, 2048)


def peak_memory():
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024


class StoreTest(PythonTest):
    def setUp(self):
        super().setUp()
        self.path, self.darks = self.calibration()

    def make(self, images, name="in.zarr", chunks=None, **how):
        array = zarr.open(str(self.folder / name), "w", shape=images.shape, dtype="u2",
                          chunks=chunks or (1,) * (images.ndim - 2) + images.shape[-2:], **how)
        array[:] = images
        array.attrs["pixel size"] = [1, 2]
        return array

    def command(self, *arguments, source="in.zarr", target="out.zarr", calibration="c.dat", exposure=2):
        return [*MODULE, "correct", source, target, "--calibration", calibration, "--exposure", str(exposure),
                *map(str, arguments)]

    def run_here(self, *arguments, **how):
        """A run in this process: exit status, output, errors. It takes a tenth of the time of a new one."""
        output, errors, before = io.StringIO(), io.StringIO(), os.getcwd()
        os.chdir(self.folder)
        try:
            with contextlib.redirect_stdout(output), contextlib.redirect_stderr(errors):
                status = main(self.command(*arguments, **how)[len(MODULE):])
        except SystemExit as ending:
            status = ending.code
        finally:
            os.chdir(before)
        return status, output.getvalue(), errors.getvalue()

    def correct(self, *arguments, **how):
        status, output, errors = self.run_here(*arguments, **how)
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(list(self.folder.glob("*.unfinished*")), [])
        return output

    def refuses(self, text, *arguments, **how):
        before = self.contents()
        status, output, errors = self.run_here(*arguments, **how)
        self.assertEqual((status, output), (2, ""), errors)
        self.assertTrue(errors.startswith("qx_backgroundcorrection: "), errors)
        self.assertEqual(errors.count("\n"), 1, errors)
        self.assertIn(text, errors)
        self.assertEqual(self.contents(), before)

    def shown_on_a_terminal(self, *arguments):
        controller, terminal = pty.openpty()
        result = subprocess.run(self.command(*arguments), cwd=self.folder, stdout=subprocess.PIPE, stderr=terminal, text=True)
        os.close(terminal)
        shown = os.read(controller, 65536).decode()
        os.close(controller)
        self.assertEqual((result.returncode, result.stdout.count("\n")), (0, 1), shown)
        return shown

    def result(self, path="out.zarr"):
        return zarr.open_array(str(self.folder / path), "r")

    def chunk_files(self, store):
        return [p for p in (self.folder / store).rglob("*") if p.is_file() and p.name[0].isdigit()
                and not p.name.endswith(".partial")]


class Arrays(StoreTest):
    def test_whatever_the_chunks_are(self):
        images = np.array(self.images(6, 40, 30))
        images[0] = 0  # chunks of zeros are there as well
        expected = self.workbench_applies(self.path, images)
        for chunks, how in (((2, 30, 40), {}), ((4, 16, 13), {"dimension_separator": "/"}),
                            ((1, 30, 40), {"compressor": None, "fill_value": 7}), ((6, 7, 40), {"order": "F"})):
            source = self.make(images, chunks=chunks, **how)
            printed = self.correct("--overwrite", "--threads", 2)
            self.assertIn("6 images of 40 x 30 pixels", printed)
            result = self.result()
            self.same(result[:], expected)
            self.assertEqual(result.attrs.asdict(), {"pixel size": [1, 2]})
            self.assertEqual((self.folder / "out.zarr/.zarray").read_bytes(), (self.folder / "in.zarr/.zarray").read_bytes())
            self.assertEqual(result.chunks, source.chunks)
            self.assertEqual(sorted(p.relative_to(self.folder / "in.zarr") for p in self.chunk_files("in.zarr")),
                             sorted(p.relative_to(self.folder / "out.zarr") for p in self.chunk_files("out.zarr")))
            self.same(source[:], images)
        five = images.reshape(2, 3, 1, 30, 40)
        self.make(five)
        self.correct("--overwrite")
        self.same(self.result()[:], expected.reshape(five.shape))
        self.make(images[0])
        self.correct("--overwrite")
        self.same(self.result()[:], expected[0])
        array = zarr.open(str(self.folder / "in.zarr"), "w", shape=images.shape, chunks=(2, 30, 40), dtype=">u2")
        array[:] = images
        self.correct("--overwrite")
        np.testing.assert_array_equal(self.result()[:], expected)

    def test_settings(self):
        self.calibration("other")
        images = np.array(self.images(2, 7, 5))
        self.make(images)
        expected = self.workbench_applies(self.path, images, exposure=0.3, intensity=55, level=73, region=(3, 4, 7, 5))
        self.correct("--key", "DARK", "--intensity", 55, "--level", 73, "--region", "3,4,7,5", exposure=0.3)
        self.same(self.result()[:], expected)

    def test_what_is_refused(self):
        self.make(np.array(self.images(2, 40, 30)))
        (self.folder / "folder").mkdir()
        (self.folder / "folder" / "keep").write_text("this")
        zarr.open(str(self.folder / "floats.zarr"), "w", shape=(2, 30, 40), dtype="f4")
        zarr.open_group(str(self.folder / "group.zarr"), "w").create_dataset("a", shape=(2, 30, 40), dtype="u2")
        zarr.open_group(str(self.folder / "plate.zarr"), "w").attrs["plate"] = {}
        for text, arguments, how in [
                ("is no folder", (), {"source": "missing"}), ("is no zarr store", (), {"source": "folder"}),
                ("no zarr store and is not replaced", ("--overwrite",), {"target": "folder"}),
                ("exists already; --overwrite", (), {"target": "folder"}),
                ("lie in one another", ("--overwrite",), {"target": "in.zarr"}),
                ("lie in one another", (), {"target": "in.zarr/out"}),
                ("pixels of type float32", (), {"source": "floats.zarr"}), ("name one of its arrays", (), {"source": "group.zarr"}),
                ("collection of images", (), {"source": "plate.zarr"}),
                ("No such file", (), {"calibration": "missing"}),
                ("exposure is '0'; it has to be above 0", (), {"exposure": 0}),
                ("level is '200'", ("--level", "200"), {}), ("'1,2' is not left,top,width,height", ("--region", "1,2"), {}),
                ("but the region has 4 x 3", ("--region", "0,0,4,3"), {}), ("no correction 'x'", ("--key", "x"), {}),
                ("--threads", ("--threads", "0"), {}), ("unrecognized arguments", ("--exp", "1"), {})]:
            with self.subTest(text):
                self.refuses(text, *arguments, **how)


class OmeImages(StoreTest):
    def image(self, shapes, axes="tczyx", **how):
        image = self.random.integers(0, 4000, shapes[0]).astype(np.uint16)
        group = zarr.open_group(str(self.folder / "in.zarr"), "w")
        for level, shape in enumerate(shapes):
            data = image if level == 0 else self.random.integers(0, 9, shape)
            array = group.create_dataset(f"s{level}", data=data, dtype="u2", dimension_separator="/",
                                         chunks=(1,) * (len(shape) - 2) + (16, 40))
            array.attrs["level"] = level
        group.attrs["multiscales"] = [{"version": "0.4", "axes": [{"name": axis} for axis in axes],
                                       "datasets": [{"path": f"s{level}"} for level in range(len(shapes))]}]
        group.attrs["omero"] = {"channels": [1, 2]}
        return image, group

    def test_pixels_levels_attributes_and_all_the_rest(self):
        image, group = self.image([(2, 3, 1, 30, 40), (2, 3, 1, 15, 20), (2, 3, 1, 8, 10), (2, 3, 1, 2, 3)])
        labels = group.create_group("labels").create_dataset("cells", data=np.arange(1200).reshape(1, 1, 1, 30, 40))
        self.assertIn("6 images of 40 x 30 pixels, 3 lower levels (OME-Zarr)", self.correct())
        result = zarr.open_group(str(self.folder / "out.zarr"), "r")
        expected = correct(image, calibration=self.path, exposure=2)
        self.same(result["s0"][:], expected)
        for level, rows, columns in ((1, 2, 2), (2, 2, 2), (3, 4, 3)):
            large = result[f"s{level - 1}"][:].astype(int)
            small = result[f"s{level}"]
            wanted = np.zeros(small.shape, int)
            for y in range(small.shape[-2]):
                for x in range(small.shape[-1]):
                    last_row, last_column = y == small.shape[-2] - 1, x == small.shape[-1] - 1
                    block = large[..., y * rows:None if last_row else (y + 1) * rows,
                                  x * columns:None if last_column else (x + 1) * columns]
                    n = block.shape[-1] * block.shape[-2]
                    wanted[..., y, x] = (block.sum((-2, -1)) + n // 2) // n
            self.same(small[:], wanted)
        np.testing.assert_array_equal(result["labels/cells"][:], labels[:])
        for name in (".zattrs", ".zgroup", "s0/.zattrs", "s2/.zarray", "labels/.zgroup"):
            self.assertEqual((self.folder / "out.zarr" / name).read_bytes(), (self.folder / "in.zarr" / name).read_bytes())

    def test_levels_that_shrink_other_axes(self):
        image, _ = self.image([(4, 30, 40), (2, 15, 40)], "zyx")
        self.correct()
        result = zarr.open_group(str(self.folder / "out.zarr"), "r")
        sums = correct(image, calibration=self.path, exposure=2).reshape(2, 2, 15, 2, 40).astype(int).sum((1, 3))
        self.same(result["s1"][:], (sums + 2) // 4)

    def test_what_is_refused(self):
        self.image([(2, 30, 40), (2, 11, 40)], "zyx")
        self.refuses("no whole part of (2, 30, 40)")
        self.image([(30, 40, 2)], "yxc")
        self.refuses("the last two have to be y and x")
        _, group = self.image([(2, 30, 40)], "zyx")
        scales = group.attrs["multiscales"]
        group.attrs["multiscales"] = scales * 2
        self.refuses("2 images in one")
        scales[0]["datasets"][0]["path"] = "missing"
        group.attrs["multiscales"] = scales
        self.refuses("level 'missing' cannot be opened")


class Interrupted(StoreTest):
    def slow(self, count=600):
        images = np.array(self.images(1, 40, 30)).repeat(count, 0)
        images += np.arange(count, dtype=np.uint16)[:, None, None]
        self.make(images, compressor=None)
        return images

    def stopped(self, how, *arguments, least=20, count=600):
        """Starts a run, stops it in the middle; the chunks that are there, with the times of their writing."""
        process = subprocess.Popen(self.command(*arguments), cwd=self.folder, text=True, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        unfinished = self.folder / "out.zarr.unfinished"
        wait_for(lambda: process.poll() is not None or
                 (unfinished.is_dir() and sum(1 for _ in os.scandir(unfinished)) > least))
        process.send_signal(how)
        self.errors = process.communicate()[1]
        self.assertFalse((self.folder / "out.zarr").exists(), "the run was done before it was stopped")
        done = {p.name: p.stat().st_mtime_ns for p in self.chunk_files("out.zarr.unfinished")}
        self.assertTrue(least / 2 < len(done) < count, len(done))
        return process.returncode, done

    def test_goes_on_from_where_it_was_and_does_nothing_twice(self):
        images = self.slow()
        for how, status in ((signal.SIGINT, 130), (signal.SIGKILL, -9)):
            found, done = self.stopped(how, "--threads", 1)
            self.assertEqual(found, status, self.errors)
            if status == 130:
                self.assertEqual(self.errors, "qx_backgroundcorrection: interrupted; the same command goes on from here\n")
            (self.folder / "out.zarr.unfinished" / "599.0.0.abc.partial").write_bytes(b"scraps of a killed process")
            printed = self.correct("--threads", 1)
            self.assertIn(f"going on: {len(done)} of 600 pieces are there already", printed)
            for name, time in done.items():
                self.assertEqual((self.folder / "out.zarr" / name).stat().st_mtime_ns, time)
            self.same(self.result()[:], correct(images, calibration=self.path, exposure=2))
            self.assertEqual(len(self.chunk_files("out.zarr")), 600)
            self.assertEqual([p for p in (self.folder / "out.zarr").iterdir() if "partial" in p.name or "run" in p.name], [])
            shutil.rmtree(self.folder / "out.zarr")

    def test_goes_on_only_with_the_same_work(self):
        self.slow()
        self.stopped(signal.SIGKILL, "--threads", 1)
        self.refuses("other settings (exposure)", exposure=3)
        self.refuses("other settings (level)", "--level", 50)
        (self.folder / "c.dat").unlink()
        self.calibration()
        self.refuses("other settings (correction)")
        (self.folder / "out.zarr.unfinished/.qx-run.json").unlink()
        self.refuses("tells of no run")

    def test_one_run_at_a_time(self):
        self.slow()
        self.stopped(signal.SIGKILL, "--threads", 1)
        lock = os.open(self.folder / "out.zarr.unfinished", os.O_RDONLY)
        self.addCleanup(os.close, lock)
        fcntl.flock(lock, fcntl.LOCK_SH)  # a run wants it alone
        self.refuses("another run is working")

    def test_an_older_output_stays_until_the_new_one_is_there(self):
        images = self.slow()
        self.make(images[:1], "out.zarr")
        before = (self.folder / "out.zarr/.zarray").read_bytes()
        process = subprocess.Popen(self.command("--overwrite", "--threads", 1), cwd=self.folder, stdout=subprocess.DEVNULL)
        wait_for(lambda: self.chunk_files("out.zarr.unfinished"))
        process.kill()
        process.wait()
        self.assertEqual((self.folder / "out.zarr/.zarray").read_bytes(), before)
        self.correct("--overwrite")
        self.assertEqual(self.result().shape, images.shape)


class Cluster(StoreTest):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.cluster = LocalCluster(n_workers=2, threads_per_worker=1, processes=True, memory_limit=LIMIT,
                                   dashboard_address=None, local_directory=cls.scratch.name)
        cls.client = Client(cls.cluster, set_as_default=False)
        cls.address = cls.cluster.scheduler_address

    @classmethod
    def tearDownClass(cls):
        cls.client.close()
        cls.cluster.close()
        cls.scratch.cleanup()

    def test_more_than_the_workers_hold_with_a_worker_killed_and_the_run_interrupted(self):
        frame = self.random.integers(0, 4000, LARGE[1:]).astype(np.uint16)
        self.assertGreater(2 * np.prod(LARGE), LIMIT)
        source = zarr.open(str(self.folder / "in.zarr"), "w", shape=LARGE, chunks=(1, *LARGE[1:]), dtype="u2",
                           compressor=None)
        for index in range(LARGE[0]):
            source[index] = frame + np.uint16(index)
        self.write("d.tif", self.images(2, LARGE[2], LARGE[1], 0, 500))
        self.tool("build", "large.dat", "--key", "k", "--exposure", 1, "--intensity", 100, "d.tif")
        command = self.command("--scheduler", self.address, calibration="large.dat")
        unfinished = self.folder / "out.zarr.unfinished"

        def there():
            return len(self.chunk_files("out.zarr.unfinished"))

        process = subprocess.Popen(command, cwd=self.folder, stderr=subprocess.PIPE, text=True)
        wait_for(lambda: process.poll() is not None or there() > 10)
        process.send_signal(signal.SIGINT)
        self.assertIn("interrupted", process.communicate()[1])
        self.assertEqual(process.returncode, 130)
        self.assertTrue(unfinished.is_dir())

        process = subprocess.Popen(command, cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        begun = there()
        wait_for(lambda: process.poll() is not None or there() > begun + 10)
        workers = list(self.client.run(os.getpid).values())
        os.kill(workers[0], signal.SIGKILL)
        killed = time.monotonic()
        left = LARGE[0] - there()
        printed, errors = process.communicate()
        self.assertEqual((process.returncode, errors), (0, ""))
        if IS_LARGE:
            peaks = self.client.run(peak_memory)
            print(f"{left} of {LARGE[0]} frames of {LARGE[2]} x {LARGE[1]} after the worker was killed: "
                  f"{time.monotonic() - killed:.0f} s; workers held at most "
                  f"{' and '.join(f'{peak / 1e6:.0f}' for peak in peaks.values())} MB")
        self.assertGreater(left, 0, "the worker was killed when all was done")
        self.assertRegex(printed, r"going on: \d+ of \d+ pieces")
        result = self.result()
        with Processor() as processor:
            processor.load(self.folder / "large.dat")
            processor.set_exposure_and_intensity(2)
            processor.active = "k"
            for index in range(LARGE[0]):
                self.assertTrue((result[index] == processor.apply(source[index])).all(), index)

    def test_the_correction_may_travel_with_the_tasks(self):
        images = np.array(self.images(3, 40, 30))
        self.make(images)
        self.correct("--scheduler", self.address, "--send-calibration")
        self.same(self.result()[:], self.workbench_applies(self.path, images))

    def test_its_progress_is_shown_on_a_terminal(self):
        self.make(np.array(self.images(3, 40, 30)))
        self.assertIn("100% Completed", self.shown_on_a_terminal("--scheduler", self.address))

    def test_a_cluster_that_fails(self):
        self.make(np.array(self.images(1, 40, 30)))

        class KilledWorker(Exception):
            pass

        def run(*arguments):
            raise KilledWorker("thrice")

        with unittest.mock.patch("qx_backgroundcorrection.__main__._runner", lambda *_: (run, lambda: None)):
            status, _, errors = self.run_here("--scheduler", self.address)
        self.assertEqual((status, errors), (2, "qx_backgroundcorrection: the cluster failed, the same command goes on from "
                                               "here: KilledWorker: thrice\n"))
        self.correct("--scheduler", self.address)

    def test_what_dask_leaves_behind_of_a_dead_worker_is_not_told(self):
        """As when a request was on its way to the worker: nobody waits for its answer."""
        left = ("import asyncio, sys; from qx_backgroundcorrection.__main__ import _runner\n"
                "close = _runner(sys.argv[1], None, False)[1]\n"
                "loop = asyncio.new_event_loop()\n"
                "loop.create_future().set_exception(TimeoutError('Timeout'))\n"
                "close(); loop.close()\n")
        result = subprocess.run([sys.executable, "-c", left, self.address], capture_output=True, text=True)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_a_cluster_that_is_not_there(self):
        self.make(np.array(self.images(1, 40, 30)))
        self.refuses("--scheduler nonsense://x", "--scheduler", "nonsense://x")


class CommandLine(StoreTest):
    def run_module(self, *arguments):
        return subprocess.run([*MODULE, *arguments], capture_output=True, text=True)

    def test_version_and_help(self):
        self.assertEqual(self.run_module("--version").stdout, f"qx_backgroundcorrection {os.environ['QX_VERSION']}\n")
        helped = self.run_module("correct", "--help").stdout
        for option in ("--calibration", "--scheduler", "--send-calibration", "--overwrite"):
            self.assertIn(option, helped)
        nothing = self.run_module()
        self.assertEqual((nothing.returncode, nothing.stderr.count("\n")), (2, 1))

    def test_without_a_terminal_there_is_no_progress_bar_and_on_one_there_is(self):
        self.make(np.array(self.images(3, 40, 30)))
        self.assertIn("100% Completed", self.shown_on_a_terminal())
        self.correct("--overwrite")  # which looks that nothing is written to standard error


if __name__ == "__main__":
    python_support.main()
