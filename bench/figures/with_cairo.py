"""Figures of triangles that cairo draws, into the directory named."""

import sys

import cairo

import mesh


def draw(name, triangles):
    surface = cairo.PDFSurface(f"{sys.argv[1]}/{name}.pdf", 300, 300)
    context = cairo.Context(surface)
    for corners, rgb in triangles:
        context.set_source_rgb(*rgb)
        for x, y in corners:
            context.line_to(150 + 70 * x, 150 - 70 * y)
        context.close_path()
        context.fill()
    context.set_source_rgb(0, 0, 0)
    context.move_to(10, 295)
    context.show_text("cairo")
    surface.finish()


draw("few-cairo", mesh.triangles(70))
draw("few-cairo-sorted", sorted(mesh.triangles(70), key=lambda triangle: triangle[1]))
draw("each-cairo", mesh.triangles(70, few=False))
