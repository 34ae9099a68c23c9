"""Man pages and completion of the tools know every option and no other; an installation is whole."""
import importlib
import os
import re
import subprocess
from pathlib import Path

import support

support.require(numpy="python3-numpy", h5py="python3-h5py", matplotlib="python3-matplotlib",
                yaml="python3-yaml")

ROOT = support.TOOLS.parent
COMMANDS = sorted(path.name.removeprefix("orvanta-") for path in support.TOOLS.glob("orvanta-*"))


def parsers(command):
    """Pairs of the words in front of the options and the parser that reads these."""
    top = importlib.import_module(f"orvanta_tools.{command}").parser()
    kinds = [action.choices for action in top._actions if isinstance(action.choices, dict)]
    return [([kind], parser) for kind, parser in kinds[0].items()] if kinds else [([], top)]


def options(parser):
    return {option for action in parser._actions for option in action.option_strings}


class Documents(support.ToolTest):
    def test_man_pages_tell_every_option(self):
        for command in COMMANDS:
            page = (ROOT / "docs" / f"orvanta-{command}.1.in").read_text(encoding="ascii")
            section = page[page.index(".SH OPTIONS"):page.index(".SH EXIT STATUS")]
            tags = "\n".join(re.findall(r"^\.TP\n(.*)$", section, re.M)).replace("\\-", "-")
            told = set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", tags.replace("\\fI", "<")))
            known = set().union(*(options(parser) for _, parser in parsers(command)))
            self.assertEqual(told, known, msg=command)

    def test_completion_offers_every_long_option(self):
        for command in COMMANDS:
            for words, parser in parsers(command):
                script = (f"source {ROOT}/share/completions/orvanta-tools; compopt() {{ :; }}; "
                          f"COMP_WORDS=(orvanta-{command} {' '.join(words)} --); "
                          "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _orvanta_tools; "
                          "printf '%s\\n' \"${COMPREPLY[@]}\"")
                offered = subprocess.run(["bash", "-c", script], capture_output=True, text=True,
                                         check=True).stdout.split()
                takes_value = {option: action.nargs != 0 for action in parser._actions
                               for option in action.option_strings if option.startswith("--")}
                self.assertEqual({o.rstrip("="): o.endswith("=") for o in offered}, takes_value,
                                 msg=(command, words))

    def test_an_installation_has_all_parts_and_runs(self):
        build = Path(os.environ["ORVANTA_POST"]).parent.parent.parent
        subprocess.run(["cmake", "--install", str(build), "--prefix", "prefix"], check=True,
                       capture_output=True)
        prefix = Path("prefix").resolve()
        doc = prefix / "share/doc/orvanta.post"
        for page in ["orvanta.post", *(f"orvanta-{command}" for command in COMMANDS)]:
            self.assertTrue((prefix / f"share/man/man1/{page}.1.gz").exists(), page)
            self.assertTrue((prefix / "share/bash-completion/completions" / page).exists(), page)
        self.assertIn(f"version: {self.version()}", (doc / "CITATION.cff").read_text())
        self.assertTrue(os.access(doc / "examples/cluster/split_points", os.X_OK))
        for name in ("README.md", "docs/gallery.md", "docs/validation.md"):
            for link in re.findall(r"\]\(([^)#:]+)\)", (doc / name).read_text(encoding="utf-8")):
                self.assertTrue(((doc / name).parent / link).exists(), (name, link))

        # The first run as README shows it, with nothing but what is installed.
        for file in (doc / "examples").glob("sample.*"):
            Path(file.name).write_bytes(file.read_bytes())
        inputs = ("--input=sample.vtkhdf", "--points=sample.xyz", "--settings=sample.yaml")
        checked = self.call("env", "-u", "ORVANTA_SCHEMA", prefix / "bin/orvanta-check", *inputs)
        self.assertIn("\n0 errors, ", checked.stdout, checked)
        ran = self.call(prefix / "bin/orvanta.post", *inputs)
        self.assertEqual((ran.returncode, ran.stderr), (0, ""))
        drawn = self.call(prefix / "bin/orvanta-plot", "--table=sample.csv", "--input=sample.vtkhdf")
        self.assertEqual((drawn.returncode, drawn.stderr), (0, ""))
        self.assertTrue(Path("sample.png").exists())

    def version(self):
        text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
        return re.search(r"project\(orvanta\.post VERSION ([\d.]+)", text).group(1)


if __name__ == "__main__":
    support.main()
