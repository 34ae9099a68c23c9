"""Options and messages in the style of orvanta.post: (EE) on standard error and status 1."""
import argparse
import importlib
import os
import signal
import sys

DEBIAN_PACKAGES = {"numpy": "python3-numpy", "h5py": "python3-h5py",
                   "matplotlib": "python3-matplotlib", "meshio": "python3-meshio",
                   "yaml": "python3-yaml"}


class Failure(Exception):
    """An error with its message for the user; the command ends with status 1."""


def need(module):
    """Imports a module, or fails with the name of the Debian package to install."""
    try:
        return importlib.import_module(module)
    except ImportError as error:
        name = module.split(".")[0]
        raise Failure(f"the Python module {name} can't be loaded ({error}): "
                      f"install the Debian package {DEBIAN_PACKAGES[name]}") from None


class Parser(argparse.ArgumentParser):
    """Options can't be abbreviated; a wrong one ends with (EE) and status 1."""

    def __init__(self, **settings):
        super().__init__(allow_abbrev=False, **settings,
                         formatter_class=argparse.RawDescriptionHelpFormatter)

    def error(self, message):
        raise Failure(f"{message}; {self.prog} --help lists the options")


def numbers(count):
    """Type of an option that takes `count` finite numbers separated by commas."""
    def parse(text):
        try:
            values = tuple(float(word) for word in text.split(","))
        except ValueError:
            values = ()
        if len(values) != count or not all(abs(v) < float("inf") for v in values):
            raise argparse.ArgumentTypeError(
                f"expected {count} numbers with commas between them, got {text}")
        return values
    return parse


def warn(text):
    print(f"(WW) {text}", file=sys.stderr)


def check_output(path):
    """Warns about blanks in a file name, because orvanta.post ends a name at its first blank."""
    if any(c.isspace() for c in str(path)):
        warn(f"{path} has a blank in its name; orvanta.post reads a name up to its first blank")


def run(command, arguments):
    """Runs `command(arguments)`; returns 0, or 1 after a message about what went wrong."""
    try:
        command(arguments)
        sys.stdout.flush()
    except Failure as failure:
        print(f"(EE) {failure}", file=sys.stderr)
        return 1
    except BrokenPipeError:  # the reader closed the pipe, as in `orvanta-points line ... | head`
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return 1
    except OSError as error:
        print(f"(EE) {error.filename or 'input or output'}: {error.strerror or error}",
              file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 128 + signal.SIGINT
    return 0
