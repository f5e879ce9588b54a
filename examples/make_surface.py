#!/usr/bin/env python3
"""Writes surface.eps: a smooth field in twelve colour levels, drawn with one polygon a cell.

The figure is what plotting programs make of a surface: the cells of each level in one run, all laid
edge to edge, with a frame, ticks and a title around them. Usage: make_surface.py > surface.eps
"""

import math

COLUMNS, ROWS, LEVELS = 72, 56, 12
LEFT, BOTTOM, CELL = 26.0, 22.0, 5.0
WIDTH, HEIGHT = COLUMNS * CELL, ROWS * CELL


def field(x, y):
    """A height between 0 and 1; x and y run from 0 to 1."""
    hills = math.exp(-9 * ((x - 0.34) ** 2 + (y - 0.62) ** 2))
    ridge = 0.7 * math.exp(-14 * ((x - 0.78) ** 2 + 0.5 * (y - 0.3) ** 2))
    ripples = 0.09 * math.sin(9 * x + 5 * y) * math.cos(7 * y - 3 * x)
    return min(max(0.14 + 0.72 * hills + ridge + ripples, 0.0), 0.9999)


def colour(level):
    """From deep blue over green to light yellow."""
    t = level / (LEVELS - 1)
    return 0.15 + 0.8 * t ** 1.4, 0.12 + 0.78 * t ** 0.8, 0.42 + 0.25 * math.sin(2.6 * t) - 0.2 * t


def cells_by_level():
    levels = [[] for _ in range(LEVELS)]
    for row in range(ROWS):
        for column in range(COLUMNS):
            height = field((column + 0.5) / COLUMNS, (row + 0.5) / ROWS)
            levels[int(height * LEVELS)].append((column, row))
    return levels


def number(value):
    return f"{value:.2f}".rstrip("0").rstrip(".")


def cell_path(column, row):
    x0, y0 = LEFT + column * CELL, BOTTOM + row * CELL
    corners = [(x0, y0), (x0 + CELL, y0), (x0 + CELL, y0 + CELL), (x0, y0 + CELL)]
    texts = [f"{number(x)} {number(y)}" for x, y in corners]
    return f"{texts[0]} m {texts[1]} l {texts[2]} l {texts[3]} l h f"


def axes():
    yield "0 g 0.8 w"
    yield f"{number(LEFT)} {number(BOTTOM)} {number(WIDTH)} {number(HEIGHT)} rectstroke"
    yield "/Helvetica findfont 9 scalefont setfont"
    for i in range(7):
        x = LEFT + WIDTH * i / 6
        yield f"newpath {number(x)} {number(BOTTOM)} m 0 -4 rlineto stroke"
        yield f"{number(x)} {number(BOTTOM - 14)} ({i}) centred"
    for i in range(5):
        y = BOTTOM + HEIGHT * i / 4
        yield f"newpath {number(LEFT)} {number(y)} m -4 0 rlineto stroke"
        yield f"{number(LEFT - 12)} {number(y - 3)} ({i}) centred"
    yield "/Helvetica findfont 12 scalefont setfont"
    yield f"{number(LEFT + WIDTH / 2)} {number(BOTTOM + HEIGHT + 10)} (Height above the plain) centred"


def main():
    right, top = LEFT + WIDTH + 14, BOTTOM + HEIGHT + 26
    print("%!PS-Adobe-3.0 EPSF-3.0")
    print(f"%%BoundingBox: 0 0 {math.ceil(right)} {math.ceil(top)}")
    print("%%Title: Height above the plain")
    print("%%EndComments")
    print()
    print("/m {moveto} bind def")
    print("/l {lineto} bind def")
    print("/h {closepath} bind def")
    print("/f {fill} bind def")
    print("/g {setgray} bind def")
    print("/w {setlinewidth} bind def")
    print("/centred {3 1 roll m dup stringwidth pop -2 div 0 rmoveto show} bind def")
    for level, cells in enumerate(cells_by_level()):
        print(" ".join(f"{part:.3f}" for part in colour(level)), "setrgbcolor")
        for column, row in cells:
            print(cell_path(column, row))
    for line in axes():
        print(line)
    print("showpage")
    print("%%EOF")


if __name__ == "__main__":
    main()
