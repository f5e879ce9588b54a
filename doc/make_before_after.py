#!/usr/bin/env python3
"""Draws before_after.png: a contour plot as viewers show it, as it is and after `trellion -r`, with its
size and the time that it takes to draw.

Usage: make_before_after.py TRELLION, the built program. Needs Ghostscript.
"""

import subprocess
import sys
import tempfile
import time
from math import cos, sin
from pathlib import Path

WIDTH, HEIGHT, CAPTION, DPI = 230, 178, 18, 130  # points, and dots per inch
LEFT, BOTTOM, CELL, COLUMNS, ROWS = 34.0, 26.0, 2.05, 90, 69
COLOURS = ["0.27 0 0.33", "0.28 0.14 0.45", "0.24 0.29 0.54", "0.18 0.42 0.56", "0.13 0.52 0.55",
           "0.13 0.63 0.5", "0.31 0.73 0.4", "0.6 0.82 0.2"]


def plot():
    """Level by level a polygon for each cell of a slightly bent grid, as contour programs write it."""
    def place(i, j):
        return (f"{LEFT + CELL * i + 1.1 * sin(0.13 * j) * sin(3.1415927 * i / COLUMNS):.3f} "
                f"{BOTTOM + CELL * j + 1.1 * sin(0.11 * i) * sin(3.1415927 * j / ROWS):.3f}")

    cells = [[] for _ in COLOURS]
    for i in range(COLUMNS):
        for j in range(ROWS):
            height = sin(0.078 * i) * cos(0.068 * j + 0.026 * i) + 0.3 * cos(0.135 * (i - j))
            level = min(len(COLOURS) - 1, max(0, int((height + 1.2) / 2.4 * len(COLOURS))))
            cells[level].append((i, j))
    lines = ["%!PS-Adobe-3.0 EPSF-3.0", f"%%BoundingBox: 0 0 {WIDTH} {HEIGHT}",
             "/m {moveto} bind def /l {lineto} bind def /h {closepath} bind def /f {fill} bind def",
             "/t {moveto dup stringwidth pop 2 div neg 0 rmoveto show} bind def"]
    for colour, places in zip(COLOURS, cells):
        lines.append(f"{colour} setrgbcolor")
        lines += [f"{place(i, j)} m {place(i + 1, j)} l {place(i + 1, j + 1)} l {place(i, j + 1)} l h f"
                  for i, j in places]
    right, top = CELL * COLUMNS, CELL * ROWS
    lines += ["0 setgray 0.6 setlinewidth /Helvetica findfont 8 scalefont setfont",
              f"{LEFT} {BOTTOM} {right} {top} rectstroke"]
    for n in range(6):
        x, y = LEFT + right * n / 5, BOTTOM + top * n / 5
        lines += [f"newpath {x:.1f} {BOTTOM} moveto 0 -3 rlineto stroke ({2 * n}) {x:.1f} {BOTTOM - 11} t",
                  f"newpath {LEFT} {y:.1f} moveto -3 0 rlineto stroke ({n}) {LEFT - 9} {y - 3:.1f} t"]
    lines += [f"(distance / mm) {LEFT + right / 2} 5 t", f"gsave 11 {BOTTOM + top / 2} translate 90 rotate",
              "(depth / mm) 0 0 t grestore", "showpage", "%%EOF", ""]
    return "\n".join(lines)


def draw(source, png, *options):
    command = ["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=png16m", f"-r{DPI}",
               "-dGraphicsAlphaBits=4", "-dTextAlphaBits=4", *options, f"-sOutputFile={png}", source]
    start = time.perf_counter()
    subprocess.run(command, check=True)
    return time.perf_counter() - start


def panel(eps, offset):
    seconds = min(draw(eps, "/dev/null", "-dEPSCrop") for _ in range(3))
    return (f"gsave {offset} {CAPTION} translate\n{eps.read_text(encoding='ascii')}\ngrestore\n"
            f"/Helvetica-Bold findfont 9 scalefont setfont {offset + WIDTH / 2} 6 moveto\n"
            f"({eps.stat().st_size / 1000:,.0f} kB, {seconds:.2f} s to draw)"
            " dup stringwidth pop 2 div neg 0 rmoveto show\n")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as name:
        before = Path(name) / "plot.eps"
        before.write_text(plot(), encoding="ascii")
        subprocess.run([Path(sys.argv[1]).resolve(), before, "-r"], check=True,
                       stdout=subprocess.DEVNULL)
        both = Path(name) / "both.ps"
        both.write_text(f"%!PS\n<< /PageSize [{2 * WIDTH} {HEIGHT + CAPTION}] >> setpagedevice\n"
                        "/showpage {} def\n" + panel(before, 0) + panel(before.with_stem("plot_r"), WIDTH)
                        + "systemdict /showpage get exec\n", encoding="ascii")
        draw(both, Path(__file__).resolve().with_name("before_after.png"))


if __name__ == "__main__":
    main()
