"""Compares trellion with that of another commit on generated meshes, as a Markdown table.

The two run by turns, so that a slow moment of the machine meets both. Time is processor time, user
and system, the least of all runs; memory is the largest resident set. The results are compared in
every run, without the minute that stands in them; what the two say on the console is compared once,
without the seconds. The exit status is 1 when any of it differs.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from measuring import (ENVIRONMENT, FAMILIES, TOP, Stopped, Table, Tools, add_limit_option,
                       add_mesh_options, add_seed_option, argument_parser, best, fail, processor,
                       ratio, repaired_path)

# The parts of the build that are not compared.
LEFT_OUT = re.compile(r"^option\((TRELLION_(?:COMPANIONS|TESTS))\b", re.MULTILINE)
MINUTE = re.compile(rb"^(%%Processed by .*) at \d\d:\d\d on \d\d/\d\d/\d{4}$", re.MULTILINE)
SECONDS = re.compile(rb"^Processing completed in .*$", re.MULTILINE)
COLUMNS = [
    ("family", 8),
    ("polygons", 9),
    ("CPU s then", 10),
    ("now", 8),
    ("now / then", 10),
    ("peak MB then", 12),
    ("now", 8),
    ("peak / input", 12),
    ("result", 10),
]


def parse_arguments():
    parser = argument_parser("bench/against", __doc__)
    add = parser.add_argument
    add("commit", metavar="COMMIT", help="the commit to compare with")
    add_mesh_options(parser, sizes=[10**5, 10**6], families=FAMILIES, runs=5)
    add_seed_option(parser)
    add_limit_option(parser, "a run")
    return parser.parse_args()


def output_of(*words):
    done = subprocess.run(words, cwd=TOP, stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        fail(f"{words[0]} has failed")
    return done.stdout


def build(commit):
    """The commit's name, and its program, released as today's is. It stays in build/against."""
    name = output_of("git", "rev-parse", "--verify", f"{commit}^{{commit}}").decode().strip()
    directory = TOP / "build/against" / name
    program = directory / "build/trellion"
    if program.exists():
        return name, program
    shutil.rmtree(directory / "source", ignore_errors=True)
    source = directory / "source"
    source.mkdir(parents=True)
    archive = directory / "source.tar"
    output_of("git", "archive", "-o", archive, name)
    output_of("tar", "-xmf", archive, "-C", source)
    archive.unlink()

    names = LEFT_OUT.findall((source / "CMakeLists.txt").read_text(encoding="utf-8"))
    output_of("cmake", "-S", source, "-B", program.parent, "-DCMAKE_BUILD_TYPE=Release",
              *(f"-D{option}=OFF" for option in names))
    jobs = str(os.cpu_count())
    output_of("cmake", "--build", program.parent, "--parallel", jobs, "--target", "trellion")
    return name, program


class Side:
    """One of the two programs, with a mesh of its own, whose name is the same."""

    def __init__(self, tools, program, directory):
        self.tools = tools
        self.program = program
        self.mesh = Path(directory) / "mesh.eps"
        self.mesh.parent.mkdir()
        self.usages = []

    def take(self, mesh):
        self.mesh.unlink(missing_ok=True)
        self.mesh.hardlink_to(mesh)
        self.usages = []

    def repair(self):
        self.usages.append(self.tools.repair(self.program, self.mesh))

    def result(self):
        return MINUTE.sub(rb"\1", repaired_path(self.mesh).read_bytes(), count=1)

    def console(self):
        repaired_path(self.mesh).unlink(missing_ok=True)
        done = subprocess.run([self.program, self.mesh.name], cwd=self.mesh.parent, env=ENVIRONMENT,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        return SECONDS.sub(b"", done.stdout)


class Comparison:
    def __init__(self, tools, then, directory):
        self.tools = tools
        self.mesh = Path(directory) / "mesh.eps"
        self.sides = [Side(tools, then, Path(directory) / "then"),
                      Side(tools, tools.trellion, Path(directory) / "now")]
        self.all_same = True

    def pair_agrees(self, order):
        """Runs both and compares their results. Raises Stopped."""
        for side in order:
            side.repair()
        return self.sides[0].result() == self.sides[1].result()

    def row(self, family, size, runs):
        """The cells of a row; where a program was stopped, there is nothing to compare."""
        self.tools.make_mesh(family, size, self.mesh)
        for side in self.sides:
            side.take(self.mesh)
        try:
            same = [self.pair_agrees(self.sides[::-1] if run % 2 else self.sides)
                    for run in range(runs)]
        except Stopped:
            return [family, size, *["-"] * 6, "stopped"]
        same.append(self.sides[0].console() == self.sides[1].console())
        self.all_same = self.all_same and all(same)
        then, now = (best(side.usages) for side in self.sides)
        return [family, size, f"{then.seconds:.4f}", f"{now.seconds:.4f}",
                ratio(now.seconds, then.seconds), f"{then.peak / 1e6:.2f}", f"{now.peak / 1e6:.2f}",
                ratio(now.peak, self.mesh.stat().st_size), "same bytes" if all(same) else "DIFFERS"]


def main():
    arguments = parse_arguments()
    tools = Tools(arguments.build, limit=arguments.limit, seed=arguments.seed)
    name, then = build(arguments.commit)
    print(f"{processor()}; {arguments.runs} runs of each, by turns, locale C, seed {tools.seed}.")
    print(f"Then: {name[:12]}.\n", flush=True)
    table = Table(COLUMNS)
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        comparison = Comparison(tools, then, directory)
        for family in arguments.families:
            for size in sorted(arguments.sizes):
                table.row(comparison.row(family, size, arguments.runs))
    sys.exit(0 if comparison.all_same else 1)


if __name__ == "__main__":
    main()
