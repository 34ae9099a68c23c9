"""Points on a plane: coordinates in it, a triangulation, the cut of a surface with it."""
import numpy as np

from . import grids

AXES = "XYZ"


class Plane:
    """origin: a point of it; axes: (2, 3) unit vectors to the right and upwards; normal: (3);
    labels: of the two axes; place: the plane in words."""

    def __init__(self, points):
        self.origin = points[0]
        main = grids.directions(points)
        self.normal = np.cross(*main)
        # Coordinate axes that lie in the plane; a constant coordinate leaves two of them.
        inside = np.flatnonzero(np.abs(self.normal) < grids.SAME)
        if len(inside) == 2:
            self.axes = np.eye(3)[inside]
            constant = AXES[3 - inside.sum()]
            self.place = f"{constant} = {self._constant(points, 3 - inside.sum()):g}"
        elif len(inside) == 1:
            up = np.eye(3)[inside[0]]
            right = np.cross(up, self.normal)
            self.axes = np.array([right if right[np.argmax(abs(right))] > 0 else -right, up])
            self.place = f"plane through ({in_words(self.origin)})"
        else:
            self.axes = main
            self.place = f"plane through ({in_words(self.origin)})"
        self.normal = np.cross(*self.axes)
        self.labels = [self._label(axis) for axis in self.axes]
        # Distances count from the first point, coordinates from 0.
        self.shift = np.where([label in AXES for label in self.labels], self.axes @ self.origin, 0)

    @staticmethod
    def _constant(points, axis):
        value = points[:, axis].mean()
        return 0.0 if abs(value) < grids.SAME * np.ptp(points, axis=0).max() else value

    @staticmethod
    def _label(axis):
        place = np.flatnonzero(np.abs(axis) > grids.SAME)
        if len(place) == 1:
            return AXES[place[0]]
        return f"distance along ({in_words(axis)})"

    def coordinates(self, points):
        """Right and up, shape (n, 2)."""
        return (points - self.origin) @ self.axes.T + self.shift

    def cut(self, triangles):
        """Where triangles (t, 3, 3) meet the plane: segments (s, 2, 2) in its coordinates."""
        height = (triangles - self.origin) @ self.normal
        # Rounding may put a corner in the plane on different sides for elements that share it.
        height[np.abs(height) < grids.SAME * np.ptp(triangles.reshape(-1, 3), axis=0).max()] = 0
        above = height >= 0
        mixed = above.any(axis=1) & ~above.all(axis=1)
        corners, height, above = triangles[mixed], height[mixed], above[mixed]
        # One corner is alone on its side of the plane; both edges from it are cut.
        alone = np.argmax(above == (above.sum(axis=1) == 1)[:, None], axis=1)
        row = np.arange(len(corners))
        ends = []
        for step in (1, 2):
            other = (alone + step) % 3
            share = height[row, alone] / (height[row, alone] - height[row, other])
            a, b = corners[row, alone], corners[row, other]
            ends.append(self.coordinates(a + share[:, None] * (b - a)))
        return np.stack(ends, axis=1).reshape(-1, 2, 2)


def in_words(vector):
    return ", ".join(f"{0.0 if abs(x) < 1e-12 else x:.4g}" for x in vector)


def crossings(start, direction, triangles):
    """Where the line start + t direction crosses triangles (t, 3, 3): values of t in order. Values
    of neighbouring triangles that the line crosses in their common edge are merged."""
    a, b, c = (triangles[:, k] for k in range(3))
    normal = np.cross(b - a, c - a)
    with np.errstate(divide="ignore", invalid="ignore"):
        t = np.sum((a - start) * normal, axis=1) / (normal @ direction)
        hit = start + t[:, None] * direction
        # A hit is inside if it is on the same side of all edges; hits on an edge count too.
        sides = np.stack([np.sum(np.cross(q - p, hit - p) * normal, axis=1)
                          for p, q in ((a, b), (b, c), (c, a))]) / np.sum(normal**2, axis=1)
    found = np.sort(t[np.isfinite(t) & (sides >= -1e-9).all(axis=0)])
    scale = np.abs(found).max(initial=0) * 1e-6
    return found[np.insert(np.diff(found) > scale, 0, True)] if len(found) else found
