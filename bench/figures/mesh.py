"""The surface that all figures show, z = height(x, y) over a square, and the cells it is drawn with.

As a program: `mesh.py FORM CELLS` prints a mesh of triangles of few colours in the words of a
program, or the heights at its nodes.
"""

import math
import sys

SIDE = 2.0  # x and y reach from -SIDE to SIDE
LOW, HIGH = -1.1, 1.3
LEVELS = 8


def height(x, y):
    return math.cos(1.7 * x) * math.sin(1.4 * y + 0.3) + 0.4 * math.exp(-((x + 0.6) ** 2) - y * y)


def bend(x, y):
    """Moves places so that upright cells become slanting ones."""
    return x + 0.1 * math.sin(2 * y), y + 0.1 * math.sin(1.6 * x)


def part(z):
    """Where a height lies between the lowest and the highest, 0 to 1."""
    return min(1.0, max(0.0, (z - LOW) / (HIGH - LOW)))


def level(z):
    return min(LEVELS - 1, int(part(z) * LEVELS))


def colour(t):
    return tuple(round(c, 3) for c in (0.15 + 0.8 * t, 0.25 + 0.6 * math.sin(2 * t), 0.9 - 0.75 * t))


def level_colour(k):
    return colour((k + 0.5) / LEVELS)


def nodes(cells):
    return [SIDE * (2 * i / cells - 1) for i in range(cells + 1)]


def triangles(cells, few=True):
    """(corners, colour) of the triangles, row by row."""
    at = nodes(cells)
    for j in range(cells):
        for i in range(cells):
            a, b, c, d = ((at[i + k], at[j + m]) for k, m in ((0, 0), (1, 0), (1, 1), (0, 1)))
            for corners in ((a, b, c), (a, c, d)):
                z = sum(height(*p) for p in corners) / 3
                yield corners, level_colour(level(z)) if few else colour(part(z))


def print_svg(mesh):
    print('<svg xmlns="http://www.w3.org/2000/svg" width="300" height="300" viewBox="0 0 300 300">')
    for corners, rgb in mesh:
        points = " ".join(f"{150 + 70 * x:.3f},{150 - 70 * y:.3f}" for x, y in corners)
        print(f'<polygon fill="#{"".join(f"{round(255 * c):02x}" for c in rgb)}" points="{points}"/>')
    print("</svg>")


def print_asymptote(mesh):
    print("unitsize(70);")
    for corners, rgb in mesh:
        path = "--".join(f"({x:.4f},{y:.4f})" for x, y in corners)
        print(f"fill({path}--cycle, rgb({','.join(map(str, rgb))}));")


def print_pgf(mesh):
    print(r"\documentclass{article}\usepackage{pgf}\pagestyle{empty}\begin{document}\begin{pgfpicture}")
    for corners, rgb in mesh:
        print(rf"\definecolor{{c}}{{rgb}}{{{','.join(map(str, rgb))}}}\pgfsetfillcolor{{c}}")
        for step, (x, y) in zip(("moveto", "lineto", "lineto"), corners):
            print(rf"\pgfpath{step}{{\pgfpointxy{{{2 * x:.4f}}}{{{2 * y:.4f}}}}}")
        print(r"\pgfpathclose\pgfusepath{fill}")
    print(r"\end{pgfpicture}\end{document}")


def print_metapost(mesh):
    print('outputtemplate := "more-metapost.eps"; beginfig(1);')
    for corners, rgb in mesh:
        path = "--".join(f"({70 * x:.3f},{70 * y:.3f})" for x, y in corners)
        print(f"fill {path}--cycle withcolor ({','.join(map(str, rgb))});")
    print("endfig; end")


def print_nodes(cells):
    at = nodes(cells)
    for y in at:
        for x in at:
            print(f"{x:.4f} {y:.4f} {height(x, y):.5f}")


FORMS = {"svg": print_svg, "asymptote": print_asymptote, "pgf": print_pgf,
         "metapost": print_metapost}

if __name__ == "__main__":
    if sys.argv[1] == "nodes":
        print_nodes(int(sys.argv[2]))
    else:
        FORMS[sys.argv[1]](triangles(int(sys.argv[2])))
