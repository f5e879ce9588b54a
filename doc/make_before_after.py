#!/usr/bin/env python3
"""Draws before_after.png: a part of the example as a viewer shows it, as it is and after repair.

Usage: make_before_after.py TRELLION, the built program. Needs Ghostscript.
"""

import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SIDE, LEFT, BOTTOM = 150, 70, 66  # the part, in points
GAP = 4


def panel(eps, offset):
    """Draws the part of a figure that begins at LEFT and BOTTOM."""
    return (f"gsave {offset} 0 translate 0 0 {SIDE} {SIDE} rectclip {-LEFT} {-BOTTOM} translate\n"
            f"{eps.read_text(encoding='ascii')}\ngrestore\n")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    program = Path(sys.argv[1]).resolve()
    here = Path(__file__).resolve().parent
    with tempfile.TemporaryDirectory() as name:
        before = Path(name) / "surface.eps"
        shutil.copy(here.parent / "examples" / "surface.eps", before)
        subprocess.run([program, before, "-r"], check=True, stdout=subprocess.DEVNULL)
        both = Path(name) / "both.ps"
        both.write_text(f"%!PS\n<< /PageSize [{2 * SIDE + GAP} {SIDE}] >> setpagedevice\n"
                        "/showpage {} def\n"
                        + panel(before, 0) + panel(before.with_stem("surface_r"), SIDE + GAP)
                        + "systemdict /showpage get exec\n", encoding="ascii")
        subprocess.run(["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=png16m", "-r180",
                        "-dGraphicsAlphaBits=4", f"-sOutputFile={here / 'before_after.png'}", both],
                       check=True)


if __name__ == "__main__":
    main()
