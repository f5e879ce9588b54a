"""Compares what programs make of PDF figures, and prints a Markdown table.

"share" is of the bytes as drawn. Polygons are filled subpaths. Time is processor time, user and
system, the least of all runs: "repair s" of the program, "poppler s" and "pdf.js s" to draw the
result at 144 dpi (pdf.js: time on the clock). "hairlines" are the pixels that
trellion-batch would count at 144 dpi, of poppler (cairo), Ghostscript and MuPDF together. "wrong"
are pixels that differ from the figure as drawn, with all eight around them, where poppler draws
each by its centre, at 288 dpi; x when the pages are not as many or as large. At the end the sums of the
figures of few colours, of those with one for every cell, and of the rest.
"""

import argparse
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from measuring import ENVIRONMENT, Table, Tools, best, fail, positive, processor
from polygons import count_polygons

HERE = Path(__file__).resolve().parent
COLUMNS = [
    ("figure", 20),
    ("program", 15),
    ("bytes", 8),
    ("share", 6),
    ("polygons", 8),
    ("repair s", 8),
    ("poppler s", 9),
    ("pdf.js s", 8),
    ("hairlines", 9),
    ("wrong", 6),
]
KINDS = {"few": "few colours", "each": "each its own", "rest": "the rest"}


def parse_arguments():
    parser = argparse.ArgumentParser(prog="bench/pdf/run", description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    add = parser.add_argument
    add("figures", nargs="*", type=Path, help="these PDF files instead of those drawn here")
    add("--sums", action="store_true", help="print the sums alone")
    add("--runs", type=positive, default=1, help="runs of each (default 1)")
    add("--keep", type=Path, metavar="DIR", help="keep the figures and all results in DIR")
    pdfjs = "where node_modules has pdfjs-dist and @napi-rs/canvas: time pdf.js too"
    add("--pdfjs", type=Path, metavar="DIR", help=pdfjs)
    return parser.parse_args()


def programs(trellion_pdf):
    """The words of each, a result's name to follow."""
    ghostscript = ["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite"]
    return {
        "as drawn": lambda figure, made: ["cp", figure, made],
        "qpdf": lambda figure, made: ["qpdf", "--object-streams=generate", "--recompress-flate",
                                      "--compression-level=9", figure, made],
        "mutool": lambda figure, made: ["mutool", "clean", "-gggg", "-z", figure, made],
        "Ghostscript": lambda figure, made: [*ghostscript, f"-sOutputFile={made}", figure],
        "pdftocairo": lambda figure, made: ["pdftocairo", "-q", "-pdf", figure, made],
        "trellion-pdf": lambda figure, made: [trellion_pdf, figure, "-o", made],
        "  --no-reorder": lambda figure, made: [trellion_pdf, "--no-reorder", figure, "-o", made],
        "  --close": lambda figure, made: [trellion_pdf, "--close", figure, "-o", made],
    }


def draw_figures(directory):
    """Draws all figures by the scripts; what a program says is shown when it fails."""
    scripts = HERE / "figures"
    python = ["/usr/bin/python3", "-B"]  # the one for which Debian has the libraries
    octave = ["xvfb-run", "-a", "octave", "--no-gui", "--no-init-file", "--no-history"]
    for words in (
        [*python, scripts / "with_matplotlib.py"],
        [*python, scripts / "with_cairo.py"],
        [*python, scripts / "with_reportlab.py"],
        [*python, scripts / "with_plplot.py"],
        ["Rscript", "--vanilla", scripts / "with_r.R"],
        ["gnuplot", "-c", scripts / "with_gnuplot.gp"],
        [*octave, scripts / "with_octave.m"],
        ["bash", scripts / "with_gmt.sh"],
        ["bash", scripts / "with_others.sh"],
    ):
        done = subprocess.run([*words, directory], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env={**ENVIRONMENT, "MPLCONFIGDIR": str(directory / ".cache")},
                              check=False)
        if done.returncode != 0:
            sys.stderr.buffer.write(done.stdout)
            fail(f"{words[-1].name} has failed")
    shutil.rmtree(directory / ".cache", ignore_errors=True)
    return sorted(directory.glob("*.pdf"), key=lambda pdf: (order(pdf), pdf.name))


def order(figure):
    return list(KINDS).index(kind_of(figure))


def kind_of(figure):
    kind = figure.name.split("-")[0]
    return kind if kind in KINDS else "rest"


def draw_pages(words, prefix):
    """Runs a program that draws pages to files of a prefix, and returns them in their order."""
    subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return sorted(prefix.parent.glob(prefix.name + "*"))


def cairo_pages(pdf, dpi, prefix, *options):
    return draw_pages(["pdftocairo", "-png", "-r", str(dpi), *options, pdf, prefix], prefix)


def ghostscript_pages(pdf, prefix, *options):
    return draw_pages(["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=ppmraw", "-r144",
                       *options, f"-sOutputFile={prefix}-%04d.ppm", pdf], prefix)


def mupdf_pages(pdf, prefix, bits):
    return draw_pages(["mutool", "draw", "-q", "-r", "144", "-A", str(bits), "-o",
                       f"{prefix}-%04d.ppm", pdf], prefix)


class Comparison:
    def __init__(self, arguments, directory):
        self.tools = Tools(arguments.build)
        self.runs = arguments.runs
        self.pdfjs = arguments.pdfjs
        self.directory = directory
        self.programs = programs(self.tools.build / "trellion-pdf")

    def count_pixels(self, what, first, second):
        """Over all pages; nothing when they are not as many, or differ in their sizes."""
        if len(first) != len(second) or not first:
            return None
        total = 0
        for pages in zip(first, second):
            done = subprocess.run([self.tools.build / "bench/pictures", what, *pages],
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
            if done.returncode != 0:
                return None
            total += int(done.stdout)
        return total

    def hairlines(self, pdf):
        with tempfile.TemporaryDirectory(prefix="bench") as directory:
            at = Path(directory)
            smooth = ["-dGraphicsAlphaBits=4", "-dTextAlphaBits=4"]
            counts = [
                self.count_pixels("hairlines", cairo_pages(pdf, 144, at / "a"),
                                  cairo_pages(pdf, 144, at / "b", "-antialias", "none")),
                self.count_pixels("hairlines", ghostscript_pages(pdf, at / "c", *smooth),
                                  ghostscript_pages(pdf, at / "d")),
                self.count_pixels("hairlines", mupdf_pages(pdf, at / "e", 8),
                                  mupdf_pages(pdf, at / "f", 0)),
            ]
        return None if None in counts else sum(counts)

    def wrong(self, figure, made):
        with tempfile.TemporaryDirectory(prefix="bench") as directory:
            pages = [cairo_pages(pdf, 288, Path(directory) / name, "-antialias", "none")
                     for name, pdf in (("a", figure), ("b", made))]
            return self.count_pixels("surrounded", *pages)

    def seconds_in_pdfjs(self, pdf):
        if self.pdfjs is None:
            return None
        # Three times at least: its code is compiled while it draws the first.
        words = ["node", HERE / "draw.mjs", self.pdfjs, *[pdf] * max(3, self.runs)]
        done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        times = done.stdout.split()
        return min(map(int, times)) / 1000 if times else None

    def measure(self, figure, program):
        """The numbers of a row: bytes, polygons, the seconds, hairlines and wrong pixels."""
        made = self.directory / program.strip(" -").replace(" ", "-") / figure.name
        made.parent.mkdir(exist_ok=True)
        repairs = []
        for _ in range(self.runs):
            made.unlink(missing_ok=True)
            repairs.append(self.tools.run(*self.programs[program](figure, made)))
        drawing = best([self.tools.run("pdftoppm", "-r", "144", made) for _ in range(self.runs)])
        return [made.stat().st_size, count_polygons(made), best(repairs).seconds, drawing.seconds,
                self.seconds_in_pdfjs(made), self.hairlines(made), self.wrong(figure, made)]


def cells(numbers, drawn):
    """A row's cells; `drawn` are the numbers of the figure as drawn."""
    size, polygons, repair, poppler, pdfjs, hairlines, wrong = numbers
    seconds = ["-" if value is None else f"{value:.2f}" for value in (repair, poppler, pdfjs)]
    counts = ["x" if value is None else value for value in (hairlines, wrong)]
    return [size, f"{size / drawn[0]:.3f}", polygons, *seconds, *counts]


def add_up(rows):
    return [None if None in column else sum(column) for column in zip(*rows)]


def main():
    arguments = parse_arguments()
    with tempfile.TemporaryDirectory(prefix="bench") as scratch:
        directory = arguments.keep or Path(scratch)
        drawn = directory / "figures"
        drawn.mkdir(parents=True, exist_ok=True)
        figures = arguments.figures or draw_figures(drawn.resolve())
        comparison = Comparison(arguments, directory)
        print(f"{processor()}; {arguments.runs} runs of each.\n", flush=True)
        table = Table(COLUMNS)
        rows = {}
        for figure in figures:
            for program in comparison.programs:
                numbers = comparison.measure(figure, program)
                rows[figure, program] = numbers
                if not arguments.sums:
                    table.row([figure.stem, program, *cells(numbers, rows[figure, "as drawn"])])
        groups = {name: [f for f in figures if kind_of(f) == kind] for kind, name in KINDS.items()}
        for name, group in {**groups, "all": figures}.items():
            sums = {program: add_up([rows[figure, program] for figure in group])
                    for program in comparison.programs if group}
            for program, numbers in sums.items():
                table.row([f"{name} ({len(group)})", program, *cells(numbers, sums["as drawn"])])


if __name__ == "__main__":
    main()
