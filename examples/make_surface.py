#!/usr/bin/env python3
"""Writes surface.eps: a hilly surface seen from above and aside, in twelve colours by height.

The figure is what plotting programs make of a surface: small quadrilaterals of each colour in one
run, all laid edge to edge, with axes and a title around them. Usage: make_surface.py > surface.eps
"""

import math

COLUMNS, ROWS, LEVELS = 84, 72, 12


def height(x, y):
    """Between 0 and 1; x and y run from 0 to 1."""
    hill = math.exp(-9 * ((x - 0.34) ** 2 + (y - 0.62) ** 2))
    ridge = 0.7 * math.exp(-14 * ((x - 0.78) ** 2 + 0.5 * (y - 0.3) ** 2))
    ripples = 0.09 * math.sin(9 * x + 5 * y) * math.cos(7 * y - 3 * x)
    return min(max(0.14 + 0.72 * hill + ridge + ripples, 0.0), 0.9999)


def colour(level):
    """From deep blue over green to light yellow."""
    t = level / (LEVELS - 1)
    return 0.15 + 0.8 * t ** 1.4, 0.12 + 0.78 * t ** 0.8, 0.42 + 0.25 * math.sin(2.6 * t) - 0.2 * t


def seen(x, y, z):
    """Where a point shows. Flat enough that no part of the surface hides another."""
    return 20 + 290 * x + 80 * y, 58 - 42 * x + 200 * y + 70 * z


def text(point):
    return " ".join(f"{value:.2f}".rstrip("0").rstrip(".") for value in point)


def path(points):
    first, *others = (text(p) for p in points)
    return f"{first} m " + "".join(f"{p} l " for p in others) + "h"


def cell(column, row):
    corners = ((0, 0), (1, 0), (1, 1), (0, 1))
    places = [((column + i) / COLUMNS, (row + j) / ROWS) for i, j in corners]
    return path(seen(x, y, height(x, y)) for x, y in places) + " f"


def cells_by_level():
    levels = [[] for _ in range(LEVELS)]
    for row in range(ROWS):
        for column in range(COLUMNS):
            middle = height((column + 0.5) / COLUMNS, (row + 0.5) / ROWS)
            levels[int(middle * LEVELS)].append(cell(column, row))
    return levels


def axes():
    """The edges of the ground in front of the surface, with ticks."""
    yield "0 g 0.8 w"
    ground = [seen(*p) for p in ((0, 0, 0), (1, 0, 0), (1, 1, 0))]
    yield path(ground).removesuffix(" h") + " stroke"
    for x, y in ((0, 0), (1, 0), (1, 1)):
        yield path([seen(x, y, 0), seen(x, y, height(x, y))]).removesuffix(" h") + " stroke"
    yield "/Helvetica findfont 9 scalefont setfont"
    for x in range(7):
        left, bottom = seen(x / 6, 0, 0)
        yield f"{text((left, bottom))} m 0 -4 rlineto stroke"
        yield f"{text((left, bottom - 14))} ({x}) centred"
    for y in range(1, 5):
        left, bottom = seen(1, y / 4, 0)
        yield f"{text((left, bottom))} m 4 0 rlineto stroke"
        yield f"{text((left + 10, bottom - 3))} ({y}) centred"
    yield "/Helvetica findfont 12 scalefont setfont"
    yield "200 300 (Height above the plain) centred"


def main():
    print("%!PS-Adobe-3.0 EPSF-3.0")
    print("%%BoundingBox: 0 0 410 320")
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
        print("\n".join(cells))
    for line in axes():
        print(line)
    print("showpage")
    print("%%EOF")


if __name__ == "__main__":
    main()
