#!/usr/bin/env python3
"""Draws the figures of this directory, which are easy to repair in a wrong way.

They are small, so that they are soon drawn: 20 points, or 400 of their units, wide.
"""
from pathlib import Path

WORDS = "/m{moveto}def /l{lineto}def /h{closepath}def /f{fill}def /S{stroke}def /c{setrgbcolor}def\n"
FILL_AND_STROKE = "/F{closepath gsave fill grestore stroke}def\n"
ORANGE = "0.9 0.6 0 c\n"
BLUE = "0 0.4 0.8 c\n"


def figure(body, height=15):
    return (f"%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 20 {height}\n%%EndComments\n"
            f"0.05 dup scale\n{WORDS}{body}showpage\n%%EOF\n")


def polygon(points, end):
    corners = (f"{round(x, 2):g} {round(y, 2):g} {'l' if i else 'm'}" for i, (x, y) in enumerate(points))
    return " ".join(corners) + f" {end}\n"


def triangles(columns, rows, x=20.0, y=20.0, width=40.0, height=40.0):
    """The cells of a grid as pairs of triangles, with the number of the cell's diagonal."""
    for j in range(rows):
        for i in range(columns):
            a, b = (x + i * width, y + j * height), (x + (i + 1) * width, y + j * height)
            c, d = (b[0], b[1] + height), (a[0], a[1] + height)
            yield i + j, (a, b, c)
            yield i + j, (a, c, d)


def mesh(*size, end="h f", **place):
    return "".join(polygon(t, end) for _, t in triangles(*size, **place))


def arrows():
    """A shaft is a line of two points; its open head ends in the same word. No edge is shared."""
    body = "3 setlinewidth\n"
    for x in range(60, 360, 60):
        for y in range(40, 280, 60):
            body += polygon([(x, y), (x + 30, y)], "S")
            body += polygon([(x + 22, y), (x + 30, y), (x + 26, y - 9)], "S")
    return figure(body)


def ticks():
    """The frame and its ticks end in the same word as a mesh, and the first tick lies on an edge."""
    body = FILL_AND_STROKE + "0.8 setlinewidth\n" + BLUE + mesh(4, 4, end="F")
    for x in range(20, 390, 40):
        body += polygon([(x, 20), (x, 12)], "F") + polygon([(x, 20), (x + 40, 20)], "F")
        body += polygon([(20, x * .7), (28, x * .7)], "F")
    return figure(body)


def fold():
    """Two triangles on one side of their common edge, one of them a sliver, which is lost when they
    are joined. Beyond the edge there is the same colour, so that nothing else changes."""
    body = BLUE + polygon([(20, 20), (180, 20), (180, 240), (20, 240)], "h f")
    body += ORANGE + polygon([(40, 60), (80, 220), (40, 220)], "h f")
    body += ORANGE + polygon([(40, 60), (80, 60), (80, 220)], "h f")
    body += polygon([(40, 60), (80, 220), (60.8, 139.8)], "h f")
    return figure(body + mesh(4, 5, x=200.0))


def outlines():
    """What looks like five dashed lines are ten thin boxes, stroked by the file's own word. Joined,
    they lose the dashes between them."""
    body = "/B{closepath [4 3] 0 setdash stroke}def 0.5 setlinewidth\n"
    for y in range(40, 290, 50):
        for bottom in (y, y + .8):
            top = bottom + .8
            body += polygon([(40, bottom), (340, bottom), (340, top), (40, top)], "B")
    return figure(body)


def strokes():
    """What is filled is stroked, too: a mesh without width, the dashes of a frame with one that they
    owe most of their thickness to."""
    body = FILL_AND_STROKE + "0 setlinewidth\n" + BLUE + mesh(5, 3, x=60.0, y=60.0, end="F")
    body += "3 setlinewidth 0.2 0 0 c\n"
    for x in range(40, 340, 24):
        body += mesh(1, 1, x=x, y=40.0, width=12, height=.2, end="F")
    return figure(body)


def levels():
    """One path for each level, closed triangle by triangle and filled at the end, shows no hairlines
    within the level. Between what is left when each is drawn by itself there are some."""
    cells = list(triangles(9, 9, x=20.11, y=20.13, width=39.1, height=28.2))
    body = ""
    for level, colour in enumerate((ORANGE, BLUE)):
        paths = "".join(polygon(t, "h") for n, t in cells if n // 3 % 2 == level)
        body += f"{colour}{paths}gsave\nfill\ngrestore\nnewpath\n"
    return figure(body)


def colours():
    """The words that fill set the colour, too."""
    body = "/r{0.8 0 0 c fill}def /b{0 0 0.8 c fill}def\n"
    for n, t in triangles(6, 6):
        body += polygon(t, "h " + "rb"[n // 2 % 2])
    return figure(body)


def relative():
    """The numbers of a corner are relative to the one before. Taken as they stand the triangles of
    many cells lie on both sides of a common edge, and what comes of that is small. A detour rounds its colour."""
    body = "/l{rlineto}def\n" + "0.281 0.567 0.123 c\n"
    y = 20
    for j in range(7):
        x, height = 20, 18 + j
        for i in range(12):
            width = 24 + i
            body += polygon([(x, y), (width, height), (0, -height)], "h f")
            body += polygon([(x, y), (width, height), (-width, 0)], "h f")
            x += width
        y += height
    return figure(body)


def forms():
    """A small mesh that is filled in two words, and a large one in a single word."""
    one_word = "/F{closepath fill}def\n"
    return figure(one_word + BLUE + mesh(3, 1) + ORANGE + mesh(8, 4, y=100.0, end="F"))


def culprit():
    """Between two meshes that can be repaired the same words stroke two small boxes, whose common
    edge would be lost."""
    boxes = mesh(1, 1, x=40.0, y=200.0, width=18, height=12)
    return figure(BLUE + mesh(6, 3) + f"/f{{0 setlinewidth stroke}}def {boxes}/f{{fill}}def\n{ORANGE}" + mesh(5, 4, x=160.0, y=160.0, height=24.0))


for draw in arrows, ticks, fold, outlines, strokes, levels, colours, relative, forms, culprit:
    Path(__file__).with_name(draw.__name__ + ".eps").write_text(draw(), encoding="ascii")
