"""Compares what programs make of PDF figures, and prints a Markdown table.

"share" is of the bytes as drawn. Polygons are filled subpaths. Time is processor time, user and
system, the least of all runs: "repair s" of the program, "poppler s" and "pdf.js s" to draw the
result at 144 dpi (pdf.js: time on the clock). "hairlines" are the pixels that
trellion-batch would count at 144 dpi, of poppler (cairo), Ghostscript and MuPDF together. "wrong"
are pixels that differ from the figure as drawn, with all eight around them, where poppler draws
each by its centre, at 288 dpi; x when the pages are not as many or as large. At the end the sums of the
figures of few colours, of those with one for every cell, and of the rest.
"""

import subprocess
import tempfile
from pathlib import Path

from drawing import draw
from measuring import Table, Tools, argument_parser, best, positive, processor
from pages import cairo_pages, count_pixels, hairlines
from polygons import count_polygons

HERE = Path(__file__).resolve().parent
COLUMNS = [
    ("figure", 20),
    ("program", 15),
    ("bytes", 10),
    ("share", 6),
    ("polygons", 8),
    ("repair s", 8),
    ("poppler s", 9),
    ("pdf.js s", 8),
    ("hairlines", 9),
    ("wrong", 6),
]
SCRIPTS = ["with_matplotlib.py", "with_cairo.py", "with_reportlab.py", "with_plplot.py", "with_r.R",
           "with_gnuplot.gp", "with_octave.m", "with_gmt.sh", "with_others.sh"]
KINDS = {"few": "few colours", "each": "each its own", "rest": "the rest"}


def parse_arguments():
    parser = argument_parser("bench/pdf/run", __doc__)
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
    return sorted(draw(directory, SCRIPTS), key=lambda pdf: (order(pdf), pdf.name))


def order(figure):
    return list(KINDS).index(kind_of(figure))


def kind_of(figure):
    kind = figure.name.split("-")[0]
    return kind if kind in KINDS else "rest"


class Comparison:
    def __init__(self, arguments, directory):
        self.tools = Tools(arguments.build)
        self.runs = arguments.runs
        self.pdfjs = arguments.pdfjs
        self.directory = directory
        self.programs = programs(self.tools.build / "trellion-pdf")

    def wrong(self, figure, made):
        with tempfile.TemporaryDirectory(prefix="bench") as directory:
            pages = [cairo_pages(pdf, 288, Path(directory) / name, "-antialias", "none")
                     for name, pdf in (("a", figure), ("b", made))]
            return count_pixels(self.tools.build, "surrounded", *pages)

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
                self.seconds_in_pdfjs(made), hairlines(self.tools.build, made, with_mupdf=True),
                self.wrong(figure, made)]


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
