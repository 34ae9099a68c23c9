"""orvanta-plot: draws results of orvanta.post.

  orvanta-plot --table=TABLE.csv [--input=FILE.vtkhdf] [--output=FILE.png|.pdf|.svg] [options]

Points on a line are drawn as curves, points on a plane as maps, other points as a view in space. If
the solution is given, curves show where the line crosses the surface, maps show the outlines of the
electrodes that the plane cuts, and a view in space shows the elements, coloured if each has points
of its own (orvanta-points surface).
"""
import os

import numpy as np

from . import cli, grids, planes, solution, textfiles
from .cli import Failure, need

NAMES = {"potential": "potential", "field": "|gradient of potential|", "x": "gradient X",
         "y": "gradient Y", "z": "gradient Z"}
# Colour maps for values with both signs, white at 0, and for others.
DIVERGING, RISING = "RdBu_r", "viridis"
FORMATS = (".png", ".pdf", ".svg")
# Number of parts into which the edges of curved elements are cut for drawing.
PARTS = 4
# Largest number of arrows, and of starting places of field lines, along the longer side of a map.
ARROWS, LINES = 24, 120


class Picture:
    """What all panels need: the table, the options, the surface as triangles or None."""

    def __init__(self, args, table):
        self.args, self.table = args, table
        self.triangles = self.elements = None
        self.num_elements = 0
        if args.input is not None:
            read = solution.read_solution(args.input)
            self.triangles, self.elements = read.triangles(PARTS)
            self.num_elements = read.num_elements

    def values(self, name):
        """A quantity of NAMES at all points, times the factor; NaN where it isn't finite."""
        if name == "potential":
            value = self.table.potential
        elif name == "field":
            value = np.linalg.norm(self.table.gradient, axis=1)
        else:
            value = self.table.gradient[:, "xyz".index(name)]
        return self.args.factor * np.where(np.isfinite(value), value, np.nan)

    def label(self, name):
        """Name and unit of a quantity."""
        unit = self.args.potential_unit
        if name != "potential" and (unit or self.args.length_unit):
            unit = f"{unit or '1'}/{self.args.length_unit or '1'}"
        return NAMES[name] + (f" [{unit}]" if unit else "")

    def length(self, name):
        """Label of an axis of lengths."""
        return name + (f" [{self.args.length_unit}]" if self.args.length_unit else "")

    def norm(self, name, values):
        """Colours of a quantity: norm, colour map, and where the colour bar is open."""
        colors = need("matplotlib.colors")
        low, high = np.nanmin(values), np.nanmax(values)
        if name == "field":
            # A few points close to an edge or charge would otherwise leave one colour to the rest.
            usual = np.nanpercentile(values, 99)
            clip = high > 2 * usual > 0
            high = usual if clip else high
            if self.args.log and high > 0:
                least = high / 10**self.args.decades
                opened = {(1, 1): "both", (1, 0): "min", (0, 1): "max", (0, 0): "neither"}
                return colors.LogNorm(least, high), RISING, opened[low < least, clip]
            return colors.Normalize(low, high), RISING, "max" if clip else "neither"
        if low < 0 < high:
            return colors.Normalize(-max(-low, high), max(-low, high)), DIVERGING, "neither"
        return colors.Normalize(low, high), RISING, "neither"


def line_start(points):
    """Origin and direction for positions on the line of the points, and the label of the axis: a
    coordinate if only that one varies, otherwise the distance from the first point."""
    direction = points[np.argmax(np.linalg.norm(points - points[0], axis=1))] - points[0]
    direction /= np.linalg.norm(direction)
    varying = np.flatnonzero(np.abs(direction) > grids.SAME)
    if len(varying) == 1:
        direction = np.eye(3)[varying[0]]
        return np.where(direction > 0, 0, points[0]), direction, planes.AXES[varying[0]]
    return points[0], direction, f"distance along ({planes.in_words(direction)})"


def draw_passes(axes, picture):
    """Dashed lines where the line of the points crosses the surface."""
    start, direction, _ = line_start(picture.table.points)
    places = (picture.table.points - start) @ direction
    for t in planes.crossings(start, direction, picture.triangles):
        if places.min() <= t <= places.max():
            for ax in axes:
                ax.axvline(t, color="0.4", linestyle="--", linewidth=1)


def draw_line(pictures, pyplot):
    """Curves of all quantities, one below the other; several tables share a frame."""
    args = pictures[0].args
    figure, axes = pyplot.subplots(len(args.show), 1, sharex=True, squeeze=False,
                                   layout="constrained", figsize=(7, 0.8 + 3.2 * len(args.show)))
    axes, labels = axes[:, 0], set()
    for picture, name in zip(pictures, args.table):
        start, direction, label = line_start(picture.table.points)
        labels.add(label)
        place = (picture.table.points - start) @ direction
        order = np.argsort(place, kind="stable")
        for ax, quantity in zip(axes, args.show):
            ax.plot(place[order], picture.values(quantity)[order],
                    label=os.path.splitext(os.path.basename(name))[0])
    for ax, quantity in zip(axes, args.show):
        if quantity == "field" and args.log:
            ax.set_yscale("log")
            high = max(np.nanmax(picture.values(quantity)) for picture in pictures)
            ax.set_ylim(bottom=max(ax.get_ylim()[0], high / 10**args.decades))
        ax.set_ylabel(pictures[0].label(quantity))
        ax.grid(alpha=0.3)
    if len(pictures) > 1:
        axes[0].legend()
    if pictures[0].triangles is not None:
        draw_passes(axes, pictures[0])
    axes[-1].set_xlabel(pictures[0].length(labels.pop() if len(labels) == 1 else "distance"))
    return figure


class Map:
    """The points of a plane, connected: place (n, 2) in the plane, triangles without NaN."""

    def __init__(self, picture):
        self.plane = planes.Plane(picture.table.points)
        self.place = self.plane.coordinates(picture.table.points)
        self.shape = grids.grid_shape(picture.table.points)
        finite = picture.table.finite
        tri = need("matplotlib.tri")
        if len(self.shape) == 2:
            a, b, c, d = grids.grid_cells(self.shape).T
            self.mesh = tri.Triangulation(*self.place.T, np.stack([[a, b, c], [a, c, d]], axis=1)
                                          .reshape(3, -1).T)
        else:
            self.mesh = tri.Triangulation(*self.place.T)
        self.mesh.set_mask(~finite[self.mesh.triangles].all(axis=1))
        # Inside a conductor the field is 0 except for errors, whose directions mean nothing.
        size = np.linalg.norm(picture.table.gradient, axis=1)
        self.least = 1e-3 * np.percentile(size[finite], 95)
        self.inside = size <= self.least

    def interpolate(self, values, count):
        """Values on a grid with square cells, `count` along the longer side: x (m), y (k) and
        values (k, m) for each array given, masked outside."""
        tri = need("matplotlib.tri")
        low, high = self.place.min(axis=0), self.place.max(axis=0)
        sides = np.maximum(2, np.round(count * (high - low) / (high - low).max()).astype(int))
        x, y = (np.linspace(low[k], high[k], sides[k]) for k in range(2))
        grid = np.meshgrid(x, y)
        return x, y, [tri.LinearTriInterpolator(self.mesh, value)(*grid) for value in values]


def draw_colours(ax, chart, values, norm, colours):
    """The quantity as colours, linear on the triangles between the points."""
    # Values that are hidden by masked triangles must be finite numbers nevertheless.
    return ax.tripcolor(chart.mesh, np.nan_to_num(values), norm=norm, cmap=colours,
                        shading="gouraud", rasterized=True)


def draw_field(ax, picture, chart, ink):
    """Arrows of equal length and field lines, along the gradient or its negative."""
    args = picture.args
    sign = -1 if args.minus else 1
    flat = sign * np.nan_to_num(picture.table.gradient) @ chart.plane.axes.T
    for wanted, count in ((args.arrows, ARROWS), (args.lines, LINES)):
        if not wanted:
            continue
        x, y, (u, v) = chart.interpolate(flat.T, count)
        size = np.ma.hypot(u, v)
        hidden = np.ma.getmaskarray(size) | (size.filled(0) <= chart.least)
        u, v = (np.ma.array(part / np.where(hidden, 1, size.filled(1)), mask=hidden)
                for part in (u.filled(0), v.filled(0)))
        if count == ARROWS:
            ax.quiver(x, y, u, v, angles="xy", pivot="middle", scale=1.3 * max(len(x), len(y)),
                      width=0.0035, color=ink)
        else:
            ax.streamplot(x, y, u.filled(np.nan), v.filled(np.nan), color=ink, linewidth=0.8,
                          arrowsize=0.9, density=1.3)


def draw_contours(ax, picture, chart, ink):
    """Lines of equal potential, at round values, outside of conductors."""
    ticker, tri = need("matplotlib.ticker"), need("matplotlib.tri")
    corners = chart.mesh.triangles
    mesh = tri.Triangulation(chart.mesh.x, chart.mesh.y, corners,
                             chart.mesh.mask | chart.inside[corners].any(axis=1))
    potential = picture.values("potential")
    levels = ticker.MaxNLocator(picture.args.equipotentials + 1).tick_values(
        np.nanmin(potential), np.nanmax(potential))
    ax.tricontour(mesh, np.nan_to_num(potential), levels=levels, colors=ink,
                  linewidths=0.5, linestyles="solid", alpha=0.7)


def draw_plane(pictures, pyplot):
    """Maps, side by side."""
    picture, = pictures
    collections = need("matplotlib.collections")
    chart = Map(picture)
    names, args = picture.args.show, picture.args
    low, high = chart.place.min(axis=0), chart.place.max(axis=0)
    extent = high - low
    width, height = 4.4 * np.array([1, extent[1] / extent[0]]) / max(1, extent[1] / extent[0])
    figure, axes = pyplot.subplots(
        1, len(names), squeeze=False, layout="constrained",
        figsize=((max(width, 2.6) + 1.5) * len(names), max(height, 1.6) + 0.85))
    segments = () if picture.triangles is None else chart.plane.cut(picture.triangles)
    for ax, name in zip(axes[0], names):
        values = picture.values(name)
        norm, colours, opened = picture.norm(name, values)
        image = draw_colours(ax, chart, values, norm, colours)
        figure.colorbar(image, cax=ax.inset_axes([1.03, 0, 0.05, 1]), label=picture.label(name),
                        extend=opened)
        ink = "0.15" if colours == DIVERGING else "white"
        if args.equipotentials:
            draw_contours(ax, picture, chart, ink)
        if args.arrows or args.lines:
            draw_field(ax, picture, chart, ink)
        if len(segments):
            ax.add_collection(collections.LineCollection(segments, colors="black", linewidths=1.6))
        ax.set(xlabel=picture.length(chart.plane.labels[0]), aspect="equal",
               ylabel=picture.length(chart.plane.labels[1]),
               xlim=(low[0], high[0]), ylim=(low[1], high[1]))
    title = chart.plane.place
    if args.arrows or args.lines:
        title += f"; {'arrows' if args.arrows else 'field lines'} along the " + (
            "negative gradient" if args.minus else "gradient, towards positive charges")
    figure.suptitle(title, fontsize="medium")
    return figure


def draw_space(pictures, pyplot):
    """Coloured points, or coloured elements where each has points of its own; the field's highest
    place is marked and turned to the front."""
    picture, = pictures
    points, args = picture.table.points, picture.args
    name = args.show[-1] if len(args.show) == 1 else "field"
    values = picture.values(name)
    norm, colours, opened = picture.norm(name, values)
    cmap = need("matplotlib").cm.ScalarMappable(norm, colours)
    figure = pyplot.figure(figsize=(7.2, 5.6), layout="constrained")
    ax = figure.add_subplot(projection="3d", computed_zorder=False)
    if picture.triangles is not None:
        if len(points) % picture.num_elements == 0:
            of_element = np.nanmax(values.reshape(picture.num_elements, -1), axis=1)
            shade = cmap.to_rgba(of_element[picture.elements])
        else:
            shade = "0.8"
        art3d = need("mpl_toolkits.mplot3d.art3d")
        ax.add_collection3d(art3d.Poly3DCollection(picture.triangles, facecolors=shade,
                                                   edgecolors=shade, linewidths=0.3))
        corners = picture.triangles.reshape(-1, 3)
    else:
        corners = points
    if picture.triangles is None or len(points) % picture.num_elements:
        ax.scatter(*points.T, c=values, norm=norm, cmap=colours, s=6)
    low = np.minimum(corners.min(axis=0), points.min(axis=0))
    high = np.maximum(corners.max(axis=0), points.max(axis=0))
    top = points[np.nanargmax(values)]
    towards = top - (low + high) / 2
    ax.view_init(elev=20, azim=np.degrees(np.arctan2(towards[1], towards[0])) + 25)
    ax.scatter(*top, marker="o", s=60, facecolors="none", edgecolors="red", linewidths=1.5,
               depthshade=False, zorder=10)
    figure.suptitle(f"highest {picture.label(name)}: {np.nanmax(values):.4g} at "
                    f"({planes.in_words(top)})", fontsize="medium")
    ax.set_box_aspect(high - low, zoom=0.85)
    ax.set(xlim=(low[0], high[0]), ylim=(low[1], high[1]), zlim=(low[2], high[2]),
           **{f"{axis.lower()}label": picture.length(axis) for axis in planes.AXES})
    ax.locator_params(nbins=4)
    figure.colorbar(cmap, ax=ax, label=picture.label(name), extend=opened, shrink=0.7, pad=0.1)
    return figure


def parser():
    top = cli.Parser(prog="orvanta-plot", description=__doc__)
    add = top.add_argument
    add("-t", "--table", required=True, action="append", metavar="FILE.csv",
        help="result of orvanta.post; several ones on lines are drawn into one frame")
    add("-i", "--input", metavar="FILE.vtkhdf", help="solution, to draw its surface")
    add("-o", "--output", metavar="FILE",
        help="picture, .png, .pdf or .svg (.png next to the table)")
    add("--show", default="potential,field", metavar="NAMES",
        help=f"what to draw, some of {','.join(NAMES)} (potential,field)")
    add("--log", action="store_true", help="logarithmic scale for the field's magnitude")
    add("--decades", type=float, default=4, metavar="N",
        help="powers of ten below the largest value that --log shows (4)")
    add("--equipotentials", type=int, default=0, metavar="N",
        help="about N lines of equal potential")
    add("--arrows", action="store_true", help="arrows of equal length along the gradient")
    add("--lines", action="store_true", help="field lines")
    add("--minus", action="store_true",
        help="arrows and lines along the negative gradient, away from positive charges")
    add("--length-unit", default="", metavar="UNIT", help="unit of the coordinates, for the labels")
    add("--potential-unit", default="", metavar="UNIT",
        help="unit of the potential, for the labels")
    add("--factor", type=float, default=1.0, metavar="X",
        help="multiply potential and gradient, for example by 1 / permittivity (1)")
    return top


def check(args):
    args.show = args.show.split(",")
    unknown = [name for name in args.show if name not in NAMES]
    if unknown:
        raise Failure(f"--show: {unknown[0]} is none of {', '.join(NAMES)}")
    args.output = args.output or textfiles.beside(args.table[0], ".png")
    if os.path.splitext(args.output)[1] not in FORMATS:
        raise Failure(f"{args.output}: expected the extension {', '.join(FORMATS[:-1])} or "
                      f"{FORMATS[-1]}")
    if args.decades <= 0:
        raise Failure(f"--decades={args.decades:g}: expected a number above 0")


def read_table(name):
    """A table with at least one row to draw."""
    table = textfiles.read_table(name)
    if not table.finite.any():
        raise Failure(f"{name} has no row with finite values")
    if not table.finite.all():
        cli.warn(f"{name}: {(~table.finite).sum()} of {len(table.points)} rows without finite "
                 "values leave gaps")
    return table


def command(arguments):
    args = parser().parse_args(arguments)
    check(args)
    need("matplotlib").use("Agg")  # pictures go to files; no display is needed
    pyplot = need("matplotlib.pyplot")
    tables = [read_table(name) for name in args.table]
    dimensions = {len(grids.directions(table.points)) for table in tables}
    dimension = dimensions.pop()
    if dimension == 0:
        raise Failure(f"{args.table[0]}: all points lie in one place")
    if len(tables) > 1 and (dimensions or dimension != 1):
        raise Failure("several tables can be drawn only if the points of each lie on a line")
    if dimension != 2 and (args.arrows or args.lines or args.equipotentials):
        raise Failure(f"{args.table[0]}: arrows, field lines and equipotentials need points on a "
                      "plane")
    pictures = [Picture(args, table) for table in tables]
    draw = {1: draw_line, 2: draw_plane, 3: draw_space}[dimension]
    draw(pictures, pyplot).savefig(args.output, dpi=110)
    for name, picture in zip(args.table, pictures):
        field, points = picture.values("field"), picture.table.points
        top = int(np.nanargmax(field))
        print(f"{name}: {len(points)} points; highest field {field[top]:.6g} at "
              f"({planes.in_words(points[top])}), row {top + 1}")
    print(args.output)


def main(arguments):
    return cli.run(command, arguments)
