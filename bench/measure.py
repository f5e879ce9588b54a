"""Measures trellion on generated meshes of growing size and prints a Markdown table.

Time is processor time, user and system, the least of all runs; memory is the largest resident set.
Nothing is subtracted. "growth" is the time as a multiple of that at the size before.
"""

import argparse
import shutil
import tempfile
from pathlib import Path

from measuring import (
    InstructionCounter,
    Stopped,
    Table,
    Tools,
    best,
    fail,
    list_of,
    positive,
    processor,
    ratio,
    repaired_path,
)

FAMILIES = "contour tri rows one mixed shuffle isolated gear bumps book numbers text".split()
COLUMNS = [
    ("family", 8),
    ("polygons", 8),
    ("bytes", 9),
    ("before", 8),
    ("after", 8),
    ("CPU s", 8),
    ("growth", 6),
    ("wc -w s", 8),
    ("CPU / wc", 8),
    ("peak MB", 8),
    ("peak / input", 12),
]


def parse_arguments():
    parser = argparse.ArgumentParser(prog="bench/run", description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    add = parser.add_argument
    sizes = [10**4, 10**5, 10**6]
    add("--sizes", type=list_of(positive), default=sizes, help="default 10000,100000,1000000")
    families = "some of " + ", ".join(FAMILIES)
    add("--families", type=list_of(str), default=FAMILIES, help=families)
    add("--runs", type=positive, default=3, help="runs of each (default 3)")
    add("--seed", type=positive, default=1, help="seed of the meshes (default 1)")
    add("--long", action="store_true", help="moveto lineto closepath fill for operators")
    add("--program", type=Path, help="measure this program instead")
    stop = "stop a run, and leave out larger sizes, after so much time"
    add("--limit", type=positive, default=0, metavar="SECONDS", help=stop)
    counting = "count instructions too (without hardware counters: slowly)"
    add("--instructions", action="store_true", help=counting)
    arguments = parser.parse_args()
    unknown = [name for name in arguments.families if name not in FAMILIES]
    if unknown:
        parser.error("no such family: " + ", ".join(unknown))
    return arguments


class Benchmark:
    def __init__(self, arguments, directory):
        self.tools = Tools(arguments.build, arguments.long, arguments.limit, arguments.seed)
        self.program = arguments.program.resolve() if arguments.program else self.tools.trellion
        if shutil.which(self.program) is None:
            fail(f"{self.program} is no program")
        self.runs = arguments.runs
        self.input = Path(directory) / "mesh.eps"
        self.counter = InstructionCounter() if arguments.instructions else None

    def introduce(self):
        idle = best([self.tools.run("true") for _ in range(self.runs)])
        print(f"{processor()}; {self.runs} runs of each, locale C, seed {self.tools.seed}.")
        print(f"A program that does nothing: {idle.seconds:.4f} s, {idle.peak / 1e6:.2f} MB.")
        if self.counter:
            print(f"Instructions counted with {self.counter.name}.")
        print(flush=True)

    def measure_alternately(self):
        """The program and wc by turns, so that a slow moment of the machine meets both."""
        repairs, counts = [], []
        for _ in range(self.runs):
            repairs.append(self.tools.repair(self.program, self.input))
            counts.append(self.tools.run("wc", "-w", self.input))
        return best(repairs), best(counts)

    def row(self, family, size, time_before):
        """The cells of one row, and the time measured. Raises Stopped."""
        usage, wc = self.measure_alternately()
        input_size = self.input.stat().st_size
        cells = [
            family,
            size,
            input_size,
            self.tools.count_polygons(self.input),
            self.tools.count_polygons(repaired_path(self.input)),
            f"{usage.seconds:.4f}",
            ratio(usage.seconds, time_before),
            f"{wc.seconds:.4f}",
            ratio(usage.seconds, wc.seconds),
            f"{usage.peak / 1e6:.2f}",
            ratio(usage.peak, input_size),
        ]
        if self.counter:
            cells.append(self.counter.count([self.program, self.input]))
        return cells, usage.seconds

    def stopped_row(self, family, size):
        cells = [family, size, self.input.stat().st_size, self.tools.count_polygons(self.input)]
        cells += ["-", f"> {self.tools.limit}"]
        return cells + ["-"] * (len(COLUMNS) + bool(self.counter) - len(cells))

    def measure_family(self, family, sizes, table):
        time_before = None
        for size in sizes:
            self.tools.make_mesh(family, size, self.input)
            try:
                cells, time_before = self.row(family, size, time_before)
            except Stopped:
                table.row(self.stopped_row(family, size))
                return
            table.row(cells)


def main():
    arguments = parse_arguments()
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        benchmark = Benchmark(arguments, directory)
        benchmark.introduce()
        table = Table(COLUMNS + [("instructions", 14)] * arguments.instructions)
        for family in arguments.families:
            benchmark.measure_family(family, sorted(arguments.sizes), table)


if __name__ == "__main__":
    main()
