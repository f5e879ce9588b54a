"""Has programs draw the pages of EPS and PDF files, and counts pixels in the drawings."""

import subprocess
import tempfile
from pathlib import Path

DPI = "144"
SMOOTH = ["-dGraphicsAlphaBits=4", "-dTextAlphaBits=4"]  # Ghostscript's anti-aliasing
GHOSTSCRIPT = ["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dEPSCrop"]


def draw_pages(words, prefix):
    """Runs a program that draws pages to files of a prefix, and returns them in their order."""
    subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return sorted(prefix.parent.glob(prefix.name + "*"))


def cairo_pages(pdf, dpi, prefix, *options):
    return draw_pages(["pdftocairo", "-tiff", "-r", str(dpi), *options, pdf, prefix], prefix)


def ghostscript_pages(file, prefix, *options):
    words = [*GHOSTSCRIPT, "-sDEVICE=ppmraw", f"-r{DPI}", *options]
    return draw_pages([*words, f"-sOutputFile={prefix}-%04d.ppm", file], prefix)


def mupdf_pages(pdf, prefix, bits):
    return draw_pages(["mutool", "draw", "-q", "-r", DPI, "-A", str(bits), "-o",
                       f"{prefix}-%04d.ppm", pdf], prefix)


def count_pixels(build, what, first, second):
    """Over all pages; nothing when they are not as many, or differ in their sizes."""
    if len(first) != len(second) or not first:
        return None
    total = 0
    for pages in zip(first, second):
        done = subprocess.run([build / "bench/pictures", what, *pages], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=False)
        if done.returncode != 0:
            return None
        total += int(done.stdout)
    return total


def hairlines(build, file, *, with_mupdf):
    """As Ghostscript, poppler (cairo) and perhaps MuPDF draw them, together. EPS is made PDF for all
    but Ghostscript."""
    with tempfile.TemporaryDirectory(prefix="bench") as directory:
        at = Path(directory)
        pages = [(ghostscript_pages(file, at / "a", *SMOOTH), ghostscript_pages(file, at / "b"))]
        pdf = file
        if file.suffix != ".pdf":
            pdf = at / "figure.pdf"
            subprocess.run([*GHOSTSCRIPT, "-sDEVICE=pdfwrite", f"-sOutputFile={pdf}", file],
                           stdout=subprocess.DEVNULL, check=True)
        pages.append((cairo_pages(pdf, DPI, at / "c"),
                      cairo_pages(pdf, DPI, at / "d", "-antialias", "none")))
        if with_mupdf:
            pages.append((mupdf_pages(pdf, at / "e", 8), mupdf_pages(pdf, at / "f", 0)))
        counts = [count_pixels(build, "hairlines", *drawings) for drawings in pages]
    return None if None in counts else sum(counts)
