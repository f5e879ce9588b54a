"""Figures that PLplot draws, into the directory named."""

import sys

import numpy as np
import plplot

import mesh

CELLS = 70
AT = np.array(mesh.nodes(CELLS))
Z = np.array([[mesh.height(x, y) for y in AT] for x in AT])


def start(name):
    plplot.plsdev("pdfcairo")
    plplot.plsfnam(f"{sys.argv[1]}/{name}.pdf")
    plplot.plsetopt("geometry", "400x400")
    plplot.plinit()
    plplot.pladv(0)
    plplot.plvpor(0, 1, 0, 1)
    plplot.plwind(-2.2, 2.2, -2.2, 2.2)


start("few-plplot-shades")
XS, YS = np.vectorize(mesh.bend)(*np.meshgrid(AT, AT, indexing="ij"))
plplot.plshades(Z, -2, 2, -2, 2, np.linspace(mesh.LOW, mesh.HIGH, mesh.LEVELS + 1), 1.0, 0,
                plplot.pltr2, XS, YS)
plplot.plend()

start("each-plplot-surface")
plplot.plwind(-1, 1, -0.9, 1.1)
plplot.plw3d(1, 1, 1, -2, 2, -2, 2, -1.5, 1.5, 35, 25)
plplot.plsurf3d(AT, AT, Z, plplot.MAG_COLOR, [])
plplot.plend()
