"""Measures trellion-pdf on large PDF files that are made here, and prints a Markdown table.

Time is processor time, user and system, the least of all runs; memory is the largest resident set.
"growth" is the time as a multiple of that at the size before.
"""

import tempfile
from pathlib import Path

import make_pdf
from measuring import Table, Tools, argument_parser, best, list_of, positive, processor, ratio
from polygons import count_polygons

COLUMNS = [
    ("file", 12),
    ("size", 9),
    ("bytes", 11),
    ("after", 11),
    ("polygons", 8),
    ("after", 8),
    ("CPU s", 7),
    ("growth", 6),
    ("peak MB", 8),
]
KINDS = {
    "triangles": make_pdf.triangles,
    "each its own": lambda path, count: make_pdf.triangles(path, count, few=False),
}


def parse_arguments():
    parser = argument_parser("bench/pdf/run --scale", __doc__)
    add = parser.add_argument
    sizes = [10**5, 10**6]
    add("--sizes", type=list_of(positive), default=sizes, help="of meshes, default 100000,1000000")
    add("--runs", type=positive, default=3, help="runs of each (default 3)")
    return parser.parse_args()


class Measurement:
    def __init__(self, arguments, directory):
        self.tools = Tools(arguments.build)
        self.runs = arguments.runs
        self.made = Path(directory) / "made.pdf"
        self.repaired = Path(directory) / "repaired.pdf"
        self.table = Table(COLUMNS)

    def row(self, name, size, make, seconds_before=None):
        """Makes and repairs a file, prints its row, and returns the seconds."""
        make(self.made, size)
        words = [self.tools.build / "trellion-pdf", "-f", self.made, "-o", self.repaired]
        usage = best([self.tools.run(*words) for _ in range(self.runs)])
        both = [self.made, self.repaired]
        self.table.row([name, size, *(file.stat().st_size for file in both),
                        *map(count_polygons, both), f"{usage.seconds:.3f}",
                        ratio(usage.seconds, seconds_before), f"{usage.peak / 1e6:.1f}"])
        return usage.seconds


def main():
    arguments = parse_arguments()
    print(f"{processor()}; the least of {arguments.runs} runs.\n", flush=True)
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        measurement = Measurement(arguments, directory)
        for name, make in KINDS.items():
            seconds = None
            for size in sorted(arguments.sizes):
                seconds = measurement.row(name, size, make, seconds)
        measurement.row("stacked", 20_000, make_pdf.stacked)
        measurement.row("text, pages", 500, make_pdf.text)


if __name__ == "__main__":
    main()
