"""The JSON Schema of settings files: agrees with the program and with orvanta-check."""
import contextlib
import copy
import io
import json
import os
from pathlib import Path

import support

support.require(jsonschema="python3-jsonschema", yaml="python3-yaml", numpy="python3-numpy")
import jsonschema
import yaml
from orvanta_tools import check, settings


def at(tree, path):
    for key in path:
        tree = tree[key]
    return tree


def ranges(item, path=()):
    """Path, least and greatest value of all integers that have a greatest one or a least above 0."""
    for name, inner in item["properties"].items():
        if inner.get("type") == "object":
            yield from ranges(inner, (*path, name))
        elif "maximum" in inner or inner.get("minimum", 0) > 0:
            yield (*path, name), inner["minimum"], inner.get("maximum")


class Schema(support.ToolTest):
    def setUp(self):
        super().setUp()
        self.sample("--refine=1", "--count=3")
        self.schema = json.loads(Path(os.environ["ORVANTA_SCHEMA"]).read_text(encoding="utf-8"))
        self.validator = jsonschema.Draft7Validator(self.schema)
        self.text = Path("s.yaml").read_text(encoding="utf-8")
        self.good = yaml.safe_load(self.text.replace("1e-5", "1.0e-5").replace("1e-20", "1.0e-20"))

    def changed(self, path, value):
        """The sample's settings with another value; None takes the key out."""
        tree = copy.deepcopy(self.good)
        block = at(tree["esProblem"], path[:-1])
        if value is None:
            del block[path[-1]]
        else:
            block[path[-1]] = value
        return tree

    def verdicts(self, tree):
        """What the program, the schema and orvanta-check make of these settings."""
        self.write("c.yaml", yaml.safe_dump(tree))
        ended = self.call(os.environ["ORVANTA_POST"], "-i", "s.vtkhdf", "-p", "s.xyz", "-s", "c.yaml",
                          "-o", "t")
        report = check.Report()
        with contextlib.redirect_stdout(io.StringIO()):
            settings.Settings("c.yaml", report)
        return ended.returncode == 0, self.validator.is_valid(tree), report.errors == 0

    def test_is_a_schema_and_the_sample_names_it_and_fits(self):
        jsonschema.Draft7Validator.check_schema(self.schema)
        self.assertRegex(self.text.splitlines()[0],
                         r"^# yaml-language-server: \$schema=/.+/orvanta\.post/settings\.schema\.json$")
        self.assertEqual(list(self.validator.iter_errors(self.good)), [])

    def test_agrees_with_the_program(self):
        scaling = {"type": "scaling", "factors": [2, 2, 2], "center": [0, 0, 0], "partIDs": [1]}
        uniform = {"adaptive": False, "maxLevel": 2}
        for path, value, is_good in (
                (("postEval", "quad", "minRelDist"), None, False),
                (("bem", "tree"), uniform, True), (("bem", "tree"), {"adaptive": True}, False),
                (("bem", "tree"), {"adaptive": False, "leafSize": 5}, False),
                (("bem", "updateInTime"), False, True), (("bem", "updateInTime"), 3, False),
                (("electrodes",), 5, False), (("floatings",), None, False),
                (("fem", "order"), -1, False), (("postProc", "vtkhdf"), {"isGZip": True}, False),
                (("dielectrics",), [{"partId": 1, "orientations": [1, -1, 0], "epsR": 2.5}], True),
                (("dielectrics",), [{"partId": 1, "orientations": [2], "epsR": 2.5}], False),
                (("domain", "placements"), [scaling], True),
                (("domain", "placements"), [{**scaling, "type": "Scaling"}], False),
                (("domain", "placements"), [{**scaling, "factors": [2, 2]}], False),
                (("domain", "placements"), [{**scaling, "factors": [2, 2, 2, 2]}], False)):
            with self.subTest(path=path, value=value):
                self.assertEqual(self.verdicts(self.changed(path, value)), (is_good,) * 3)

    def test_ranges_are_those_of_the_program(self):
        found = list(ranges(self.schema["properties"]["esProblem"]))
        self.assertEqual(len(found), 5)
        for path, least, greatest in found:
            inside = [least, *([greatest] if greatest else [])]
            outside = [least - 1, *([greatest + 1] if greatest else [])]
            for value in inside + outside:
                if path == ("numThreads",) and value == greatest:
                    continue  # so many threads would start
                with self.subTest(path=path, value=value):
                    self.assertEqual(self.verdicts(self.changed(path, value)), (value in inside,) * 3)

    def test_is_stricter_only_where_the_program_ignores_what_it_reads(self):
        for path, value in ((("bem", "updateIntime"), True), (("systemSolver", "type"), "CGG")):
            self.assertEqual(self.verdicts(self.changed(path, value)), (True, False, True))


if __name__ == "__main__":
    support.main()
