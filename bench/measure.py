"""Measures trellion on generated meshes of growing size and prints a Markdown table.

Time is processor time, user and system, the least of all runs; memory is the largest resident set.
Nothing is subtracted. "growth" is the time as a multiple of that at the size before. What no longer
fits into the caches of the machine takes part in it, and none in "growth of instructions".
"""

import shutil
import tempfile
from pathlib import Path
from typing import NamedTuple

from measuring import (FAMILIES, InstructionCounter, Stopped, Table, Tools, add_limit_option,
                       add_mesh_options, add_seed_option, argument_parser, best, fail, processor,
                       ratio, repaired_path, write_into)

COLUMNS = [
    ("family", 8),
    ("polygons", 9),
    ("bytes", 11),
    ("before", 9),
    ("after", 9),
    ("CPU s", 8),
    ("growth", 6),
    ("wc -w s", 8),
    ("CPU / wc", 8),
    ("peak MB", 8),
    ("peak / input", 12),
]
COUNTED = [
    ("instructions", 14),
    ("growth of instructions", 22),
]


def parse_arguments():
    parser = argument_parser("bench/run", __doc__)
    add = parser.add_argument
    add_mesh_options(parser, sizes=[10**4, 10**5, 10**6], families=FAMILIES, runs=3)
    add_seed_option(parser)
    add("--long", action="store_true", help="moveto lineto closepath fill for operators")
    add("--program", type=Path, help="measure this program instead")
    add_limit_option(parser, "a run, and leave out larger sizes,")
    counting = "count instructions too (without hardware counters: slowly)"
    add("--instructions", action="store_true", help=counting)
    writing = "put the table, of the largest size of each family, into doc/details.md as well"
    add("--write", action="store_true", help=writing)
    return parser.parse_args()


class Effort(NamedTuple):
    seconds: float
    instructions: int


class Benchmark:
    def __init__(self, arguments, directory):
        self.tools = Tools(arguments.build, arguments.long, arguments.limit, arguments.seed)
        self.program = arguments.program.resolve() if arguments.program else self.tools.trellion
        if shutil.which(self.program) is None:
            fail(f"{self.program} is no program")
        self.runs = arguments.runs
        self.input = Path(directory) / "mesh.eps"
        self.counter = InstructionCounter() if arguments.instructions else None
        self.columns = COLUMNS + COUNTED if self.counter else COLUMNS

    def introduction(self):
        """How it is measured, in lines of a document."""
        idle = best([self.tools.run("true") for _ in range(self.runs)])
        lines = [f"{processor()}; {self.runs} runs of each, seed {self.tools.seed}.",
                 "The locale is C, of trellion as of `wc -w`.",
                 f"A program that does nothing: {idle.seconds:.4f} s, {idle.peak / 1e6:.2f} MB."]
        if self.counter:
            lines.append(f"Instructions counted with {self.counter.name}.")
        return lines + [""]

    def measure_alternately(self):
        """The program and wc by turns, so that a slow moment of the machine meets both."""
        repairs, counts = [], []
        for _ in range(self.runs):
            repairs.append(self.tools.repair(self.program, self.input))
            counts.append(self.tools.run("wc", "-w", self.input))
        return best(repairs), best(counts)

    def row(self, family, size, before):
        """The cells of one row, and what grows: seconds and instructions. Raises Stopped."""
        usage, wc = self.measure_alternately()
        input_size = self.input.stat().st_size
        cells = [
            family,
            size,
            input_size,
            self.tools.count_polygons(self.input),
            self.tools.count_polygons(repaired_path(self.input)),
            f"{usage.seconds:.4f}",
            ratio(usage.seconds, before.seconds),
            f"{wc.seconds:.4f}",
            ratio(usage.seconds, wc.seconds),
            f"{usage.peak / 1e6:.2f}",
            ratio(usage.peak, input_size),
        ]
        count = self.counter.count([self.program, self.input]) if self.counter else 0
        if self.counter:
            cells += [count, ratio(count, before.instructions)]
        return cells, Effort(usage.seconds, count)

    def stopped_row(self, family, size):
        cells = [family, size, self.input.stat().st_size, self.tools.count_polygons(self.input)]
        cells += ["-", f"> {self.tools.limit}"]
        return cells + ["-"] * (len(self.columns) - len(cells))

    def measure_family(self, family, sizes, table):
        """Prints the rows of a family, and returns the last."""
        effort = Effort(0, 0)
        for size in sizes:
            self.tools.make_mesh(family, size, self.input)
            try:
                cells, effort = self.row(family, size, effort)
            except Stopped:
                return table.row(self.stopped_row(family, size))
            line = table.row(cells)
        return line


def main():
    arguments = parse_arguments()
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        benchmark = Benchmark(arguments, directory)
        introduction = benchmark.introduction()
        print("\n".join(introduction), flush=True)
        table = Table(benchmark.columns)
        largest = [benchmark.measure_family(family, sorted(arguments.sizes), table)
                   for family in arguments.families]
    if arguments.write:
        write_into("details.md", "bench/run", introduction + table.head + largest)


if __name__ == "__main__":
    main()
