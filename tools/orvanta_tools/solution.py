"""The surface and its density from a solution file (.vtkhdf)."""
import numpy as np

from . import shapes
from .cli import Failure, need

TRIANGLE, QUADRILATERAL = 69, 70
NODE_COUNTS = {TRIANGLE: (3, 6, 10), QUADRILATERAL: (4, 8, 9, 16)}
DATASETS = ("/VTKHDF/NumberOfPoints", "/VTKHDF/NumberOfCells", "/VTKHDF/NumberOfConnectivityIds",
            "/VTKHDF/Points", "/VTKHDF/Types", "/VTKHDF/Connectivity", "/VTKHDF/Offsets",
            "/VTKHDF/PointData/vtkGhostType", "/VTKHDF/PointData/vtkGlobalIds",
            "/VTKHDF/CellData/vtkGhostType", "/VTKHDF/CellData/vtkGlobalIds",
            "/ABB/L2/NumberOfDofIds", "/ABB/L2/GlobalDofIds", "/ABB/L2/GhostDofs",
            "/ABB/L2/charges")
# Order of the rule for areas on curved elements.
AREA_ORDER = 5


class Block:
    """All elements of one shape and node count.

    ids: (e) places in the order of the solution; nodes: (e, k) node numbers;
    points: (e, k, 3) coordinates of the nodes; coefficients: (e, f) of the density
    """

    def __init__(self, ids, nodes, points):
        self.ids, self.nodes, self.points = ids, nodes, points
        self.basis = shapes.nodal_basis(nodes.shape[1])
        self.coefficients = None

    def positions(self, reference):
        """Images of reference points (q, 2), shape (e, q, 3)."""
        return np.einsum("qk,ekd->eqd", self.basis.values(reference), self.points)

    def normals(self, reference):
        """Cross products of the two tangents, shape (e, q, 3); their lengths are area elements."""
        tangents = np.einsum("aqk,ekd->aeqd", self.basis.gradients(reference), self.points)
        return np.cross(tangents[0], tangents[1])

    def areas(self):
        """Shape (e)."""
        reference, weights = shapes.rule(self.basis.shape, 2 * AREA_ORDER)
        return np.linalg.norm(self.normals(reference), axis=2) @ weights

    def sizes(self):
        """h = sqrt(2 A), the unit in which orvanta.post measures distances, shape (e)."""
        return np.sqrt(2 * self.areas())

    def density(self, order, reference):
        """Charge per unit of area at reference points, shape (e, q).

        The file's density is per unit of reference area, hence the division by the area element.
        Where an element is folded to a point that has no value: NaN.
        """
        values = self.coefficients @ shapes.density_basis(self.basis.shape, order, reference).T
        with np.errstate(divide="ignore", invalid="ignore"):
            return values / np.linalg.norm(self.normals(reference), axis=2)


class Solution:
    """points: (n, 3) nodes; blocks: list of Block; order: of the density, or None if not read"""

    def __init__(self, points, blocks, order):
        self.points, self.blocks, self.order = points, blocks, order
        self.num_elements = sum(len(block.ids) for block in blocks)

    def in_order(self, values):
        """Joins arrays of blocks, shape (e, ...) each, in the order of the elements."""
        ids = np.concatenate([block.ids for block in self.blocks])
        return np.concatenate(values)[np.argsort(ids)]

    def is_closed(self):
        """Whether every edge belongs to two elements or more."""
        edges = []
        for block in self.blocks:
            corners = block.nodes[:, :len(shapes.CORNERS[block.basis.shape])]
            edges.append(np.stack([corners, np.roll(corners, -1, axis=1)], axis=2).reshape(-1, 2))
        _, counts = np.unique(np.sort(np.concatenate(edges), axis=1), axis=0, return_counts=True)
        return bool((counts > 1).all())

    def triangles(self, parts):
        """The surface as flat triangles: corners (t, 3, 3) and elements (t). The edges of curved
        elements are cut into `parts`."""
        cut, elements = [], []
        for block in self.blocks:
            n = parts if block.nodes.shape[1] > 3 else 1
            reference, corners = subdivision(block.basis.shape, n)
            cut.append(block.positions(reference)[:, corners].reshape(-1, 3, 3))
            elements.append(np.repeat(block.ids, len(corners)))
        return np.concatenate(cut), np.concatenate(elements)


def subdivision(shape, n):
    """Lattice of a reference element: points (q, 2) and triangles (t, 3) of point numbers."""
    index, points = {}, []
    for i in range(n + 1):
        for j in range(i + 1 if shape == "triangle" else n + 1):
            index[i, j] = len(points)
            points.append((i / n, j / n))
    triangles = []
    for i, j in index:
        if (i + 1, j + 1) in index:
            triangles.append((index[i, j], index[i + 1, j], index[i + 1, j + 1]))
            if (i, j + 1) in index:
                triangles.append((index[i, j], index[i + 1, j + 1], index[i, j + 1]))
    return np.array(points), np.array(triangles)


def read_dataset(file, name):
    if name not in file or not hasattr(file[name], "shape"):
        raise Failure(f"{file.filename} has no {name}: it is no solution of the main solver")
    return np.asarray(file[name][()]).reshape(-1)


def read_ids(file, name):
    """Global ids of rows; refuses negative ids and ids beyond the number of rows."""
    ids = read_dataset(file, name).astype(np.int64)
    if len(ids) and not 0 <= ids.min() <= ids.max() < len(ids):
        raise Failure(f"{file.filename}: {name} holds ids from {ids.min()} to {ids.max()} for "
                      f"{len(ids)} rows")
    return ids


def read_pieces(file, name, counts, extra=0):
    """A dataset split into the parts of the pieces, `counts` + `extra` entries each."""
    data = read_dataset(file, name)
    ends = np.cumsum(counts + extra)
    if len(data) != (ends[-1] if len(ends) else 0):
        raise Failure(f"{file.filename}: {name} has {len(data)} entries, expected {ends[-1]}")
    return np.split(data, ends[:-1])


def read_cells(file):
    """Types by global cell id, and the global node ids of each cell."""
    counts = {name: read_dataset(file, f"/VTKHDF/NumberOf{name}").astype(np.int64)
              for name in ("Points", "Cells", "ConnectivityIds")}
    points = read_pieces(file, "/VTKHDF/PointData/vtkGlobalIds", counts["Points"])
    cells = read_pieces(file, "/VTKHDF/CellData/vtkGlobalIds", counts["Cells"])
    offsets = read_pieces(file, "/VTKHDF/Offsets", counts["Cells"], extra=1)
    local = read_pieces(file, "/VTKHDF/Connectivity", counts["ConnectivityIds"])
    types = read_pieces(file, "/VTKHDF/Types", counts["Cells"])
    found = {}
    for piece, ids in enumerate(cells):
        for i, cell in enumerate(ids):
            nodes = points[piece][local[piece][offsets[piece][i]:offsets[piece][i + 1]]]
            found[int(cell)] = (int(types[piece][i]), nodes)
    return found


def sort_into_blocks(path, cells, points):
    groups = {}
    for cell in sorted(cells):
        kind, nodes = cells[cell]
        if len(nodes) not in NODE_COUNTS.get(kind, ()):
            raise Failure(f"{path}: cell {cell} of type {kind} with {len(nodes)} nodes is neither "
                          "a triangle (type 69) nor a quadrilateral (type 70) that can be read")
        groups.setdefault((kind, len(nodes)), []).append((cell, nodes))
    blocks = []
    for members in groups.values():
        nodes = np.array([member[1] for member in members])
        blocks.append(Block(np.array([member[0] for member in members]), nodes, points[nodes]))
    return blocks


def read_density(file, solution):
    """Sorts the coefficients: element after element, in global order."""
    group = "/ABB/L2"
    ids = read_ids(file, f"{group}/GlobalDofIds")
    charges = np.zeros(ids.max(initial=-1) + 1)
    charges[ids] = read_dataset(file, f"{group}/charges")
    solution.order = int(np.ravel(file[group].attrs["FEOrder"])[0])
    p = solution.order
    lengths = np.zeros(solution.num_elements, dtype=np.int64)
    for block in solution.blocks:
        triangle = block.basis.shape == "triangle"
        lengths[block.ids] = (p + 1) * (p + 2) // 2 if triangle else (p + 1) ** 2
    if lengths.sum() != len(charges):
        raise Failure(f"{file.filename}: {len(charges)} coefficients don't fit "
                      f"{solution.num_elements} elements of order {p}, which have {lengths.sum()}")
    first = np.cumsum(lengths) - lengths
    for block in solution.blocks:
        length = lengths[block.ids[0]]
        block.coefficients = charges[first[block.ids][:, None] + np.arange(length)]


def read_solution(path, density=False):
    """Reads the surface of a solution, and its density if requested."""
    h5py = need("h5py")
    with open(path, "rb"):  # the system's own words for a file that isn't there
        pass
    try:
        file = h5py.File(path, "r")
    except OSError:
        raise Failure(f"{path} is no HDF5 file, so no solution of the main solver") from None
    with file:
        try:
            ids = read_ids(file, "/VTKHDF/PointData/vtkGlobalIds")
            raw = read_dataset(file, "/VTKHDF/Points").reshape(-1, 3)
            points = np.full((ids.max(initial=-1) + 1, 3), np.nan)
            points[ids] = raw
            solution = Solution(points, sort_into_blocks(path, read_cells(file), points), None)
            if density:
                read_density(file, solution)
        except (IndexError, KeyError, TypeError, ValueError) as error:
            raise Failure(f"{path}: its arrays don't fit together ({error})") from None
    if not solution.blocks:
        raise Failure(f"{path} has no cells")
    return solution
