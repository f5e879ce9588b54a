#!/usr/bin/python3 -B
"""Measures what trellion makes of the files of plotting programs; prints a table in Markdown.

Usage: measure.py DIRECTORY [PROGRAM...]: the built programs' directory, and the names of the
plotting programs to measure if not all. Programs that are not there are left out. Needs Ghostscript
and pdftops, for Octave also xvfb-run and epstool. It runs under the system's own Python, the one
that has the system's packages.
"""

import csv
import importlib
import os
import re
import shutil
import sys
import tempfile
from pathlib import Path

from field import write_tables
from programs import PROGRAMS, run

HEAD = ["program", "what it drew", "operators", "option", "polygons", "after", "bytes", "after",
        "picture after, or why none", "trellion-batch --auto"]


def version_of(source):
    """The version of a program that is there; None otherwise."""
    if " " in source:
        return number_in(run(*source.split())) if shutil.which(source.split()[0]) else None
    try:
        module = importlib.import_module(source)
    except ImportError:
        return None
    if source == "plplot":
        return module.plgver()
    return module.cairo_version_string() if source == "cairo" else module.__version__


def number_in(text):
    gnuplot = re.search(r"gnuplot (\S+) patchlevel (\S+)", text)
    return ".".join(gnuplot.groups()) if gnuplot else re.search(r"\d+(\.\d+)+", text)[0]


def operators(built, eps, option):
    """The operators that trellion finds, those of a polygon and those that follow each."""
    said = run(built / "trellion", eps, option)
    found = re.findall(r"^  (?:moveto|lineto|end polygon) *: (.*?)(?: \[.*)?$", said, re.M)
    return " ".join(" ".join(found).split())


def repair(built, eps, *options):
    """The row of trellion-batch's report."""
    run(built / "trellion-batch", *options, "-f", "-q", "--report", "report.tsv", eps)
    with open("report.tsv", encoding="utf-8", newline="") as file:
        return next(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))


def grouped(number):
    return f"{int(number):,}" if number else ""


def shown(report):
    """In a few words, how the repaired picture looks beside the one before."""
    changed = re.search(r"changed: (\d+) pixels|changed: (\S+ %) of the pixels", report["reason"])
    if changed:
        return f"**changed**: {changed[2] or grouped(changed[1]) + ' pixels'}"
    return report["picture"] or f"*{report['reason']}*"


def automatic(report):
    if report["result"] != "written":
        return f"{report['result']}: {report['reason']}"
    before, after, size = (grouped(report[column]) for column in (
        "polygons_before", "polygons_after", "bytes_after"))
    return f"{report['way']}: {before} to {after}, {size} bytes"


def measure(built, program, picture, eps):
    """Prints the row of a file; tells whether it can be repaired as it is."""
    cells, good, auto = None, False, repair(built, eps, "--auto")
    for option in "-s2", "-s1":
        names = operators(built, eps, option)
        if not names:
            continue
        alone = repair(built, eps, option)
        good = alone["result"] == "written"
        if cells is None or good:
            cells = [names, option, *(grouped(alone[column]) for column in (
                "polygons_before", "polygons_after", "bytes_before", "bytes_after")), shown(alone)]
        if good:
            break
    cells = cells or ["none", "", "", "", grouped(auto["bytes_before"]), "", ""]
    print("|", " | ".join([program, picture, *cells, automatic(auto)]), "|", flush=True)
    return good


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    built, wanted = Path(sys.argv[1]).resolve(), sys.argv[2:]
    print("|", " | ".join(HEAD), "|")
    print("|---|---|---|---|---:|---:|---:|---:|---|---|")
    with tempfile.TemporaryDirectory() as directory:
        os.chdir(directory)
        write_tables(Path())
        for name, source, pictures, draw, writes_pdf in PROGRAMS:
            if wanted and name not in wanted:
                continue
            version = version_of(source)
            if not version:
                print(f"{name} is not there", file=sys.stderr)
                continue
            for picture in pictures:
                eps, pdf, other = Path("a.eps"), Path("a.pdf"), Path("b.eps")
                for path in eps, pdf, other:
                    path.unlink(missing_ok=True)
                draw(picture, eps)
                if not eps.exists():
                    print(f"{name} wrote no EPS of {picture}", file=sys.stderr)
                    continue
                if measure(built, f"{name} {version}", picture, eps) or not writes_pdf:
                    continue
                draw(picture, pdf)
                run("pdftops", "-eps", pdf, other)
                if other.exists():
                    measure(built, f"{name}: PDF, pdftops", picture, other)


if __name__ == "__main__":
    main()
