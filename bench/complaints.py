"""Repairs figures of the kinds that people complain about, and prints a Markdown table.

Each is given to `trellion-batch --auto`; where nothing is kept the cells are empty and the last
column says why. "closed" is what `trellion-pdf --close` makes of PDF, and `trellion-batch --auto -r`
keeps of EPS. Polygons are those that trellion-batch found. "draw s" is processor time, user and
system, the least of all runs, to draw the figure at 144 dpi, anti-aliased: EPS by Ghostscript, PDF by
pdftoppm. "hairlines" are the pixels that trellion-batch counts as such in the drawings at 144 dpi of
Ghostscript and poppler (cairo) together.
"""

import argparse
import csv
import os
import shutil
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from drawing import draw
from measuring import ENVIRONMENT, Table, Tools, best, fail, positive, processor, repaired_path
from pages import DPI, GHOSTSCRIPT, SMOOTH, hairlines

# By form, the scripts that draw, and of what they draw the figures to be shown.
SCRIPTS = {
    "pdf": ["with_matplotlib.py", "more_matplotlib.py", "with_r.R", "more_r.R", "with_gnuplot.gp",
            "with_octave.m", "more_octave.m", "with_gmt.sh", "with_plplot.py", "more_others.sh"],
    "eps": ["with_matplotlib.py", "more_matplotlib.py", "with_r.R", "more_r.R", "with_gnuplot.gp",
            "more_gnuplot.gp", "with_octave.m", "more_octave.m", "with_gmt.sh", "more_others.sh"],
}
FIGURES = {
    "few-mpl-tripcolor.pdf": "Matplotlib: tripcolor, 8 colours",
    "few-mpl-tripcolor.eps": "Matplotlib: tripcolor, 8 colours",
    "each-mpl-tripcolor.pdf": "Matplotlib: tripcolor, viridis",
    "few-mpl-bent.pdf": "Matplotlib: pcolormesh, 8 colours",
    "few-mpl-bent.eps": "Matplotlib: pcolormesh, 8 colours",
    "more-mpl-large.pdf": "Matplotlib: pcolormesh, 300 by 300",
    "more-mpl-large.eps": "Matplotlib: pcolormesh, 300 by 300",
    "few-mpl-edges.pdf": "Matplotlib: pcolormesh, edgecolor=\"face\"",
    "rest-mpl-alpha.pdf": "Matplotlib: pcolormesh, alpha=0.5",
    "each-mpl-bent.pdf": "Matplotlib: pcolormesh, viridis",
    "rest-mpl-contourf.pdf": "Matplotlib: contourf, 8 levels",
    "more-mpl-contourf40.pdf": "Matplotlib: contourf, 40 levels",
    "more-mpl-contourf40.eps": "Matplotlib: contourf, 40 levels",
    "more-mpl-tricontourf.pdf": "Matplotlib: tricontourf, 8 levels",
    "few-mpl-trisurf.pdf": "Matplotlib: plot_trisurf",
    "few-mpl-surface.pdf": "Matplotlib: plot_surface",
    "more-mpl-glass.pdf": "Matplotlib: plot_surface, alpha=0.5",
    "more-mpl-hist2d.pdf": "Matplotlib: hist2d",
    "more-mpl-hexbin.pdf": "Matplotlib: hexbin",
    "more-mpl-scatter.pdf": "Matplotlib: scatter, 100,000 points",
    "few-r-image.pdf": "R: image()",
    "few-r-image.eps": "R: image()",
    "few-r-filled.pdf": "R: filled.contour()",
    "few-r-filled.eps": "R: filled.contour()",
    "few-r-persp.pdf": "R: persp()",
    "few-r-persp.eps": "R: persp()",
    "few-r-polygons.pdf": "R: polygon(), a mesh of triangles",
    "more-r-levelplot.pdf": "R lattice: levelplot()",
    "more-r-wireframe.pdf": "R lattice: wireframe(drape)",
    "more-r-imageplot.pdf": "R fields: image.plot()",
    "more-r-polyimage.pdf": "R fields: poly.image()",
    "more-r-tile.pdf": "R ggplot2: geom_tile()",
    "more-r-filled.pdf": "R ggplot2: geom_contour_filled()",
    "few-gnuplot-surface.pdf": "gnuplot pdfcairo: splot with pm3d",
    "few-gnuplot-surface.eps": "gnuplot epscairo: splot with pm3d",
    "more-gnuplot-ps-surface.eps": "gnuplot postscript: splot with pm3d",
    "few-gnuplot-map.pdf": "gnuplot pdfcairo: pm3d map",
    "more-gnuplot-ps-map.eps": "gnuplot postscript: pm3d map",
    "few-octave-surface.pdf": "Octave: surf, shading flat",
    "few-octave-surface.eps": "Octave: surf, shading flat",
    "more-octave-interp.eps": "Octave: surf, shading interp",
    "few-octave-pcolor.pdf": "Octave: pcolor",
    "few-octave-pcolor.eps": "Octave: pcolor",
    "more-octave-contourf.pdf": "Octave: contourf",
    "more-octave-contourf.eps": "Octave: contourf",
    "few-gmt-contour.pdf": "GMT: pscontour -I",
    "few-gmt-contour.eps": "GMT: pscontour -I",
    "few-gmt-view.pdf": "GMT: grdview -Qs",
    "few-gmt-tiles.pdf": "GMT: grdview -T",
    "few-plplot-shades.pdf": "PLplot: plshades",
    "more-asymptote.eps": "Asymptote: fill, a mesh of triangles",
    "more-metapost.eps": "MetaPost: fill, a mesh of triangles",
    "more-gdl-contour.eps": "GDL: contour, /fill",
    "more-gdl-surface.eps": "GDL: shade_surf",
    "more-pgfplots.pdf": "pgfplots: surf, shader=flat",
}
COLUMNS = [
    ("program and function", 42),
    ("form", 4),
    ("kB", 6),
    ("after", 6),
    ("closed", 6),
    ("polygons", 8),
    ("after", 6),
    ("draw s", 6),
    ("after", 5),
    ("hairlines", 9),
    ("after", 7),
    ("closed", 7),
    ("result", 7),
]


def parse_arguments():
    parser = argparse.ArgumentParser(prog="bench/complaints", description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    add = parser.add_argument
    add("only", nargs="*", metavar="TEXT", help="figures with such a text in program and function")
    add("--runs", type=positive, default=3, help="runs of each drawing that is timed (default 3)")
    jobs = "figures measured at a time (default: the cores)"
    add("--jobs", type=positive, default=os.cpu_count(), help=jobs)
    add("--keep", type=Path, metavar="DIR", help="keep the figures and all results in DIR")
    return parser.parse_args()


class Measurement:
    def __init__(self, arguments, directory):
        self.tools = Tools(arguments.build)
        self.runs = arguments.runs
        self.directory = directory

    def repair(self, figures, directory, *options):
        """Repairs copies of the figures in a directory; returns their results and the rows of the
        report, by figure."""
        directory.mkdir(exist_ok=True)
        copies = [shutil.copy(figure, directory) for figure in figures]
        report = directory / "report.tsv"
        words = [self.tools.build / "trellion-batch", "--auto", "-fq", "--report", report]
        words += [*options, *copies]
        subprocess.run(words, env=ENVIRONMENT, stdout=subprocess.DEVNULL, check=False)
        with open(report, encoding="utf-8", newline="") as file:
            rows = list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))
        found = {Path(row["file"]).name: row for row in rows}
        if set(found) != {figure.name for figure in figures}:
            fail("the report of trellion-batch has not all figures")
        return {figure: (repaired_path(directory / figure), row) for figure, row in found.items()}

    def join(self, figures):
        """Joins the figures, and closes those of EPS; those of PDF are closed one by one."""
        eps = [figure for figure in figures if figure.suffix == ".eps"]
        if eps:
            self.repair(eps, self.directory / "closed", "-r")
        return self.repair(figures, self.directory / "joined")

    def close(self, figure):
        """What closing makes of a figure; of EPS perhaps a file that is not there."""
        made = repaired_path(self.directory / "closed" / figure.name)
        if figure.suffix == ".pdf":
            made.parent.mkdir(exist_ok=True)
            self.tools.run(self.tools.build / "trellion-pdf", "--close", "-f", "-o", made, figure)
        return made

    def seconds_to_draw(self, figure):
        if figure.suffix == ".pdf":
            words = ["pdftoppm", "-r", DPI, figure]
        else:
            words = [*GHOSTSCRIPT, "-sDEVICE=ppmraw", f"-r{DPI}", *SMOOTH,
                     "-sOutputFile=/dev/null", figure]
        return f"{best([self.tools.run(*words) for _ in range(self.runs)]).seconds:.2f}"

    def hairlines(self, figure):
        count = hairlines(self.tools.build, figure, with_mupdf=False)
        return "x" if count is None else f"{count:,}"

    def row(self, figure, after, report):
        """The cells of a figure, given what joining has made of it."""
        def each(measure, *files):
            return [measure(file) if file.exists() else "" for file in files]

        closed = self.close(figure)
        sizes = each(kilobytes, figure, after, closed)
        seconds = each(self.seconds_to_draw, figure, after)
        lines = each(self.hairlines, figure, after, closed)
        polygons, left = (grouped(report[f"polygons_{when}"]) for when in ("before", "after"))
        written = report["result"] == "written"
        reason = report["reason"].removesuffix("; no other way was better")
        result = "written" if written else f"{report['result']}: {reason}"
        return [FIGURES[figure.name], figure.suffix[1:].upper(), *sizes, polygons,
                left if written else "", *seconds, *lines, result]


def kilobytes(figure):
    return f"{figure.stat().st_size / 1000:,.0f}"


def grouped(number):
    return f"{int(number):,}" if number else ""


def drawn_figures(directory, only):
    """Those to be shown, in their order."""
    wanted = [name for name, title in FIGURES.items() if not only or any(o in title for o in only)]
    figures = {}
    for form, scripts in SCRIPTS.items():
        if any(name.endswith(form) for name in wanted):
            at = directory / form
            at.mkdir(exist_ok=True)
            figures.update({figure.name: figure for figure in draw(at, scripts, form)})
    missing = [name for name in wanted if name not in figures]
    if missing:
        fail(f"not drawn: {' '.join(missing)}")
    return [figures[name] for name in wanted]


def main():
    arguments = parse_arguments()
    with tempfile.TemporaryDirectory(prefix="bench") as scratch:
        directory = (arguments.keep or Path(scratch)).resolve()
        directory.mkdir(parents=True, exist_ok=True)
        figures = drawn_figures(directory, arguments.only)
        measurement = Measurement(arguments, directory)
        joined = measurement.join(figures)
        print(f"{processor()}; the least of {arguments.runs} runs.\n", flush=True)
        table = Table(COLUMNS)
        with ThreadPoolExecutor(arguments.jobs) as pool:
            rows = [pool.submit(measurement.row, figure, *joined[figure.name]) for figure in figures]
            for row in rows:
                table.row(row.result())


if __name__ == "__main__":
    main()
