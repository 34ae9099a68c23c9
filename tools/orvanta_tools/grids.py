"""Lines, planes and boxes among the points of a table."""
import numpy as np

# Coordinates count as equal if they differ by less than this fraction of the extent of all points.
SAME = 1e-9


def directions(points):
    """Main directions of the points, longest first: an array (d, 3) of unit vectors.

    d is 0 for points in one place, 1 on a line, 2 on a plane, else 3.
    """
    middle = points.mean(axis=0)
    covariance = (points - middle).T @ (points - middle)
    spread, vectors = np.linalg.eigh(covariance)
    # Squares lose half of the digits, so measure the extents along the vectors.
    extent = np.ptp((points - middle) @ vectors, axis=0)
    scale = max(extent.max(), SAME * np.abs(points).max())
    order = np.argsort(-extent)
    return vectors.T[order][extent[order] > SAME * scale] if scale > 0 else np.empty((0, 3))


def straight(points):
    """How many of the first points move forward along the line of the first two."""
    step = points[1] - points[0]
    length = np.linalg.norm(step)
    if length == 0:
        return 1
    along = (points - points[0]) @ step / length
    off = np.linalg.norm(points - points[0] - np.outer(along, step / length), axis=1)
    good = off <= SAME * np.ptp(points, axis=0).max()
    good[1:] &= np.diff(along) > 0
    return len(points) if good.all() else int(np.argmin(good))


def grid_shape(points):
    """Numbers of points in each direction, the fastest first, if the points form a grid in the
    order in which they stand: every row is the first row moved. Spacings may differ. () if not.
    """
    tolerance = SAME * np.ptp(points, axis=0).max()
    rows, shape, steps = points, [], []
    while len(rows) > 1:
        n = straight(rows)
        if n < 2 or len(rows) % n or len(shape) == 3:
            return ()
        moved = rows.reshape(-1, n, 3) - rows[::n, None]
        if (np.abs(moved - moved[0]) > tolerance).any():
            return ()
        shape.append(n)
        steps.append((rows[1] - rows[0]) / np.linalg.norm(rows[1] - rows[0]))
        rows = rows[::n]
    independent = np.linalg.matrix_rank(np.array(steps)) == len(steps) if steps else False
    return tuple(shape) if independent else ()


def grid_cells(shape):
    """Point numbers of the cells of a grid: segments (c, 2), quadrilaterals (c, 4) or hexahedra
    (c, 8), corners in VTK's order."""
    index = np.arange(np.prod(shape)).reshape(shape[::-1])
    corners = {1: ["0", "1"], 2: ["00", "01", "11", "10"],
               3: ["000", "001", "011", "010", "100", "101", "111", "110"]}[len(shape)]
    sides = {"0": slice(None, -1), "1": slice(1, None)}
    return np.stack([index[tuple(sides[c] for c in corner)].ravel() for corner in corners], axis=1)
