"""The verbs over calibration files: what they store is what the library loads, and no file is ever lost."""
import json
import os
import resource
import signal
import struct
import time
import unittest

import numpy as np

import support
from support import ToolTest, read_png

SIGNATURE = b"Background Correction File"


def record(identifier, version, data, length=None):
    return struct.pack("<III", identifier, version, len(data) if length is None else length) + data


def file_bytes(corrections, version=1, names=()):
    """A calibration file, by the book. corrections: (key, exposure, intensity, image)."""
    out = SIGNATURE + struct.pack("<I", version)
    if version == 2:
        out += record(69, 2, struct.pack("<I", len(names)))
        for name in names:
            out += record(70, 2, name.ljust(16, b"\0"))
    out += record(61, 1, struct.pack("<I", len(corrections)))
    for key, exposure, intensity, image in corrections:
        height, width = image.shape
        out += record(62, 1, b"", 576 + 2 * width * height) + record(63, 1, key.ljust(512, b"\0"))
        out += record(64, 1, struct.pack("<I", width)) + record(65, 1, struct.pack("<I", height))
        out += record(66, 1, struct.pack("<f", exposure)) + record(67, 1, struct.pack("<f", intensity))
        out += record(68, 1, image.astype("<u2").tobytes())
    return out


class FileTest(ToolTest):
    def build(self, key, name="c.qxb", exposure=1, intensity=100, frames=None):
        frames = frames or self.images(3, 6, 5, 0, 2000)
        self.write("darks.tif", frames)
        self.tool("build", name, "--key", key, "--exposure", exposure, "--intensity", intensity, "darks.tif")
        (self.folder / "darks.tif").unlink()
        return frames

    def listed(self, name="c.qxb"):
        return json.loads(self.tool("list", name, "--json"))

    def keys(self, name="c.qxb"):
        return [c["key"] for c in self.listed(name)["corrections"]]


class Contents(FileTest):
    def test_a_built_file_is_byte_for_byte_the_format(self):
        one, two = self.images(1, 3, 2), self.images(1, 1, 4)  # a single frame, flat enough to survive the median
        one = [np.full((2, 3), 700, np.uint16)]
        two = [np.full((4, 1), 65535, np.uint16)]
        self.build("first", frames=one, exposure=0.5, intensity=50)
        self.build("Second, with comma", frames=two, exposure=2)
        expected = file_bytes([(b"first", 0.5, 50, one[0]), (b"Second, with comma", 2, 100, two[0])])
        self.assertEqual((self.folder / "c.qxb").read_bytes(), expected)

    def test_list_tells_keys_sizes_and_conditions(self):
        self.build("a", exposure=0.25, intensity=12.5)
        self.build("b", exposure=60, frames=self.images(2, 9, 3))
        self.assertEqual(self.listed()["corrections"], [
            {"key": "a", "width": 6, "height": 5, "exposureSeconds": 0.25, "lightIntensityPercent": 12.5},
            {"key": "b", "width": 9, "height": 3, "exposureSeconds": 60.0, "lightIntensityPercent": 100.0}])
        text = self.tool("list", "c.qxb")
        self.assertIn("6 x 5", text)
        self.assertIn("0.25 s", text)

    def test_apply_equals_correct_and_the_library(self):
        darks, images = self.images(4, 11, 7, 0, 3000), self.images(3, 11, 7)
        self.build("k", frames=darks, exposure=0.5, intensity=80)
        self.build("other")
        self.write("i.tif", images)
        self.tool("apply", "c.qxb", "--key", "K", "--exposure", 1.1, "--intensity", 90, "--level", 37, "i.tif", "-o",
                  "o.tif")
        self.assert_same_pages(self.read("o.tif"), self.library_corrects(darks, (0.5, 80), images, (1.1, 90), 37))

    def test_show_gives_statistics_histogram_and_picture(self):
        self.build("k", frames=[np.full((8, 9), 1234, np.uint16)])
        text = self.tool("show", "c.qxb", "--key", "k", "--picture", "k.png")
        for part in ("9 x 8", "1234.00", "1234 ...  1234", "####", "k.png"):
            self.assertIn(part, text)
        self.assertIn("black 1233, white 1235 ADU", text)
        picture = read_png(self.folder / "k.png")
        self.assertTrue((picture[100:400, 20:350] == 128).all() and (picture[:60] < 100).any())  # the panel, its title

    def test_import_keeps_or_overwrites(self):
        self.build("a", "d.qxb", exposure=1)
        self.build("A", "s.qxb", exposure=2)
        self.build("b", "s.qxb", exposure=3)
        source = (self.folder / "s.qxb").read_bytes()
        self.assertIn("1 added, 1 already there and kept", self.tool("import", "d.qxb", "s.qxb"))
        self.assertEqual([c["exposureSeconds"] for c in self.listed("d.qxb")["corrections"]], [1, 3])
        self.assertIn("0 added, 2 overwritten", self.tool("import", "d.qxb", "s.qxb", "--overwrite"))
        self.assertEqual([c["exposureSeconds"] for c in self.listed("d.qxb")["corrections"]], [2, 3])
        self.assertIn("2 added", self.tool("import", "new.qxb", "s.qxb"))
        self.assertEqual((self.folder / "new.qxb").read_bytes(), source)
        self.assertEqual((self.folder / "s.qxb").read_bytes(), source)

    def test_delete_ignores_letter_case(self):
        for key in ("a", "b", "c"):
            self.build(key)
        self.tool("delete", "c.qxb", "--key", "B")
        self.assertEqual(self.keys(), ["a", "c"])
        for key in ("a", "c"):
            self.tool("delete", "c.qxb", "--key", key)
        self.assertEqual(self.keys(), [])
        self.assertEqual(self.tool("check", "c.qxb").count("loads whole"), 1)

    def test_keys_hold_anything_printable(self):
        keys = ["A,1,B,2", "Grün 37 °C", "%s%n'\"\\", "x" * 512, " "]
        for key in keys:
            self.build(key)
        self.assertEqual(self.keys(), keys)


class Safety(FileTest):
    def setUp(self):
        super().setUp()
        self.build("a")
        self.build("b")
        self.write("d.tif", self.images(1, 6, 5))

    def build_arguments(self, key, name="c.qxb", darks="d.tif"):
        return ["build", name, "--key", key, "--exposure", 1, "--intensity", 100, darks]

    def test_taken_empty_and_long_keys_are_refused(self):
        self.refused(*self.build_arguments("B"), says=["c.qxb", "not unique", "'B'"])
        self.refused(*self.build_arguments(""), says=["--key"])
        self.refused(*self.build_arguments("x" * 513), says=["513 bytes", "512"])

    def test_unknown_keys_are_named(self):
        self.refused("delete", "c.qxb", "--key", "zz", says=["c.qxb", "'zz'"])
        self.refused("show", "c.qxb", "--key", "zz", says=["c.qxb", "'zz'"])
        self.refused("apply", "c.qxb", "--key", "zz", "--exposure", 1, "--intensity", 1, "d.tif", "-o", "o.tif",
                     says=["c.qxb", "'zz'"])

    def test_missing_files_are_named(self):
        for verb in (["list", "no.qxb"], ["show", "no.qxb", "--key", "a"], ["delete", "no.qxb", "--key", "a"],
                     ["check", "no.qxb"], ["import", "c.qxb", "no.qxb"]):
            self.refused(*verb, says=["no.qxb"])
        self.refused(*self.build_arguments("n", "nofolder/c.qxb"), says=["nofolder/c.qxb"])
        self.refused(*self.build_arguments("n", darks="no.tif"), says=["no.tif"])
        self.refused("import", "c.qxb", "./c.qxb", says=["input"])

    def test_a_file_that_does_not_load_whole_is_never_rewritten(self):
        whole = (self.folder / "c.qxb").read_bytes()
        for damaged in (whole[:-1], whole[:700], whole + b"more", whole[:100] + b"\xff" + whole[101:70], b"",
                        b"no calibration file at all, but some text"):
            (self.folder / "x.qxb").write_bytes(damaged)
            says = "calibration file" if len(damaged) < 50 else "does not load whole"
            self.refused(*self.build_arguments("n", "x.qxb"), says=["x.qxb", says])
            self.refused("delete", "x.qxb", "--key", "a", says=["x.qxb", says])
            self.refused("import", "x.qxb", "c.qxb", says=["x.qxb", says])

    def test_a_group_file_is_left_to_the_store_verbs(self):
        (self.folder / "g_A_1").write_bytes(file_bytes([(b"A,1", 1, 1, np.ones((2, 2)))], 2, [b"A"]))
        for verb in (["list", "g_A_1"], self.build_arguments("n", "g_A_1"), ["delete", "g_A_1", "--key", "A,1"]):
            self.refused(*verb, says=["g_A_1", "store"])

    def test_a_full_disk_leaves_the_old_file(self):
        self.write("big.tif", self.images(1, 400, 300))
        before = self.contents()

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))
        result = self.run_tool("build", "c.qxb", "--key", "big", "--exposure", 1, "--intensity", 1, "big.tif",
                               preexec_fn=limit)
        self.assertEqual(result.returncode, 2)
        self.assertIn("c.qxb", result.stderr)
        self.assertEqual(self.contents(), before)

    @unittest.skipIf(os.geteuid() == 0, "root may write everywhere")
    def test_an_unwritable_folder_leaves_the_old_file(self):
        self.folder.chmod(0o500)
        self.addCleanup(self.folder.chmod, 0o700)
        self.refused(*self.build_arguments("n"), says=["c.qxb"])


class LargeFiles(FileTest):
    def test_list_reads_no_pixels(self):
        """A sparse file of three corrections of 600 MB each answers at once."""
        width, height = 20000, 15000
        with open(self.folder / "big.qxb", "wb") as file:
            file.write(SIGNATURE + struct.pack("<I", 1) + record(61, 1, struct.pack("<I", 3)))
            for index in range(3):
                head = file_bytes([(b"k%d" % index, 1, 100, np.zeros((0, 0)))])[46:]
                head = head[:8] + struct.pack("<I", 576 + 2 * width * height) + head[12:]
                head = head.replace(record(64, 1, bytes(4)), record(64, 1, struct.pack("<I", width)))
                head = head.replace(record(65, 1, bytes(4)), record(65, 1, struct.pack("<I", height)))
                file.write(head[:-4] + struct.pack("<I", 2 * width * height))
                file.seek(2 * width * height, 1)
            file.truncate(file.tell())
        start = time.monotonic()
        listed = self.listed("big.qxb")
        seconds = time.monotonic() - start
        self.assertEqual([c["key"] for c in listed["corrections"]], ["k0", "k1", "k2"])
        self.assertEqual(listed["corrections"][2]["width"], width)
        self.assertTrue(listed["whole"])
        self.assertGreater(listed["bytes"], 1.7e9)
        print(f"list of {listed['bytes']} bytes: {1000 * seconds:.0f} ms")
        self.assertLess(seconds, 1)
        self.assertIn("loads whole", self.tool("check", "big.qxb"))


if __name__ == "__main__":
    support.main()
