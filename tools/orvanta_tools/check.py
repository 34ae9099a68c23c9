"""orvanta-check: checks the inputs of orvanta.post without running it, and lists all problems.

  orvanta-check --input=FILE.vtkhdf --points=FILE.xyz [--settings=FILE.yaml] [--output=NAME]

Takes the options of orvanta.post. Lines (EE) show what would end the run or spoil the result, lines
(WW) what is probably a mistake. At the end it shows what the run will need. The status is 1 if
there is any (EE).
"""
import os
import sys

import numpy as np

from . import cli, settings, solution, textfiles
from .cli import Failure, need

SIGNATURE = b"\x89HDF\r\n\x1a\n"
# What a run needs: measured with degrees 5 to 16 and leafSize 100 to 500, to about 30 percent.
BASE_BYTES, POINT_BYTES, ELEMENT_BYTES, COEFFICIENT_BYTES, RULE_POINT_BYTES = 23e6, 160, 200, 24, 32
# Boxes with expansions: this times min(points, elements) / leafSize.
BOXES_PER_LEAF = 8
# The leaf size that was best in measurements, and how far from it the time rises by a tenth.
BEST_LEAF, LARGEST_GOOD_LEAF = 100, 200
# Number of points that are tested for being inside; enough to estimate a percentage.
SAMPLE_POINTS = 2000
# Largest number of solid angles to compute in that test; takes a few seconds.
MOST_ANGLES = 10_000_000
DEFAULTS = {"fem.order": "0", "bem.tree.leafSize": "500", "bem.tree.adaptive": "true",
            "postEval.fmm.degree": "5", "postEval.fmm.leafQuadratureOrder": "8",
            "postEval.quad.order": "5", "postEval.quad.minRelDist": "1"}


class Report:
    """Prints problems as they are found, and counts them."""

    def __init__(self):
        self.errors = self.warnings = 0

    def error(self, where, text):
        self.errors += 1
        print(f"(EE) {where}: {text}")

    def warn(self, where, text):
        self.warnings += 1
        print(f"(WW) {where}: {text}")


def readable(report, path, option):
    """Whether there is a file to check."""
    if any(c.isspace() for c in path):
        report.error(path, "has a blank in its name, and orvanta.post reads a name up to its first "
                           "blank; rename it, or make a link without blanks")
    if os.path.isdir(path):
        report.error(path, f"is a folder; {option} wants a file")
    elif not os.path.exists(path):
        folder = os.path.dirname(os.path.abspath(path))
        report.error(path, f"does not exist in {folder}" if os.path.isdir(folder)
                     else f"does not exist, nor does its folder {folder}")
    elif not os.access(path, os.R_OK):
        report.error(path, "can't be read: its rights don't allow it")
    else:
        return True
    return False


def is_hdf5(path):
    with open(path, "rb") as file:
        return file.read(8) == SIGNATURE


def check_solution(report, path):
    """The solution with its density, or None."""
    if not readable(report, path, "--input"):
        return None
    if not is_hdf5(path):
        hint = "; are --input and --points mixed up?" if path.endswith((".xyz", ".mesh")) else ""
        report.error(path, f"is no HDF5 file, so no solution of the main solver{hint}")
        return None
    h5py = need("h5py")
    with h5py.File(path, "r") as file:
        before = report.errors
        for name in solution.DATASETS:
            if name not in file or not hasattr(file[name], "shape"):
                report.error(path, f"has no {name}")
        check_attributes(report, path, file)
        if report.errors > before:
            return None
    try:
        read = solution.read_solution(path, density=True)
    except Failure as failure:
        report.error(path, str(failure).removeprefix(f"{path}: "))
        return None
    if np.isnan(read.points).any():
        report.error(path, f"/VTKHDF/PointData/vtkGlobalIds lacks the id "
                           f"{np.flatnonzero(np.isnan(read.points).any(axis=1))[0]}, or "
                           "/VTKHDF/Points holds a value that is not finite")
        return None
    for block in read.blocks:
        if not np.isfinite(block.coefficients).all():
            report.error(path, "/ABB/L2/charges holds a value that is not finite")
        flat = block.ids[block.areas() == 0]
        if flat.size:
            report.warn(path, f"{flat.size} elements have no area, the first is {flat[0]}")
    return read


def check_attributes(report, path, file):
    """Checks names and values of the attributes; a missing group is reported by its datasets."""
    for group, name, expected in (
            ("/VTKHDF", "Type", b"UnstructuredGrid"), ("/VTKHDF", "Version", 2),
            ("/ABB/L2", "BasisType", b"L2"), ("/ABB/L2", "FEOrder", None)):
        if group not in file:
            continue
        if name not in file[group].attrs:
            report.error(path, f"{group} has no attribute {name}")
            continue
        value = file[group].attrs[name]
        if name == "Version":
            value = next(iter(np.ravel(value)), None)
        elif isinstance(value, str):
            value = value.encode()
        if expected is not None and value != expected:
            wanted = expected.decode() if isinstance(expected, bytes) else f"{expected}.x"
            report.error(path, f"the attribute {name} of {group} is {value!r}, not {wanted}")


def check_points(report, path):
    """The points (n, 3), or None."""
    if not readable(report, path, "--points"):
        return None
    if is_hdf5(path):
        report.error(path, "is an HDF5 file, no list of points; are --input and --points mixed up?")
        return None
    if path.endswith(".mesh"):
        try:
            return textfiles.read_mesh(path).points
        except Failure as failure:
            report.error(*str(failure).split(": ", 1)) if ": " in str(failure) else report.error(
                path, str(failure))
            return None
    return check_xyz(report, path)


def check_xyz(report, path):
    """Checks every line of a list of points; reports the first five wrong ones."""
    points, wrong, count, commented = [], 0, None, None
    with textfiles.open_text(path) as file:
        for number, line in enumerate(file, start=1):
            if line[0] in "#\r\n":
                words = line[1:].split()
                if count is None and len(words) == 1 and words[0].isdecimal():
                    commented = (number, int(words[0]))
                continue
            words = line.replace(",", " , ").split()
            where = f"{path}, line {number}"
            if count is None:
                count = check_count(report, where, words, commented)
                if count is None:
                    return None
                continue
            if len(points) == count:
                if words:
                    report.error(where, f"stands behind the {count} points that the first number "
                                        "announces and is ignored: correct that number")
                break
            point = as_point(words)
            if point is None:
                wrong += 1
                if wrong <= 5:
                    report.error(where, "has commas: numbers must be separated by blanks, as "
                                 "orvanta-points csv makes them" if "," in words else
                                 f"expected x y z, got {line.strip()[:40]!r}")
            points.append(point or (np.nan,) * 3)
    if count is None:
        report.error(path, "holds no number of points; it is empty or has comments only")
        return None
    if wrong > 5:
        report.error(path, f"{wrong - 5} more lines are wrong")
    if len(points) < count:
        report.error(path, f"has {len(points)} points, its first number announces {count}")
    return np.array(points, dtype=float).reshape(-1, 3) if not wrong else None


def check_count(report, where, words, commented):
    """The number of points, which must be alone on the first line that isn't a comment."""
    if commented is not None and len(words) >= 3:
        report.error(where, f"the number of points must stand here; {commented[1]} on line "
                     f"{commented[0]} is a comment. With numpy.savetxt give comments=''")
        return None
    if "," in words or any(word.strip('"').upper() == "X" for word in words):
        report.error(where, "this is a table with commas; orvanta-points csv makes points of it")
        return None
    if not words or not words[0].isdecimal():
        report.error(where, "expected the number of points, got "
                     f"{' '.join(words)[:40]!r}; the first line must tell it")
        return None
    if len(words) == 3 and as_point(words) is not None:
        report.warn(where, f"{' '.join(words)} looks like a point, but {words[0]} is taken for the "
                           "number of points")
    if int(words[0]) == 0:
        report.error(where, "there are no points: the table will have its head line only")
    return int(words[0])


def as_point(words):
    """Three finite numbers at the start, or None."""
    try:
        point = tuple(float(word) for word in words[:3])
    except ValueError:
        return None
    return point if len(point) == 3 and np.isfinite(point).all() else None


def check_output(report, output, points):
    """Checks that the table can be written, because the program doesn't report it if it can't."""
    base = output or os.path.splitext(points)[0]
    if output is not None and os.path.splitext(output)[1] in (".csv", ".vtk"):
        base = os.path.splitext(output)[0]
    table = base + ".csv"
    folder = os.path.dirname(os.path.abspath(table))
    if output is not None and os.path.isdir(output):
        report.warn(output, f"is a folder; the table would be {table}")
    if not os.path.isdir(folder):
        report.error(table, f"can't be written: there is no folder {folder}")
    elif os.path.isdir(table):
        report.error(table, "can't be written: it is a folder")
    elif not os.access(table if os.path.exists(table) else folder, os.W_OK):
        report.error(table, "can't be written: the rights don't allow it")


def check_order(report, given, read, values):
    """The order of the density in the solution and in the settings."""
    order = int(values["fem.order"])
    if read is None or read.order == order:
        return
    if given is None:
        report.error("--settings", f"is needed: the density has order {read.order}, and without "
                     "settings 0 is taken; make_sample and the examples have a settings file to "
                     "start from")
    else:
        report.error(given.where("fem.order"), f"{order} is not the order {read.order} of the "
                                               "density in the solution")


def check_tree(report, given, values):
    """Advice about leafSize."""
    if values.get("bem.tree.adaptive", "true").lower() not in ("true", "yes", "on", "y"):
        return
    if given and "bem.tree.leafSize" not in given.values:
        return
    leaf = int(values["bem.tree.leafSize"])
    where = given.where("bem.tree.leafSize") if given else "without --settings"
    if leaf > LARGEST_GOOD_LEAF:
        report.warn(where, f"leafSize {leaf} costs time: {BEST_LEAF} was best in measurements")
    if int(values.get("postEval.tree.leafSize", leaf)) != leaf:
        report.warn(given.where("postEval.tree.leafSize"),
                    "has no effect: the octree is that of bem.tree")


def inside(read, points):
    """Which points a closed surface encloses: the solid angle of all its triangles is 4 pi."""
    triangles, _ = read.triangles(1)
    angle = np.empty(len(points))
    for i, point in enumerate(points):
        a, b, c = (triangles[:, k] - point for k in range(3))
        la, lb, lc = (np.linalg.norm(v, axis=1) for v in (a, b, c))
        spat = np.einsum("ij,ij->i", a, np.cross(b, c))
        rest = (la * lb * lc + np.einsum("ij,ij->i", a, b) * lc
                + np.einsum("ij,ij->i", b, c) * la + np.einsum("ij,ij->i", c, a) * lb)
        angle[i] = 2 * np.arctan2(spat, rest).sum()
    return np.abs(angle) > 2 * np.pi


def check_places(report, read, points, path):
    """Warns about points inside bodies, and points in a unit that seems to be a different one."""
    sample = points[np.random.default_rng(1).permutation(len(points))[:SAMPLE_POINTS]]
    sample = sample[:max(1, MOST_ANGLES // read.num_elements)]
    share = inside(read, sample) if read.is_closed() else np.zeros(1)
    if share.any():
        report.warn(path, f"{100 * share.mean():.3g} percent of the points lie inside of bodies; "
                          "inside a conductor the field is 0")
    extent = np.ptp(read.points, axis=0).max()
    distance = np.linalg.norm(points - read.points.mean(axis=0), axis=1).max()
    if distance > 300 * extent:
        report.warn(path, f"the farthest point is {distance / extent:.0f} times the size of the "
                          "bodies away: do points and solution have the same unit?")


def rule_points(order, quadrilateral):
    """Approximate number of points of a rule of this order on an element."""
    return (order // 2 + 1) ** 2 if quadrilateral else (order + 2) ** 2 / 6.2


def tell_needs(read, points, values):
    """Prints what the run will need."""
    order, degree = int(values["postEval.quad.order"]), int(values["postEval.fmm.degree"])
    memory = BASE_BYTES + POINT_BYTES * len(points)
    for block in read.blocks:
        memory += (len(block.ids) * (ELEMENT_BYTES + RULE_POINT_BYTES * rule_points(
            order, block.basis.shape == "quad")) + COEFFICIENT_BYTES * block.coefficients.size)
    # A multipole and a local expansion per box, of 16 bytes a coefficient.
    leaf = max(1, int(values["bem.tree.leafSize"]))
    boxes = BOXES_PER_LEAF * min(len(points), read.num_elements) / leaf
    memory += boxes * 16 * (degree + 1) * (degree + 2)
    sizes = read.in_order([block.sizes() for block in read.blocks])
    print(f"elements: {read.num_elements}, sizes {sizes.min():.4g} to {sizes.max():.4g}, "
          f"density of order {read.order}")
    print(f"points:   {len(points)}")
    print(f"memory:   about {memory / 1e6:.0f} MB")
    print(f"table:    about {(len(points) * 175) / 1e6:.3g} MB")


def counted(number, noun):
    return f"{number} {noun}{'' if number == 1 else 's'}"


def parser():
    top = cli.Parser(prog="orvanta-check", description=__doc__)
    top.add_argument("-i", "--input", required=True, metavar="FILE.vtkhdf", help="solution")
    top.add_argument("-p", "--points", required=True, metavar="FILE", help="points, .xyz or .mesh")
    top.add_argument("-s", "--settings", metavar="FILE.yaml", help="settings")
    top.add_argument("-o", "--output", metavar="NAME", help="name of the table")
    return top


def command(arguments):
    args = parser().parse_args(arguments)
    report = Report()
    given = None
    if args.settings is not None and readable(report, args.settings, "--settings"):
        if is_hdf5(args.settings):
            report.error(args.settings, "is an HDF5 file, no settings")
        else:
            given = settings.Settings(args.settings, report)
    values = {**DEFAULTS, **given.values} if given else DEFAULTS
    read = check_solution(report, args.input)
    points = check_points(report, args.points)
    check_output(report, args.output, args.points)
    check_order(report, given, read, values)
    if read is not None and points is not None and len(points):
        check_tree(report, given, values)
        check_places(report, read, points, args.points)
        tell_needs(read, points, values)
    print(f"{counted(report.errors, 'error')}, {counted(report.warnings, 'warning')}")
    sys.exit(1 if report.errors else 0)


def main(arguments):
    return cli.run(command, arguments)
