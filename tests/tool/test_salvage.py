"""import --salvage: what is whole comes out of a damaged file, what is lost is said, and nothing is made up."""
import struct

import numpy as np

import support
from support import ToolTest
from test_files import file_bytes, SIGNATURE


class Salvage(ToolTest):
    def setUp(self):
        super().setUp()
        self.images_ = self.images(3, 6, 5)
        self.corrections = [(b"one", 1, 100, self.images_[0]), (b"two", 0.5, 50, self.images_[1]),
                            (b"three", 2, 25, self.images_[2])]
        self.whole = file_bytes(self.corrections)
        self.each = (len(self.whole) - 46) // 3

    def damaged(self, data):
        (self.folder / "x.qxb").write_bytes(data)
        (self.folder / "d.qxb").unlink(missing_ok=True)

    def salvage(self, *kept):
        """Salvages x.qxb into d.qxb, which then holds exactly the corrections of those numbers."""
        text = self.tool("import", "d.qxb", "x.qxb", "--salvage")
        self.assertEqual((self.folder / "d.qxb").read_bytes(), file_bytes([self.corrections[n] for n in kept]))
        return text

    def test_a_truncated_file_gives_what_lies_before_the_cut(self):
        self.damaged(self.whole[:-1])
        self.refused("import", "d.qxb", "x.qxb", says=["does not load whole", "import --salvage"])
        text = self.salvage(0, 1)
        self.assertIn("2 added", text)
        self.assertIn("the file ends inside the pixels of 'three': 59 of 60 bytes are there", text)
        self.assertIn("3 corrections announced, 2 saved", text)
        self.assertIn("import --salvage", self.tool("list", "x.qxb"))

    def test_every_cut(self):
        for length in range(0, len(self.whole), 97):
            self.damaged(self.whole[:length])
            whole = max(0, (length - 46) // self.each)
            if whole == 0:
                self.refused("import", "d.qxb", "x.qxb", "--salvage", says=["x.qxb"])
            else:
                self.salvage(*range(whole))

    def test_what_lies_behind_the_damage_comes_out_too(self):
        second = 46 + self.each
        for at, value in ((second + 4, b"\x09"), (second + 12 + 4, b"\x09"), (second + 12 + 524, b"\x09")):
            self.damaged(self.whole[:at] + value + self.whole[at + 1:])
            text = self.salvage(0, 2)
            self.assertIn("'two': does not load", text)

    def test_a_group_file(self):
        grouped = file_bytes(self.corrections, 2, [b"A"])
        self.damaged(grouped[:-1])
        self.salvage(0, 1)

    def test_a_whole_file_loses_nothing(self):
        self.damaged(self.whole)
        self.assertIn("Nothing was lost", self.salvage(0, 1, 2))

    def test_keys_that_are_there_twice(self):
        (self.folder / "x.qxb").write_bytes(file_bytes([self.corrections[0], (b"ONE", 3, 3, self.images_[2])]))
        text = self.salvage(0)
        self.assertIn("'ONE': its key is there already", text)

    def test_into_a_file_that_has_some(self):
        self.damaged(self.whole[:-1])
        (self.folder / "d.qxb").write_bytes(file_bytes([(b"one", 9, 9, self.images_[2])]))
        self.assertIn("1 added, 1 already there and kept", self.tool("import", "d.qxb", "x.qxb", "--salvage"))

    def test_nothing_to_be_had(self):
        for data in (b"", b"no calibration file", SIGNATURE, self.whole[:100],
                     SIGNATURE + struct.pack("<I", 1) + self.random.bytes(5000)):
            self.damaged(data)
            self.refused("import", "d.qxb", "x.qxb", "--salvage", says=["x.qxb"])
        self.write("t.tif", self.images(1, 3, 3))
        self.refused("import", "d.qxb", "t.tif", "--salvage", says=["t.tif: is a TIFF image, not a calibration file"])

    def test_damage_anywhere_never_gives_other_pixels(self):
        """Whatever comes out is a correction that went in, but for the free bytes of keys and conditions."""
        free = {p.tobytes() for p in self.images_}
        generator = np.random.default_rng(5)
        saved = 0
        for _ in range(60):
            data = bytearray(self.whole)
            at = int(generator.integers(0, len(data)))
            inside = (at - 46) % self.each if at >= 46 else 0
            if inside >= self.each - 60:  # a pixel: nobody can tell
                continue
            data[at] ^= int(generator.integers(1, 256))
            self.damaged(bytes(data))
            if self.run_tool("import", "d.qxb", "x.qxb", "--salvage").returncode == 0:
                self.library("dump", "d.qxb", "raw")
                pixels = (self.folder / "raw").read_bytes()
                for start in range(0, len(pixels), 60):
                    self.assertIn(pixels[start:start + 60], free, f"byte {at}")
                    saved += 1
        self.assertGreater(saved, 60)


if __name__ == "__main__":
    support.main()
