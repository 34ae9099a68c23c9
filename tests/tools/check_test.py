"""orvanta-check: agrees with orvanta.post about what can be run, and names what can't in words."""
import contextlib
import io
import os
import re
import shutil
from pathlib import Path

import support

support.require(numpy="python3-numpy", h5py="python3-h5py", yaml="python3-yaml")
import h5py
import numpy as np
from orvanta_tools import check


class Check(support.ToolTest):
    def setUp(self):
        super().setUp()
        self.sample("--refine=4", "--count=200", "--density-order=1")
        self.settings = Path("s.yaml").read_text(encoding="utf-8")

    def check(self, *arguments):
        """Lines of the report, after a look at its status."""
        said = io.StringIO()
        with contextlib.redirect_stdout(said), self.assertRaises(SystemExit) as ended:
            check.command(list(arguments))
        lines = said.getvalue().splitlines()
        errors = [line for line in lines if line.startswith("(EE)")]
        self.assertEqual(ended.exception.code, 1 if errors else 0)
        self.assertTrue(lines[-1].startswith(f"{len(errors)} error"), lines[-1])
        return lines

    def problems(self, **files):
        given = {"input": "s.vtkhdf", "points": "s.xyz", "settings": "s.yaml", **files}
        return [line for line in self.check(*(f"--{k}={v}" for k, v in given.items() if v))
                if line[0] == "("]

    def runs(self, settings):
        ended = self.call(os.environ["ORVANTA_POST"], "-i", "s.vtkhdf", "-p", "s.xyz", "-s", settings,
                          "-o", "t")
        return ended.returncode == 0

    def test_good_inputs_and_what_they_need(self):
        lines = self.tool("check", "-i", "s.vtkhdf", "-p", "s.xyz", "-s", "s.yaml").splitlines()
        self.assertEqual(lines[-1], "0 errors, 0 warnings")
        self.assertRegex(lines[0], r"elements: 320, sizes 0\.\d+ to 0\.\d+, density of order 1")
        self.assertEqual(lines[1], "points:   200")

    def test_a_missing_key_or_wrong_value_is_told_when_and_only_when_the_program_stops(self):
        # Every key of the file in turn: taken out, and given a value of another kind.
        keys = [m for m in re.finditer(r"(\w+): ([^,{}\n\[\]#]*[^,{}\n\[\]# ])(, )?", self.settings)]
        self.assertGreater(len(keys), 35)
        for key in keys:
            name, value = key.group(1), key.group(2)
            for new in ("", f"{name}: wrong{key.group(3) or ''}"):
                changed = self.settings[:key.start()] + new + self.settings[key.end():]
                self.write("c.yaml", changed)
                with self.subTest(key=name, line=self.settings[:key.start()].count("\n") + 1, new=new):
                    found = [p for p in self.problems(settings="c.yaml") if p.startswith("(EE)")]
                    self.assertEqual(not found, self.runs("c.yaml"), msg=found)
                    if found:
                        self.assertTrue(any(name in p for p in found), found)

    def test_settings(self):
        line = 1 + self.settings[:self.settings.index("leafSize:")].count("\n")
        for old, new, words in (
                ("leafSize", "leafsize",
                 f"(WW) c.yaml, line {line}: key bem.tree.leafsize is unknown and has no effect; is "
                 "leafSize meant?"),
                ("order: 1", "order: 2", "key fem.order: 2 is not the order 1 of the density"),
                ("degree: 5", "degree: 2", "key bem.fmm.degree: 2 is below 3"),
                ("leafSize: 100", "leafSize: 500", "key bem.tree.leafSize: leafSize 500 costs time"),
                ("numThreads: 0", "numThreads: 5000", "key numThreads: 5000 is above 1024"),
                ("  fem:", "  fem: [", "this is no YAML"),
                ("esProblem:", "esproblem:", "is esProblem meant?")):
            with self.subTest(new=new):
                self.write("c.yaml", self.settings.replace(old, new))
                self.assertIn(words, "\n".join(self.problems(settings="c.yaml")))
        top, threads = self.settings.split("  numThreads")
        self.write("first.yaml", "includes: [rest.yaml]\n" + top)
        self.write("rest.yaml", "\n  numThreads: many\n")
        self.assertEqual(["(EE) ./rest.yaml, line 2, key numThreads: expected a whole number from 0 "
                          "on, got 'many'"], self.problems(settings="./first.yaml"))
        self.assertIn("(EE) --settings: is needed: the density has order 1",
                      "\n".join(self.problems(settings=None)))

    def test_points(self):
        rows = "1 2 3\n4 5 6\n"
        for text, words in (
                ("# 2\n" + rows, "line 2: the number of points must stand here; 2 on line 1 is a "
                                 "comment. With numpy.savetxt give comments=''"),
                (rows, "(WW) p.xyz, line 1: 1 2 3 looks like a point, but 1 is taken"),
                ("1\n" + rows, "line 3: stands behind the 1 points"),
                ("3\n" + rows, "has 2 points, its first number announces 3"),
                ("X,Y,Z\n1,2,3\n", "line 1: this is a table with commas; orvanta-points csv"),
                ("2\n1,2,3\n4 5 6\n", "line 2: has commas"),
                ("2\n1 2 3\n4 x 6\n", "line 3: expected x y z, got '4 x 6'"),
                ("1\n1 2 inf\n", "line 2: expected x y z"), ("0\n", "there are no points"),
                ("# nothing\n", "holds no number of points"),
                ("1\n0.1 0 0\n", "(WW) p.xyz: 100 percent of the points lie inside of bodies"),
                ("1\n0 0 5000\n", "times the size of the bodies away: do points and solution have")):
            with self.subTest(text=text[:30]):
                self.assertIn(words, "\n".join(self.problems(points=self.write("p.xyz", text))))
        # Two discs that face each other enclose nothing.
        self.sample("--body=disc-pair", "--refine=4", name="open")
        with h5py.File("open.vtkhdf", "r+") as file:
            nodes = file["VTKHDF/Connectivity"][:].reshape(-1, 3)
            nodes[len(nodes) // 2:] = nodes[len(nodes) // 2:, [0, 2, 1]]
            file["VTKHDF/Connectivity"][:] = nodes.ravel()
        between = self.write("b.xyz", "1\n0 0 0.1\n")
        self.assertEqual(self.problems(input="open.vtkhdf", settings="open.yaml", points=between), [])
        self.write("p.xyz", "2\r\n1 2 3\r\n4 5 6 note\r\n")
        self.assertEqual(self.problems(points="p.xyz"), [])
        self.assertIn("m.mesh, line 1: expected 3 and the counts",
                      "\n".join(self.problems(points=self.write("m.mesh", "2 1 0 0\n1 0 0\n"))))

    def test_solutions(self):
        def attribute(group, name, value):
            return lambda file: file[group].attrs.__setitem__(name, value)

        def value(name, place, number):
            return lambda file: file[name].__setitem__(place, number)

        for spoil, words in (
                (lambda file: file.__delitem__("/ABB/L2/charges"), "has no /ABB/L2/charges"),
                (attribute("VTKHDF", "Version", np.array([1, 0])), "Version of /VTKHDF is 1, not 2.x"),
                (attribute("VTKHDF", "Type", np.bytes_(b"PolyData")), "not UnstructuredGrid"),
                (attribute("ABB/L2", "FEOrder", 2), "coefficients don't fit 320 elements of order 2"),
                (lambda file: (file.__delitem__("/VTKHDF/Types"), file.create_group("VTKHDF/Types")),
                 "has no /VTKHDF/Types"),
                (value("VTKHDF/PointData/vtkGlobalIds", 0, 10**15), "holds ids from 1 to 10000000"),
                (value("VTKHDF/Types", 3, 5), "cell 3 of type 5 with 3 nodes"),
                (value("VTKHDF/Points", (0, 0), np.nan), "a value that is not finite"),
                (value("ABB/L2/charges", 0, np.inf), "charges holds a value that is not finite"),
                (value("VTKHDF/Connectivity", 0, 10**6), "its arrays don't fit together")):
            with self.subTest(words=words):
                shutil.copy("s.vtkhdf", "c.vtkhdf")
                with h5py.File("c.vtkhdf", "r+") as file:
                    spoil(file)
                self.assertIn(words, "\n".join(self.problems(input="c.vtkhdf")))

    def test_files_that_are_not_what_they_should_be(self):
        os.mkdir("folder")
        for files, words in (
                ({"input": "s.xyz", "points": "s.vtkhdf"}, "are --input and --points mixed up?"),
                ({"settings": "s.vtkhdf"}, "is an HDF5 file, no settings"),
                ({"input": "far/s.vtkhdf"}, "does not exist, nor does its folder"),
                ({"points": "folder"}, "folder: is a folder; --points wants a file"),
                ({"output": "none/t"}, "none/t.csv: can't be written: there is no folder"),
                ({"points": self.write("my p.xyz", "1\n1 2 3\n")}, "has a blank in its name")):
            with self.subTest(files=files):
                self.assertIn(words, "\n".join(self.problems(**files)))

    def test_the_messages_of_the_troubleshooting_page_are_those_of_the_program(self):
        page = (support.TOOLS.parent / "docs" / "troubleshooting.md").read_text(encoding="utf-8")
        page = page.replace("\\|", "|")
        point = self.write("p.xyz", "1\n1 2 3\n")
        order = self.settings.replace("order: 1 ", "order: 2 ")
        for words, *arguments in (
                ("[CLI] (EE) Parameter '--input' has no value", "--input", "s.vtkhdf"),
                ("[CLI] (EE) Failed to find --points | -p", "-i", "s.vtkhdf"),
                ("[CLI] (WW) Did not make use of: --setting=s.yaml", "-i", "s.vtkhdf", "-p", point,
                 "--setting=s.yaml"),
                ("(EE) [RANK 0]: FE-orders don't match between solution file and  settings file: 1 "
                 "!= 0", "-i", "s.vtkhdf", "-p", point),
                ("1 != 2", "-i", "s.vtkhdf", "-p", point, "-s", self.write("o.yaml", order)),
                ("(EE) [RANK 0]: basic_ios::clear: iostream error", "-i", "s.vtkhdf", "-p",
                 self.write("c.xyz", "2\n1,2,3\n"), "-s", "s.yaml"),
                ("(EE) [RANK 0]: Expected four words here -> 3 1 0", "-i", "s.vtkhdf", "-p",
                 self.write("m.mesh", "3 1 0\n"), "-s", "s.yaml"),
                ('first invalid key: "leafSize"', "-i", "s.vtkhdf", "-p", point, "-s",
                 self.write("l.yaml", self.settings.replace("leafSize", "leafsize"))),
                ('(EE) when trying to read "fmm"', "-i", "s.vtkhdf", "-p", point, "-s",
                 self.write("d.yaml", self.settings.replace("degree: 5", "degree: 2"))),
                ("(EE) [RANK 0]: Wrong YAML format in settings file", "-i", "s.vtkhdf", "-p", point,
                 "-s", self.write("e.yaml", "esproblem: {}\n")),
                ("(EE) [RANK 0]: Cannot open file 's.xyz'", "-i", "s.xyz", "-p", point, "-s",
                 "s.yaml")):
            with self.subTest(words=words):
                ended = self.call(os.environ["ORVANTA_POST"], *arguments)
                self.assertIn(words, ended.stdout + ended.stderr)
                self.assertIn(words, page)


if __name__ == "__main__":
    support.main()
