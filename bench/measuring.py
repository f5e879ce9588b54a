"""What the benchmarks share: making meshes, running programs, and counting polygons."""

import argparse
import mmap
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

# The same for every program, so that none pays for a locale that the others do not use.
ENVIRONMENT = {**os.environ, "LC_ALL": "C"}

# The kinds of meshes that trellion is measured on.
FAMILIES = ("contour tri rows one mixed shuffle isolated gear bumps book collide words stack kites"
            " ladder fan numbers text").split()
# Of these trellion writes the beginning: their polygons cancel out.
ENDING_EARLY = ["stack"]
TOP = Path(__file__).resolve().parent.parent


class Stopped(Exception):
    """The program has used all the time that it was given."""


class Usage(NamedTuple):
    seconds: float  # of processor time, user and system
    peak: int  # resident bytes


def best(usages):
    """The least time and the largest memory of several runs."""
    return Usage(min(u.seconds for u in usages), max(u.peak for u in usages))


def fail(text):
    sys.exit(f"bench: {text}")


class Tools:
    """The programs of a build directory."""

    def __init__(self, build, long_operators=False, limit=0, seed=1):
        self.build = Path(build).resolve()
        self.long_operators = long_operators
        self.limit = limit
        self.seed = seed
        self.ends_early = False  # the repair of the mesh made last

    @property
    def trellion(self):
        return self.build / "trellion"

    def make_mesh(self, family, polygons, path):
        words = [self.build / "bench/make_mesh", family, str(polygons), str(self.seed)]
        words += ["long"] if self.long_operators else []
        with open(path, "wb") as file:
            made = subprocess.run(words, stdout=file, check=False)
        if made.returncode != 0:
            fail(f"make_mesh cannot make {family} with {polygons} polygons")
        self.ends_early = family in ENDING_EARLY

    def run(self, *words):
        """Runs a program, its console to nowhere. Raises Stopped at the limit."""
        words = [self.build / "bench/measured", str(self.limit), *words]
        done = subprocess.run(words, stdout=subprocess.PIPE, env=ENVIRONMENT, check=False)
        if done.returncode != 0:
            fail(f"cannot run {words[2]}")
        status, microseconds, kilobytes = done.stdout.split()
        if status == b"limit":
            raise Stopped
        if status != b"0":
            fail(f"{words[2]} ended with status {status.decode()}")
        return Usage(int(microseconds) / 1e6, int(kilobytes) * 1024)

    def repair(self, program, path):
        """Runs trellion, or a program like it, on a file as if for the first time."""
        repaired = repaired_path(path)
        repaired.unlink(missing_ok=True)
        usage = self.run(program, path)
        if (tail(repaired) != tail(path)) != self.ends_early:
            fail(f"{program} has not written {repaired.name} as far as expected")
        return usage

    def count_polygons(self, path):
        """The number of polygons in a file, as told by the operators at their ends."""
        ending = rb"\sclosepath\s+fill\s" if self.long_operators else rb"\sh\s+f\s"
        with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, prot=mmap.PROT_READ) as text:
            return sum(1 for _ in re.finditer(ending, text))


def repaired_path(path):
    return path.with_name(f"{path.stem}_r{path.suffix}")


def tail(path):
    """The last bytes of a file, with which every mesh ends; nothing when there is no file."""
    if not path.exists():
        return b""
    with open(path, "rb") as file:
        file.seek(max(0, path.stat().st_size - 15))
        return file.read()


class InstructionCounter:
    """Counts the instructions of a run with perf or, where it cannot, with valgrind."""

    def __init__(self):
        self.with_perf = shutil.which("perf") is not None and self._perf(["true"]) is not None
        if not self.with_perf and shutil.which("valgrind") is None:
            fail("instructions need perf with hardware counters, or valgrind")

    @property
    def name(self):
        return "perf" if self.with_perf else "valgrind --tool=callgrind"

    def count(self, words):
        found = self._perf(words) if self.with_perf else self._callgrind(words)
        if found is None:
            fail(f"{self.name} has counted nothing for {words[0]}")
        return found

    def _perf(self, words):
        return self._number(
            ["perf", "stat", "-x", ",", "-e", "instructions:u", *words], rb"^(\d+),.*instructions"
        )

    def _callgrind(self, words):
        return self._number(
            ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *words],
            rb"Collected : (\d+)",
        )

    @staticmethod
    def _number(words, pattern):
        done = subprocess.run(
            words,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
            env=ENVIRONMENT,
            check=False,
        )
        found = re.search(pattern, done.stderr, re.MULTILINE)
        return int(found[1]) if found else None


class Table:
    """A Markdown table that is printed row by row, readable on a console too."""

    def __init__(self, columns):
        self.widths = [max(len(name), width) for name, width in columns]
        # The first column holds names, the others numbers.
        rules = ["-" * self.widths[0]] + ["-" * (width - 1) + ":" for width in self.widths[1:]]
        self.head = [self.row([name for name, _ in columns]), self.row(rules)]

    def row(self, cells):
        """Prints a row, and returns its line."""
        cells = [f"{cell:,}" if isinstance(cell, int) else str(cell) for cell in cells]
        padded = [cells[0].ljust(self.widths[0])]
        padded += [cell.rjust(width) for cell, width in zip(cells[1:], self.widths[1:])]
        line = "| " + " | ".join(padded) + " |"
        print(line, flush=True)
        return line


def write_into(document, command, lines):
    """Replaces what stands in a document, below doc/, between the marks that name the command."""
    document = TOP / "doc" / document
    text = document.read_text(encoding="utf-8")
    marks = [f"<!-- made by {command} --write -->\n", f"<!-- end of {command} -->\n"]
    parts = [text.partition(mark) for mark in marks]
    if not parts[0][1] or not parts[1][1]:
        fail(f"{document.name} has no place for {command}")
    made = "".join(f"{line}\n" for line in ["", *lines, ""])
    document.write_text(parts[0][0] + marks[0] + made + marks[1] + parts[1][2], encoding="utf-8")


def argument_parser(command, text):
    """For a benchmark that its command calls with the build directory."""
    parser = argparse.ArgumentParser(prog=command, description=text.splitlines()[0])
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    return parser


def add_mesh_options(parser, *, sizes, families, runs):
    """The options that tell on which meshes to measure, and how often; with their defaults."""
    add = parser.add_argument
    default = ",".join(map(str, sizes))
    add("--sizes", type=list_of(positive), default=sizes, help=f"default {default}")
    default = "" if families == FAMILIES else f" (default {','.join(families)})"
    some = f"some of {', '.join(FAMILIES)}{default}"
    add("--families", type=list_of(family), default=families, help=some)
    add("--runs", type=positive, default=runs, help=f"runs of each (default {runs})")


def add_seed_option(parser):
    parser.add_argument("--seed", type=positive, default=1, help="seed of the meshes (default 1)")


def add_limit_option(parser, what):
    help_text = f"stop {what} after so much time"
    parser.add_argument("--limit", type=positive, default=0, metavar="SECONDS", help=help_text)


def family(name):
    if name not in FAMILIES:
        raise argparse.ArgumentTypeError(f"no such family: {name}")
    return name


def ratio(value, base):
    return f"{value / base:.2f}" if base else "-"


def list_of(kind):
    """A type for an argument that is a list with commas."""
    return lambda text: [kind(part) for part in text.split(",") if part]


def positive(text):
    value = int(text)
    if value < 1:
        raise ValueError
    return value


def processor():
    """The processor's name as the system knows it."""
    try:
        found = re.search(r"^model name\s*: (.*)$", Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    except OSError:
        found = None
    return found[1] if found else "unknown processor"
