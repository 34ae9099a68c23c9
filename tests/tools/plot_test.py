"""orvanta-plot: pictures of lines, planes and surfaces, their geometry against closed forms."""
import re
import struct
from pathlib import Path

import support

support.require(numpy="python3-numpy", h5py="python3-h5py", matplotlib="python3-matplotlib")
import numpy as np
from orvanta_tools import grids, planes, plot, solution, textfiles

CHARGE = np.array([0.0, 0.0, 2.0])


def write_table(points, charges=((1.0, CHARGE),), name="t.csv"):
    """The exact table of point charges 4 pi q."""
    points = np.asarray(points, dtype=float)
    potential, gradient = np.zeros(len(points)), np.zeros((len(points), 3))
    for q, where in charges:
        away = points - where
        r = np.linalg.norm(away, axis=1)
        with np.errstate(divide="ignore", invalid="ignore"):
            potential += q / r
            gradient -= q * away / r[:, None] ** 3
    np.savetxt(name, np.column_stack([points, potential, gradient]), delimiter=",",
               header=textfiles.HEAD, comments="", fmt="%.17E")
    return name


def plane(counts=(21, 11), corner=(-1, 0.5, -1), sides=((2, 0, 0), (0, 0, 1))):
    u, v = np.meshgrid(*(np.linspace(0, 1, n) for n in counts))
    return np.array(corner) + u.reshape(-1, 1) * sides[0] + v.reshape(-1, 1) * sides[1]


class Plot(support.ToolTest):
    def words(self, *arguments):
        """All texts of the picture, which matplotlib keeps as comments in an SVG."""
        said = self.tool("plot", *arguments, "-o", "p.svg")
        self.assertEqual(said.splitlines()[-1], "p.svg")
        return set(re.findall(r"<!-- (.*?) -->", Path("p.svg").read_text(encoding="utf-8")))

    def test_curves_stand_above_each_other_and_maps_side_by_side(self):
        line = [[0.1 * i, 0, 1] for i in range(20)]
        oblique = [[i, 2 * i, -i] for i in range(20)]
        scattered = np.random.default_rng(1).random((60, 3)) * [1, 0, 1]
        for points, wide, options in ((line, False, ()), (oblique, False, ("--log",)),
                                      (plane(), True, ("--arrows", "--log")),
                                      (scattered, True, ("--lines", "--minus"))):
            self.tool("plot", "-t", write_table(points), *options)
            picture = Path("t.png").read_bytes()
            self.assertEqual(picture[:8], b"\x89PNG\r\n\x1a\n")
            width, height = struct.unpack(">II", picture[16:24])
            self.assertEqual(width > height, wide)
        self.tool("plot", "-t", "t.csv", "-o", "t.pdf")
        self.assertEqual(Path("t.pdf").read_bytes()[:5], b"%PDF-")

    def test_labels_say_what_is_drawn_with_units_and_direction(self):
        table = write_table(plane())
        units = ("--length-unit=mm", "--potential-unit=kV")
        self.assertLessEqual(
            {"potential [kV]", "|gradient of potential| [kV/mm]", "X [mm]", "Z [mm]",
             "Y = 0.5; arrows along the gradient, towards positive charges"},
            self.words("-t", table, "--arrows", *units))
        self.assertLessEqual({"gradient Z", "Y = 0.5; field lines along the negative gradient"},
                             self.words("-t", table, "--lines", "--minus", "--show=z"))
        tilted = write_table(plane(sides=((1, 1, 0), (0, 0, 1))))
        self.assertIn("distance along (0.7071, 0.7071, 0)", self.words("-t", tilted))

    def test_curves_of_several_tables_share_a_frame(self):
        names = [write_table([[0, 0, z] for z in range(k, k + 4)], name=f"gap{k}.csv")
                 for k in (5, 6)]
        self.assertLessEqual({"gap5", "gap6", "Z"}, self.words("-t", names[0], "-t", names[1]))
        self.refuses("only if the points of each lie on a line", "plot", "-t", names[0],
                     "-t", write_table(plane()))

    def test_the_highest_field_is_named_with_its_place_and_row(self):
        said = self.tool("plot", "-t", write_table([[0, 0, z] for z in (0, 1, 1.5, 4)]),
                         "--factor=3", "-o", "p.png")
        self.assertIn("t.csv: 4 points; highest field 12 at (0, 0, 1.5), row 3", said)

    def test_colours_are_even_around_zero_and_clipped_at_peaks(self):
        # A plane that passes close to a charge: some points have a far greater field than others.
        points = plane((41, 41), (-3, 0, -3), ((6, 0, 0), (0, 0, 6)))
        table = write_table(points, ((1.0, CHARGE), (-0.1, -CHARGE)))

        def colours(name, *options):
            picture = plot.Picture(plot.parser().parse_args(["-t", table, *options]),
                                   textfiles.read_table(table))
            picture.table.gradient[:5] *= 1e-9
            values = picture.values(name)
            norm, _, opened = picture.norm(name, values)
            return (norm.vmin, norm.vmax, opened), values

        limits, potential = colours("potential")
        self.assertEqual(limits, (-potential.max(), potential.max(), "neither"))
        limits, field = colours("field")
        usual = np.percentile(field, 99)
        self.assertEqual(limits, (field.min(), usual, "max"))
        limits, _ = colours("field", "--log", "--decades=2")
        self.assertEqual(limits, (usual / 100, usual, "both"))

    def test_the_outline_is_the_circle_that_the_plane_cuts_out_of_a_sphere(self):
        self.sample("--refine=6", "--elements=mixed", "--geometry-order=3")
        triangles, _ = solution.read_solution("s.vtkhdf").triangles(4)
        for height in (0.0, 0.3):  # at 0 corners and edges of the mesh lie in the plane
            points = plane((5, 4), (-2, height, -2), ((4, 0, 0), (0, 0, 3)))
            segments = planes.Plane(points).cut(triangles)
            radius = np.sqrt(1 - height**2)
            np.testing.assert_allclose(np.linalg.norm(segments, axis=2), radius, atol=4e-3)
            length = np.linalg.norm(segments[:, 1] - segments[:, 0], axis=1).sum()
            self.assertAlmostEqual(length, 2 * np.pi * radius, delta=0.02)
        for start, direction, expected in (((0, 0, -5), (0, 0, 1), (4, 6)),
                                           ((-3, 0.6, 0), (1, 0, 0), (2.2, 3.8)),
                                           ((0, 2, 0), (1, 0, 0), ())):
            found = planes.crossings(np.array(start, float), np.array(direction, float), triangles)
            np.testing.assert_allclose(found, expected, atol=3e-3)

    def test_grids_are_recognised_in_their_order_and_nothing_else(self):
        graded = np.array([0, 1, 3, 7, 15.0])
        points = np.array([[x, y, y] for y in graded[:3] for x in graded])
        box = np.array([[x, y, z] for z in range(2) for y in range(3) for x in range(4)], float)
        for expected, given in (
                ((5, 3), points), ((4, 3, 2), box), ((4,), box[:4]), ((), box[:-1]),
                ((), points[::-1][[0, 2, 1, 3]]), ((), np.zeros((4, 3))), ((), np.random.default_rng(2).random((12, 3)))):
            self.assertEqual(grids.grid_shape(given), expected)

    def test_a_view_in_space_names_the_highest_place(self):
        self.sample("--refine=3", "--body=ellipsoid", "--density=exact", "--geometry-order=2")
        self.tool("points", "surface", "-i", "s.vtkhdf", "--parts=2", "-o", "off.xyz")
        table = self.evaluate("off.xyz")
        field = np.linalg.norm(np.loadtxt(table, delimiter=",", skiprows=1)[:, 4:], axis=1)
        for options in ((), ("-i", "s.vtkhdf")):
            title, = (w for w in self.words("-t", table, *options) if w.startswith("highest"))
            self.assertIn(f"highest |gradient of potential|: {field.max():.4g} at (", title)

    def test_refusals_and_gaps(self):
        table = write_table([[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]])
        for words, *arguments in (
                ("are required: -t/--table",),
                ("--show: magnitude is none of", "-t", table, "--show=magnitude"),
                ("expected the extension .png, .pdf or .svg", "-t", table, "-o", "t.jpg"),
                ("--decades=0", "-t", table, "--decades=0"),
                ("need points on a plane", "-t", table, "--arrows"),
                ("has no rows", "-t", self.write("e.csv", textfiles.HEAD + "\n")),
                ("in one place", "-t", write_table([[1, 1, 1]] * 3, name="o.csv")),
                ("o.xyz is no result", "-t", self.write("o.xyz", "1\n1 2 3\n")),
                ("none.csv: No such file", "-t", "none.csv")):
            with self.subTest(words=words):
                self.refuses(words, "plot", *arguments)
        write_table(plane(), charges=((1.0, plane()[7]),))
        ended = self.call(support.TOOLS / "orvanta-plot", "--table=t.csv", "--arrows")
        self.assertEqual((ended.returncode, ended.stderr),
                         (0, "(WW) t.csv: 1 of 231 rows without finite values leave gaps\n"))


if __name__ == "__main__":
    support.main()
