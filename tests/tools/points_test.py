"""orvanta-points: closed forms, points as orvanta.post takes them up, refusals with their words."""
import support

support.require(numpy="python3-numpy", h5py="python3-h5py", meshio="python3-meshio")
import meshio
import numpy as np
from orvanta_tools import shapes


class Points(support.ToolTest):
    def made(self, *arguments):
        count, *rows = self.tool("points", *arguments).splitlines()
        points = np.array([[float(x) for x in row.split()] for row in rows])
        self.assertEqual(int(count), len(points))
        return points

    def test_lattices_run_from_corner_to_corner_with_the_first_direction_fastest(self):
        tenths = np.arange(11)[:, None] / 10
        np.testing.assert_allclose(
            self.made("line", "--from=1,2,3", "--to=2,0,3", "--counts=11"),
            [1, 2, 3] + tenths * [1, -2, 0], atol=1e-15)
        np.testing.assert_array_equal(
            self.made("plane", "--from=0,5,1", "--to=2,5,-1", "--counts=3,2"),
            [[0, 5, 1], [1, 5, 1], [2, 5, 1], [0, 5, -1], [1, 5, -1], [2, 5, -1]])
        tilted = self.made("plane", "--from=0,0,0", "--corner=1,1,0", "--to=1,1,2", "--counts=2,3")
        np.testing.assert_array_equal(tilted[[0, 1, 4, 5]],
                                      [[0, 0, 0], [1, 1, 0], [0, 0, 2], [1, 1, 2]])
        box = self.made("box", "--from=0,0,0", "--to=1,2,3", "--counts=2,3,4")
        self.assertEqual(len(np.unique(box, axis=0)), 24)
        np.testing.assert_array_equal(box[[1, 2, 6]], [[1, 0, 0], [0, 1, 0], [0, 0, 1]])

    def test_points_off_a_sphere_lie_a_part_of_each_elements_size_away(self):
        # h^2 / 2 is the area of an element, so all distances give the area of the sphere.
        for elements, order, quad8, tolerance in (
                ("triangles", 1, (), 4e-2), ("mixed", 2, (), 1e-3), ("quads", 2, ("--quad8",), 1e-3),
                ("mixed", 3, (), 1e-3)):
            with self.subTest(elements=elements, order=order, quad8=quad8):
                self.sample("--refine=6", f"--elements={elements}", f"--geometry-order={order}",
                            "--pieces=3", "--shuffle", "--renumber", *quad8)
                off = self.made("surface", "-i", "s.vtkhdf", "--distance=0.05")
                there = self.made("surface", "-i", "s.vtkhdf", "--distance=-0.05")
                h = np.linalg.norm(off - there, axis=1) / 0.1
                self.assertAlmostEqual(np.sum(h**2 / 2) / (4 * np.pi), 1, delta=tolerance)
                middle = (off + there) / 2
                outward = np.sum((off - there) * middle, axis=1)
                np.testing.assert_allclose(outward, 0.1 * h * np.linalg.norm(middle, axis=1),
                                           rtol=tolerance)
        cells = self.made("surface", "-i", "s.vtkhdf", "--parts=3")
        self.assertEqual(len(cells), 9 * len(off))
        np.testing.assert_allclose(np.linalg.norm(cells, axis=1), 1.02, atol=0.02)

    def test_nodal_bases_hold_their_polynomials_and_slopes(self):
        points = np.random.default_rng(3).random((9, 2)) * [1, 0.5]
        points[:, 1] *= points[:, 0]
        x, y = points.T
        for nodes, i, j in ((3, 1, 0), (6, 1, 1), (6, 0, 2), (10, 2, 1), (10, 0, 3), (4, 1, 1),
                            (8, 2, 1), (8, 1, 2), (9, 2, 2), (16, 3, 3), (16, 1, 3)):
            basis = shapes.nodal_basis(nodes)
            at_nodes = basis.nodes[:, 0] ** i * basis.nodes[:, 1] ** j
            np.testing.assert_allclose(basis.values(points) @ at_nodes, x**i * y**j, atol=1e-13)
            np.testing.assert_allclose(basis.gradients(points)[1] @ at_nodes,
                                       j * x**i * y ** max(j - 1, 0), atol=1e-12)

    def test_orvanta_post_evaluates_the_points_it_is_given(self):
        np.testing.assert_array_equal(self.made("line", "--from=0,0,0", "--to=1,0,0", "--counts=8")
                                      [:, 0], np.linspace(0, 1, 8))
        self.sample("--refine=4")
        self.tool("points", "line", "--from=2,0,0", "--to=1e9,0.1,0", "--counts=50", "-o", "l.xyz")
        table = np.loadtxt(self.evaluate("l.xyz"), delimiter=",", skiprows=1)
        np.testing.assert_array_equal(table[:, :3], np.loadtxt("l.xyz", skiprows=1))

    def test_nodes_of_meshes_and_columns_of_tables_are_taken_over(self):
        nodes = np.array([[0, 0, 0.1], [1, 0, 0], [0, 1, 1e-17]])
        for name in ("m.vtu", "m.obj", "m.msh"):
            meshio.write(name, meshio.Mesh(nodes, [("triangle", [[0, 1, 2]])]))
            np.testing.assert_array_equal(self.made("mesh", f"--mesh={name}"), nodes)
        self.write("own.mesh", "# ours\n3 2 1 2\n7 1 2 3\n\n9 4 5 6\nSegment2 1 7 9\n")
        np.testing.assert_array_equal(self.made("mesh", "--mesh=own.mesh"), [[1, 2, 3], [4, 5, 6]])
        self.write("t.csv", 'name;"z";x;Y\na;3;1;2\n\nb;6e0;4;5\n')
        np.testing.assert_array_equal(self.made("csv", "--csv=t.csv"), [[1, 2, 3], [4, 5, 6]])

    def test_refusals_name_the_file_and_the_row(self):
        self.sample("--refine=2")
        for words, *arguments in (
                ("expected 3 numbers with commas", "line", "--from=1,2", "--to=1,2,3", "--counts=2"),
                ("--counts=1: expected 1 number", "line", "--from=0,0,0", "--to=1,0,0", "--counts=1"),
                ("the same point", "line", "--from=0,0,0", "--to=0,0,0", "--counts=3"),
                ("share exactly one", "plane", "--from=0,0,0", "--to=1,1,1", "--counts=3,3"),
                ("lie on one line", "plane", "--from=0,0,0", "--corner=1,0,0", "--to=2,0,0",
                 "--counts=3,3"),
                ("differ in all three", "box", "--from=0,0,0", "--to=1,1,0", "--counts=2,2,2"),
                ("closer than 0.01", "surface", "-i", "s.vtkhdf", "--distance=0.005"),
                ("s.yaml is no HDF5 file", "surface", "-i", "s.yaml"),
                ("none.vtkhdf: No such file", "surface", "-i", "none.vtkhdf"),
                ("t.csv, row 2 (line 3): expected numbers", "csv",
                 "--csv=" + self.write("t.csv", "X,Y,Z\n1,2,3\n1,2\n")),
                ("u.csv, row 1 (line 2)", "csv", "--csv=" + self.write("u.csv", "X,Y,Z\n1,2,nan\n")),
                ("must name the columns", "csv", "--csv=" + self.write("v.csv", "1,2,3\n")),
                ("no points", "csv", "--csv=" + self.write("w.csv", "X,Y,Z\n")),
                ("own.mesh, line 2", "mesh",
                 "--mesh=" + self.write("own.mesh", "3 1 0 0\n1 2 x 4\n")),
                ("meshio can't read", "mesh", "--mesh=" + self.write("a.vtu", "nothing")),
                ("a.mesh: orvanta.post reads", "line", "--from=0,0,0", "--to=1,0,0", "--counts=2",
                 "-o", "a.mesh")):
            with self.subTest(words=words):
                self.refuses(words, "points", *arguments)


if __name__ == "__main__":
    support.main()
