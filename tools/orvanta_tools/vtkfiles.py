"""Unstructured grids as files that ParaView and VTK read: .vtu (XML) and .vtkhdf (HDF5)."""
import os

import numpy as np

from .cli import Failure, need

LINE, TRIANGLE, QUAD, HEXAHEDRON, VERTEX = 3, 5, 9, 12, 1
# Cell type by number of nodes, of triangles and quadrilaterals with the full set of nodes.
SURFACE_TYPES = {3: TRIANGLE, 4: QUAD, 6: 22, 8: 23, 9: 28, 10: 69, 16: 70}
# VTK numbers the third and fourth edge in the direction of the first and second, and the interior
# row by row; our nodes go around the element.
QUAD16 = [0, 1, 2, 3, 4, 5, 6, 7, 9, 8, 11, 10, 12, 13, 15, 14]


class Grid:
    """points: (n, 3); cells: list of (VTK type, point numbers (c, k)); data: name to array, over
    points or over cells, in the order of the points and of `cells`."""

    def __init__(self, points, cells, point_data, cell_data=None):
        self.points, self.cells = points, cells
        self.point_data, self.cell_data = point_data, cell_data or {}

    def flat(self):
        """Connectivity, offsets behind each cell, and types, as VTK stores them."""
        sizes = np.concatenate([np.full(len(nodes), nodes.shape[1]) for _, nodes in self.cells])
        types = np.concatenate([np.full(len(nodes), kind) for kind, nodes in self.cells])
        connectivity = np.concatenate([nodes.ravel() for _, nodes in self.cells])
        return (connectivity.astype(np.int64), np.cumsum(sizes).astype(np.int64),
                types.astype(np.uint8))


def surface_cells(nodes):
    """VTK type and point numbers of elements of one kind, nodes (c, k) in our order."""
    count = nodes.shape[1]
    return SURFACE_TYPES[count], nodes[:, QUAD16] if count == 16 else nodes


def write(path, grid):
    """Writes the grid in the format of the file's extension."""
    writers = {".vtu": write_vtu, ".vtkhdf": write_vtkhdf}
    extension = os.path.splitext(path)[1]
    if extension not in writers:
        raise Failure(f"{path}: expected the extension {' or '.join(writers)}")
    writers[extension](path, grid)


def write_vtu(path, grid):
    """XML followed by the arrays as raw bytes, each preceded by its length in eight bytes."""
    blocks, offset = [], 0

    def array(name, values):
        nonlocal offset
        kind = {"f": "Float64", "i": "Int64", "u": "UInt8"}[values.dtype.kind]
        components = f' NumberOfComponents="{values.shape[1]}"' if values.ndim == 2 else ""
        text = (f'<DataArray type="{kind}" Name="{name}"{components} format="appended" '
                f'offset="{offset}"/>')
        data = np.ascontiguousarray(values).astype(values.dtype.newbyteorder("<")).tobytes()
        blocks.extend((len(data).to_bytes(8, "little"), data))
        offset += 8 + len(data)
        return text

    def arrays(tag, data):
        return f"<{tag}>{''.join(array(name, values) for name, values in data.items())}</{tag}>\n"

    connectivity, offsets, types = grid.flat()
    head = ('<?xml version="1.0"?>\n<VTKFile type="UnstructuredGrid" version="1.0" '
            'byte_order="LittleEndian" header_type="UInt64">\n<UnstructuredGrid>\n'
            f'<Piece NumberOfPoints="{len(grid.points)}" NumberOfCells="{len(types)}">\n'
            + arrays("Points", {"Points": grid.points})
            + arrays("Cells", {"connectivity": connectivity, "offsets": offsets, "types": types})
            + arrays("PointData", grid.point_data) + arrays("CellData", grid.cell_data)
            + '</Piece>\n</UnstructuredGrid>\n<AppendedData encoding="raw">\n_')
    with open(path, "wb") as file:
        file.write(head.encode())
        file.writelines(blocks)
        file.write(b"\n</AppendedData>\n</VTKFile>\n")


def write_vtkhdf(path, grid):
    """One piece of VTKHDF 1.0, which VTK reads from version 9.1 on."""
    h5py = need("h5py")
    connectivity, offsets, types = grid.flat()
    with open(path, "wb"):  # the system's own words where nothing can be written
        pass
    with h5py.File(path, "w") as file:
        group = file.create_group("VTKHDF")
        group.attrs["Version"] = np.array([1, 0])
        group.attrs.create("Type", np.bytes_(b"UnstructuredGrid"))
        for name, values in (("NumberOfConnectivityIds", [len(connectivity)]),
                             ("NumberOfPoints", [len(grid.points)]),
                             ("NumberOfCells", [len(types)]), ("Points", grid.points),
                             ("Connectivity", connectivity), ("Types", types),
                             ("Offsets", np.concatenate([[0], offsets]))):
            group[name] = np.asarray(values)
        for name, data in (("PointData", grid.point_data), ("CellData", grid.cell_data)):
            for key, values in data.items():
                group[f"{name}/{key}"] = values
