"""qxbackground simulate: the same files on every machine, and a camera that behaves like the model says."""
import hashlib
import json

import numpy as np

import support
from support import ToolTest


class Determinism(ToolTest):
    # Of --seed 7 --width 48 --height 32 --frames 3 --lights 2 --exposure 0.25,2. They may change only together with
    # the model; a compiler or a machine that gives others is an error.
    EXPECTED = {
        "dark_0.25s.tif":
            "1ead44402c5e9ef21a6290f5a5de3f96a34db29877985d3e8c3daa4237e1fd81",
        "dark_2s.tif":
            "fcdb8eb9761402bdb61d8bb35665a67f874b572964cdde5508f9c3427e7931bc",
        "light_0.25s.tif":
            "cc97ecdd4dfb194dd2512b7a060bd931453a8be61ffa4483f9ab0b77deef7bc8",
        "light_2s.tif":
            "381efb30212d194ed7c95bd5963010dca688b7b0b677d2f956b25250d4c5f5f6",
        "simulation.json":
            "fb6f459e640fdb6bb83316fc9415abbaaa43f8bd11f79d45520c90bd32f8d4f4",
        "truth_background_0.25s.tif":
            "80e2a69b3e118fa3370453b23a4201a6535d8c60b46f8e3c67cdd26d1888a1fb",
        "truth_background_2s.tif":
            "aed5fa5976d90467cb3e8cd303277011d291fdb450fe3715ebd678ba3ee7b792",
        "truth_scene_0.25s.tif":
            "597b349d138fa76a52e5f9b58a6813666e1963021e535070859de79b23bfc448",
        "truth_scene_2s.tif":
            "179787935ffada00471b8e3d67e30b2b67c0f9ce820e3ca2ef3ddab3a9faca94",
    }

    def make(self, folder, *more):
        self.tool("simulate", "-o", folder, "--width", 48, "--height", 32, "--frames", 3, "--lights", 2, "--exposure",
                  "0.25,2", *more)
        return {p.name: hashlib.sha256(p.read_bytes()).hexdigest() for p in (self.folder / folder).iterdir()}

    def test_files_are_the_known_ones(self):
        self.assertEqual(self.make("s", "--seed", 7), self.EXPECTED)

    def test_another_seed_gives_another_camera(self):
        found = self.make("s", "--seed", 8)
        for name, digest in self.EXPECTED.items():
            self.assertNotEqual(found[name], digest, name)

    def test_more_frames_and_exposures_leave_the_others_as_they_were(self):
        self.make("a", "--seed", 7)
        self.tool("simulate", "-o", "b", "--width", 48, "--height", 32, "--frames", 5, "--exposure", 2, 3, "--seed", 7)
        self.assert_same_pages(self.read("b/dark_2s.tif")[:3], self.read("a/dark_2s.tif"))


class Extras(ToolTest):
    """Glow, cosmic rays, drift and fewer bits, each against the same camera without it."""

    def make(self, *options):
        self.tool("simulate", "-o", ".", "--overwrite", "--width", 64, "--height", 48, "--frames", 20, "--exposure", 2,
                  *options)
        self.description = json.loads((self.folder / "simulation.json").read_text())
        return np.stack(self.read("dark_2s.tif")).astype(int), self.read("light_2s.tif")[0].astype(int)

    def test_a_glow_grows_towards_one_corner(self):
        plain, _ = self.make("--hot-pixels", 0)
        glow, _ = self.make("--hot-pixels", 0, "--glow", 11)
        added = np.median(glow - plain, axis=0)
        self.assertAlmostEqual(added[-6:, -6:].mean() / (240 * 10), 0.83, delta=0.17)  # 10 x the dark current in the corner
        self.assertAlmostEqual(added[:6, :6].mean(), 0, delta=3)
        self.assertEqual(self.description["glow"], 11)

    def test_cosmic_rays_hit_dark_frames_one_by_one(self):
        plain, light = self.make()
        hit, hit_light = self.make("--cosmic-rays", 3)
        tracks = hit - plain
        self.assertTrue(((tracks == 0) | (tracks > 900)).all())  # 2000 e- are 1000 ADU
        pixels = (tracks > 0).sum(axis=(1, 2))
        self.assertTrue(10 < pixels.mean() < 60, pixels)  # 6 tracks in 2 s
        self.assertLess(((tracks > 0).sum(axis=0) > 3).sum(), 10)  # at places of their own
        np.testing.assert_array_equal(hit_light, light)

    def test_a_drift_passes_through_the_cameras_level(self):
        plain, light = self.make()
        drifting, drifting_light = self.make("--drift", 9)
        steps = np.round((drifting - plain).mean(axis=(1, 2)))
        np.testing.assert_array_equal(steps, list(range(-9, 10, 2)) * 2)
        np.testing.assert_array_equal(drifting_light, light)

    def test_fewer_bits_cut_high_values_off(self):
        _, light = self.make("--sky", 5000)
        _, cut = self.make("--sky", 5000, "--bits", 12)
        np.testing.assert_array_equal(cut, np.minimum(light, 4095))
        self.assertGreater((light > 4095).sum(), 100)


class Model(ToolTest):
    GAIN, READ_NOISE = 2.0, 6.0

    def setUp(self):
        super().setUp()
        self.tool("simulate", "-o", ".", "--width", 128, "--height", 96, "--frames", 60, "--lights", 60, "--exposure",
                  1, 4, "--gain", self.GAIN, "--read-noise", self.READ_NOISE)

    def test_the_mean_of_many_frames_is_the_truth(self):
        for exposure in ("1s", "4s"):
            truth = self.read(f"truth_background_{exposure}.tif")[0].astype(float)
            scene = self.read(f"truth_scene_{exposure}.tif")[0].astype(float)
            for frames, expected in [(f"dark_{exposure}.tif", truth), (f"light_{exposure}.tif", truth + scene)]:
                stack = np.array(self.read(frames), float)
                normal = expected < 20000  # beyond, frames saturate
                error = (stack.mean(axis=0) - expected)[normal]
                noise = np.sqrt((expected[normal] / self.GAIN + (self.READ_NOISE / self.GAIN) ** 2 + 1) / len(stack))
                self.assertLess(abs(np.mean(error / noise)), 0.1)
                self.assertLess(np.std(error / noise), 1.1)

    def test_noise_is_shot_noise_and_read_noise(self):
        stack = np.array(self.read("dark_4s.tif"), float)
        charge = (self.read("truth_background_4s.tif")[0] - 24.0) * self.GAIN
        expected = (charge + self.READ_NOISE**2) / self.GAIN**2 + 1 / 12
        measured = stack.var(axis=0, ddof=1)
        normal = charge < 5000
        self.assertAlmostEqual(np.mean((measured / expected)[normal]), 1, delta=0.03)

    def test_dark_signal_grows_with_exposure_and_the_offset_does_not(self):
        short = np.median(self.read("truth_background_1s.tif")[0])
        long = np.median(self.read("truth_background_4s.tif")[0])
        self.assertAlmostEqual((4 * short - long) / 3, 24, delta=3)

    def test_hot_pixels_are_counted_and_there(self):
        description = json.loads((self.folder / "simulation.json").read_text())
        truth = self.read("truth_background_4s.tif")[0]
        hot = int((truth > 3 * np.median(truth)).sum())
        self.assertGreater(hot, 0)
        self.assertAlmostEqual(hot, description["hotPixels"], delta=2)


class Refusals(ToolTest):
    def test_of_values_that_make_no_camera(self):
        for options in (["--width", 0], ["--height", 99999], ["--frames", 0], ["--exposure", 0],
                        ["--exposure", "1,1"], ["--gain", 0], ["--seed", "x"]):
            with self.subTest(options=options):
                self.refused("simulate", "-o", "s", *options)

    def test_of_a_folder_that_is_a_file(self):
        (self.folder / "s").write_text("a file")
        self.refused("simulate", "-o", "s", says=["s: is not a folder"])


if __name__ == "__main__":
    support.main()
