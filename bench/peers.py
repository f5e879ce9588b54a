"""Compares trellion with the coverage union of GEOS on generated meshes, colour by colour.

Seconds of processor time, each the least of all runs: the union alone, the union with all that
comes before it (reading the file and making the geometry objects; nothing is written), and the
whole run of trellion (reading, joining, writing).
"""

import subprocess
import tempfile
from pathlib import Path

from measuring import (Stopped, Table, Tools, add_limit_option, add_mesh_options, argument_parser,
                       best, fail, processor, ratio, repaired_path, write_into)

WITHOUT_OVERLAPS = ["contour", "tri"]
COLUMNS = [
    ("mesh", 7),
    ("polygons", 9),
    ("GEOS union s", 12),
    ("GEOS with reading s", 12),
    ("trellion whole run s", 12),
    ("trellion / union", 12),
    ("polygons from GEOS", 8),
    ("polygons from trellion", 8),
]


def parse_arguments():
    parser = argument_parser("bench/peers", __doc__)
    add_mesh_options(parser, sizes=[10**5, 10**6], families=WITHOUT_OVERLAPS, runs=3)
    add_limit_option(parser, "a run of trellion")
    writing = "put the table, of the largest size of each mesh, into doc/details.md as well"
    parser.add_argument("--write", action="store_true", help=writing)
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
    introduction = [f"{processor()}; {arguments.runs} runs of each.", ""]
    print("\n".join(introduction), flush=True)
    table = Table(COLUMNS)
    largest = []
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        path = Path(directory) / "mesh.eps"
        for family in arguments.families:
            for size in sorted(arguments.sizes):
                tools.make_mesh(family, size, path)
                line = table.row([family, size, *compare(tools, arguments.runs, path)])
            largest.append(line)
    if arguments.write:
        write_into("details.md", "bench/peers", introduction + table.head + largest)


if __name__ == "__main__":
    main()
