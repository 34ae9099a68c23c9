"""Checks a settings file key by key against its JSON Schema."""
import difflib
import json
import os
import pathlib
import re

from .cli import Failure, need

# Kinds of values, as messages name them.
TEXT, WHOLE, SIGNED, NUMBER, SWITCH = (
    "a text", "a whole number from 0 on", "a whole number", "a number", "true or false")
PATTERNS = {TEXT: r".*", WHOLE: r"\d+", SIGNED: r"[+-]?\d+",
            NUMBER: r"[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?",
            SWITCH: r"(y|n|yes|no|true|false|on|off|Y|N|Yes|No|True|False|On|Off|"
                    r"YES|NO|TRUE|FALSE|ON|OFF)"}


def read_schema():
    """The JSON Schema of settings files: the installed one, or else that of the newest build."""
    here = pathlib.Path(__file__).resolve().parents[1]
    built = sorted(here.parent.glob("build/*/share/settings.schema.json"),
                   key=lambda path: path.stat().st_mtime)
    given = os.environ.get("ORVANTA_SCHEMA")
    for path in [given] if given else [here / "settings.schema.json", *reversed(built)]:
        if os.path.exists(path):
            return json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    raise Failure("settings.schema.json is missing: build the project, or name the file in "
                  "ORVANTA_SCHEMA")


class Key:
    """A key of the settings: whether it is required, and what it holds: a kind of value, a dict of
    keys, a list of one Key, or, for blocks of several kinds, a tuple with the keys of each."""

    def __init__(self, item, required, definitions):
        self.required = required
        self.least, self.greatest = item.get("minimum"), item.get("maximum")
        self.choices, self.constant = item.get("enum"), item.get("const")
        self.length = item.get("maxItems")
        kind = item.get("type")
        if "oneOf" in item:
            self.holds = tuple(keys_of(definitions[choice["$ref"].rsplit("/", 1)[1]], definitions)
                               for choice in item["oneOf"])
        elif kind == "object":
            self.holds = keys_of(item, definitions)
        elif kind == "array":
            self.holds = [Key(item["items"], True, definitions)]
        elif kind == "integer":
            self.holds = SIGNED if self.least is None or self.least < 0 else WHOLE
        else:
            self.holds = {"string": TEXT, "number": NUMBER, "boolean": SWITCH}[kind]


def keys_of(block, definitions):
    """The keys of a block of the schema, in its order."""
    return {name: Key(item, name in block["required"], definitions)
            for name, item in block["properties"].items()}


class Settings:
    """A settings file with the files it includes. `values` has the valid scalars and `lines` the
    line of each key; both are looked up by keys with dots, such as "bem.tree.leafSize"."""

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
        schema = read_schema()
        keys = keys_of(schema, schema["definitions"])
        top = self._mapping(root, "", keys)
        if "esProblem" in top:
            self._walk(top["esProblem"], "", keys["esProblem"].holds)

    def where(self, key):
        """File, line and key for a message."""
        return f"{self._place(self.lines[key])}, key {key}" if key in self.lines else self.path

    def _with_includes(self, yaml):
        """The text of the file, followed by the texts of the files under its key `includes`."""
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
        """File and line number, from 1, of a line of the joined text."""
        first, path = [source for source in self.sources if source[0] <= line][-1]
        return f"{path}, line {line - first + 1}"

    def _mapping(self, node, prefix, keys):
        """The values of a block by key; reports missing, unknown and repeated keys."""
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
            self._check(value, prefix + name, keys[name])
        if "adaptive" in found:  # it decides which of two keys is needed
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

    def _check(self, node, key, form):
        place = f"{self._place(node.start_mark.line)}, key {key}"
        holds = form.holds
        if isinstance(holds, tuple):
            self._check_kind(node, key, holds)
        elif isinstance(holds, dict):
            self._walk(node, key + ".", holds)
        elif isinstance(holds, list):
            if node.id != "sequence":
                self.report.error(place, "expected a list, as in [1, 2] or lines that begin with -")
                return
            if form.length is not None and len(node.value) != form.length:
                self.report.error(place, f"expected {form.length} entries, got {len(node.value)}")
            for i, entry in enumerate(node.value):
                self._check(entry, f"{key}[{i}]", holds[0])
        elif node.id != "scalar" or not re.fullmatch(PATTERNS[holds], node.value):
            got = repr(node.value) if node.id == "scalar" else f"a {node.id}"
            self.report.error(place, f"expected {holds}, got {got}")
        else:
            self.values[key], self.lines[key] = node.value, node.start_mark.line
            self._check_value(key, form)

    def _check_kind(self, node, key, kinds):
        """Checks a block whose key `type` determines which keys it has."""
        entries = node.value if node.id == "mapping" else ()
        given = [value.value for name, value in entries if name.value == "type"]
        names = {keys["type"].constant: keys for keys in kinds}
        if len(given) == 1 and given[0] in names:
            self._walk(node, key + ".", names[given[0]])
        else:
            self.report.error(f"{self._place(node.start_mark.line)}, key {key}",
                              f"needs a type: {', '.join(names)}")

    def _check_value(self, key, form):
        value = self.values[key]
        if form.choices and value not in form.choices:
            self.report.warn(self.where(key), f"{value} is none of {', '.join(form.choices)}")
        if form.least is not None and int(value) < form.least:
            self.report.error(self.where(key), f"{value} is below {form.least}")
        elif form.greatest is not None and int(value) > form.greatest:
            self.report.error(self.where(key), f"{value} is above {form.greatest}")
