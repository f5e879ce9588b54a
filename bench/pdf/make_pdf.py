"""Makes large PDF files out of nothing: meshes of triangles, stacked polygons, pages of text."""

import zlib

from figures import mesh


def write_pdf(path, contents):
    """A file with a page for each of the content streams, which may say /F of Helvetica."""
    pages = range(4, 4 + 2 * len(contents), 2)
    objects = [
        b"<</Type/Catalog/Pages 2 0 R>>",
        b"<</Type/Pages/Count %d/Kids[%s]>>"
        % (len(contents), b" ".join(b"%d 0 R" % page for page in pages)),
        b"<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>",
    ]
    for page, content in zip(pages, contents):
        objects.append(b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 600]/Contents %d 0 R"
                       b"/Resources<</Font<</F 3 0 R>>>>>>" % (page + 1))
        packed = zlib.compress(content)
        objects.append(b"<</Length %d/Filter/FlateDecode>>\nstream\n%s\nendstream"
                       % (len(packed), packed))
    text = bytearray(b"%PDF-1.4\n")
    places = []
    for number, body in enumerate(objects, 1):
        places.append(len(text))
        text += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    start = len(text)
    text += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    text += b"".join(b"%010d 00000 n \n" % place for place in places)
    text += b"trailer<</Size %d/Root 1 0 R>>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, start)
    path.write_bytes(text)


def polygon(corners, rgb):
    """Painted as most programs do, the colour every time."""
    sides = " l ".join(f"{x:.3f} {y:.3f}" for x, y in corners[1:])
    return f"{rgb[0]} {rgb[1]} {rgb[2]} rg {corners[0][0]:.3f} {corners[0][1]:.3f} m {sides} l h f"


def triangles(path, count, few=True):
    """At least so many, 8 colours or nearly each its own, row by row."""
    cells = 1
    while 2 * cells * cells < count:
        cells += 1
    lines = [polygon([(300 + 140 * x, 300 + 140 * y) for x, y in corners], rgb)
             for corners, rgb in mesh.triangles(cells, few)]
    write_pdf(path, ["\n".join(lines).encode()])


def stacked(path, count):
    """Polygons of alternating colours, all on one place, none quite like another."""
    lines = [polygon([(100, 100), (400 + i % 97, 110 + i % 89), (200 + i % 83, 400)],
                     mesh.level_colour(i % mesh.LEVELS)) for i in range(count)]
    write_pdf(path, ["\n".join(lines).encode()])


def text(path, pages):
    line = "BT /F 9 Tf 50 %d Td (Some words of page %d that say as little as any other line.) Tj ET"
    write_pdf(path, ["\n".join(line % (y, page) for y in range(560, 40, -11)).encode()
                     for page in range(pages)])
