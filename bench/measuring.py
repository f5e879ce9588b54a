"""What the benchmarks share: making meshes, running programs, and counting polygons."""

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
        if tail(repaired) != tail(path):
            fail(f"{program} has not written all of {repaired.name}")
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
        self.row([name for name, _ in columns])
        # The first column holds names, the others numbers.
        rules = ["-" * self.widths[0]] + ["-" * (width - 1) + ":" for width in self.widths[1:]]
        self.row(rules)

    def row(self, cells):
        cells = [str(cell) for cell in cells]
        padded = [cells[0].ljust(self.widths[0])]
        padded += [cell.rjust(width) for cell, width in zip(cells[1:], self.widths[1:])]
        print("| " + " | ".join(padded) + " |", flush=True)


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
