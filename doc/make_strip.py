#!/usr/bin/env python3
"""Draws frames.png: a small surface dissolving, six frames of trellion-frames side by side.

Usage: make_strip.py TRELLION-FRAMES, the built program. Needs Ghostscript.
"""

import math
import subprocess
import sys
import tempfile
from pathlib import Path

CELLS, CELL = 9, 12
SHOWN = 6


def mesh():
    """Triangles on a grid whose inner points are moved a little."""
    def point(i, j):
        inside = 0 < i < CELLS and 0 < j < CELLS
        return (round(i * CELL + inside * 3 * math.sin(7 * i + 3 * j)),
                round(j * CELL + inside * 3 * math.cos(5 * i + 9 * j)))

    for j in range(CELLS):
        for i in range(CELLS):
            a, b, c, d = point(i, j), point(i + 1, j), point(i + 1, j + 1), point(i, j + 1)
            yield a, b, c
            yield a, c, d


def write_picture(path):
    with open(path, "w", encoding="ascii") as out:
        out.write("%!PS-Adobe-3.0 EPSF-3.0\n")
        for a, b, c in mesh():
            out.write(f"{a[0]} {a[1]} m {b[0]} {b[1]} l {c[0]} {c[1]} l h f\n")


def body(frame):
    """What a frame draws, without its comments."""
    lines = frame.read_text(encoding="ascii").splitlines()
    return "\n".join(line for line in lines if not line.startswith("%"))


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    program = Path(sys.argv[1]).resolve()
    here = Path(__file__).resolve().parent
    side = CELLS * CELL
    with tempfile.TemporaryDirectory() as name:
        work = Path(name)
        write_picture(work / "mesh.eps")
        subprocess.run([program, work / "mesh.eps", work], check=True, stdout=subprocess.DEVNULL)
        frames = sorted((work / "intermediate").glob("frame*.eps"))
        chosen = [frames[round(k * (len(frames) - 1) / (SHOWN - 1))] for k in range(SHOWN)]
        strip = work / "strip.ps"
        width = SHOWN * (side + 12)
        with open(strip, "w", encoding="ascii") as out:
            out.write(f"%!PS\n<< /PageSize [{width} {side + 12}] >> setpagedevice\n")
            for k, frame in enumerate(chosen):
                out.write(f"gsave {6 + k * (side + 12)} 6 translate\n{body(frame)}\ngrestore\n")
            out.write("showpage\n")
        subprocess.run(["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pnggray", "-r120",
                        "-dGraphicsAlphaBits=4", f"-sOutputFile={here / 'frames.png'}", strip],
                       check=True)


if __name__ == "__main__":
    main()
