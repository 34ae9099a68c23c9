"""orvanta-points: makes evaluation points for orvanta.post.

  orvanta-points line    --from=X,Y,Z --to=X,Y,Z --counts=N
  orvanta-points plane   --from=X,Y,Z --to=X,Y,Z --counts=N,M [--corner=X,Y,Z]
  orvanta-points box     --from=X,Y,Z --to=X,Y,Z --counts=N,M,K
  orvanta-points surface --input=FILE.vtkhdf [--distance=D] [--parts=N]
  orvanta-points mesh    --mesh=FILE
  orvanta-points csv     --csv=FILE

Writes an .xyz file, or to standard output without --output:
  orvanta.post -i s.vtkhdf -p <(orvanta-points line --from=0,0,0 --to=0,0,1 --counts=101) -o line
"""
import contextlib
import csv
import io
import sys

import numpy as np

from . import cli, solution, textfiles
from .cli import Failure, need

# Closer to the surface than this fraction of an element's size, the field isn't accurate.
LEAST_DISTANCE = 0.01


def counts(text, how_many):
    """The numbers of points in each direction."""
    words = text.split(",")
    if len(words) != how_many or not all(word.isdecimal() and int(word) > 1 for word in words):
        raise Failure(f"--counts={text}: expected {how_many} "
                      f"number{'s' if how_many > 1 else ''} of points from 2 on")
    return [int(word) for word in words]


def lattice(start, edges, how_many):
    """Points start + sum of t_i edges_i, the first direction fastest; shape (n, 3)."""
    steps = [np.linspace(0, 1, n) for n in how_many]
    places = np.meshgrid(*reversed(steps), indexing="ij")
    return start + sum(np.outer(t.ravel(), edge) for t, edge in zip(reversed(places), edges))


def line(args):
    start, end = np.array(args.start), np.array(args.end)
    if (start == end).all():
        raise Failure("--from and --to are the same point")
    return lattice(start, [end - start], counts(args.counts, 1))


def plane(args):
    start, end = np.array(args.start), np.array(args.end)
    if args.corner is not None:
        edges = [np.array(args.corner) - start, end - np.array(args.corner)]
        if not np.cross(*edges).any():
            raise Failure("--from, --corner and --to lie on one line")
    else:
        axes = np.flatnonzero(start != end)
        if len(axes) != 2:
            raise Failure("--from and --to must share exactly one coordinate; for another plane, "
                          "give the corner between them with --corner=X,Y,Z")
        edges = [np.where(np.arange(3) == axis, end - start, 0) for axis in axes]
    return lattice(start, edges, counts(args.counts, 2))


def box(args):
    start, end = np.array(args.start), np.array(args.end)
    if (start == end).any():
        raise Failure("--from and --to must differ in all three coordinates")
    return lattice(start, np.diag(end - start), counts(args.counts, 3))


def surface(args):
    """Points off the centres of all cells when each edge is cut into `parts`."""
    if not args.distance or abs(args.distance) < LEAST_DISTANCE:
        raise Failure(f"--distance={args.distance:g}: closer than {LEAST_DISTANCE} element sizes "
                      "the field can't be evaluated well; 0.05 is good")
    if args.parts < 1:
        raise Failure(f"--parts={args.parts}: expected 1 or more")
    read = solution.read_solution(args.input)
    cells = []
    for block in read.blocks:
        reference = cell_centres(block.basis.shape, args.parts)
        normals = block.normals(reference)
        lengths = np.linalg.norm(normals, axis=2, keepdims=True)
        if not lengths.all():
            bad = block.ids[np.flatnonzero(~lengths.all(axis=(1, 2)))[0]]
            raise Failure(f"{args.input}: element {bad} has no area, so it has no normal")
        offsets = args.distance * block.sizes()[:, None, None] * normals / lengths
        cells.append(block.positions(reference) + offsets)
    # Triangles and quadrilaterals both have parts^2 points, so the arrays can be joined.
    return read.in_order(cells).reshape(-1, 3)


def cell_centres(shape, parts):
    """Centres of the parts^2 cells of a reference element, shape (parts^2, 2)."""
    if shape == "quad":
        middle = (np.arange(parts) + 0.5) / parts
        return np.stack(np.meshgrid(middle, middle, indexing="ij"), axis=-1).reshape(-1, 2)
    points, triangles = solution.subdivision(shape, parts)
    return points[triangles].mean(axis=1)


def mesh(args):
    if args.mesh.endswith(".mesh"):
        try:
            return textfiles.read_mesh(args.mesh).points
        except Failure as failure:
            ours = failure
    else:
        ours = None
    meshio = need("meshio")
    with open(args.mesh, "rb"):  # the system's own message for a file that doesn't exist
        pass
    # meshio's readers raise the errors of other libraries, or print and end the process.
    said = io.StringIO()
    try:
        with contextlib.redirect_stdout(said), contextlib.redirect_stderr(said):
            read = meshio.read(args.mesh)
    except (Exception, SystemExit) as error:
        words = " ".join(said.getvalue().split()) or str(error)
        raise ours or Failure(f"{args.mesh}: meshio can't read it: {words}") from None
    points = np.asarray(read.points, dtype=float)
    if points.ndim != 2 or points.shape[1] not in (2, 3):
        raise Failure(f"{args.mesh}: its nodes have the shape {points.shape}, not x y z")
    return np.pad(points, ((0, 0), (0, 3 - points.shape[1])))


def csv_table(args):
    """Columns X, Y, Z of a table with a header line, separated by commas, semicolons or tabs."""
    with open(args.csv, encoding="utf-8-sig", errors="replace", newline="") as file:
        head = file.readline()
        separator = max(",;\t", key=head.count)
        names = [name.strip().strip('"').upper() for name in head.split(separator)]
        if not all(axis in names for axis in "XYZ"):
            raise Failure(f"{args.csv}: its first line must name the columns X, Y and Z, "
                          f"got {head.strip()!r}")
        places = [names.index(axis) for axis in "XYZ"]
        points = []
        for row, words in enumerate(csv.reader(file, delimiter=separator), start=1):
            if not words or not any(word.strip() for word in words):
                continue
            try:
                points.append([float(words[place]) for place in places])
            except (IndexError, ValueError):
                raise Failure(f"{args.csv}, row {row} (line {row + 1}): expected numbers in the "
                              f"columns X, Y and Z, got {separator.join(words)!r}") from None
            textfiles.require_finite(np.array(points[-1:]),
                                     lambda _: f"{args.csv}, row {row} (line {row + 1})")
    return np.array(points).reshape(-1, 3)


def parser():
    top = cli.Parser(prog="orvanta-points", description=__doc__)
    kinds = top.add_subparsers(dest="kind", required=True, metavar="KIND", parser_class=cli.Parser)

    def add(name, make, text):
        kind = kinds.add_parser(name, help=text, description=text)
        kind.add_argument("-o", "--output", metavar="FILE.xyz",
                          help="file to write (standard output)")
        kind.set_defaults(make=make)
        return kind

    for name, make, text in (("line", line, "points on a line"),
                             ("plane", plane, "a grid on a plane"),
                             ("box", box, "a grid in a box")):
        kind = add(name, make, text)
        kind.add_argument("--from", dest="start", required=True, type=cli.numbers(3),
                          metavar="X,Y,Z", help="first point or corner")
        kind.add_argument("--to", dest="end", required=True, type=cli.numbers(3), metavar="X,Y,Z",
                          help="last point or opposite corner")
        kind.add_argument("--counts", required=True, metavar="N[,M[,K]]",
                          help="points in each direction, ends included")
        if make is plane:
            kind.add_argument("--corner", type=cli.numbers(3), metavar="X,Y,Z",
                              help="corner between the two, for a plane that is not parallel to "
                                   "two axes")
    kind = add("surface", surface, "points off the surface of a solution, along its normals")
    kind.add_argument("-i", "--input", required=True, metavar="FILE.vtkhdf", help="solution")
    kind.add_argument("--distance", type=float, default=0.05, metavar="D",
                      help="distance from the surface in element sizes sqrt(2 area), negative on "
                           "the other side (0.05)")
    kind.add_argument("--parts", type=int, default=1, metavar="N",
                      help="cut each edge into N parts, for N^2 points per element (1)")
    kind = add("mesh", mesh, "the nodes of a mesh, in any format that meshio reads")
    kind.add_argument("--mesh", required=True, metavar="FILE", help="mesh to read")
    kind = add("csv", csv_table, "the columns X, Y and Z of a table")
    kind.add_argument("--csv", required=True, metavar="FILE", help="table with a header line")
    return top


def command(arguments):
    args = parser().parse_args(arguments)
    points = args.make(args)
    if len(points) == 0:
        raise Failure("no points: nothing is written")
    textfiles.require_finite(points, lambda i: f"point {i + 1}")
    if args.output is None:
        textfiles.write_xyz(points, sys.stdout)
        return
    if args.output.endswith(".mesh"):
        raise Failure(f"{args.output}: orvanta.post reads the extension .mesh as a mesh; take .xyz")
    cli.check_output(args.output)
    with open(args.output, "w", encoding="ascii") as file:
        textfiles.write_xyz(points, file)
    print(f"{args.output}: {len(points)} points")


def main(arguments):
    return cli.run(command, arguments)
