"""Processor and Store against the workbench, their errors, and what a call costs in memory."""
import copy
import ctypes
import pickle
import re
import struct
import subprocess
import sys
import threading
import tracemalloc
import zlib

import numpy as np

import python_support
from python_support import SOURCE, PythonTest
from qx_backgroundcorrection import (ArgumentError, ClosedError, CorrectionError, Delegate, FileError, HeaderOnlyError,
                                     LibraryError, OperationFailedError, Processor, Region, Store, _errors, _library,
                                     _pictures)


class Bindings(PythonTest):
    header = (SOURCE / "include" / "QX_BackgroundCorrection_C.h").read_text()

    def test_every_function_is_declared_as_in_the_header(self):
        text = re.sub(r"#.*", "", re.sub(r"/\*.*?\*/", "", self.header, flags=re.S))
        kinds = {"unsigned int": ctypes.c_uint, "int": ctypes.c_int, "float": ctypes.c_float,
                 "const char*": ctypes.c_char_p, "char*": ctypes.c_char_p, "QXBC_Object*": ctypes.c_void_p,
                 "const QXBC_Delegate*": ctypes.c_void_p, "unsigned short*": ctypes.c_void_p,
                 "int*": ctypes.POINTER(ctypes.c_int), "float*": ctypes.POINTER(ctypes.c_float),
                 "QXBC_Object**": ctypes.POINTER(ctypes.c_void_p),
                 "const char* const*": ctypes.POINTER(ctypes.c_char_p),
                 "const unsigned short* const*": ctypes.POINTER(ctypes.c_void_p)}
        declared = {}
        for result, name, arguments in re.findall(r"^((?:const )?\w+(?: \w+)?\*?) QXBC_(\w+)\(([^)]*)\);", text, re.M):
            types = [] if arguments == "void" else [
                kinds[re.sub(r"\w+$", "", " ".join(argument.split())).strip()] for argument in arguments.split(",")]
            if "Statistics" in name:
                types = [types[0]] + [ctypes.POINTER(ctypes.c_uint16)] * 3
            declared[name] = (kinds[result], types)
        self.assertGreater(len(declared), 25)
        self.assertEqual({name: (result, arguments) for name, result, arguments in _library._FUNCTIONS}, declared)

    def test_codes_are_those_of_the_header(self):
        codes = {int(number): name for name, number in re.findall(r"#define QXBC_(\w+) (\d+)u", self.header)}
        self.assertEqual({code: entry.name for code, entry in _errors.CODES.items()}, codes)

    def run_python(self, code, **environment):
        import os
        return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, cwd=self.folder,
                              env={**os.environ, **environment})

    def test_a_library_that_is_not_there_is_one_error(self):
        result = self.run_python("from qx_backgroundcorrection import *\ntry: Processor()\n"
                                 "except LibraryError as e: print(e.code, e)",
                                 QX_BACKGROUNDCORRECTION_LIBRARY=str(self.folder))
        self.assertRegex(result.stdout, r"^65537 loading the library: .*cannot open shared object file")

    def test_without_a_word_the_system_is_asked(self):
        code = "from qx_backgroundcorrection import *\ntry: Processor(); print(library_path())\nexcept LibraryError as e: print(e)"
        folder = str(_library.library().path).rsplit("/", 1)[0]
        found = self.run_python(code, QX_BACKGROUNDCORRECTION_LIBRARY="", LD_LIBRARY_PATH=folder)
        self.assertEqual(found.stdout, "libQX_BACKGROUNDCORRECTION_C.so\n", found.stderr)
        missing = self.run_python(code, QX_BACKGROUNDCORRECTION_LIBRARY="", LD_LIBRARY_PATH="")
        if "/usr/lib" not in missing.stdout and missing.stdout != "libQX_BACKGROUNDCORRECTION_C.so\n":
            self.assertIn("install it, set QX_BACKGROUNDCORRECTION_LIBRARY", missing.stdout)

    def test_a_process_is_told_its_library_once(self):
        path = _library.library().path
        code = (f"from qx_backgroundcorrection import *\nimport os\nuse_library({path!r}); use_library(os.path.dirname({path!r}))\n"
                f"Processor()\ntry: use_library('/elsewhere/x.so')\nexcept LibraryError as e: print(e)")
        result = self.run_python(code, QX_BACKGROUNDCORRECTION_LIBRARY="/nowhere")
        self.assertIn("is loaded already", result.stdout, result.stderr)


class Applying(PythonTest):
    def test_results_are_the_workbenchs(self):
        path, darks = self.calibration()
        images = self.images(3, 40, 30)
        for settings in ({}, {"exposure": 0.3, "intensity": 47.5}, {"level": 29}, {"exposure": 5.0, "level": 73}):
            expected = self.workbench_applies(path, images, **settings)
            given = {"exposure": 2.0, "intensity": 100, "level": 100, **settings}
            with Processor() as processor:
                processor.load(path)
                processor.set_exposure_and_intensity(given["exposure"], given["intensity"])
                processor.level = given["level"]
                processor.active = "DARK"
                for image, wanted in zip(images, expected):
                    original, out = image.copy(), np.zeros_like(image)
                    self.assertIs(processor.apply(image, out), out)
                    self.same(out, wanted)
                    self.same(image, original)
                    frozen = image.copy()
                    frozen.flags.writeable = False  # an input may be
                    self.same(processor.apply(frozen, out=np.zeros_like(image)), wanted)
                    self.assertIs(processor.apply(original), original)
                    self.same(original, wanted)
                    again = image.copy()
                    self.assertIs(processor.apply(again, out=again), again)
                    self.same(again, wanted)

    def test_region(self):
        path, _ = self.calibration()
        images = self.images(2, 7, 5)
        expected = self.workbench_applies(path, images, region=(3, 4, 7, 5))
        with Processor() as processor:
            processor.load(path)
            processor.set_exposure_and_intensity(2)
            processor.active = "dark"
            self.assertEqual(processor.region, Region(0, 0, 40, 30))
            processor.region = (3, 4, 7, 5)
            self.assertEqual(processor.region, Region(left=3, top=4, width=7, height=5))
            for image, wanted in zip(images, expected):
                self.same(processor.apply(image), wanted)
            with self.assertRaises(ArgumentError) as caught:
                processor.set_region(35, 0, 7, 5)
            self.assertEqual((caught.exception.code, caught.exception.operation), (515, "set_region"))

    def test_what_does_not_fit_is_refused_and_not_written(self):
        processor = self.processor(np.full((4, 6), 10, np.uint16))
        good = np.full((4, 6), 100, np.uint16)
        frozen = good.copy()
        frozen.flags.writeable = False
        wide = np.full((4, 12), 100, np.uint16)
        odd = np.frombuffer(b"\0" * 49, np.uint8)[1:].view(np.uint16).reshape(4, 6)
        cases = [
            ([[1]], None, TypeError, "the image is a list"),
            (good.astype(np.int16), None, TypeError, "dtype int16, not uint16"),
            (good.astype(np.float32), None, TypeError, "dtype float32"),
            (good.astype(">u2"), None, TypeError, "other byte order"),
            (good.ravel(), None, ValueError, "1 dimensions"),
            (good.reshape(1, 4, 6), None, ValueError, "3 dimensions"),
            (good.reshape(6, 4), None, ValueError, "4 x 6 pixels, but the region has 6 x 4"),
            (np.asfortranarray(good), None, ValueError, "not contiguous"),
            (wide[:, ::2], None, ValueError, "not contiguous"),
            (frozen, None, ValueError, "read-only"),
            (good, frozen, ValueError, "out is read-only"),
            (good, wide[:, ::2], ValueError, "out is not contiguous"),
            (good, np.zeros((6, 4), np.uint16), ValueError, "out has 4 x 6 pixels"),
            (good, good.astype(np.uint8), TypeError, "out has dtype uint8"),
            (good, [], TypeError, "out is a list"),
            (odd, None, ValueError, "even address"),
        ]
        for image, out, kind, text in cases:
            with self.subTest(text), self.assertRaisesRegex(kind, text):
                processor.apply(image, out)
        memory = np.full(48, 100, np.uint16)
        for shift in (1, 6, 23):
            for one, other in ((0, shift), (shift, 0)):
                with self.assertRaisesRegex(ValueError, "shares memory"):
                    processor.apply(memory[one:one + 24].reshape(4, 6), memory[other:other + 24].reshape(4, 6))
        processor.apply(memory[:24].reshape(4, 6), memory[24:].reshape(4, 6))
        self.assertEqual((set(memory[:24]), set(memory[24:]), set(wide.ravel()), set(good.ravel())),
                         ({100}, {90}, {100}, {100}))

    def test_size_is_that_of_the_region_whatever_changed_it(self):
        processor = Processor()
        self.addCleanup(processor.close)
        with self.assertRaisesRegex(ValueError, "but the region has 1 x 1 pixels"):
            processor.apply(np.zeros((4, 6), np.uint16))
        processor.add("a", np.ones((4, 6), np.uint16), exposure=1)
        processor.add("b", np.ones((2, 3), np.uint16), exposure=1)
        for key, shape in (("a", (4, 6)), ("b", (2, 3))):
            processor.active = key
            processor.apply(np.zeros(shape, np.uint16))
            with self.assertRaisesRegex(ValueError, "but the region has"):
                processor.apply(np.zeros((5, 5), np.uint16))
        processor.save(self.folder / "f")
        processor.active = "a"
        processor.clear()  # the region stays
        processor.apply(np.zeros((4, 6), np.uint16))

    def test_in_place_nothing_is_copied(self):
        processor = self.processor(np.full((1024, 1024), 10, np.uint16))
        image = np.full((1024, 1024), 100, np.uint16)
        out = np.zeros_like(image)
        processor.apply(image)
        for arguments in ((image,), (image, out), (image, image), (image.view(), None)):
            tracemalloc.start()
            np.full((1024, 1024), 1, np.uint16)
            self.assertGreater(tracemalloc.get_traced_memory()[1], image.nbytes)  # such a copy would be seen
            tracemalloc.clear_traces()
            tracemalloc.reset_peak()
            processor.apply(*arguments)
            peak = tracemalloc.get_traced_memory()[1]
            tracemalloc.stop()
            self.assertLess(peak, 16384)

    def test_threads_with_processors_of_their_own(self):
        wrong = []

        def work(value):
            with Processor() as processor:
                processor.add("d", np.full((64, 64), value, np.uint16), exposure=1)
                processor.active = "d"
                processor.set_exposure_and_intensity(1)
                for _ in range(200):
                    if not (processor.apply(np.full((64, 64), 1000, np.uint16)) == 1000 - value).all():
                        wrong.append(value)

        threads = [threading.Thread(target=work, args=(value,)) for value in range(100, 500, 100)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])


class Corrections(PythonTest):
    def test_files_are_the_workbenchs_whatever_the_frames_come_in(self):
        path, darks = self.calibration(frames=5)
        expected = (self.folder / "c.dat").read_bytes()
        spread = np.full((5, 60, 80), 7, np.uint16)
        spread[:, ::2, ::2] = darks
        for frames in (darks, list(darks), tuple(darks), iter(list(darks)), (frame for frame in darks),
                       np.asfortranarray(darks), spread[:, ::2, ::2]):
            with Processor() as processor:
                processor.add("dark", frames, exposure=1)
                processor.save(self.folder / "own.dat")
            self.assertEqual((self.folder / "own.dat").read_bytes(), expected)
        single, dark = self.calibration(frames=1, name="single.dat")
        for frames in (dark, dark[0], iter(dark)):
            with Processor() as processor:
                processor.add("dark", frames, exposure=1)
                processor.save(self.folder / "own.dat")
            self.assertEqual((self.folder / "own.dat").read_bytes(), (self.folder / "single.dat").read_bytes())

    def test_an_iterators_frames_are_added_as_the_library_adds_them(self):
        # Beyond 256 frames sums are rounded, so that the order shows; and averages that round up to 65536 become 0.
        stack = self.random.integers(65000, 65536, (700, 3, 5)).astype(np.uint16)
        stack[:, 0, 0] = 65535
        expected = self.processor(stack).background()
        self.same(self.processor(iter(stack)).background(), expected)
        halves = np.array([[[3, 4]], [[4, 6]]], np.uint16)
        self.same(self.processor(iter(halves)).background(), self.processor(halves).background())
        self.assertTrue((self.processor(stack.mean(0).round().astype(np.uint16)).background() != expected).any(),
                        "the rounding of the sums does not show in these frames")

    def test_frames_that_do_not_fit(self):
        good = np.zeros((3, 4), np.uint16)
        for frames, kind, text in [
                ([good, good.T.copy()], ValueError, "frame 1 has 3 x 4 pixels, but frame 0 has 4 x 3"),
                (iter([good, good[:2]]), ValueError, "frame 1 has 4 x 2 pixels"),
                ([good, good.astype(int)], TypeError, "frame 1 has dtype int64"), ([], ValueError, "there is none"),
                (iter([]), ValueError, "no frame"), (np.zeros((0, 3, 4), np.uint16), IndexError, ""),
                (good.astype(float), TypeError, "dtype float64"), (np.zeros((1, 1, 3, 4), np.uint16), ValueError, "4 dim"),
                (5, TypeError, "frames is a int"), ([[1, 2]], TypeError, "frame 0 is a list"),
                (np.zeros((0, 4), np.uint16), ValueError, "shape")]:
            with self.subTest(text), Processor() as processor, self.assertRaisesRegex((kind, ValueError), text):
                processor.add("d", frames, exposure=1)

    def test_keys(self):
        with Processor() as processor:
            self.assertTrue(processor)
            for key in ("one", "Zwei €", "a,b"):
                processor.add(key, np.ones((1, 1), np.uint16), exposure=1)
            self.assertEqual(processor.keys(), ["one", "Zwei €", "a,b"])
            self.assertEqual(list(processor), processor.keys())
            self.assertEqual(len(processor), 3)
            self.assertIn("ONE", processor)
            self.assertNotIn("two", processor)
            processor.active = "ONE"
            self.assertEqual(processor.active, "one")
            with self.assertRaises(ArgumentError) as caught:
                processor.delete("one")
            self.assertEqual(caught.exception.code, 513)
            self.assertEqual(caught.exception.text, "The supplied key is currently active.")
            processor.delete("a,b")
            processor.active = None
            self.assertIsNone(processor.active)
            with self.assertRaises(ArgumentError):
                processor.active = "three"
            with self.assertRaises(ArgumentError):
                processor.add("One", np.ones((1, 1), np.uint16), exposure=1)
            self.assertEqual(processor.keys(), ["one", "Zwei €"])
            for key, kind in (("a\0b", ValueError), (b"a", TypeError), (5, TypeError)):
                with self.assertRaises(kind):
                    processor.add(key, np.ones((1, 1), np.uint16), exposure=1)
            processor.clear()
            self.assertEqual(len(processor), 0)

    def test_settings_read_back(self):
        processor = self.processor(np.array([[100, 200, 603]], np.uint16).repeat(3, 0))
        self.assertEqual(processor.exposure_and_intensity, (1, 100))
        processor.set_exposure_and_intensity(0.5, 50)
        self.assertEqual(processor.exposure_and_intensity, (0.5, 50))
        self.assertEqual(processor.reference, (1, 100))
        processor.level = 29
        self.assertEqual(processor.level, 28)
        processor.level = 100
        whole = processor.statistics()
        self.assertEqual((whole.minimum, whole.maximum, whole.average), (200, 603, 334))
        self.assertEqual(processor.scaled_statistics(), (50, 151, 83))
        self.assertEqual(int(processor.background()[0, 0]), 50)
        processor.active = None
        self.assertIsNone(processor.reference)
        self.assertIsNone(processor.statistics())
        fresh = Processor()
        self.addCleanup(fresh.close)
        self.assertEqual(fresh.exposure_and_intensity, (-1, -1))

    def test_import(self):
        with Processor() as one, Processor() as other:
            one.add("a", np.full((1, 1), 1, np.uint16), exposure=1)
            other.add("A", np.full((1, 1), 2, np.uint16), exposure=1)
            other.add("b", np.full((1, 1), 3, np.uint16), exposure=1)
            one.import_from(other)
            self.assertEqual(one.keys(), ["a", "b"])
            one.active = "a"
            self.assertEqual(one.statistics().average, 1)
            one.active = None
            one.import_from(other, overwrite=True)
            one.active = "a"
            self.assertEqual(one.statistics().average, 2)
            with self.assertRaises(TypeError):
                one.import_from("file")

    def test_files(self):
        path, _ = self.calibration()
        with Processor() as processor:
            processor.load_header_only(path)
            self.assertEqual(processor.keys(), ["dark"])
            self.assertIn("header only", repr(processor))
            for work in (lambda: processor.apply(np.zeros((1, 1), np.uint16)), lambda: processor.save("x"),
                         lambda: processor.region, lambda: processor.statistics()):
                with self.assertRaises(HeaderOnlyError) as caught:
                    work()
                self.assertEqual(caught.exception.code, 770)
            processor.load(bytes(path, "utf-8"))
            processor.save(self.folder / "ö €.dat")
            self.assertEqual((self.folder / "ö €.dat").read_bytes(), (self.folder / "c.dat").read_bytes())
            with self.assertRaises(FileError) as caught:
                processor.load(self.folder / "missing")
            self.assertEqual(caught.exception.code, 769)
            self.assertIsInstance(caught.exception, OSError)
            (self.folder / "cut").write_bytes((self.folder / "c.dat").read_bytes()[:-1])
            with self.assertRaises(FileError) as caught:
                processor.load(self.folder / "cut")
            self.assertEqual((caught.exception.code, caught.exception.name), (4294967295, "SHORT_READ_OR_WRITE"))
            with self.assertRaisesRegex(ValueError, "NUL"):
                processor.load("a\0b")


class Stores(PythonTest):
    def test_group_files_are_the_workbenchs(self):
        darks = self.images(3, 4, 3, 0, 500)
        self.write("d.tif", darks)
        for key in ("Gain,1,x", "Gain,2,x"):
            self.tool("store", "add", "tool", "--group", "Gain", "--key", key, "--exposure", 1, "--intensity", 100, "d.tif")
        with Store(["Gain"]) as store:
            for key in ("Gain,1,x", "Gain,2,x"):
                store.add(key, darks, exposure=1)
            store.save(self.folder / "own")
            self.assertEqual(sorted(store.keys()), ["Gain,1,x", "Gain,2,x"])
        for value in "12":
            self.assertEqual((self.folder / f"own_Gain_{value}").read_bytes(),
                             (self.folder / f"tool_Gain_{value}").read_bytes())
        image = self.images(1, 4, 3)[0]
        with Store(["Gain"]) as store, Processor() as processor:
            store.load(self.folder / "tool")
            store.set_exposure_and_intensity(2)
            store.active = "Gain,2,x"
            self.write("i.tif", [image])
            self.tool("store", "apply", "tool", "--group", "Gain", "--key", "Gain,2,x", "--exposure", 2, "--intensity", 100,
                      "i.tif", "-o", "o.tif")
            self.same(store.apply(image), self.read("o.tif")[0])
            self.assertIn("2 corrections; active 'Gain,2,x'", repr(store))
            with self.assertRaises(ArgumentError):
                processor.import_from(store)
            with self.assertRaises(ArgumentError) as caught:
                store.add("no gain", darks, exposure=1)
            self.assertIn("no correction has this key", str(caught.exception))  # the store has no text for it

    def test_passes_through_without_a_group(self):
        with Store(["Gain"]) as store:
            image = self.images(1, 5, 2)[0]
            self.same(store.apply(image.copy()), image)

    def test_names(self):
        for names, kind in ((["a", ""], ArgumentError), ([], ArgumentError), ("Gain", TypeError), ([1], TypeError)):
            with self.assertRaises(kind):
                Store(names)


class Delegates(PythonTest):
    def setUp(self):
        super().setUp()
        self.background = self.images(1, 6, 4, 100, 200)[0]
        self.darkened = self.processor(self.background)
        self.background = self.darkened.background()

    def test_a_callable_in_place_and_into(self):
        seen = []

        def subtract(image, background, out):
            seen.append((image.shape, background.flags.writeable, out is image))
            np.add(image, background, out=out)

        image = self.images(1, 6, 4, 0, 1000)[0]
        out = np.zeros_like(image)
        self.same(self.darkened.apply(image, out, delegate=subtract), image + self.background)
        changed = image.copy()
        self.assertIs(self.darkened.apply(changed, delegate=subtract), changed)
        self.same(changed, image + self.background)
        self.assertEqual(seen, [((4, 6), False, False), ((4, 6), False, True)])

    def test_a_delegate_gets_the_flags_and_the_rest(self):
        calls = []

        class Recording(Delegate):
            def subtract_in_place(self, image, background, processing, option):
                calls.append(("in place", processing, option))

            def subtract_into(self, output, image, background, processing, option):
                calls.append(("into", processing, option, image.flags.writeable, output.flags.writeable))
                return 0

            def process_in_place(self, image):
                calls.append(("process", image.shape))
                image += 1

        image = np.zeros((4, 6), np.uint16)
        delegate = Recording()
        self.darkened.apply(image, delegate=delegate, option=True)
        self.darkened.apply(image, image.copy(), delegate=delegate, processing=True)
        self.darkened.active = None
        self.darkened.apply(image, delegate=delegate)
        self.assertEqual(calls, [("in place", False, True), ("into", True, False, False, True)])
        self.darkened.apply(image, delegate=delegate, processing=True)
        self.assertEqual(calls[2:], [("process", (4, 6))])
        self.assertEqual(int(image.sum()), 24)
        self.darkened.apply(image, delegate=lambda image, background, out: calls.append(background), processing=True)
        self.assertIsNone(calls[-1])

    def test_what_goes_wrong_in_it_comes_out(self):
        image = np.zeros((4, 6), np.uint16)

        class Interruption(BaseException):
            pass

        def fails(image, background, out):
            raise Interruption("inside")

        with self.assertRaisesRegex(Interruption, "inside"):
            self.darkened.apply(image, delegate=fails)
        with self.assertRaises(CorrectionError) as caught:
            self.darkened.apply(image, delegate=lambda image, background, out: 77)
        self.assertEqual(caught.exception.code, 77)
        with self.assertRaises(NotImplementedError):
            self.darkened.apply(image, delegate=Delegate())
        with self.assertRaisesRegex(TypeError, "neither a Delegate nor callable"):
            self.darkened.apply(image, delegate=5)
        self.same(self.darkened.apply(image), np.zeros((4, 6)))  # usable all the same

    def test_it_may_call_the_object_back(self):
        found = []
        self.darkened.apply(np.zeros((4, 6), np.uint16), delegate=lambda *arrays: found.append(self.darkened.active))
        self.assertEqual(found, ["dark"])


class Lives(PythonTest):
    def test_closed(self):
        for make in (Processor, lambda: Store(["a"])):
            with make() as thing:
                self.assertFalse(thing.closed)
            self.assertTrue(thing.closed)
            self.assertFalse(thing._finalizer.alive, "the library's object is still there")
            thing.close()
            for work in (lambda: thing.apply(np.zeros((1, 1), np.uint16)), lambda: thing.save("x"),
                         lambda: thing.apply(np.zeros((1, 1), np.uint16), np.zeros((1, 1), np.uint16))):
                with self.assertRaises(ClosedError) as caught:
                    work()
                self.assertEqual(caught.exception.code, 65538)
            self.assertEqual(thing.keys(), [])
            self.assertIn("closed", repr(thing))
            self.assertIn("closed", thing._repr_html_())

    def test_what_nobody_holds_is_deleted(self):
        deleted = []
        processor = Processor()
        handle, delete = processor._handle, processor._library.Delete
        processor._finalizer.detach()
        import weakref
        weakref.finalize(processor, lambda: (deleted.append(handle), delete(handle)))
        del processor
        self.assertEqual(deleted, [handle])
        other = Processor()
        finalizer = other._finalizer
        self.assertTrue(finalizer.alive)
        del other
        self.assertFalse(finalizer.alive)

    def test_neither_pickled_nor_copied(self):
        with Processor() as processor:
            for work in (pickle.dumps, copy.copy, copy.deepcopy):
                with self.assertRaisesRegex(TypeError, "belongs to its process"):
                    work(processor)

    def test_errors_travel(self):
        for code, kind in ((513, ArgumentError), (769, FileError), (770, HeaderOnlyError), (1024, OperationFailedError),
                           (65537, LibraryError), (77, CorrectionError), (1280, CorrectionError)):
            error = _errors.make_error("load", code, "some\n text")
            again = pickle.loads(pickle.dumps(error))
            self.assertIs(type(again), kind)
            self.assertEqual((again.code, again.text, again.operation), (code, "some\n text", "load"))
            self.assertTrue(str(again).startswith(f"load: some text ({code}, "), str(again))

    def test_pictures(self):
        processor = self.processor(np.arange(400 * 300, dtype=np.uint16).reshape(300, 400) % 1000)
        html = processor._repr_html_()
        self.assertIn("active &#x27;dark&#x27;", html)
        self.assertIn("median ", html)
        self.assertIn('src="data:image/png;base64,', html)
        image = self.images(1, 400, 300)[0]
        image[:3] = 0
        image[-30:] = 65535
        data = _pictures.png(image)
        self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")
        at, kinds, pixels = 8, [], b""
        while at < len(data):
            length, kind = struct.unpack_from(">I4s", data, at)
            self.assertEqual(zlib.crc32(data[at + 4:at + 8 + length]), struct.unpack_from(">I", data, at + 8 + length)[0])
            kinds.append(kind)
            if kind == b"IHDR":
                width, height = struct.unpack_from(">II", data, at + 8)
            if kind == b"IDAT":
                pixels = zlib.decompress(data[at + 8:at + 8 + length])
            at += 12 + length
        self.assertEqual(kinds, [b"IHDR", b"IDAT", b"IEND"])
        rows = np.frombuffer(pixels, np.uint8).reshape(height, width + 1)
        self.assertEqual((width, height), (134, 100))
        self.assertEqual((rows[:, 0].max(), rows[0, 1:].max(), rows[-1, 1:].min()), (0, 0, 255))


if __name__ == "__main__":
    python_support.main()
