"""Compares trellion with the coverage union of GEOS on generated meshes, colour by colour.

Seconds of processor time, each the least of all runs: the union alone, the union with all that
comes before it (reading the file and making the geometry objects; nothing is written), and the
whole run of trellion (reading, joining, writing).
"""

import argparse
import subprocess
import tempfile
from pathlib import Path

from measuring import (
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

FAMILIES = ["contour", "tri"]
COLUMNS = [
    ("mesh", 7),
    ("polygons", 8),
    ("GEOS union s", 12),
    ("GEOS with reading s", 12),
    ("trellion whole run s", 12),
    ("trellion / union", 12),
    ("polygons from GEOS", 8),
    ("polygons from trellion", 8),
]


def parse_arguments():
    parser = argparse.ArgumentParser(prog="bench/peers", description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    add = parser.add_argument
    add("--sizes", type=list_of(positive), default=[10**5, 10**6], help="default 100000,1000000")
    without_overlaps = "kinds of meshes without overlaps (default contour,tri)"
    add("--families", type=list_of(str), default=FAMILIES, help=without_overlaps)
    add("--runs", type=positive, default=3, help="runs of each (default 3)")
    stop = "stop a run of trellion after so much time"
    add("--limit", type=positive, default=0, metavar="SECONDS", help=stop)
    return parser.parse_args()


def unite(tools, path):
    """Seconds of the union, seconds with reading, and the number of polygons left, of one run."""
    words = [tools.build / "bench/peers", path]
    done = subprocess.run(words, stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        fail("GEOS cannot unite the mesh")
    union, reading, _, before, after, _, area_change = done.stdout.split()
    if int(before) != tools.count_polygons(path) or float(area_change) > 1e-9:
        fail("GEOS has lost some of the mesh")
    return float(union), float(union) + float(reading), int(after)


def repair(tools, path):
    """What a run of trellion takes; None when it was stopped."""
    try:
        return tools.repair(tools.trellion, path)
    except Stopped:
        return None


def compare(tools, runs, path):
    """The cells of a row. The two run by turns, so that a slow moment of the machine meets both."""
    unions, repairs = [], []
    for _ in range(runs):
        unions.append(unite(tools, path))
        repairs.append(None if None in repairs else repair(tools, path))
    union = min(run[0] for run in unions)
    with_reading = min(run[1] for run in unions)
    cells = [f"{union:.4f}", f"{with_reading:.4f}"]
    if None in repairs:
        return [*cells, f"> {tools.limit}", "-", unions[0][2], "-"]
    trellion = best(repairs).seconds
    left = tools.count_polygons(repaired_path(path))
    return [*cells, f"{trellion:.4f}", ratio(trellion, union), unions[0][2], left]


def main():
    arguments = parse_arguments()
    tools = Tools(arguments.build, limit=arguments.limit)
    print(f"{processor()}; {arguments.runs} runs of each.\n")
    table = Table(COLUMNS)
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        path = Path(directory) / "mesh.eps"
        for family in arguments.families:
            for size in sorted(arguments.sizes):
                tools.make_mesh(family, size, path)
                table.row([family, size, *compare(tools, arguments.runs, path)])


if __name__ == "__main__":
    main()
