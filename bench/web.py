"""Compares the WebAssembly module in Node with trellion itself on generated meshes.

Seconds of wall time, each the least of all runs, which alternate; a run begins with its program's
start. Memory is the largest resident set of the process as a multiple of the file's size, less
that of a Node that does nothing.
"""

import argparse
import os
import subprocess
import tempfile
import time
from pathlib import Path

from measuring import (Table, Tools, add_mesh_options, argument_parser, fail, processor, ratio,
                       repaired_path)

DEFAULT_FAMILIES = ["contour", "one"]
COLUMNS = [
    ("mesh", 7),
    ("polygons", 9),
    ("MB", 6),
    ("native s", 8),
    ("wasm s", 8),
    ("wasm / native", 8),
    ("native memory", 8),
    ("wasm memory", 8),
]


def parse_arguments():
    parser = argument_parser("bench/web", __doc__)
    parser.add_argument("--package", required=True, help=argparse.SUPPRESS)
    add_mesh_options(parser, sizes=[10**5, 10**6], families=DEFAULT_FAMILIES, runs=5)
    return parser.parse_args()


def run(*words):
    """Seconds of wall time and resident bytes."""
    start = time.perf_counter()
    child = subprocess.Popen(words, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        fail(f"{words[0]} ended with status {child.returncode}")
    return time.perf_counter() - start, usage.ru_maxrss * 1024


def main():
    options = parse_arguments()
    tools = Tools(options.build)
    command = ["node", Path(options.package) / "npm/cli.js"]
    idle = run("node", "-e", "0")[1]
    print(f"on {processor()}")
    table = Table(COLUMNS)
    with tempfile.TemporaryDirectory() as directory:
        path = Path(directory) / "mesh.eps"
        for family in options.families:
            for size in options.sizes:
                tools.make_mesh(family, size, path)
                native, wasm = [], []
                for _ in range(options.runs):
                    native.append(run(tools.trellion, path))
                    wasm.append(run(*command, path))
                n_bytes = path.stat().st_size
                seconds = [min(run[0] for run in runs) for runs in (native, wasm)]
                memory = [max(run[1] for run in runs) for runs in (native, wasm)]
                table.row([
                    family,
                    size,
                    f"{n_bytes / 1e6:.1f}",
                    f"{seconds[0]:.2f}",
                    f"{seconds[1]:.2f}",
                    ratio(seconds[1], seconds[0]),
                    ratio(memory[0], n_bytes),
                    ratio(memory[1] - idle, n_bytes),
                ])
                repaired_path(path).unlink()


if __name__ == "__main__":
    main()
