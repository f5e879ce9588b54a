"""Figures that Matplotlib draws, with axes and colour bars, as people do.

Like those beside it the script takes a directory and the form of the files, pdf or eps.
"""

import sys

import matplotlib

matplotlib.use("agg")
import matplotlib.pyplot as plt
import numpy as np
from matplotlib.colors import BoundaryNorm, ListedColormap

import mesh

CELLS = 80
LEVELS = np.linspace(mesh.LOW, mesh.HIGH, mesh.LEVELS + 1)
FEW = {
    "cmap": ListedColormap([mesh.level_colour(k) for k in range(mesh.LEVELS)]),
    "norm": BoundaryNorm(LEVELS, mesh.LEVELS),
}
EACH = {"cmap": "viridis", "vmin": mesh.LOW, "vmax": mesh.HIGH}

AT = np.array(mesh.nodes(CELLS))
X, Y = np.meshgrid(AT, AT)
Z = np.vectorize(mesh.height)(X, Y)
BENT = np.vectorize(mesh.bend)(X, Y)
MEANS = (Z[1:, 1:] + Z[1:, :-1] + Z[:-1, 1:] + Z[:-1, :-1]) / 4
FIRST = np.add.outer(np.arange(CELLS) * (CELLS + 1), np.arange(CELLS)).ravel()
CORNERS = np.vstack([
    np.stack([FIRST, FIRST + 1, FIRST + CELLS + 2], axis=1),
    np.stack([FIRST, FIRST + CELLS + 2, FIRST + CELLS + 1], axis=1),
])
FLAT = {"linewidth": 0, "antialiased": False, "shade": False}


def flat_figure(name, draw):
    figure, axes = plt.subplots(figsize=(4, 4))
    axes.set(title=name, xlabel="x", ylabel="y")
    drawn = draw(axes)
    if drawn is not None:
        figure.colorbar(drawn)
    save(figure, name)


def solid_figure(name, draw):
    figure = plt.figure(figsize=(4, 4))
    draw(figure.add_subplot(projection="3d"))
    save(figure, name)


def save(figure, name):
    directory, form = sys.argv[1:]
    undated = {"CreationDate": None} if form == "pdf" else None
    figure.savefig(f"{directory}/{name}.{form}", metadata=undated)
    plt.close(figure)


def main():
    for kind, colours in (("few", FEW), ("each", EACH)):
        flat_figure(f"{kind}-mpl-tripcolor",
                    lambda a: a.tripcolor(X.ravel(), Y.ravel(), CORNERS, Z.ravel(), **colours))
        flat_figure(f"{kind}-mpl-bent", lambda a: a.pcolormesh(*BENT, MEANS, **colours))
        solid_figure(f"{kind}-mpl-surface",
                     lambda a: a.plot_surface(X, Y, Z, rstride=1, cstride=1, **FLAT, **colours))
    flat_figure("few-mpl-upright", lambda a: a.pcolormesh(X, Y, MEANS, **FEW))
    flat_figure("few-mpl-edges",
                lambda a: a.pcolormesh(*BENT, MEANS, edgecolor="face", linewidth=0.2, **FEW))
    solid_figure("few-mpl-trisurf", lambda a: a.plot_trisurf(X.ravel(), Y.ravel(), Z.ravel(),
                                                             triangles=CORNERS, **FLAT, **FEW))
    flat_figure("rest-mpl-contourf", lambda a: a.contourf(X, Y, Z, LEVELS, cmap=FEW["cmap"]))
    flat_figure("rest-mpl-alpha", lambda a: a.pcolormesh(*BENT, MEANS, alpha=0.5, **FEW))
    flat_figure("rest-mpl-bars", lambda a: a.bar(range(20), range(1, 21)) and None)


if __name__ == "__main__":
    main()
