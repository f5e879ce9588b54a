"""Further figures that Matplotlib draws: what people draw most, and much of it."""

import sys

import numpy as np

import mesh
from with_matplotlib import CELLS, CORNERS, FEW, LEVELS, X, Y, Z, flat_figure, solid_figure

LARGE = 300
AT = np.array(mesh.nodes(LARGE))
MANY = np.meshgrid(AT, AT)
BENT = np.vectorize(mesh.bend)(*MANY)
HEIGHTS = np.vectorize(mesh.height)(*MANY)
MEANS = (HEIGHTS[1:, 1:] + HEIGHTS[1:, :-1] + HEIGHTS[:-1, 1:] + HEIGHTS[:-1, :-1]) / 4
POINTS = np.random.default_rng(1).normal(size=(2, 100_000))


def main():
    flat_figure("more-mpl-contourf40", lambda a: a.contourf(X, Y, Z, 40, cmap="viridis"))
    flat_figure("more-mpl-tricontourf",
                lambda a: a.tricontourf(X.ravel(), Y.ravel(), CORNERS, Z.ravel(), LEVELS))
    flat_figure("more-mpl-large", lambda a: a.pcolormesh(*BENT, MEANS, **FEW))
    flat_figure("more-mpl-hexbin", lambda a: a.hexbin(*POINTS, gridsize=CELLS))
    flat_figure("more-mpl-hist2d", lambda a: a.hist2d(*POINTS, bins=CELLS)[3])
    flat_figure("more-mpl-scatter", lambda a: a.scatter(*POINTS, s=1) and None)
    if sys.argv[2] == "pdf":  # nothing is transparent in EPS
        solid_figure("more-mpl-glass", lambda a: a.plot_surface(X, Y, Z, rstride=1, cstride=1,
                                                                alpha=0.5, **FEW))


main()
