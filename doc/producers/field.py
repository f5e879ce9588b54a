"""One smooth field on a grid, and the triangles of its mesh."""

import itertools
import math

POINTS = 71  # along each side
SIDE = 360  # of the picture, in PostScript units
LEVELS = 8
PALETTE = [(0.0, 0.0, 0.6), (0.0, 0.3, 0.9), (0.0, 0.7, 0.9), (0.2, 0.8, 0.5),
           (0.7, 0.9, 0.2), (1.0, 0.8, 0.0), (1.0, 0.4, 0.0), (0.7, 0.0, 0.0)]
ORDERS = ["rows", "levels", "each"]


def height(x, y):
    """The field over the unit square."""
    hill = math.exp(-12 * ((x - 0.3) ** 2 + (y - 0.35) ** 2))
    smaller = 0.7 * math.exp(-20 * ((x - 0.75) ** 2 + (y - 0.7) ** 2))
    return 0.2 + 0.7 * (hill + smaller) + 0.08 * math.sin(7 * x) * math.cos(5 * y)


ALONG = [i / (POINTS - 1) for i in range(POINTS)]
GRID = [[height(x, y) for x in ALONG] for y in ALONG]
LOW, HIGH = min(map(min, GRID)), max(map(max, GRID))


def triangles(order):
    """Pairs of six coordinates and a colour, its red, green and blue from 0 to 1.

    The orders: `rows`, as they lie in the mesh; `levels`, one colour after the other; `each`, as
    they lie in the mesh, but with a colour of its own for each.
    """
    found = []
    for j, i in itertools.product(range(POINTS - 1), repeat=2):
        a, b, c, d = (i, j), (i + 1, j), (i + 1, j + 1), (i, j + 1)
        for corners in (a, b, c), (a, c, d):
            share = (sum(GRID[q][p] for p, q in corners) / 3 - LOW) / (HIGH - LOW)
            level = min(int(share * LEVELS), LEVELS - 1)
            colour = (share, 1 - share, 0.5 + i / 500) if order == "each" else PALETTE[level]
            found.append((level, [round(SIDE * ALONG[k], 3) for p in corners for k in p], colour))
    if order == "levels":
        found.sort(key=lambda triangle: triangle[0])
    return [(flat, colour) for _, flat, colour in found]


def runs(order):
    """Pairs of a colour and the triangles that follow each other in it."""
    for colour, same in itertools.groupby(triangles(order), key=lambda triangle: triangle[1]):
        yield colour, [flat for flat, _ in same]


def text_of(order, triangle, colour=""):
    """All triangles in words: {0} to {5} are the coordinates, {6} to {8} are the colour. The
    pattern for the colour is written where another one begins."""
    lines = []
    for shade, flats in runs(order):
        parts = [round(part, 4) for part in shade]
        lines.append(colour.format(*[""] * 6, *parts))
        lines.extend(triangle.format(*flat, *parts) for flat in flats)
    return "".join(lines)


def write_tables(directory):
    """grid.txt, and triangles_ORDER.txt with the nine numbers of a triangle in each line."""
    rows = (" ".join(f"{z:.6f}" for z in row) for row in GRID)
    (directory / "grid.txt").write_text("\n".join(rows) + "\n", encoding="ascii")
    for order in ORDERS:
        text = text_of(order, "{0} {1} {2} {3} {4} {5} {6} {7} {8}\n")
        (directory / f"triangles_{order}.txt").write_text(text, encoding="ascii")
