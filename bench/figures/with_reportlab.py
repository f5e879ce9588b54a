"""A figure of triangles that ReportLab draws, into the directory named."""

import sys

from reportlab.pdfgen.canvas import Canvas

import mesh

canvas = Canvas(f"{sys.argv[1]}/few-reportlab.pdf", pagesize=(300, 300), invariant=1)
for corners, rgb in mesh.triangles(70):
    canvas.setFillColorRGB(*rgb)
    path = canvas.beginPath()
    path.moveTo(*(150 + 70 * c for c in corners[0]))
    for corner in corners[1:]:
        path.lineTo(*(150 + 70 * c for c in corner))
    path.close()
    canvas.drawPath(path, stroke=0, fill=1)
canvas.drawString(10, 3, "ReportLab")
canvas.save()
