"""The page of bench/run: text between the markers of docs/performance.md, a plot and all figures.

A figure is one case: method (fmm or direct), triangles, degree, leaf, share of the points that were
computed, seconds of the whole run, peak in MiB, page faults, seconds of the stages, serial (share of
a run on one thread outside of parallel loops, at the best leaf size only), errors. Expansions are
compared at the leaf size with the shortest whole run of their size and degree.
"""
import csv
import math
import re

STAGES = ("input", "preparation", "setup", "apply")
LARGE = 20000  # sizes from this number of triangles on are in the tables, and their runs take long


def evaluation(figure):
    """Seconds from points in memory to results in memory, including reading the density."""
    return figure["preparation"] + figure["setup"] + figure["apply"]


def whole(figure):
    return figure["whole"]


class Figures:
    def __init__(self, figures):
        self.all = figures
        self.sizes = sorted({f["triangles"] for f in figures})
        self.degrees = sorted({f["degree"] for f in figures if f["degree"]})
        self.leaves = sorted({f["leaf"] for f in figures if f["leaf"]})

    @property
    def large(self):
        """The sizes of the tables; all of them if there is no large one."""
        return [size for size in self.sizes if size >= LARGE] or self.sizes

    def direct(self, size):
        return next(f for f in self.all if f["method"] == "direct" and f["triangles"] == size)

    def at(self, size, degree):
        """The figures of all leaf sizes, ascending."""
        return sorted((f for f in self.all if f["triangles"] == size and f["degree"] == degree),
                      key=lambda f: f["leaf"])

    def best(self, size, degree):
        return min(self.at(size, degree), key=whole)

    def loss(self, degree, leaf):
        """Extra share of time against the best leaf size, over whole runs, at the worst size."""
        return max(next(f for f in self.at(size, degree) if f["leaf"] == leaf)["whole"]
                   / self.best(size, degree)["whole"] for size in self.large) - 1

    def crossing(self, degree, seconds):
        """Triangles from which on the expansions are faster at all measured sizes.

        None if they are not at the largest size, 0 if at all. The ratio of the times is
        interpolated between two sizes, both logarithmic.
        """
        gains = [(math.log(size), math.log(seconds(self.direct(size))
                                           / min(map(seconds, self.at(size, degree)))))
                 for size in self.sizes]
        if gains[-1][1] <= 0:
            return None
        last = max((i for i, (_, gain) in enumerate(gains) if gain <= 0), default=None)
        if last is None:
            return 0
        (a, gain_a), (b, gain_b) = gains[last], gains[last + 1]
        return math.exp(a + (b - a) * -gain_a / (gain_b - gain_a))


def stages(figure):
    """Seconds of the stages and of what is left of the whole run: start, table, exit."""
    parts = [figure[stage] for stage in STAGES]
    return [*parts, figure["whole"] - sum(parts)]


def digits(value, count=2):
    """Rounded to significant digits, without exponent."""
    if value <= 0:
        return "0"
    places = count - 1 - math.floor(math.log10(value))
    return f"{round(value, places):,.{max(0, places)}f}"


def seconds_text(value):
    return f"{digits(value)} s" if value < 10 else f"{value:,.0f} s"


def cost_table(figures, threads):
    yield ("| triangles = points | degree | leaf size | whole run | peak memory "
           "| per object | page faults | points per second and core | error of the potential "
           "| error of the field |")
    yield "|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|"
    for size in figures.large:
        for figure in [*(figures.best(size, degree) for degree in figures.degrees),
                       figures.direct(size)]:
            fmm = figure["method"] == "fmm"
            how = f"{figure['degree']} | {figure['leaf']}" if fmm else "direct sum | "
            about = "" if figure["share"] == 1 else "about "
            peak = (f"{figure['peak']:.0f} MiB | {2 ** 20 * figure['peak'] / (2 * size):,.0f} bytes"
                    if figure["peak"] else " | ")
            yield (f"| {size:,} | {how} | {about}{seconds_text(figure['whole'])} | {peak} | "
                   f"{figure['faults']:,} | "
                   f"{digits(size / evaluation(figure) / threads)} | "
                   f"{figure['potential error']:.0e} | {figure['field error']:.0e} |")


def stage_table(figures):
    yield ("| triangles = points | degree | input | preparation | FMM setup | FMM apply | start, "
           "table, exit | outside of parallel loops |")
    yield "|--:|--:|--:|--:|--:|--:|--:|--:|"
    for size in figures.large:
        for degree in figures.degrees:
            figure = figures.best(size, degree)
            cells = [f"{part:.3f} s, {100 * part / figure['whole']:.0f} %"
                     for part in stages(figure)]
            yield (f"| {size:,} | {degree} | {' | '.join(cells)} | "
                   f"{100 * figure['serial']:.0f} % |")


def leaf_text(figures):
    for degree in figures.degrees:
        losses = {leaf: figures.loss(degree, leaf) for leaf in figures.leaves}
        leaf = min(losses, key=losses.get)
        good = [str(other) for other in figures.leaves if losses[other] <= 0.15]
        within = f"; within 15 % everywhere: {', '.join(good)}" if good else ""
        worst = max(losses, key=losses.get)
        yield (f"- Degree {degree}: `leafSize: {leaf}`, at most {100 * losses[leaf]:.0f} % above "
               f"the best leaf size of each size{within}. The worst, {worst}, costs up to "
               f"{100 * losses[worst]:.0f} % more than the best.")


def crossing_table(figures):
    def said(number):
        if number is None:
            return f"above {figures.sizes[-1]:,}"
        return f"{digits(number)}" if number else f"below {figures.sizes[0]:,}"

    yield "| degree | whole program | evaluation alone |"
    yield "|--:|--:|--:|"
    for degree in figures.degrees:
        yield (f"| {degree} | {said(figures.crossing(degree, whole))} | "
               f"{said(figures.crossing(degree, evaluation))} |")


def draw_sizes(ax, figures):
    sizes = figures.sizes
    ax.plot(sizes, [figures.direct(size)["whole"] for size in sizes], "k--", label="direct sum")
    for k, degree in enumerate(figures.degrees):
        colour = f"C{k}"
        ax.plot(sizes, [figures.best(size, degree)["whole"] for size in sizes], "o-", ms=3,
                color=colour, label=f"degree {degree}")
        crossing = figures.crossing(degree, whole)
        if crossing:
            ax.axvline(crossing, color=colour, lw=0.8, ls=":")
    ax.set(xscale="log", yscale="log", xlabel="triangles = points", ylabel="whole run [s]",
           title="whole run at the best leaf size; dotted: crossing")
    ax.legend()
    ax.grid(alpha=0.3)


def draw_leaves(ax, figures, degree):
    for k, size in enumerate(figures.large):
        cases = figures.at(size, degree)
        ax.plot([f["leaf"] for f in cases], [1e6 * evaluation(f) / size for f in cases], "o-", ms=3,
                color=f"C{k}", label=f"{size:,} triangles")
    ax.set(xlabel="leaf size", title=f"evaluation against leaf size, degree {degree}")
    ax.grid(alpha=0.3)


def draw_stages(ax, figures):
    labels, parts = [], []
    for size in figures.large:
        for degree in figures.degrees:
            figure = figures.best(size, degree)
            parts.append([100 * part / figure["whole"] for part in stages(figure)])
            labels.append(f"{size:,}, degree {degree}")
    left = [0.0] * len(labels)
    for k, name in enumerate((*STAGES, "start, table, exit")):
        widths = [part[k] for part in parts]
        ax.barh(labels, widths, left=left, label=name)
        left = [a + b for a, b in zip(left, widths)]
    ax.invert_yaxis()
    ax.set(xlabel="share of the whole run [%]", xlim=(0, 100))
    ax.legend(ncols=3, fontsize=7, loc="lower center", bbox_to_anchor=(0.5, 1.0))


def draw(figures, path):
    # Imported here because bench/run must stay small while it measures memory.
    import matplotlib
    matplotlib.use("Agg")  # pictures go to files; no display is needed
    import matplotlib.pyplot as plt

    picture = plt.figure(figsize=(11, 8.5), layout="constrained")
    upper, lower = picture.subfigures(2, 1, height_ratios=(1.15, 1))
    for ax, panel in zip(upper.subplots(1, 2), (draw_sizes, draw_stages)):
        panel(ax, figures)
    leaves = lower.subplots(1, len(figures.degrees), sharey=True, squeeze=False)[0]
    for ax, degree in zip(leaves, figures.degrees):
        draw_leaves(ax, figures, degree)
    leaves[0].set(ylabel="preparation to apply [µs per point]", ylim=(0, None))
    leaves[-1].legend(fontsize=8, loc="lower right")
    # Without version and date, so that equal figures give an equal file.
    picture.savefig(path, dpi=100, metadata={"Software": None})


def replace_block(text, name, lines):
    pattern = re.compile(rf"(<!-- {re.escape(name)} -->\n).*?(<!-- end -->)", re.S)
    if len(pattern.findall(text)) != 1:
        raise OSError(f"the page needs the marker '{name}' once, with an end behind it")
    return pattern.sub(lambda match: match[1] + "\n".join(lines) + "\n" + match[2], text)


def tables(all_figures, machine, threads):
    """The lines of the page's blocks by the names of their markers."""
    figures = Figures(all_figures)
    return {"text: conditions": [machine],
            "table: cost": list(cost_table(figures, threads)),
            "text: leaf sizes": list(leaf_text(figures)),
            "table: crossing": list(crossing_table(figures)),
            "table: stages": list(stage_table(figures))}


def write(all_figures, machine, threads, template, folder):
    """Writes performance.md into the folder, from the template's text, plot and figures beside."""
    (folder / "performance").mkdir(parents=True, exist_ok=True)
    with open(folder / "performance/figures.csv", "w", encoding="ascii", newline="") as file:
        writer = csv.DictWriter(file, all_figures[0].keys(), lineterminator="\n")
        writer.writeheader()
        writer.writerows({key: f"{value:.4g}" if isinstance(value, float) else value
                          for key, value in figure.items()} for figure in all_figures)
    draw(Figures(all_figures), folder / "performance/time.png")
    text = template.read_text(encoding="utf-8")
    for name, lines in tables(all_figures, machine, threads).items():
        text = replace_block(text, name, lines)
    (folder / "performance.md").write_text(text, encoding="utf-8")
