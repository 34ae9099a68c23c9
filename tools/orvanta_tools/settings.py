"""The settings file: its keys, and everything that is wrong with it, key by key."""
import difflib
import os
import re

from .cli import need

# What a key may hold.
TEXT, WHOLE, SIGNED, NUMBER, SWITCH, ANYTHING = (
    "a text", "a whole number from 0 on", "a whole number", "a number", "true or false", "anything")
PATTERNS = {TEXT: r".*", WHOLE: r"\d+", SIGNED: r"[+-]?\d+",
            NUMBER: r"[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?",
            SWITCH: r"(y|n|yes|no|true|false|on|off|Y|N|Yes|No|True|False|On|Off|"
                    r"YES|NO|TRUE|FALSE|ON|OFF)"}


class Key:
    """A key of the settings: what it holds (a kind, a dict of keys, or a list of one of them), and
    whether it must be there."""

    def __init__(self, holds, required=True):
        self.holds, self.required = holds, required


def optional(holds):
    return Key(holds, required=False)


COMMENT = {"comment": optional(TEXT)}
FMM = {"leafQuadratureOrder": Key(WHOLE), "degree": Key(WHOLE)}
# Which of the first two is needed depends on the third.
TREE = {"leafSize": optional(WHOLE), "maxLevel": optional(WHOLE), "adaptive": Key(SWITCH)}
SOLVER = {"type": Key(TEXT), "rtol": Key(NUMBER), "atol": Key(NUMBER), "maxIter": Key(WHOLE),
          "verbose": optional(SWITCH), "restart": optional(WHOLE), **COMMENT}
PROBLEM = {
    "domain": Key({"parts": Key([{"name": Key(TEXT), "id": Key(WHOLE),
                                  "regionIds": optional([WHOLE]), **COMMENT}]),
                   "placements": optional([ANYTHING]), **COMMENT}),
    "dielectrics": Key([{"partId": Key(WHOLE), "orientations": Key([SIGNED]), "epsR": Key(NUMBER),
                         **COMMENT}]),
    "electrodes": Key([{"partId": Key(WHOLE), "voltage": Key(NUMBER), **COMMENT}]),
    "floatings": Key([{"partId": Key(WHOLE), "charge": Key(NUMBER), **COMMENT}]),
    "fem": Key({"order": Key(WHOLE), "quadOrder": Key(WHOLE), **COMMENT}),
    "bem": Key({"quad": Key({"regular": Key(WHOLE), "quasiOrder": Key(WHOLE),
                             "quasiMaxLevel": Key(WHOLE), "quasiAdm": Key(NUMBER),
                             "singularXi": Key(WHOLE), "singularEta": Key(WHOLE)}),
                "fmm": Key(FMM), "tree": Key(TREE), "updateInTime": optional(SWITCH), **COMMENT}),
    "postEval": Key({"quad": Key({"order": Key(WHOLE), "minRelDist": Key(NUMBER),
                                  "maxLevel": Key(WHOLE)}),
                     "fmm": Key(FMM), "tree": Key(TREE), "updateInTime": optional(SWITCH),
                     **COMMENT}),
    "postProc": Key({"outBasename": optional(TEXT), "outputFrequency": optional(WHOLE),
                     "vtk": optional(SWITCH), "csv": optional(SWITCH), "dumpSol": optional(SWITCH),
                     "matOut": optional({"active": Key(SWITCH), "timeSteps": optional([WHOLE]),
                                         "onException": optional(SWITCH), **COMMENT}),
                     "vtkhdf": optional({"active": Key(SWITCH), "isSinglePrec": optional(SWITCH),
                                         "isGZip": optional(SWITCH), "isSZip": optional(SWITCH),
                                         "isChecksum": optional(SWITCH), **COMMENT}),
                     "interiorSurfaces": optional([{"id": Key(WHOLE), "name": Key(TEXT),
                                                    **COMMENT}]), **COMMENT}),
    "systemSolver": Key(SOLVER), "postSolver": Key(SOLVER), "numThreads": Key(WHOLE), **COMMENT}

# Least and greatest value of what the program reads.
RANGES = {"bem.fmm.degree": (3, None), "postEval.fmm.degree": (3, 80),
          "postEval.fmm.leafQuadratureOrder": (0, 100), "postEval.quad.order": (0, 100),
          "numThreads": (0, 1024)}


class Settings:
    """A settings file with the files it includes; `values` has the scalars that are right, by their
    keys with dots between, for instance "bem.tree.leafSize"; `lines` where they stand."""

    def __init__(self, path, report):
        self.path, self.report = path, report
        self.values, self.lines, self.sources = {}, {}, []
        yaml = need("yaml")
        try:
            text = self._with_includes(yaml)
            root = yaml.compose(text, Loader=yaml.SafeLoader)
        except yaml.MarkedYAMLError as error:
            mark = error.problem_mark or error.context_mark
            report.error(self._place(mark.line), f"this is no YAML: {error.problem}")
            return
        except yaml.YAMLError as error:
            report.error(path, f"this is no YAML: {error}")
            return
        top = self._mapping(root, "", {"esProblem": Key(PROBLEM), "includes": optional(ANYTHING)})
        if "esProblem" in top:
            self._walk(top["esProblem"], "", PROBLEM)

    def where(self, key):
        """File, line and key for a message."""
        return f"{self._place(self.lines[key])}, key {key}" if key in self.lines else self.path

    def _with_includes(self, yaml):
        """The text of the file and of those under its key `includes`, one behind the other."""
        text = self._read(self.path)
        root = yaml.compose(text, Loader=yaml.SafeLoader)
        for key, value in root.value if isinstance(root, yaml.MappingNode) else ():
            if key.value == "includes" and isinstance(value, yaml.SequenceNode):
                for entry in value.value:
                    text += self._read(os.path.join(os.path.dirname(self.path), str(entry.value)),
                                       text.count("\n"))
        return text

    def _read(self, path, first=0):
        with open(path, encoding="utf-8", errors="replace") as file:
            self.sources.append((first, path))
            return file.read()

    def _place(self, line):
        """Name and number, from 1, of a line of the joined text."""
        first, path = [source for source in self.sources if source[0] <= line][-1]
        return f"{path}, line {line - first + 1}"

    def _mapping(self, node, prefix, keys):
        """The values of a block by key, after a look at which keys it has."""
        if not hasattr(node, "value") or not isinstance(node.value, list) or node.id != "mapping":
            place = self._place(node.start_mark.line) if node is not None else self.path
            self.report.error(place, f"{prefix.rstrip('.') or 'the file'} must hold the keys "
                                     f"{', '.join(k for k in keys if keys[k].required)}")
            return {}
        found = {}
        for name, value in node.value:
            line, key = name.start_mark.line, f"{prefix}{name.value}"
            if name.value in found:
                self.report.error(self._place(line), f"key {key} stands twice in its block")
            elif name.value not in keys:
                near = difflib.get_close_matches(str(name.value), keys, 1, 0.6)
                self.report.warn(self._place(line), f"key {key} is unknown and has no effect"
                                 + (f"; is {near[0]} meant?" if near else ""))
            else:
                found[name.value] = value
                self.lines[key] = line
        for name, key in keys.items():
            if key.required and name not in found:
                self.report.error(self._place(node.start_mark.line),
                                  f"key {prefix}{name} is missing")
        return found

    def _walk(self, node, prefix, keys):
        found = self._mapping(node, prefix, keys)
        for name, value in found.items():
            self._check(value, prefix + name, keys[name].holds)
        if keys is TREE and "adaptive" in found:
            self._check_tree(prefix, found)

    def _check_tree(self, prefix, found):
        adaptive = self.values.get(prefix + "adaptive", "").lower() in ("y", "yes", "true", "on")
        wanted, other = ("leafSize", "maxLevel") if adaptive else ("maxLevel", "leafSize")
        if wanted not in found:
            self.report.error(self.where(prefix + "adaptive"), f"adaptive: {str(adaptive).lower()} "
                              f"needs {prefix}{wanted}")
        if other in found:
            self.report.warn(self.where(prefix + other), "has no effect beside "
                             f"adaptive: {str(adaptive).lower()}")

    def _check(self, node, key, holds):
        place = f"{self._place(node.start_mark.line)}, key {key}"
        if holds is ANYTHING:
            return
        if isinstance(holds, dict):
            self._walk(node, key + ".", holds)
        elif isinstance(holds, list):
            if node.id != "sequence":
                self.report.error(place, "expected a list, as in [1, 2] or lines that begin with -")
                return
            for i, entry in enumerate(node.value):
                self._check(entry, f"{key}[{i}]", holds[0])
        elif node.id != "scalar" or not re.fullmatch(PATTERNS[holds], node.value):
            got = repr(node.value) if node.id == "scalar" else f"a {node.id}"
            self.report.error(place, f"expected {holds}, got {got}")
        else:
            self.values[key], self.lines[key] = node.value, node.start_mark.line
            self._check_range(key)

    def _check_range(self, key):
        if key not in RANGES:
            return
        least, greatest = RANGES[key]
        value = int(self.values[key])
        if value < least:
            self.report.error(self.where(key), f"{value} is below {least}")
        elif greatest is not None and value > greatest:
            self.report.error(self.where(key), f"{value} is above {greatest}")
