"""Points (.xyz, .mesh) and result tables (.csv) as orvanta.post reads and writes them."""
import os
import re
import warnings

import numpy as np

from .cli import Failure

HEAD = "X,Y,Z,Potential,EFieldX,EFieldY,EFieldZ"
SPACES = re.compile(r"[ \t\r\v\f]+")


def open_text(path):
    """Opens the file as text; raises OSError if it doesn't exist or is a folder."""
    return open(path, encoding="utf-8", errors="replace", newline="\n")


def lines_with_data(file):
    """Pairs of line number and line without its end; comments and empty lines are left out.

    As in orvanta.post only "#" in the first column makes a comment.
    """
    for number, line in enumerate(file, start=1):
        if line[0] not in "#\n\r":
            yield number, line.rstrip("\n")


def write_xyz(points, file):
    """Writes the number of points and the coordinates, with 17 digits, to an open text file."""
    file.write(f"{len(points)}\n")
    np.savetxt(file, points, fmt="%.17g")


def require_finite(points, where):
    """Fails if a point isn't finite; `where(i)` says where it comes from: "points.csv, row 3"."""
    bad = np.flatnonzero(~np.isfinite(points).all(axis=1))
    if bad.size:
        x = ", ".join(f"{value:g}" for value in points[bad[0]])
        raise Failure(f"{where(bad[0])}: ({x}) is no point")


class Mesh:
    """Nodes and elements of a .mesh file.

    ids: (n) integers; points: (n, 3); elements: list of (type word, list of node ids)
    """

    def __init__(self, ids, points, elements):
        self.ids, self.points, self.elements = ids, points, elements


def mesh_words(path, lines, least, what):
    """Line number and words of the next line with data, which must have at least `least` words."""
    for number, line in lines:
        words = [word for word in SPACES.split(line) if word]
        if len(words) < least:
            raise Failure(f"{path}, line {number}: expected {what}, got {line!r}")
        return number, words
    raise Failure(f"{path} ends where {what} should stand")


def read_mesh(path):
    """The mesh of a .mesh file of three dimensions."""
    with open_text(path) as file:
        lines = lines_with_data(file)
        number, words = mesh_words(path, lines, 4, "dimension, nodes, elements and incidences")
        if not all(word.isdigit() for word in words[:4]) or words[0] != "3":
            raise Failure(f"{path}, line {number}: expected 3 and the counts of nodes, elements "
                          f"and incidences, got {' '.join(words)!r}")
        ids, points, elements = [], [], []
        try:
            for _ in range(int(words[1])):
                number, node = mesh_words(path, lines, 4, "a node's id and x y z")
                ids.append(int(node[0]))
                points.append([float(x) for x in node[1:4]])
            for _ in range(int(words[2])):
                number, element = mesh_words(path, lines, 3, "an element's type, tag and nodes")
                elements.append((element[0], [int(node) for node in element[2:]]))
        except ValueError as error:
            raise Failure(f"{path}, line {number}: {error}") from None
    points = np.array(points, dtype=float).reshape(-1, 3)
    require_finite(points, lambda i: f"{path}, node {ids[i]}")
    return Mesh(np.array(ids, dtype=np.int64), points, elements)


class Table:
    """A result: points (n, 3), potential (n), gradient (n, 3), the columns named EField."""

    def __init__(self, rows):
        self.points, self.potential, self.gradient = rows[:, :3], rows[:, 3], rows[:, 4:7]

    @property
    def finite(self):
        """Which rows have finite potential and gradient, shape (n)."""
        return np.isfinite(self.potential) & np.isfinite(self.gradient).all(axis=1)


def read_table(path):
    """Reads a table that orvanta.post wrote; potentials and gradients may be infinite or NaN."""
    with open_text(path) as file:
        head = file.readline().strip()
        if head != HEAD:
            raise Failure(f"{path} is no result of orvanta.post: its first line is not {HEAD}")
        start = file.tell()
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")  # about an empty table, which is refused below
            try:
                rows = np.loadtxt(file, delimiter=",", ndmin=2)
            except ValueError:
                file.seek(start)
                raise Failure(f"{path}, {bad_row(file)}") from None
    if rows.size == 0:
        raise Failure(f"{path} has no rows")
    if rows.shape[1] != 7:
        raise Failure(f"{path}, row 1: expected 7 columns, got {rows.shape[1]}")
    require_finite(rows[:, :3], lambda i: f"{path}, row {i + 1}")
    return Table(rows)


def bad_row(lines):
    """Where and how a table is damaged, as "row 3: ..."; rows count from below the header line."""
    for row, line in enumerate(lines, start=1):
        words = line.strip().split(",")
        if len(words) != 7:
            return f"row {row}: expected 7 columns, got {len(words)}; was the run interrupted?"
        for word in words:
            try:
                float(word)
            except ValueError:
                return f"row {row}: expected a number, got {word.strip()!r}"
    return "a row can't be read"


def beside(path, ending):
    """The path with its extension replaced by `ending`."""
    return os.path.splitext(path)[0] + ending
