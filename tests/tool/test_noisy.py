"""Pixels that dark current makes noisy: what --repair-noisy makes of them, held against a second writing in numpy, and what
it must leave alone."""
import json

import numpy as np

import support
from support import ToolTest

SHAPE = (80, 100)
GAIN = 2.0  # electrons per ADU
PEDESTAL = 400
TIMES = 2  # the images' exposure, in those of the dark frames


def middle(values):
    return np.sort(values, axis=None)[np.size(values) // 2]


def law_of(frames):
    """Variance of a pixel of the usual level, variance for each ADU above it; and what each pixel's own values say."""
    levels, distances, squares = [], [], []
    before = None
    for one, other in zip(frames[0::2], frames[1::2]):
        apart = []
        for frame in (one, other):
            sample = frame.ravel()[::max(frame.size // 65536, 1) | 1]
            apart.append(np.where(frame == frame.max(), 1e9, frame.astype(float) - middle(sample)))
        level, distance = apart[0] + apart[1], np.abs(apart[0] - apart[1])
        squares.append(np.where(level < 1e6, distance, 0) ** 2)
        if before is not None:
            lower = np.trunc(np.minimum(level, before) / 2)
            there = (level < 1e6) & (before < 1e6)
            levels.append(lower[there])
            distances.append(distance[there])
        before = level
    levels, distances = np.concatenate(levels), np.concatenate(distances)
    half_octave = np.floor(2 * np.log2(np.maximum(np.abs(levels), 16) / 16)) + 1
    band = np.where(np.abs(levels) < 16, 0, half_octave) * np.where(levels < 0, -1, 1) + np.where(levels < 0, -0.5, 0)
    points = []
    for which in np.unique(band):
        inside = distances[band == which]
        if inside.size < 64:
            continue
        counts = np.bincount(inside.astype(int))
        reached = np.cumsum(counts)
        at = int(np.argmax((reached >= inside.size / 2) & (counts > 0)))
        low = max(at - 0.5, 0)
        median = low + (at + 0.5 - low) * (inside.size / 2 - (reached[at] - counts[at])) / counts[at]
        points.append((levels[band == which].mean(), max(median ** 2 * 1.4826 ** 2 / 2, 1 / 12), inside.size))
    level, variance, count = np.array(points).T
    expected = variance
    for _ in range(4):
        slope, usual = np.polyfit(level, variance, 1, w=np.sqrt(count) / expected)
        expected = np.maximum(usual + slope * level, 1 / 12)
    squares = np.array(squares)
    return usual, slope, (squares.sum(axis=0) - squares.max(axis=0)) / (2 * (len(squares) - 1))


def around(plane, radius):
    """Of each pixel, the sum over its neighbours."""
    padded = np.pad(plane, radius)
    height, width = plane.shape
    return sum(padded[dy:dy + height, dx:dx + width] for dy in range(2 * radius + 1) for dx in range(2 * radius + 1)
               if (dy, dx) != (radius, radius))


def mean_of_neighbours(value, weight, radius):
    weights = around(weight, radius)
    with np.errstate(divide="ignore", invalid="ignore"):
        return (np.where(weights > 0, around(weight * value, radius) / weights, 0),
                np.where(weights > 0, 1 / weights, np.inf))


def surface_through_neighbours(value, weight):
    height, width = value.shape
    with np.errstate(divide="ignore"):
        padded, variances = np.pad(value, 1), np.pad(1 / weight, 1, constant_values=np.inf)
    forecast, variance = np.zeros_like(value), np.zeros_like(value)
    for dy in range(3):
        for dx in range(3):
            if (dy, dx) != (1, 1):
                factor = 0.5 if 1 in (dy, dx) else -0.25
                forecast += factor * padded[dy:dy + height, dx:dx + width]
                variance += factor ** 2 * variances[dy:dy + height, dx:dx + width]
    return np.where(np.isfinite(variance), forecast, 0), variance


def evened(image, frames, dark, times=TIMES, hot=()):
    """Of a corrected image, without its pedestal."""
    usual, slope, measured = law_of(frames)
    above = np.maximum(dark - middle(dark), 0)
    erratic = measured > 8 * (usual + slope * above)
    of_average = times ** 2 / len(frames)
    usual, per_adu = usual * (max(times, 1) + of_average), slope * (times + of_average)
    excess = per_adu * above
    noisy = (excess > 0.1 * usual) & ~erratic
    for place in hot:
        noisy[place] = not erratic[place]
    weight = np.where(erratic, 0, 1 / (usual + excess))
    light = np.maximum(mean_of_neighbours(image, weight, 1)[0], 0) * slope
    with np.errstate(divide="ignore"):
        weight = np.where(weight > 0, 1 / (1 / weight + light), 0)
    best, doubt = np.zeros_like(image), np.full_like(image, np.inf)
    for value, variance in (mean_of_neighbours(image, weight, 1), mean_of_neighbours(image, weight, 2),
                            surface_through_neighbours(image, weight)):
        with np.errstate(divide="ignore", invalid="ignore"):
            trust = np.where(weight > 0, 1 / (1 / weight + variance), 0)
            misses = around((trust * (image - value)) ** 2 - trust, 2) / around(trust ** 2, 2)
        here = np.maximum(misses, 0) + variance
        better = here < doubt
        best, doubt = np.where(better, value, best), np.where(better, here, doubt)
    with np.errstate(divide="ignore", invalid="ignore"):
        variance = doubt + 1 / weight
        kept = np.where((image - best) ** 2 > 25 * variance, (image > best) | (2 * excess < variance), 1 - excess / variance)
    out = np.where(noisy, best + kept * (image - best), image)
    return np.floor(np.where(erratic, best, out) + 0.5)


class NoisyPixels(ToolTest):
    """A small camera with a glow to the right and some hot pixels."""
    HOT = [(5, 9), (12, 20), (13, 21), (40, 60), (70, 95), (30, 31)]

    def setUp(self):
        super().setUp()
        x = np.arange(SHAPE[1]) / SHAPE[1]
        self.current = np.tile(200 + 8000 * x ** 4, (SHAPE[0], 1))  # electrons in a dark frame
        for place in self.HOT:
            self.current[place] += 12000
        self.frames = [self.take(1) for _ in range(10)]
        self.write("darks.tif", self.frames)

    def take(self, times, scene=0):
        electrons = self.random.poisson(self.current * times + np.broadcast_to(scene, SHAPE) * GAIN)
        values = 100 + (electrons + self.random.normal(0, 6, SHAPE)) / GAIN
        return np.clip(np.rint(values), 0, 65535).astype(np.uint16)

    def correct(self, light, *how, darks="darks.tif", times=TIMES, status=0):
        self.write("light.tif", [light])
        self.report = json.loads(self.tool(
            "correct", "--dark-exposure", 1, "--dark-intensity", 100, "--exposure", times, "--intensity", 100, "--unfiltered",
            "--pedestal", PEDESTAL, "--json", "--overwrite", *how, "--dark", darks, "-o", "o.tif", "light.tif"))
        return self.read("o.tif")[0].astype(float) - PEDESTAL

    def scene(self):
        y, x = np.mgrid[:SHAPE[0], :SHAPE[1]]
        scene = np.where((y // 20 + x // 25) % 2, 1000.0, 100.0)  # edges
        for star_y, star_x in ((20, 20), (40, 60), (60, 90), (30, 85)):  # the second one beneath a hot pixel
            scene += 4000 * np.exp(-((y - star_y) ** 2 + (x - star_x) ** 2) / (2 * 1.5 ** 2))
        return scene

    def test_are_evened_as_was_described(self):
        light = self.take(TIMES, self.scene())
        plain = self.correct(light)
        found = self.correct(light, "--repair-noisy")
        expected = evened(plain, self.frames, np.mean(self.frames, axis=0, dtype=np.float32).astype(float))
        changed = expected != plain
        self.assertGreater(changed.sum(), 1500)
        self.assertLess((found != expected).mean(), 0.002)  # a half may be rounded otherwise
        self.assertLessEqual(np.abs(found - expected).max(), 1)
        np.testing.assert_array_equal(found[:, :45][~changed[:, :45]], plain[:, :45][~changed[:, :45]])
        self.assertRegex(" ".join(self.report["notes"]), r"beyond the usual evened out by neighbours: \d+ pixels, 0 of them")

    def test_noise_goes_and_light_stays(self):
        scene = self.scene()
        light = self.take(TIMES, scene)
        plain = self.correct(light) + 100  # the offset was scaled, too
        found = self.correct(light, "--repair-noisy", "--repair-hot") + 100
        replaced = self.correct(light, "--repair-hot") + 100
        glow = np.s_[:, 75:]
        self.assertLess((found - scene)[glow].std(), 0.75 * (plain - scene)[glow].std())
        stars = scene > 1400
        kept = found[stars].sum() / scene[stars].sum()
        self.assertAlmostEqual(kept, 1, delta=0.01)
        self.assertLess(np.abs((found - scene)[stars]).mean(), 1.1 * np.abs((plain - scene)[stars]).mean())
        # Beneath the star the median of the neighbours knows little of its peak.
        self.assertGreater(np.abs(replaced - scene)[40, 60], 600)
        self.assertLess(np.abs(found - scene)[40, 60], 400)
        step = np.diff(scene, axis=0)
        edges = (np.abs(step) > 850) & (np.abs(step) < 950) & (np.arange(SHAPE[1]) > 75)
        self.assertGreater((np.diff(found, axis=0) / np.where(edges, step, 1))[edges].mean(), 0.9)
        beside = np.pad(edges, ((0, 1), (0, 0))) | np.pad(edges, ((1, 0), (0, 0)))
        self.assertLess(np.abs(found - scene)[beside].mean(), np.abs(plain - scene)[beside].mean())

    def test_erratic_and_cut_off_pixels_are_not_believed(self):
        for number, frame in enumerate(self.frames):
            frame[50, 10] += 900 * (number in (0, 3, 5, 6, 9))  # telegraph noise
            frame[60, 15] = frame[20, 40] = 65535
        self.write("darks.tif", self.frames)
        light = self.take(TIMES, 300)
        light[50, 10] += 1800
        light[60, 15] = light[20, 40] = 65535
        plain = self.correct(light)
        found = self.correct(light, "--repair-noisy")
        for place in ((50, 10), (60, 15), (20, 40)):
            self.assertGreater(abs(plain[place] - 200), 150)
            self.assertLess(abs(found[place] - 200), 45)
        self.assertIn("pixels, 3 of them erratic", " ".join(self.report["notes"]))

    def test_what_noise_cannot_explain(self):
        """Light is added only: a point of it stays, and so does a dark one where there is little dark current to lose."""
        light = self.take(TIMES, 300)
        light[40, 80] += 3000  # in the glow
        light[30, 31] -= 3000  # a hot pixel
        light[45, 57] = 0
        plain = self.correct(light)
        found = self.correct(light, "--repair-noisy")
        self.assertGreater(found[40, 80], 2500)
        self.assertEqual(found[40, 80], plain[40, 80])
        self.assertEqual((plain[30, 31], plain[45, 57], found[45, 57]), (-PEDESTAL,) * 3)
        self.assertLess(abs(found[30, 31] - 200), 45)

    def test_dead_pixels_are_replaced_and_help_nobody(self):
        for frame in self.frames:
            frame[50, 90] = 0
        self.write("darks.tif", self.frames)
        light = self.take(TIMES, 300)
        light[50, 90] = 0
        found = self.correct(light, "--repair-noisy", "--repair-hot")
        self.assertLess(np.abs(found[48:53, 88:93] - 200).max(), 250)
        self.assertRegex(" ".join(self.report["notes"]), "or replaced where dead: [0-9]+ hot and [1-9][0-9]* dead pixel")

    def test_in_a_region_they_are_where_they_are(self):
        light = self.take(TIMES, 300)
        whole = self.correct(light, "--repair-noisy")
        part = self.correct(light[8:72, 12:96], "--repair-noisy", "--region", "12,8,84,64")
        np.testing.assert_array_equal(part[5:-5, 5:-5], whole[13:67, 17:91])

    def test_a_camera_without_dark_current_is_left_alone(self):
        frames = [np.rint(self.random.normal(300, 5, SHAPE)).astype(np.uint16) for _ in range(10)]
        self.write("even.tif", frames)
        light = self.take(0, 300)
        plain = self.correct(light, darks="even.tif")
        np.testing.assert_array_equal(self.correct(light, "--repair-noisy", darks="even.tif"), plain)
        self.assertIn("--repair-noisy did nothing", self.report["warnings"][0])

    def test_what_cannot_be_is_refused(self):
        self.write("light.tif", [self.take(TIMES, 300)])
        self.write("three.tif", self.frames[:3])
        correct = ["correct", "--dark-exposure", 1, "--dark-intensity", 100, "--exposure", 1, "--intensity", 100, "-o",
                   "o.tif", "light.tif", "--repair-noisy"]
        self.refused(*correct, "--dark", "darks.tif", says=["--repair-noisy", "--unfiltered"])
        self.refused(*correct, "--dark", "three.tif", "--unfiltered", says=["--repair-noisy", "4 dark frames or more, not 3"])


if __name__ == "__main__":
    support.main()
