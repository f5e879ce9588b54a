"""Measures how long Ghostscript takes to draw figures before and after repair, as a Markdown table.

Time is processor time, user and system, the least of all runs; drawn at 144 dpi, anti-aliased. The
hairlines are the pixels that trellion-batch counts in such drawings: of the figure, of what joining
makes of it, and of what -r does; none where it withholds the result.
"""

import csv
import shutil
import subprocess
import tempfile
from pathlib import Path

from measuring import (ENVIRONMENT, Table, Tools, add_mesh_options, argument_parser, best, fail,
                       processor, repaired_path)

EXAMPLE = Path(__file__).resolve().parent.parent / "examples" / "surface.eps"
SURFACES = "contour tri rows".split()
COLUMNS = [
    ("figure", 8),
    ("polygons", 9),
    ("after", 9),
    ("MB", 6),
    ("after", 6),
    ("repair s", 8),
    ("draw s", 7),
    ("after s", 7),
    ("hairlines", 9),
    ("after", 6),
    ("with -r", 7),
]


def parse_arguments():
    parser = argument_parser("bench/render", __doc__)
    add_mesh_options(parser, sizes=[10**5, 10**6], families=SURFACES, runs=3)
    return parser.parse_args()


class Measurement:
    def __init__(self, arguments, directory):
        self.tools = Tools(arguments.build)
        self.runs = arguments.runs
        self.figure = Path(directory) / "figure.eps"

    def seconds_to_draw(self, eps):
        gs = ["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dEPSCrop", "-sDEVICE=ppmraw", "-r144",
              "-dGraphicsAlphaBits=4", "-dTextAlphaBits=4", "-sOutputFile=/dev/null", eps]
        return best([self.tools.run(*gs) for _ in range(self.runs)]).seconds

    def hairlines(self, *options):
        """Before and after a repair, in the words of trellion-batch's report."""
        report = self.figure.with_name("report.tsv")
        words = [self.tools.build / "trellion-batch", "-fq", *options, "--report", report]
        subprocess.run([*words, self.figure], env=ENVIRONMENT, stdout=subprocess.DEVNULL,
                       check=False)
        with open(report, encoding="utf-8", newline="") as file:
            row = next(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))
        if row["result"] == "FAILED":
            fail(f"trellion-batch: {row['reason']}")
        return row["hairlines_gs_before"] or "-", row["hairlines_gs_after"] or "-"

    def row(self, name):
        repairs = [self.tools.repair(self.tools.trellion, self.figure) for _ in range(self.runs)]
        both = [self.figure, repaired_path(self.figure)]
        cells = [name, *map(self.tools.count_polygons, both),
                 *(f"{eps.stat().st_size / 1e6:.2f}" for eps in both), f"{best(repairs).seconds:.2f}",
                 *(f"{self.seconds_to_draw(eps):.2f}" for eps in both)]
        return [*cells, *self.hairlines(), self.hairlines("-r")[1]]


def main():
    arguments = parse_arguments()
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        measurement = Measurement(arguments, directory)
        print(f"{processor()}; the least of {arguments.runs} runs.\n", flush=True)
        table = Table(COLUMNS)
        shutil.copy(EXAMPLE, measurement.figure)
        table.row(measurement.row("example"))
        for family in arguments.families:
            for size in arguments.sizes:
                measurement.tools.make_mesh(family, size, measurement.figure)
                table.row(measurement.row(family))


if __name__ == "__main__":
    main()
