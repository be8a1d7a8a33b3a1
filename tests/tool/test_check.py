"""qxbackground check: exit status 0 only for a file that loads whole, and every departure with its byte."""
import re
import struct

import numpy as np

import support
from support import ToolTest
from test_files import file_bytes


class Check(ToolTest):
    def setUp(self):
        super().setUp()
        self.one = self.images(1, 3, 2)[0]
        self.two = self.images(1, 2, 2)[0]
        self.whole = file_bytes([(b"one", 1, 100, self.one), (b"two", 2, 50, self.two)])
        self.second = 46 + 7 * 12 + 512 + 16 + 12  # where the second correction starts

    def departures_of_each(self, files):
        """What the workbench says about every one of `files` (bytes): a list of (offset, text) for each."""
        names = [f"x{index}.qxb" for index in range(len(files))]
        for name, data in zip(names, files):
            (self.folder / name).write_bytes(data)
        result = self.run_tool("check", *names)
        self.assertEqual(result.stderr, "")
        found = {name: [] for name in names}
        for name, offset, text in re.findall(r"^(x\d+\.qxb): byte (\d+): (.*)$", result.stdout, re.M):
            found[name].append((int(offset), text))
        whole = re.findall(r"^(x\d+\.qxb): .*: loads whole$", result.stdout, re.M)
        self.assertEqual(sorted(whole), sorted(name for name in names if not found[name]), result.stdout)
        self.assertEqual(result.returncode, 0 if len(whole) == len(files) else 1)
        return list(found.values())

    def departures(self, data):
        return self.departures_of_each([data])[0]

    def changed(self, at, data):
        return self.whole[:at] + data + self.whole[at + len(data):]

    def loads_whole(self, data):
        """What another host loads from it equals what it should hold."""
        (self.folder / "y.qxb").write_bytes(data)
        return self.library("dump", "y.qxb", "y.raw").splitlines()

    def test_whole_files_of_both_versions(self):
        self.assertEqual(self.departures(self.whole), [])
        self.assertEqual(self.departures(file_bytes([])), [])
        for names in ([], [b"A"], [b"A" * 16, b"B"]):
            self.assertEqual(self.departures(file_bytes([(b"k", 1, 1, self.one)], 2, names)), [])

    def test_every_cut_is_found(self):
        files = [self.whole[:length] for length in range(len(self.whole))]
        for length, found in enumerate(self.departures_of_each(files)):
            self.assertTrue(found, length)
            self.assertLessEqual(found[-1][0], length)

    def test_every_changed_header_byte_is_found(self):
        """Headers and lengths, not the free bytes of keys, conditions and pixels."""
        free = []
        for start, pixels in ((46, 12), (self.second, 8)):
            free += range(start + 24, start + 24 + 512)             # key
            free += range(start + 24 + 512 + 32 + 12, start + 24 + 512 + 32 + 16)  # exposure
            free += range(start + 24 + 512 + 48 + 12, start + 24 + 512 + 48 + 16)  # intensity
            free += range(start + 24 + 512 + 64 + 12, start + 24 + 512 + 64 + 12 + pixels)
        fixed = sorted(set(range(len(self.whole))) - set(free))
        for bits in (0x41, 0xFF):
            files = [self.changed(at, bytes([self.whole[at] ^ bits])) for at in fixed]
            for at, found in zip(fixed, self.departures_of_each(files)):
                self.assertTrue(found, f"byte {at}")

    def test_departures_carry_their_offsets(self):
        self.assertEqual(self.departures(self.changed(0, b"b"))[0][0], 0)
        self.assertIn((26, "structure version 7 is not known"), self.departures(self.changed(26, b"\x07")))
        self.assertEqual([o for o, _ in self.departures(self.changed(self.second, b"\x3d"))], [self.second])
        self.assertEqual([o for o, _ in self.departures(self.changed(self.second + 4, b"\x02"))], [self.second + 4])
        self.assertEqual([o for o, _ in self.departures(self.changed(self.second + 8, b"\x02"))], [self.second + 8])
        self.assertEqual([o for o, _ in self.departures(self.changed(self.second + 12 + 8, b"\x01"))],
                         [self.second + 20])
        self.assertEqual(self.departures(self.whole + b"abc"), [(len(self.whole), "3 bytes follow the last correction")])

    def test_two_departures_in_one_file_are_both_found(self):
        data = bytearray(self.changed(46 + 12 + 4, b"\x05"))
        data[self.second + 12] = 9
        self.assertEqual([o for o, _ in self.departures(bytes(data))], [46 + 16, self.second + 12])

    def test_a_wrong_width_is_stepped_over(self):
        width = 46 + 24 + 512 + 12
        found = self.departures(self.changed(width, struct.pack("<I", 70000)))
        self.assertTrue(all(offset < self.second for offset, _ in found), found)

    def test_what_the_library_refuses_is_a_departure(self):
        one = (b"one", 1, 100, self.one)
        for corrections, word in [([one, (b"ONE", 1, 1, self.two)], "there already"), ([(b"", 1, 1, self.one)], "empty"),
                                  ([(b"k", 0, 1, self.one)], "zero"), ([(b"k", 1e-30, 1e-30, self.one)], "zero")]:
            found = self.departures(file_bytes(corrections))
            self.assertEqual(len(found), 1)
            self.assertIn(word, found[0][1])

    def test_counts_of_two_thousand_million_answer_at_once(self):
        self.assertTrue(self.departures(self.changed(42, struct.pack("<I", 2_000_000_000))))
        self.assertTrue(self.departures(self.changed(42, struct.pack("<I", 0xFFFFFFFF))))
        grouped = bytearray(file_bytes([], 2, [b"A"]))
        struct.pack_into("<I", grouped, 42, 2_000_000_000)
        self.assertTrue(self.departures(bytes(grouped)))

    def test_noise_does_not_flood(self):
        noise = self.random.bytes(3_000_000)
        found = self.departures(self.whole[:42] + struct.pack("<I", 0x7FFFFFFF) + noise)
        self.assertTrue(0 < len(found) < 300)

    def test_status_0_means_that_another_host_loads_everything(self):
        self.assertEqual(len(self.loads_whole(self.whole)), 2)
        generator = np.random.default_rng(3)
        changes = [(int(generator.integers(0, len(self.whole))), int(generator.integers(0, 256))) for _ in range(300)]
        files = [self.changed(at, bytes([value])) for at, value in changes]
        agreed = 0
        for (at, value), data, found in zip(changes, files, self.departures_of_each(files)):
            if not found and agreed <= 50:
                self.assertEqual(len(self.loads_whole(data)), 2, f"byte {at} = {value}")
                agreed += 1
        self.assertGreater(agreed, 50)


if __name__ == "__main__":
    support.main()
