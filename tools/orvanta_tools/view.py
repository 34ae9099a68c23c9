"""orvanta-view: converts results of orvanta.post and solutions into files for ParaView.

  orvanta-view --table=TABLE.csv [--points=FILE.mesh] [--input=FILE.vtkhdf] [--output=FILE.vtu]
  orvanta-view --input=FILE.vtkhdf [--output=FILE.vtu]

From a table: potential and E-field at its points. The points are connected if they form a line or a
grid on a plane or in a box, or if they are the nodes of the .mesh file given. From a solution: its
surface with the charge per area, in a file of its own next to that of the table.
"""
import os

import numpy as np

from . import cli, grids, solution, textfiles, vtkfiles
from .cli import Failure

# Corners of the elements of a .mesh file by the first digit of their code.
CORNERS = {"0": (vtkfiles.VERTEX, 1), "1": (vtkfiles.LINE, 2), "4": (10, 4),
           "5": (vtkfiles.HEXAHEDRON, 8), "6": (13, 6), "7": (14, 5)}
NAMES = {"Point": "0", "Segment": "1", "Tria": "2", "Quad": "3", "Tet": "4", "Hex": "5",
         "Prism": "6", "Pyramid": "7"}
GRID_TYPES = {1: vtkfiles.LINE, 2: vtkfiles.QUAD, 3: vtkfiles.HEXAHEDRON}


def element_kind(word):
    """First digit of an element's code, from the code ("206") or the name ("Tria6")."""
    if word.isdigit():
        return "0" if word == "0" else word[0]
    return NAMES.get(word.rstrip("0123456789"))


def mesh_cells(path, points):
    """The cells of a .mesh file whose nodes are the points: surface elements with all their nodes,
    other elements with their corners only."""
    mesh = textfiles.read_mesh(path)
    if len(mesh.points) != len(points) or not np.array_equal(mesh.points, points):
        raise Failure(f"{path}: its nodes are not the points of the table")
    place = {node: i for i, node in enumerate(mesh.ids)}
    groups = {}
    for number, (word, nodes) in enumerate(mesh.elements, start=1):
        kind = element_kind(word)
        if kind in ("2", "3") and len(nodes) in vtkfiles.SURFACE_TYPES:
            key = (None, len(nodes))
        elif kind in CORNERS and len(nodes) >= CORNERS[kind][1]:
            key = CORNERS[kind]
        else:
            raise Failure(f"{path}, element {number}: {word} with {len(nodes)} nodes is unknown")
        try:
            groups.setdefault(key, []).append([place[node] for node in nodes[:key[1]]])
        except KeyError as error:
            raise Failure(f"{path}, element {number}: there is no node {error}") from None
    return [vtkfiles.surface_cells(np.array(cells)) if kind is None else (kind, np.array(cells))
            for (kind, _), cells in groups.items()]


def table_grid(table, mesh, minus):
    """The grid of a table, and a text that says how its points are connected."""
    data = {"Potential": table.potential, "EField": table.gradient}
    if minus:
        data["MinusEField"] = -table.gradient
    if mesh is not None:
        cells, words = mesh_cells(mesh, table.points), f"the elements of {mesh}"
    elif shape := grids.grid_shape(table.points):
        cells = [(GRID_TYPES[len(shape)], grids.grid_cells(shape))]
        words = "a grid of " + " by ".join(map(str, shape))
    else:
        cells = [(vtkfiles.VERTEX, np.arange(len(table.points))[:, None])]
        words = "points without connection"
    return vtkfiles.Grid(table.points, cells, data), words


def surface_grid(read):
    """The surface of a solution. Each element has nodes of its own, as the density jumps between
    elements."""
    points, cells, density, charges, areas, first = [], [], [], [], [], 0
    for block in read.blocks:
        count, nodes = block.nodes.shape
        points.append(block.points.reshape(-1, 3))
        cells.append(vtkfiles.surface_cells(first + np.arange(count * nodes).reshape(count, nodes)))
        first += count * nodes
        density.append(block.density(read.order, block.basis.nodes).ravel())
        charges.append(block.coefficients[:, 0])
        areas.append(block.areas())
    return vtkfiles.Grid(np.concatenate(points), cells,
                         {"ChargeDensity": np.concatenate(density)},
                         {"Charge": np.concatenate(charges), "Area": np.concatenate(areas)})


def parser():
    top = cli.Parser(prog="orvanta-view", description=__doc__)
    top.add_argument("-t", "--table", metavar="FILE.csv", help="result of orvanta.post")
    top.add_argument("-p", "--points", metavar="FILE.mesh",
                     help="mesh whose nodes were the points; its elements connect them")
    top.add_argument("-i", "--input", metavar="FILE.vtkhdf",
                     help="solution: its surface with the charge per area")
    top.add_argument("-o", "--output", metavar="FILE",
                     help=".vtu or .vtkhdf (.vtu next to the table or solution)")
    top.add_argument("--minus", action="store_true",
                     help="add MinusEField: EField is the gradient of the potential and points "
                          "towards positive charges, its negative away from them")
    return top


def command(arguments):
    args = parser().parse_args(arguments)
    if args.table is None and args.input is None:
        raise Failure("--table or --input is missing; orvanta-view --help lists the options")
    output = args.output or (textfiles.beside(args.table, ".vtu") if args.table
                             else textfiles.beside(args.input, ".surface.vtu"))
    surface_output = output
    if args.table is not None:
        stem, extension = os.path.splitext(output)
        surface_output = stem + ".surface" + extension
    for name in (args.table, args.points, args.input):
        if name is not None and any(os.path.realpath(name) == os.path.realpath(written)
                                    for written in (output, surface_output)):
            raise Failure(f"{name} would be written over: give another name with --output=")
    if args.table is not None:
        grid, words = table_grid(textfiles.read_table(args.table), args.points, args.minus)
        vtkfiles.write(output, grid)
        print(f"{output}: {len(grid.points)} points, {words}")
    if args.input is not None:
        read = solution.read_solution(args.input, density=True)
        vtkfiles.write(surface_output, surface_grid(read))
        print(f"{surface_output}: {read.num_elements} elements")


def main(arguments):
    return cli.run(command, arguments)
