"""Functions on the reference elements, the same as in orvanta.post.

The triangle is 0 <= y <= x <= 1, the quadrilateral the unit square. Points have the shape (q, 2).
"""
import functools

import numpy as np

CORNERS = {"triangle": np.array([[0, 0], [1, 0], [1, 1]], dtype=float),
           "quad": np.array([[0, 0], [1, 0], [1, 1], [0, 1]], dtype=float)}
# The number of nodes determines shape and order; 8 nodes are corners and edge midpoints only.
SHAPES = {3: ("triangle", 1), 6: ("triangle", 2), 10: ("triangle", 3),
          4: ("quad", 1), 8: ("quad", 2), 9: ("quad", 2), 16: ("quad", 3)}


def node_points(shape, order):
    """Corners, points inside each edge in edge order, then the interior like a smaller element."""
    corners = CORNERS[shape]
    if order == 0:
        return np.zeros((1, 2))
    points = list(corners)
    for a, b in zip(corners, np.roll(corners, -1, axis=0)):
        points += [a + (b - a) * i / order for i in range(1, order)]
    shrink, shift = (3, (2, 1)) if shape == "triangle" else (2, (1, 1))
    if order >= shrink:
        inner = node_points(shape, order - shrink)
        points += list((inner * (order - shrink) + np.array(shift)) / order)
    return np.array(points)


class NodalBasis:
    """Polynomials that are 1 at one node of an element and 0 at the others."""

    def __init__(self, num_nodes):
        shape, order = SHAPES[num_nodes]
        self.shape = shape
        self.nodes = node_points(shape, order)[:num_nodes]
        limit = 2 * order if shape == "quad" else order
        self.powers = [(i, j) for i in range(order + 1) for j in range(order + 1) if i + j <= limit]
        if num_nodes == 8:
            self.powers.remove((2, 2))
        self.coefficients = np.linalg.inv(self._monomials(self.nodes))

    def _monomials(self, points):
        x, y = np.asarray(points, dtype=float).T
        return np.stack([x**i * y**j for i, j in self.powers], axis=1)

    def values(self, points):
        """Values at the points, shape (q, nodes)."""
        return self._monomials(points) @ self.coefficients

    def gradients(self, points):
        """Derivatives with respect to x, then y, shape (2, q, nodes)."""
        x, y = np.asarray(points, dtype=float).T
        dx = np.stack([i * x**max(i - 1, 0) * y**j for i, j in self.powers], axis=1)
        dy = np.stack([j * x**i * y**max(j - 1, 0) for i, j in self.powers], axis=1)
        return np.stack([dx, dy]) @ self.coefficients


@functools.cache
def nodal_basis(num_nodes):
    return NodalBasis(num_nodes)


@functools.cache
def rule(shape, order):
    """Points (q, 2) and weights (q) of a product rule, exact to `order` in each variable.

    On the triangle x = u, y = u v turns it into the unit square with the factor u.
    """
    u, w = np.polynomial.legendre.leggauss(order // 2 + 2)
    u, w = (u + 1) / 2, w / 2
    x, y = (a.ravel() for a in np.meshgrid(u, u, indexing="ij"))
    weights = np.outer(w, w).ravel()
    if shape == "triangle":
        return np.stack([x, x * y], axis=1), weights * x
    return np.stack([x, y], axis=1), weights


def legendre(order, x, t=1.0):
    """Homogeneous Legendre polynomials t^n P_n(x / t), n = 0 to `order`.

    n P_n = (2 n - 1) x P_(n-1) - (n - 1) t^2 P_(n-2)
    """
    p = [np.ones_like(x), x]
    for n in range(2, order + 1):
        p.append(((2 * n - 1) * x * p[-1] - (n - 1) * t * t * p[-2]) / n)
    return p[:order + 1]


def integrated(order, x, t=1.0):
    """L_n = (P_n - t^2 P_(n-2)) / (2 n - 1) for n = 2 to `order`."""
    p = legendre(order, x, t)
    return [(p[n] - t * t * p[n - 2]) / (2 * n - 1) for n in range(2, order + 1)]


def hierarchical(shape, order, points):
    """Corner, edge and interior functions of order 1 and up, shape (q, functions)."""
    x, y = np.asarray(points, dtype=float).T
    if shape == "triangle":
        l = [1 - x, x - y, y]
        functions = list(l)
        for a in range(3):
            b = (a + 1) % 3
            functions += integrated(order, l[b] - l[a], l[a] + l[b])
        heights = legendre(order, 2 * l[2] - 1)
        for i, edge in enumerate(integrated(order - 1, l[1] - l[0], l[1] + l[0])):
            functions += [l[2] * edge * heights[j] for j in range(order - 2 - i)]
    else:
        functions = [(1 - x) * (1 - y), x * (1 - y), x * y, (1 - x) * y]
        for factor, along in ((1 - y, 2 * x - 1), (x, 2 * y - 1),
                              (y, 1 - 2 * x), (1 - x, 1 - 2 * y)):
            functions += [factor * f for f in integrated(order, along)]
        across = integrated(order, 2 * y - 1)
        functions += [a * b for a in integrated(order, 2 * x - 1) for b in across]
    return np.stack(functions, axis=1)


def density_basis(shape, order, points):
    """The functions of the density, shape (q, functions): (order + 1)(order + 2) / 2 on a triangle,
    (order + 1)^2 on a quadrilateral. The first one has the integral 1, all others 0.
    """
    area = 0.5 if shape == "triangle" else 1.0
    if order == 0:
        return np.full((len(points), 1), 1 / area)
    values = hierarchical(shape, order, points)
    where, weights = rule(shape, 2 * order)
    means = weights @ hierarchical(shape, order, where) / area
    corners = len(CORNERS[shape])
    values[:, 0] = 1 / area
    values[:, 1:corners] = (values[:, 1:corners] - means[1:corners]) / area
    values[:, corners:] -= means[corners:]
    return values
