"""How each plotting program draws the field: functions of a picture and the file to write.

They run in a directory with the tables of field.write_tables. A picture is one of field's orders
(triangles drawn as polygons) or something of the program's own.
"""

import subprocess
from pathlib import Path

from field import (ALONG, GRID, HIGH, LEVELS, LOW, ORDERS, PALETTE, POINTS, SIDE, runs, text_of,
                   triangles)


def run(*command, text=None):
    """What a program says; whether it worked shows in the file that it should write."""
    done = subprocess.run(command, input=text, text=True, capture_output=True, errors="replace",
                          timeout=300, check=False)
    return done.stdout.strip() or done.stderr.strip()


def gnuplot(picture, path):
    epscairo = "epscairo" if picture.endswith("epscairo") else "postscript eps color"
    terminal = "pdfcairo" if path.suffix == ".pdf" else epscairo
    view = "set view map" if "map" in picture else ""
    colours = "" if picture.endswith("each") else f"set palette maxcolors {LEVELS}"
    run("gnuplot", text=f"set terminal {terminal}\nset output '{path}'\n{view}\n{colours}\n"
                        "unset key\nsplot 'grid.txt' matrix with pm3d\n")


def matplotlib(picture, path):
    import matplotlib as mpl
    mpl.use("Agg")
    from matplotlib import collections, colors, patches, path as outlines, pyplot
    figure = pyplot.figure(figsize=(5, 5))
    axes = figure.add_subplot(xlim=(0, SIDE), ylim=(0, SIDE))
    along, palette = [SIDE * x for x in ALONG], colors.ListedColormap(PALETTE)
    parts = [([list(zip(flat[::2], flat[1::2])) for flat in flats], colour)
             for colour, flats in runs(picture if picture in ORDERS else "levels")]
    if picture == "contourf":
        axes.contourf(along, along, GRID, LEVELS, cmap=palette)
    elif picture.startswith("pcolormesh"):
        narrowed = 0.3 if picture.endswith("bent") else 0
        x = [[x * (1 - narrowed * y) for x in along] for y in ALONG]
        cells = [row[1:] for row in GRID[1:]]
        axes.pcolormesh(x, [[y] * POINTS for y in along], cells, cmap=palette)
    elif picture == "path per level":
        for polygons, colour in parts:
            closed = [outlines.Path(corners + corners[:1], closed=True) for corners in polygons]
            outline = outlines.Path.make_compound_path(*closed)
            axes.add_patch(patches.PathPatch(outline, facecolor=colour, linewidth=0))
    elif picture == "levels":
        for polygons, colour in parts:
            axes.add_collection(collections.PolyCollection(polygons, facecolors=[colour],
                                                           linewidths=0))
    else:
        polygons = [polygon for polygons, _ in parts for polygon in polygons]
        shades = [colour for polygons, colour in parts for _ in polygons]
        axes.add_collection(collections.PolyCollection(polygons, facecolors=shades, linewidths=0))
    figure.savefig(path)
    pyplot.close(figure)


def r(picture, path):
    device = f"pdf('{path}', width=5, height=5)" if path.suffix == ".pdf" else (
        f"postscript('{path}', onefile=FALSE, paper='special', horizontal=FALSE, width=5,"
        " height=5)")
    draw = {"persp": f"persp(z, theta=30, phi=40, border=NA, col=colours[cut(means, {LEVELS})])",
            "filled.contour": f"filled.contour(z, nlevels={LEVELS}, col=colours)"}.get(picture, f"""
        par(mar=c(0,0,0,0)); plot.new(); plot.window(c(0,{SIDE}), c(0,{SIDE}))
        t <- as.matrix(read.table('triangles_{picture}.txt'))
        for (i in 1:nrow(t)) polygon(t[i,c(1,3,5)], t[i,c(2,4,6)], border=NA,
                                     col=rgb(t[i,7], t[i,8], t[i,9]))""")
    run("R", "--vanilla", "--slave", text=f"""z <- as.matrix(read.table('grid.txt'))
        means <- (z[-1,-1] + z[-1,-{POINTS}] + z[-{POINTS},-1] + z[-{POINTS},-{POINTS}]) / 4
        colours <- rainbow({LEVELS}, end=0.8)\n{device}\n{draw}\ninvisible(dev.off())\n""")


def octave(picture, path):
    draw = {"surf": "surf(load('grid.txt'), 'EdgeColor', 'none')",
            "contourf": f"contourf(load('grid.txt'), {LEVELS})"}.get(picture, f"""
        t = load('triangles_{picture}.txt'); axis off
        patch(t(:,1:2:5)', t(:,2:2:6)', permute(t(:,7:9), [3 1 2]), 'EdgeColor', 'none')""")
    device = "-dpdf" if path.suffix == ".pdf" else "-depsc2"
    Path("draw.m").write_text(f"f = figure('visible', 'off'); colormap(jet({LEVELS}))\n{draw}\n"
                              f"print(f, '{path}', '{device}')\n", encoding="ascii")
    run("xvfb-run", "-a", "octave", "-q", "--norc", "--no-gui", "draw.m")


def gmt(picture, path):
    frame = f"-R0/{SIDE}/0/{SIDE}", "-JX12c", "-P"
    if picture == "grdview":
        points = "".join(f"{SIDE * x} {SIDE * y} {z}\n" for y, row in zip(ALONG, GRID)
                         for x, z in zip(ALONG, row))
        run("gmt", "xyz2grd", frame[0], f"-I{POINTS}+n", "-Ggrid.nc", text=points)
        table = run("gmt", "makecpt", "-Cjet", f"-T{LOW}/{HIGH}/{LEVELS}+n")
        Path("colours.cpt").write_text(table + "\n", encoding="ascii")
        drawn = run("gmt", "grdview", "grid.nc", "-Ccolours.cpt", *frame, "-JZ4c", "-Qs",
                    "-p150/40")
    else:
        drawn = run("gmt", "psxy", *frame, text="".join(
            "> -G{}/{}/{}\n{} {}\n{} {}\n{} {}\n".format(*(round(255 * c) for c in colour), *flat)
            for flat, colour in triangles(picture)))
    Path("sheet.ps").write_text(drawn + "\n", encoding="latin-1")
    form = "-Tf" if path.suffix == ".pdf" else "-Te"
    run("gmt", "psconvert", "sheet.ps", "-A", form, f"-F{path.stem}")


def metapost(picture, path):
    mesh = text_of(picture, "fill ({0},{1})--({2},{3})--({4},{5})--cycle withcolor c;\n",
                   "c := ({6},{7},{8});\n")
    Path("mesh.mp").write_text(f'outputtemplate := "{path}"; color c; beginfig(1);\n{mesh}endfig; '
                               "end\n", encoding="ascii")
    run("mpost", "-interaction=batchmode", "-numbersystem=double", "mesh.mp")


def pycairo(picture, path):
    import cairo
    order, _, closed = picture.partition(" ")
    form = cairo.PDFSurface if path.suffix == ".pdf" else cairo.PSSurface
    surface = form(str(path), SIDE, SIDE)
    if form is cairo.PSSurface:
        surface.set_eps(True)
    context = cairo.Context(surface)
    for flat, colour in triangles(order):
        context.set_source_rgb(*colour)
        context.move_to(*flat[0:2])
        context.line_to(*flat[2:4])
        context.line_to(*flat[4:6])
        if closed:
            context.close_path()
        context.fill()
    surface.finish()


def pyx(picture, path):
    from pyx import canvas, color, path as outlines
    page = canvas.canvas()
    for colour, flats in runs(picture):
        part = page.insert(canvas.canvas([color.rgb(*colour)]))
        for flat in flats:
            a, b, c, d, e, f = (k / SIDE * 12 for k in flat)
            part.fill(outlines.path(outlines.moveto(a, b), outlines.lineto(c, d),
                                    outlines.lineto(e, f), outlines.closepath()))
    page.writeEPSfile(str(path))


def plplot(picture, path):
    import plplot as pl
    pl.plsdev("psc")
    pl.plsfnam(str(path))
    pl.plsetopt("portrait", "1")
    pl.plinit()
    pl.pladv(0)
    pl.plvpor(0, 1, 0, 1)
    pl.plwind(0, SIDE, 0, SIDE)
    for colour, flats in runs(picture):
        pl.plscol0(1, *(round(255 * part) for part in colour))
        pl.plcol0(1)
        for flat in flats:
            pl.plfill(flat[::2], flat[1::2])
    pl.plend()


def asymptote(picture, path):
    Path("mesh.asy").write_text(
        text_of(picture, "fill(({0},{1})--({2},{3})--({4},{5})--cycle, rgb({6},{7},{8}));\n"),
        encoding="ascii")
    run("asy", "-noV", "-f", "eps", "-o", path.stem, "mesh.asy")


def pgf(picture, path):
    mesh = text_of(picture, r"\pgfpathmoveto{{\pgfpoint{{{0}bp}}{{{1}bp}}}}"
                   r"\pgfpathlineto{{\pgfpoint{{{2}bp}}{{{3}bp}}}}"
                   r"\pgfpathlineto{{\pgfpoint{{{4}bp}}{{{5}bp}}}}\pgfpathclose\pgfusepath{{fill}}"
                   "\n", r"\definecolor{{c}}{{rgb}}{{{6},{7},{8}}}\pgfsetfillcolor{{c}}" "\n")
    Path("mesh.tex").write_text(
        r"\documentclass{article}\usepackage{pgf}\pagestyle{empty}\begin{document}\noindent"
        r"\fbox{\begin{pgfpicture}" f"\n{mesh}" r"\end{pgfpicture}}\end{document}",
        encoding="ascii")  # dvips reckons the bounding box from the rules of the \fbox
    run("latex", "-interaction=batchmode", "mesh.tex")
    run("dvips", "-q", "-E", "-o", path, "mesh.dvi")


def inkscape(picture, path):
    mesh = text_of(picture, '<path d="M{0},{1}L{2},{3}L{4},{5}Z"/>\n',
                   '</g><g fill="rgb({6:%},{7:%},{8:%})">\n')
    size = f'width="{SIDE}pt" height="{SIDE}pt" viewBox="0 0 {SIDE} {SIDE}"'
    Path("mesh.svg").write_text(
        f'<svg xmlns="http://www.w3.org/2000/svg" {size}><g>{mesh}</g></svg>', encoding="ascii")
    run("inkscape", "mesh.svg", f"--export-filename={path}")


def eps2write(picture, path):
    mesh = text_of(picture, "{0} {1} moveto {2} {3} lineto {4} {5} lineto fill\n",
                   "{6} {7} {8} setrgbcolor\n")
    run("gs", "-q", "-dSAFER", "-dBATCH", "-dEPSCrop", "-sDEVICE=eps2write",
        f"-sOutputFile={path}", "-", text="%!PS-Adobe-3.0 EPSF-3.0\n"
        f"%%BoundingBox: 0 0 {SIDE} {SIDE}\n{mesh}showpage\n")


# Name, what tells the version (a command, or a Python module), pictures, function, and whether it
# can write PDF, too.
PROGRAMS = [
    ("gnuplot", "gnuplot --version", ["surface", "surface epscairo", "surface each", "map"],
     gnuplot, True),
    ("Matplotlib", "matplotlib", [*ORDERS, "path per level", "pcolormesh",
                                  "pcolormesh bent", "contourf"], matplotlib, True),
    ("R", "R --version", [*ORDERS, "persp", "filled.contour"], r, True),
    ("Octave", "octave-cli --version", [*ORDERS, "surf", "contourf"], octave, True),
    ("GMT", "gmt --version", [*ORDERS, "grdview"], gmt, True),
    ("MetaPost", "mpost --version", ORDERS, metapost, False),
    ("cairo", "cairo", [*ORDERS, "rows closed"], pycairo, True),
    ("PyX", "pyx", ORDERS, pyx, False),
    ("PLplot", "plplot", ORDERS, plplot, False),
    ("Asymptote", "asy --version", ORDERS, asymptote, False),
    ("PGF, LaTeX, dvips", "dvips --version", ORDERS, pgf, False),
    ("Inkscape", "inkscape --version", ORDERS, inkscape, True),
    ("Ghostscript eps2write", "gs --version", ["rows"], eps2write, False),
]
