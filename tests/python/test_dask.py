"""correct() and master_dark() on dask arrays: the bits of the one-machine path, a lean graph, processors made once."""
import subprocess
import sys
import tempfile
import unittest
import warnings

import dask
import dask.array as da
import numpy as np
import zarr
from distributed import Client, LocalCluster

import python_support
from python_support import PythonTest
from qx_backgroundcorrection import (CalibrationChangedError, CalibrationFormatError, Processor, correct, master_dark,
                                     read_calibration)
from qx_backgroundcorrection._dask import RechunkWarning
from qx_backgroundcorrection._pool import MOST_RECIPES, pool


def tasks(array):
    """The tasks that computing an array takes, after dask's own clean-up."""
    graph, = dask.optimize(array)
    return len(dict(graph.dask))


class DaskTest(PythonTest):
    def setUp(self):
        super().setUp()
        pool.clear()
        pool.made = 0
        context = warnings.catch_warnings()
        context.__enter__()
        self.addCleanup(context.__exit__, None, None, None)
        warnings.simplefilter("error", RechunkWarning)

    def stack(self, count=12, chunk=4, width=40, height=30):
        """Images, and the same as a dask array over a zarr store."""
        images = np.array(self.images(count, width, height))
        store = zarr.open(str(self.folder / "images.zarr"), "w", shape=images.shape, chunks=(chunk, height, width),
                          dtype="u2")
        store[:] = images
        return images, da.from_zarr(store)


class OneMachine(DaskTest):
    def test_bits_are_those_of_the_one_machine_path(self):
        path, darks = self.calibration()
        images, lazy = self.stack()
        expected = self.workbench_applies(path, images, exposure=0.3, level=73)
        for calibration in (path, (self.folder / "c.dat").read_bytes(), read_calibration(path)):
            result = correct(lazy, calibration=calibration, exposure=0.3, level=73)
            self.assertIsInstance(result, da.Array)
            self.assertEqual((result.dtype, result.shape, result.chunks), (np.uint16, lazy.shape, lazy.chunks))
            self.assertIsInstance(result._meta, np.ndarray)
            self.same(result.compute(scheduler="threads"), expected)
        five = lazy.reshape(2, 6, 1, 30, 40)
        self.same(correct(five, calibration=path, exposure=0.3, level=73).compute(scheduler="threads"),
                  expected.reshape(2, 6, 1, 30, 40))
        small = np.array(self.images(2, 7, 5))
        self.same(correct(da.from_array(small, chunks=(1, 5, 7)), calibration=path, exposure=2,
                          region=(3, 4, 7, 5)).compute(), self.workbench_applies(path, small, region=(3, 4, 7, 5)))
        self.same(correct(lazy, darks=darks, dark_exposure=1, exposure=0.3, level=73).compute(scheduler="threads"),
                  expected)
        lazy_darks = da.from_array(darks, chunks=(2, 11, 13))
        self.same(correct(lazy, darks=lazy_darks, dark_exposure=1, exposure=0.3, level=73).compute(scheduler="threads"),
                  expected)
        for out in (None, images.copy()):
            self.same(correct(images, darks=lazy_darks, dark_exposure=1, exposure=0.3, level=73, out=out), expected)
        self.same(out, expected)

    def test_a_sequence_of_tiff_files(self):
        path, _ = self.calibration()
        images = np.array(self.images(3, 40, 30))
        for index, image in enumerate(images):
            self.write(f"{index}.tif", [image])
        read = dask.delayed(lambda name: self.read(name)[0])
        lazy = da.stack([da.from_delayed(read(f"{index}.tif"), (30, 40), np.uint16) for index in range(3)])
        self.same(correct(lazy, calibration=path, exposure=2).compute(scheduler="threads"),
                  self.workbench_applies(path, images))

    def test_images_in_memory_are_not_touched(self):
        path, _ = self.calibration()
        images = np.array(self.images(4, 40, 30))
        original = images.copy()
        correct(da.from_array(images, chunks=(2, 30, 40)), calibration=path, exposure=2).compute()
        self.same(images, original)

    def test_the_graph_is_one_task_a_chunk(self):
        path, darks = self.calibration()
        _, lazy = self.stack(24, 2)
        reading = tasks(lazy)
        by_name = correct(lazy, calibration=path, exposure=2)
        self.assertLessEqual(tasks(by_name), reading)  # reading and correcting become one
        self.assertEqual(sum(key[0].startswith("qx-correct") for key in dict(by_name.dask) if isinstance(key, tuple)), 12)
        data = (self.folder / "c.dat").read_bytes()
        as_bytes = correct(lazy, calibration=data, exposure=2)
        self.assertLessEqual(tasks(as_bytes), reading + 1)  # and the correction, once
        import pickle
        per_chunk = [len(pickle.dumps(task)) for key, task in dict(as_bytes.dask).items()
                     if isinstance(key, tuple) and key[0].startswith("qx-correct")]
        self.assertLess(max(per_chunk), 1500)
        self.assertLess(max(per_chunk), len(data) // 2)

    def test_the_same_work_has_the_same_name_and_other_work_another(self):
        path, _ = self.calibration()
        _, lazy = self.stack()
        names = [correct(lazy, calibration=path, **settings).name for settings in
                 ({"exposure": 2}, {"exposure": 2.0}, {"exposure": 3}, {"exposure": 2, "level": 99},
                  {"exposure": 2, "intensity": 99})]
        other, _ = self.calibration(name="other.dat")
        names.append(correct(lazy, calibration=other, exposure=2).name)
        self.assertEqual(names[0], names[1])
        self.assertEqual(len(set(names)), 5)

    def test_chunks_that_are_no_whole_frames_are_put_together_with_a_warning(self):
        path, _ = self.calibration()
        images, lazy = self.stack()
        expected = self.workbench_applies(path, images)
        with self.assertWarnsRegex(RechunkWarning, "5 x 30 x 7, which is no whole frame") as caught:
            result = correct(lazy.rechunk((5, 30, 7)), calibration=path, exposure=2)
        self.assertEqual(caught.filename, __file__)
        self.assertEqual(result.chunks, ((5, 5, 2), (30,), (40,)))
        self.same(result.compute(), expected)

    def test_processors_are_made_once_for_each_thread(self):
        path, _ = self.calibration()
        _, lazy = self.stack(60, 1)
        result = correct(lazy, calibration=path, exposure=2)
        result.compute(scheduler="threads", num_workers=3)
        result.compute(scheduler="threads", num_workers=3)
        self.assertLessEqual(pool.made, 3)
        self.assertGreaterEqual(pool.made, 1)
        for exposure in range(1, 10):
            correct(lazy[:2], calibration=path, exposure=exposure).compute(scheduler="synchronous")
        self.assertEqual(len(pool._idle), MOST_RECIPES)

    def test_a_calibration_that_changed_is_refused(self):
        path, _ = self.calibration()
        _, lazy = self.stack()
        planned = correct(lazy, calibration=path, exposure=2)
        expected = planned.compute()
        pool.clear()
        self.calibration("another")  # further corrections do not matter
        self.same(planned.compute(), expected)
        pool.clear()
        (self.folder / "c.dat").unlink()
        self.calibration()
        with self.assertRaises(CalibrationChangedError):
            planned.compute()

    def test_dark_frames_that_changed_on_the_disk_are_read_anew(self):
        darks = zarr.open(str(self.folder / "darks.zarr"), "w", shape=(2, 3, 4), chunks=(1, 3, 4), dtype="u2")
        image = da.from_array(np.full((1, 3, 4), 1000, np.uint16))
        result = correct(image, darks=da.from_zarr(darks), dark_exposure=1, exposure=1)
        for value in (100, 200):
            darks[:] = value
            self.same(result.compute(scheduler="synchronous"), np.full((1, 3, 4), 1000 - value))

    def test_what_is_refused(self):
        path, darks = self.calibration()
        images, lazy = self.stack()
        for kind, text, array, arguments in [
                (TypeError, "out cannot be given", lazy, {"out": images}),
                (TypeError, "images has dtype int64", lazy.astype(int), {}),
                (ValueError, "images are of 40 x 15", lazy[:, :15], {}),
                (ValueError, "1 dimensions", lazy[0, 0], {}),
                (ValueError, "level", lazy, {"level": 200})]:
            with self.subTest(text), self.assertRaisesRegex(kind, text):
                correct(array, calibration=path, exposure=1, **arguments)
        with self.assertRaisesRegex(TypeError, "darks has dtype"):
            correct(lazy, darks=da.from_array(darks.astype(float)), dark_exposure=1, exposure=1)
        with self.assertRaisesRegex(ValueError, "darks has the shape"):
            correct(lazy, darks=da.zeros((0, 30, 40), dtype=np.uint16), dark_exposure=1, exposure=1)
        with self.assertRaises(CalibrationFormatError):
            correct(lazy, calibration=b"", exposure=1)


class MasterDarks(DaskTest):
    def test_bits_are_those_of_the_library_beyond_what_is_exact(self):
        for count, chunks in ((1, 1), (7, 3), (256, 50), (257, 257), (700, 64)):
            stack = self.random.integers(65000, 65536, (count, 9, 11)).astype(np.uint16)
            stack[:, 0, 0] = 65535
            expected = master_dark(stack)
            lazy = master_dark(da.from_array(stack, chunks=(chunks, 4, 5)))
            self.assertEqual((lazy.shape, lazy.dtype), ((9, 11), np.uint16))
            self.same(lazy.compute(scheduler="threads"), expected)
        self.same(master_dark(da.from_array(stack[0], chunks=(4, 5))).compute(), master_dark(stack[0]))

    def test_and_of_the_file_that_the_workbench_builds(self):
        path, darks = self.calibration(frames=9)
        self.same(master_dark(da.from_array(darks, chunks=(2, 30, 40))).compute(), read_calibration(path)[0].background)


class Cluster(DaskTest):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.cluster = LocalCluster(n_workers=2, threads_per_worker=1, processes=True, memory_limit="1GB",
                                   dashboard_address=None, local_directory=cls.scratch.name)
        cls.client = Client(cls.cluster, set_as_default=False)

    @classmethod
    def tearDownClass(cls):
        cls.client.close()
        cls.cluster.close()
        cls.scratch.cleanup()

    def compute(self, array):
        return self.client.compute(array).result()

    def test_two_processes_give_the_same_bits_with_processors_made_once(self):
        path, darks = self.calibration()
        images, lazy = self.stack(40, 1)
        expected = self.workbench_applies(path, images)

        def made():
            from qx_backgroundcorrection._pool import pool
            return pool.made

        before = self.client.run(made)
        self.same(self.compute(correct(lazy, calibration=path, exposure=2)), expected)
        after = self.client.run(made)
        self.assertEqual(len(after), 2)
        self.assertTrue(all(after[worker] - before[worker] <= 1 for worker in after), (before, after))
        self.assertGreaterEqual(sum(after.values()) - sum(before.values()), 1)

    def test_a_correction_travels_to_workers_that_do_not_see_its_file(self):
        path, darks = self.calibration()
        images, lazy = self.stack()
        expected = self.workbench_applies(path, images)
        planned = correct(lazy, calibration=read_calibration(path), exposure=2)
        by_name = correct(lazy, calibration=path, exposure=2.5)
        (self.folder / "c.dat").unlink()
        self.same(self.compute(planned), expected)
        with self.assertRaises(FileNotFoundError):
            self.compute(by_name)
        self.same(self.compute(correct(lazy, darks=darks, dark_exposure=1, exposure=2)), expected)
        lazy_darks = da.from_array(darks, chunks=(1, 15, 40))
        self.same(self.compute(correct(lazy, darks=lazy_darks, dark_exposure=1, exposure=2)), expected)
        self.same(self.compute(master_dark(lazy_darks)), master_dark(darks))


class Lightness(unittest.TestCase):
    def test_dask_is_imported_by_who_uses_it(self):
        code = ("import sys, numpy\nfrom qx_backgroundcorrection import correct\nz = numpy.zeros((1, 1), numpy.uint16)\n"
                "correct(z, darks=z, dark_exposure=1, exposure=1)\nprint('dask' in sys.modules, 'zarr' in sys.modules)")
        self.assertEqual(subprocess.run([sys.executable, "-c", code], capture_output=True, text=True).stdout,
                         "False False\n")


if __name__ == "__main__":
    python_support.main()
