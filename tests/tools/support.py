"""What the tests of the tools share: commands, samples, and the skip where a package is missing."""
import importlib.util
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
TOOLS = pathlib.Path(os.environ["ORVANTA_TOOLS"])
sys.path.insert(0, str(TOOLS))
SKIPPED = 77  # ctest takes it as "skipped"


def require(**debian_packages):
    """Skips the whole file with the reason unless all modules are there; module=package."""
    missing = [package for module, package in debian_packages.items()
               if importlib.util.find_spec(module) is None]
    if missing:
        print("skipped:", " ".join(missing), "not installed")
        sys.exit(SKIPPED)


def main():
    unittest.main(verbosity=2)


class ToolTest(unittest.TestCase):
    """Runs in a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def call(self, program, *arguments):
        return subprocess.run([str(program), *arguments], capture_output=True, text=True, timeout=120)

    def tool(self, name, *arguments):
        """Standard output of a command that must work without a word on standard error."""
        ended = self.call(TOOLS / f"orvanta-{name}", *arguments)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""), msg=arguments)
        return ended.stdout

    def refuses(self, words, name, *arguments):
        """The command ends with status 1 and one line (EE) that holds these words."""
        ended = self.call(TOOLS / f"orvanta-{name}", *arguments)
        self.assertEqual(ended.returncode, 1, msg=(arguments, ended.stdout, ended.stderr))
        self.assertRegex(ended.stderr, r"\A\(EE\) .*\n\Z")
        self.assertIn(words, ended.stderr)

    def sample(self, *options, name="s"):
        """Solution, points and settings under this name."""
        ended = self.call(os.environ["MAKE_SAMPLE"], *options, f"--out={os.getcwd()}/{name}")
        self.assertEqual(ended.returncode, 0, msg=ended.stderr)

    def evaluate(self, points, solution="s"):
        """The table of the program, as the name of its file."""
        ended = self.call(os.environ["ORVANTA_POST"], f"--input={solution}.vtkhdf",
                          f"--points={points}", f"--settings={solution}.yaml", "--output=table")
        self.assertEqual(ended.returncode, 0, msg=ended.stderr)
        return "table.csv"

    def write(self, name, text):
        pathlib.Path(name).write_text(text, encoding="utf-8")
        return name
