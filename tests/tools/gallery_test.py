"""The scripts of examples/gallery: they draw their pictures and come near to closed forms."""
import os
import re
from pathlib import Path

import support

support.require(numpy="python3-numpy", h5py="python3-h5py", matplotlib="python3-matplotlib")
import numpy as np

GALLERY = support.TOOLS.parent / "examples" / "gallery"
BUILD = Path(os.environ["ORVANTA_POST"]).parent.parent.parent


def axis_field(radius, gap, voltage, z):
    """Field on the axis of two spheres at +-voltage, by the images of one above a plane at 0."""
    centre = radius + gap / 2
    charge, place, field = radius * voltage, centre, 0.0
    for _ in range(200):
        field += charge * (1 / (place - z) ** 2 + 1 / (place + z) ** 2)
        charge, place = charge * radius / (centre + place), centre - radius**2 / (centre + place)
    return field


class Gallery(support.ToolTest):
    def run_script(self, name, *pictures):
        """What the script says, after a look at its pictures."""
        ended = self.call(GALLERY / name, f"--build={BUILD}", "--out=out")
        self.assertEqual(ended.returncode, 0, msg=ended.stderr)
        for picture in pictures or [f"{name}.png"]:
            self.assertGreater(Path("out", picture).stat().st_size, 10_000)
        return ended

    def expect_axis(self, table, gap):
        rows = np.loadtxt(Path("out", table), delimiter=",", skiprows=1)
        np.testing.assert_allclose(rows[:, 6], axis_field(50, gap, 50, rows[:, 2]), rtol=2e-3)

    def test_sphere_gap(self):
        self.run_script("sphere_gap")
        self.expect_axis("axis.csv", 20)

    def test_sweep(self):
        if self.call("/bin/sh", "-c", "command -v parallel").returncode:
            self.skipTest("parallel is not installed")
        self.run_script("sweep")
        for gap in (10, 15, 20, 30, 40):
            self.expect_axis(f"gap_{gap}.csv", gap)

    def test_fine_over_coarse(self):
        ended = self.run_script("fine_over_coarse", "fine_over_coarse_plane.png")
        self.assertEqual(ended.stderr, "")
        highest = dict(re.findall(r"(\w+)\.csv: .* highest field (\S+)", ended.stdout))
        self.assertLess(float(highest["plane"]), 25)

    def test_disc_pair(self):
        self.run_script("disc_pair")
        rows = np.loadtxt("out/discs.csv", delimiter=",", skiprows=1)
        np.testing.assert_allclose(rows[:, 3], -rows.reshape(120, 160, 7)[::-1, :, 3].ravel(),
                                   atol=1e-4)

    def test_ellipsoid(self):
        said = self.run_script("ellipsoid").stdout
        value, x = re.search(r"highest field (\S+) at \((\S+),", said).groups()
        self.assertAlmostEqual(float(value), 1 / (4 * np.pi * 0.8 * 0.5), delta=0.005)
        self.assertAlmostEqual(abs(float(x)), 1.5, delta=0.01)


if __name__ == "__main__":
    support.main()
